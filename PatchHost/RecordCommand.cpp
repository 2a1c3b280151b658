// record: a host's session, every call and every answer, as JSON lines.
#include "Apartment.h"
#include "Boundary.h"
#include "Commands.h"
#include "Documents.h"
#include "Interrupt.h"
#include "Session.h"
#include "Text.h"

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

void RecordSession(CBoundary& boundary, const COptions& options)
{
    for (const char* const szCall : { "GetAdapterVersion", "GetAdapterFactory1_0", "Initialise" })
        boundary.Call(szCall, "");
    if (SeenEvent() == AgentEvent::Signalled) // the monitor tells of it, and in a replay it must not come in between
        boundary.AwaitMonitor();
    for (const char* const szCall : { "RegisterStateObserver", "GetConfiguration" })
        boundary.Call(szCall, "");
    for (const std::string& file : options.files)
        if (!IsInterrupted())
            boundary.Call("SetConfiguration", AnsiToUtf8(ReadDocument(file)));
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
    COptions own = options;
    const std::string target = own.files.front();
    own.files.erase(own.files.begin());

    std::ofstream file;
    if (target != "-")
        file.open(std::filesystem::u8path(target), std::ios::binary);
    std::ostream& stream = target == "-" ? std::cout : file;
    const auto write = [&stream](const CJson& event) { stream << event.dump() << "\n" << std::flush; };

    const std::string script = ReadScript(own);
    const CComApartment apartment;
    const CRecordPlace record(RecordKind::Throwaway, "");
    const CPatchService service(own.service, script);
    write(Header(own, script));
    CBoundary boundary(own, write);
    RecordSession(boundary, own);
    if (!stream)
        throw CCommandError(ExitFailed, "cannot write " + target);
    return DoneUnlessInterrupted();
}
