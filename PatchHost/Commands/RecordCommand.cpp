// record: a host's session, every call and every answer, as JSON lines.
#include "PatchHost/Apartment.h"
#include "PatchHost/Boundary.h"
#include "PatchHost/Commands/Commands.h"
#include "PatchHost/Console.h"
#include "PatchHost/Documents.h"
#include "PatchHost/Interrupt.h"
#include "PatchHost/Session.h"
#include "PatchHost/Text.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace
{

/// What a replay needs to know: the line that the file begins with.
CJson Header(const COptions& options, const std::string& script)
{
    return { { "patchhost", 1 },
             { "service", options.service == ServiceKind::Down ? "down" : "simulated" },
             { "script", script },
             { "codePage", ::GetACP() } };
}

/// Whether a file may be written over: it holds nothing, or a recording. A policy named in its place stays.
void RefuseOtherFile(const std::string& target)
{
    const std::filesystem::path path = std::filesystem::u8path(target);
    if (!std::filesystem::is_regular_file(path))
        return;
    std::ifstream stream(path, std::ios::binary);
    std::string line;
    std::getline(stream, line);
    if (!line.empty() && line.compare(0, 14, "{\"patchhost\":1") != 0)
        throw CCommandError(ExitUsage,
                            target + " is not a recording and is left as it is; the file to write comes first");
}

void RecordSession(CBoundary& boundary, const std::vector<std::string>& policies)
{
    for (const char* const szCall : { "GetAdapterVersion", "GetAdapterFactory1_0", "Initialise" })
        boundary.Call(szCall, "");
    if (SeenEvent() == AgentEvent::Signalled) // the monitor tells of it, and in a replay it must not come in between
        boundary.AwaitMonitor();
    for (const char* const szCall : { "RegisterStateObserver", "GetConfiguration" })
        boundary.Call(szCall, "");
    for (const std::string& policy : policies)
        if (!IsInterrupted())
            boundary.Call("SetConfiguration", policy);
    for (const char* const szCall : { "GetStatus", "DeRegisterStateObserver" })
        boundary.Call(szCall, "");
    Note("stopping the adapter, which can take ten seconds");
    for (const char* const szCall : { "Uninitialise", "DeleteFactory" })
        boundary.Call(szCall, "");
}

} // namespace

int RecordCommand(const COptions& options)
{
    if (options.service == ServiceKind::Installed)
        throw CCommandError(ExitUsage, "record needs a service that a replay can have again: simulated or down");
    const std::string target = options.files.front();
    const std::string script = ReadScript(options);
    std::vector<std::string> policies; // read before the file is opened, which empties it
    for (size_t n = 1; n < options.files.size(); ++n)
        policies.push_back(AnsiToUtf8(ReadDocument(options.files[n])));

    std::ofstream file;
    if (target != "-")
    {
        RefuseOtherFile(target);
        if (!MakePrivate(std::filesystem::u8path(target))) // policies hold server keys
            throw CCommandError(ExitFailed, "cannot write " + target + ": " + std::strerror(errno));
        file.open(std::filesystem::u8path(target), std::ios::binary);
    }
    std::ostream& stream = target == "-" ? std::cout : file;
    const auto write = [&stream](const CJson& event) { stream << event.dump() << "\n" << std::flush; };

    const CComApartment apartment;
    const CStatePlace state(StateKind::Throwaway, "");
    const CPatchService service(options.service, script);
    write(Header(options, script));
    if (!stream)
        throw CCommandError(ExitFailed, "cannot write " + target);
    CBoundary boundary(options, write);
    RecordSession(boundary, policies);
    if (!stream)
        throw CCommandError(ExitFailed, "cannot write " + target);
    return UnlessInterrupted(ExitDone);
}
