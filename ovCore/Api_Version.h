// The system's functions for version resources.
#pragma once

#include "ovCore/OvDynamicLib.h"
#include "OvPlatform.h"

/// The system's library of that name, from the system's folder: programs may have one of the same name beside them,
/// which a library that is linked with it would get. Loaded at the first call. Where it can't be loaded or lacks the
/// function, a call does what the function does when it fails. One thread at a time.
class CApi_Version
{
public:
    DWORD GetFileVersionInfoSizeW(const wchar_t* szFile, DWORD* pdwHandle);
    BOOL GetFileVersionInfoW(const wchar_t* szFile, DWORD dwHandle, DWORD dwLength, void* pBlock);
    BOOL VerQueryValueW(const void* pBlock, const wchar_t* szSubBlock, void** ppValue, UINT* pnLength);

private:
    template <class Function>
    Function* FindOpt(const wchar_t* szFunction);

    COvDynamicLib m_lib;
};
