#include "ovCore/OvProcesses.h"

#include "ovCore/OvException.h"
#include "ovCore/OvOsProcessApi.h"
#include "ovCore/OvStackTrace.h"

namespace
{

const wchar_t s_szSource[] = L"ovCore\\OVProcessInfo";

} // namespace

size_t COvProcessCollection::GetCount() const
{
    OV_SCOPE(L"COvProcessCollection::GetCount");
    if (m_processPIDIndex.size() != m_processNameIndex.size())
        OvRaise(E_FAIL, s_szSource, __LINE__,
                COvEvidence(L"Info Msg", L"Internal State Invalid") +
                    COvEvidence(L"(long)m_processPIDIndex.size()", static_cast<LONG>(m_processPIDIndex.size())) +
                    COvEvidence(L"(long)m_processNameIndex.size()", static_cast<LONG>(m_processNameIndex.size())));
    return m_processPIDIndex.size();
}

const COvProcessInfo& COvProcessCollection::GetByPID(DWORD dwProcessId, bool& found) const
{
    OV_SCOPE(L"COvProcessCollection::GetByPID");
    const auto it = m_processPIDIndex.find(dwProcessId);
    found = it != m_processPIDIndex.end();
    return found ? *it->second : m_empty;
}

void COvProcessCollection::AddProcess(const std::wstring& path, DWORD dwProcessId)
{
    OV_SCOPE(L"COvProcessCollection::AddProcess");
    const auto pProcess = std::make_shared<const COvProcessInfo>(path, dwProcessId);
    const auto inserted = m_processPIDIndex.emplace(dwProcessId, pProcess);
    if (!inserted.second)
        return;
    try
    {
        m_processNameIndex.emplace(pProcess->GetName(), pProcess);
    }
    catch (...)
    {
        m_processPIDIndex.erase(inserted.first);
        throw;
    }
}

const COvProcessCollection& COvProcesses::GetRunning()
{
    OV_SCOPE(L"COvProcesses::GetRunning");
    m_cache = COvOsProcessApi::GetApi().GetAllProcesses();
    return m_cache;
}

const COvProcessInfo& COvProcesses::GetProcess(DWORD processId, bool& found)
{
    OV_SCOPE(L"COvProcesses::GetProcess");
    if (m_cache.GetCount() == 0)
        GetRunning();
    return m_cache.GetByPID(processId, found);
}
