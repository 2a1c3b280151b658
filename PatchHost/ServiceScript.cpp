#include "PatchHost/ServiceScript.h"

#include "PatchHost/Options.h"
#include "PatchHost/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <climits>

const char* const g_szServiceScriptHelp =
    R"(A service script is a JSON object; each member may be left out:
  "initially"  "start" (the default), "stop" or "hang" (its event is there, but not signalled)
  "values"     what it tells: wuaInstalled, wuaCompatible, assessmentEnabled, serverKeyStatus (true or false),
               wuaCurrentVersion, wuaRequiredVersion (texts)
  "faults"     a list of {"call": "Create" | "Query" | "SetState" | "GetState", "hr": "0x80004005",
               "first": 1, "count": 1, "delayMs": 0, "dies": false, "value": "wuaInstalled", "description": "..."}:
               which calls of the client fail, and how; "first" counts such calls from 1
  "steps"      a list of {"atMs": 5000, "do": "start" | "stop" | "hang" | "set", "values": {...}}:
               what it does so long after the adapter was made)";

namespace
{

using Json = nlohmann::json;

[[noreturn]] void Refuse(const std::string& sentence)
{
    throw CCommandError(ExitUsage, "the service script " + sentence);
}

template <class Value>
Value Lookup(const std::map<std::string, Value>& known, const Json& json, const std::string& what)
{
    const auto it = json.is_string() ? known.find(json.get<std::string>()) : known.end();
    if (it == known.end())
        Refuse("has an unknown " + what + ": " + json.dump());
    return it->second;
}

LONG StateId(const Json& name)
{
    static const std::map<std::string, LONG> known = {
        { "wuaInstalled", StateWuaInstalled },           { "wuaCompatible", StateWuaCompatible },
        { "wuaCurrentVersion", StateWuaCurrentVersion }, { "wuaRequiredVersion", StateWuaRequiredVersion },
        { "assessmentEnabled", StateAssessmentEnabled }, { "serverKeyStatus", StateServerKeyStatus },
    };
    return Lookup(known, name, "value");
}

CServiceStep::Action Action(const Json& name)
{
    static const std::map<std::string, CServiceStep::Action> known = {
        { "start", CServiceStep::Action::Start },
        { "stop", CServiceStep::Action::Stop },
        { "hang", CServiceStep::Action::Hang },
        { "set", CServiceStep::Action::Set },
    };
    return Lookup(known, name, "action");
}

AgentCall Call(const Json& name)
{
    static const std::map<std::string, AgentCall> known = {
        { "Create", AgentCall::Create },
        { "Query", AgentCall::Query },
        { "SetState", AgentCall::SetState },
        { "GetState", AgentCall::GetState },
    };
    return Lookup(known, name, "call");
}

/// A whole number of a range; anything else is refused, not cut.
int64_t Number(const std::string& name, const Json& json, int64_t nLeast, int64_t nMost)
{
    if (!json.is_number_integer() || json.get<int64_t>() < nLeast || json.get<int64_t>() > nMost ||
        (json.is_number_unsigned() && json.get<uint64_t>() > static_cast<uint64_t>(nMost)))
        Refuse("has a \"" + name + "\" that is no whole number from " + std::to_string(nLeast) + " to " +
               std::to_string(nMost) + ": " + json.dump());
    return json.get<int64_t>();
}

unsigned Unsigned(const std::string& name, const Json& json)
{
    return static_cast<unsigned>(Number(name, json, 0, INT_MAX));
}

CAgentValue Value(const Json& json)
{
    if (json.is_boolean())
        return json.get<bool>();
    if (json.is_number_integer())
        return static_cast<LONG>(Number("value", json, INT32_MIN, INT32_MAX));
    if (json.is_string())
        return Utf8ToWide(json.get<std::string>());
    if (json.is_null())
        return nullptr;
    Refuse("has a value that is no text, number or truth: " + json.dump());
}

std::map<LONG, CAgentValue> Values(const Json& json)
{
    std::map<LONG, CAgentValue> values;
    for (const auto& [name, value] : json.items())
        values[StateId(name)] = Value(value);
    return values;
}

/// A result of 32 bits: a number with or without its sign, or the text of one without it.
HRESULT Result(const Json& json)
{
    if (!json.is_string())
        return static_cast<HRESULT>(Number("hr", json, INT32_MIN, UINT32_MAX));
    const std::string text = json.get<std::string>();
    const bool bHex = text.compare(0, 2, "0x") == 0;
    const char* const pEnd = text.data() + text.size();
    uint32_t nValue = 0;
    const auto [pParsed, error] = std::from_chars(text.data() + (bHex ? 2 : 0), pEnd, nValue, bHex ? 16 : 10);
    if (error != std::errc() || pParsed != pEnd)
        Refuse("has an \"hr\" that is no number of 32 bits, such as \"0x80004005\": " + json.dump());
    return static_cast<HRESULT>(nValue);
}

CAgentFault Fault(const Json& json)
{
    CAgentFault fault{ AgentCall::Create };
    for (const auto& [name, value] : json.items())
    {
        if (name == "call")
            fault.call = Call(value);
        else if (name == "hr")
            fault.hr = Result(value);
        else if (name == "value")
            fault.stateId = StateId(value);
        else if (name == "first")
            fault.nFirst = Unsigned(name, value);
        else if (name == "count")
            fault.nCount = Unsigned(name, value);
        else if (name == "delayMs")
            fault.dwDelayMs = Unsigned(name, value);
        else if (name == "dies")
            fault.bDies = value.get<bool>();
        else if (name == "description")
            fault.errorObject = CAgentErrorObject{ Utf8ToWide(value.get<std::string>()) };
        else
            Refuse("has an unknown member of a fault: " + name);
    }
    if (!json.contains("call"))
        Refuse("has a fault without a call");
    if (!json.contains("hr") && (fault.dwDelayMs != 0 || fault.bDies))
        fault.hr = S_OK; // no more than late, or the service's end
    return fault;
}

CServiceStep Step(const Json& json)
{
    CServiceStep step;
    for (const auto& [name, value] : json.items())
    {
        if (name == "atMs")
            step.nAtMs = Unsigned(name, value);
        else if (name == "do")
            step.action = Action(value);
        else if (name == "values")
            step.values = Values(value);
        else
            Refuse("has an unknown member of a step: " + name);
    }
    if (!json.contains("do"))
        Refuse("has a step that does nothing");
    return step;
}

CServiceScript Read(const Json& json)
{
    CServiceScript script;
    for (const auto& [name, value] : json.items())
    {
        if (name == "initially")
            script.initially = Action(value);
        else if (name == "values")
            script.values = Values(value);
        else if (name == "faults")
            std::transform(value.begin(), value.end(), std::back_inserter(script.faults), &Fault);
        else if (name == "steps")
            std::transform(value.begin(), value.end(), std::back_inserter(script.steps), &Step);
        else
            Refuse("has an unknown member: " + name);
    }
    if (script.initially == CServiceStep::Action::Set)
        Refuse("cannot begin with \"set\"");
    std::stable_sort(script.steps.begin(), script.steps.end(),
                     [](const CServiceStep& a, const CServiceStep& b) { return a.nAtMs < b.nAtMs; });
    return script;
}

} // namespace

CServiceScript ParseServiceScript(const std::string& text)
{
    if (text.empty())
        return CServiceScript();
    try
    {
        const Json json = Json::parse(text);
        if (!json.is_object())
            Refuse("is no JSON object");
        return Read(json);
    }
    catch (const Json::exception& e)
    {
        Refuse(std::string("cannot be read: ") + e.what());
    }
}
