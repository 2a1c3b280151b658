// A COM object that says whether it leaves error information behind.
#pragma once

#include "OvPlatform.h"

#include <gtest/gtest.h>

/// Counts its references; lives on the stack.
class CAnsweringObject final : public ISupportErrorInfo
{
public:
    /// @param bSupports   whether it has ISupportErrorInfo. @param hrSupports  what that answers for the interface iid.
    CAnsweringObject(bool bSupports, REFIID iid, HRESULT hrSupports)
        : m_bSupports(bSupports), m_iid(iid), m_hrSupports(hrSupports)
    {
    }
    virtual ~CAnsweringObject() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** pp) override
    {
        *pp = nullptr;
        if (!m_bSupports || riid != IID_ISupportErrorInfo)
            return E_NOINTERFACE;
        *pp = static_cast<ISupportErrorInfo*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_nReferences; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_nReferences; }
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID riid) override
    {
        EXPECT_TRUE(riid == m_iid);
        return m_hrSupports;
    }

    ULONG References() const { return m_nReferences; }

private:
    bool m_bSupports;
    IID m_iid;
    HRESULT m_hrSupports;
    ULONG m_nReferences = 0;
};
