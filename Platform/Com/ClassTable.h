// The classes that the platform itself brings, created in-process.
#pragma once

#include "Platform/Com.h"

namespace OvPlatform
{

/// Creates an object and queries it for riid. *ppvObject is null on entry and must stay so after a failure.
using InprocCreator = HRESULT (*)(REFIID riid, void** ppvObject);

/// Makes a class creatable through CoCreateInstance with CLSCTX_INPROC_SERVER, in every apartment. It refuses
/// aggregation. Call it while the library loads, once a class; `static const CInprocClass s_class(CLSID_X, &CreateX);`
/// does.
void RegisterInprocClass(REFCLSID rclsid, InprocCreator pCreate);

struct CInprocClass
{
    CInprocClass(REFCLSID rclsid, InprocCreator pCreate) { RegisterInprocClass(rclsid, pCreate); }
};

} // namespace OvPlatform
