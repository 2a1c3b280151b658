// A thread's stay in the multithreaded COM apartment.
#pragma once

#include "OvPlatform.h"

class CComApartment
{
public:
    CComApartment() { m_bEntered = SUCCEEDED(::CoInitializeEx(nullptr, COINIT_MULTITHREADED)); }
    ~CComApartment()
    {
        if (m_bEntered)
            ::CoUninitialize();
    }

    CComApartment(const CComApartment&) = delete;
    CComApartment& operator=(const CComApartment&) = delete;

private:
    bool m_bEntered;
};
