#include "MainJob.h"

#include "Masking.h"

namespace
{

const char s_szPolicy[] =
    R"(<?xml version="1.0"?><policy type="patch"><Comp RevID="rev-2" policyType="21"/><groupRef name="Office"/>)"
    R"(<configuration><policyType name="Daily"/><assessment enabled="true" periodInHours="24"/>)"
    R"(<serverKey>KEY &amp; caf)"
    "\xE9"
    R"(</serverKey></configuration></policy>)";

} // namespace

const char* SamplePolicy()
{
    return s_szPolicy;
}

void CMainJob::Apply()
{
    m_pAdapter->SetConfiguration(s_szPolicy);
}

std::set<std::string> CMainJob::Documents() const
{
    std::set<std::string> documents;
    for (const CTold& told : m_host.All())
        if (told.dwThreadId == ::GetCurrentThreadId()) // the monitor's depend on the moment
            documents.insert(Masked(told.text));
    for (const std::wstring& settings : m_agent.GetReceivedSettings())
    {
        const std::wstring masked = Masked(settings);
        documents.emplace(masked.begin(), masked.end());
    }
    return documents;
}
