#include "Session.h"

#include "Documents.h"
#include "Output.h"

RecordKind RecordFor(ServiceKind kind)
{
    return kind == ServiceKind::Installed ? RecordKind::Machine : RecordKind::Kept;
}

std::string ReadScript(const COptions& options)
{
    if (options.serviceScript.empty())
        return std::string();
    try
    {
        const std::string script = ReadDocument(options.serviceScript);
        if (!script.empty())
            return script;
    }
    catch (const CCommandError& e)
    {
        throw CCommandError(ExitUsage, e.what());
    }
    throw CCommandError(ExitUsage, options.serviceScript + " is empty; a service script is a JSON object");
}

CSession::CSession(const COptions& options, ServiceKind kind, RecordKind record)
    : m_nTimeoutMs(options.nTimeoutMs),
      m_record(record, options.stateFolder),
      m_service(kind, ReadScript(options)),
      m_sink(options.nTraceLevel),
      m_library(options.library),
      m_adapter(m_library, &m_sink)
{
}

CSession::CSession(const COptions& options) : CSession(options, options.service, RecordFor(options.service)) {}

CSession::~CSession()
{
    Note("stopping the adapter, which can take ten seconds");
    m_adapter.Stop();
}
