#include "ImportTable.h"

#include <stdexcept>

namespace
{

/// What lies at an offset from the start of a loaded module.
template <class T>
T* At(HMODULE hModule, DWORD dwOffset)
{
    return reinterpret_cast<T*>(reinterpret_cast<BYTE*>(hModule) + dwOffset);
}

/// The slot that the module calls the function through.
DWORD* FindSlot(HMODULE hModule, const void* pFunction)
{
    const auto pHeaders = At<IMAGE_NT_HEADERS>(hModule, static_cast<DWORD>(At<IMAGE_DOS_HEADER>(hModule, 0)->e_lfanew));
    const DWORD dwImports = pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto pImport = At<IMAGE_IMPORT_DESCRIPTOR>(hModule, dwImports); pImport->Name != 0; ++pImport)
        for (DWORD* pSlot = At<DWORD>(hModule, pImport->FirstThunk); *pSlot != 0; ++pSlot)
            if (*pSlot == reinterpret_cast<DWORD_PTR>(pFunction))
                return pSlot;
    throw std::runtime_error("the module does not import the function");
}

} // namespace

void ReplaceImport(HMODULE hModule, const void* pFunction, const void* pNew)
{
    DWORD* const pSlot = FindSlot(hModule, pFunction);
    DWORD dwProtection = 0;
    ::VirtualProtect(pSlot, sizeof(*pSlot), PAGE_READWRITE, &dwProtection);
    *pSlot = reinterpret_cast<DWORD_PTR>(pNew);
    ::VirtualProtect(pSlot, sizeof(*pSlot), dwProtection, &dwProtection);
}

void* SystemFunction(const char* szLibrary, const char* szFunction)
{
    return reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleA(szLibrary), szFunction));
}
