#include "ImportTable.h"

#include <cstring>

namespace
{

/// What lies at an offset from the start of a loaded module.
template <class T>
T* At(HMODULE hModule, DWORD dwOffset)
{
    return reinterpret_cast<T*>(reinterpret_cast<BYTE*>(hModule) + dwOffset);
}

const IMAGE_DATA_DIRECTORY& ImportDirectory(HMODULE hModule)
{
    const auto pDos = At<const IMAGE_DOS_HEADER>(hModule, 0);
    const auto pHeaders = At<const IMAGE_NT_HEADERS>(hModule, static_cast<DWORD>(pDos->e_lfanew));
    return pHeaders->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
}

bool HasName(HMODULE hModule, const IMAGE_THUNK_DATA& thunk, const char* szFunction)
{
    if (IMAGE_SNAP_BY_ORDINAL(thunk.u1.Ordinal))
        return false;
    const char* const szName = At<const char>(hModule, thunk.u1.AddressOfData) + sizeof(WORD); // behind the hint
    return std::strcmp(szName, szFunction) == 0;
}

/// The slot that the library calls the function through.
DWORD_PTR* FindSlot(HMODULE hModule, const char* szFunction)
{
    auto pImport = At<const IMAGE_IMPORT_DESCRIPTOR>(hModule, ImportDirectory(hModule).VirtualAddress);
    for (; pImport->Name != 0; ++pImport)
    {
        auto pName = At<const IMAGE_THUNK_DATA>(hModule, pImport->OriginalFirstThunk);
        auto pSlot = At<IMAGE_THUNK_DATA>(hModule, pImport->FirstThunk);
        for (; pName->u1.AddressOfData != 0; ++pName, ++pSlot)
            if (HasName(hModule, *pName, szFunction))
                return &pSlot->u1.Function;
    }
    return nullptr;
}

} // namespace

void* PatchImport(HMODULE hModule, const char* szFunction, void* pNew)
{
    DWORD_PTR* const pSlot = FindSlot(hModule, szFunction);
    if (pSlot == nullptr)
        return nullptr;
    void* const pOld = reinterpret_cast<void*>(*pSlot);
    DWORD dwProtection = 0;
    ::VirtualProtect(pSlot, sizeof(*pSlot), PAGE_READWRITE, &dwProtection);
    *pSlot = reinterpret_cast<DWORD_PTR>(pNew);
    ::VirtualProtect(pSlot, sizeof(*pSlot), dwProtection, &dwProtection);
    return pOld;
}
