#include "PatchHost/AdapterSession.h"

CAdapterSession::CAdapterSession(const CAdapterLibrary& library, ILogSink* sink)
    : m_pFactory(library.MakeFactory()), m_pAdapter(m_pFactory->Initialise(nullptr, nullptr, sink, nullptr))
{
    if (m_pAdapter != nullptr)
        return;
    DeleteAdapterFactory(m_pFactory);
    throw std::runtime_error("the library made no adapter; run again with --trace trace to see why");
}

CAdapterSession::~CAdapterSession()
{
    Stop();
    DeleteAdapterFactory(m_pFactory);
}

void CAdapterSession::Stop()
{
    if (m_pAdapter != nullptr)
        m_pFactory->Uninitialise(m_pAdapter);
    m_pAdapter = nullptr;
}
