#include "RecordingCallbacks.h"

std::string CCallbackRecord::Last() const
{
    const std::vector<CCallback> calls = Calls();
    return calls.empty() ? "<none>" : calls.back().text;
}

bool CCallbackRecord::WaitForCalls(size_t nCalls) const
{
    return m_calls.WaitFor([&](const std::vector<CCallback>& calls) { return calls.size() >= nCalls; });
}

void CCallbackRecord::Record(int32_t nValue, const char* text)
{
    m_calls.Add({ ::GetCurrentThreadId(), nValue, text == nullptr ? "<null>" : text });
    if (m_hook)
        m_hook();
}
