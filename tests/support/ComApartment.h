// The calling thread's stay in a COM apartment.
#pragma once

#include "OvPlatform.h"

class CComApartment
{
public:
    explicit CComApartment(DWORD dwKind = COINIT_MULTITHREADED) { ::CoInitializeEx(nullptr, dwKind); }
    ~CComApartment() { ::CoUninitialize(); }
    CComApartment(const CComApartment&) = delete;
    CComApartment& operator=(const CComApartment&) = delete;
};
