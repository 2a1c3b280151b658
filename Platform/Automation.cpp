#include "Platform/Automation.h"

#include "Platform/Com/VariantTypes.h"
#include "Platform/Kernel/Counters.h"

#include <cstdlib>
#include <cstring>
#include <cwchar>

using namespace OvPlatform;

namespace
{

/// Stands before the units of a BSTR.
struct CBstrHeader
{
    alignas(8) UINT nLength; // units
};

constexpr UINT MaxBstrLength = 0x7FFFFFFB; // the longest whose bytes and frame the platform's 32-bit count can hold

CBstrHeader* HeaderOf(BSTR bstr)
{
    return reinterpret_cast<CBstrHeader*>(bstr) - 1;
}

} // namespace

BSTR SysAllocString(const OLECHAR* psz)
{
    return psz ? SysAllocStringLen(psz, static_cast<UINT>(std::wcslen(psz))) : nullptr;
}

BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui)
{
    if (ui > MaxBstrLength)
        return nullptr;
    void* pBlock = std::malloc(sizeof(CBstrHeader) + (size_t{ ui } + 1) * sizeof(OLECHAR));
    if (!pBlock)
        return nullptr;
    ++BstrCounter();
    auto* pHeader = static_cast<CBstrHeader*>(pBlock);
    pHeader->nLength = ui;
    BSTR bstr = reinterpret_cast<BSTR>(pHeader + 1);
    if (strIn)
        std::wmemcpy(bstr, strIn, ui);
    else
        std::wmemset(bstr, L'\0', ui);
    bstr[ui] = L'\0';
    return bstr;
}

void SysFreeString(BSTR bstrString)
{
    if (!bstrString)
        return;
    --BstrCounter();
    std::free(HeaderOf(bstrString));
}

UINT SysStringLen(BSTR bstr)
{
    return bstr ? HeaderOf(bstr)->nLength : 0;
}

UINT SysStringByteLen(BSTR bstr)
{
    constexpr UINT UnitBytes = 2;
    return SysStringLen(bstr) * UnitBytes;
}

void VariantInit(VARIANTARG* pvarg)
{
    pvarg->vt = VT_EMPTY;
}

HRESULT VariantClear(VARIANTARG* pvarg)
{
    if (!pvarg)
        return E_INVALIDARG;
    if (!IsVariantType(pvarg->vt))
        return DISP_E_BADVARTYPE;
    if (pvarg->vt == VT_BSTR)
        SysFreeString(pvarg->bstrVal);
    if (IUnknown* pObject = InterfaceOf(*pvarg))
        pObject->Release();
    pvarg->vt = VT_EMPTY;
    return S_OK;
}

HRESULT VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc)
{
    if (!pvargDest || !pvargSrc)
        return E_INVALIDARG;
    if (pvargDest == pvargSrc)
        return S_OK;
    if (!IsVariantType(pvargSrc->vt))
        return DISP_E_BADVARTYPE;
    VARIANT copy = *pvargSrc;
    if (copy.vt == VT_BSTR)
        copy.bstrVal = SysAllocStringLen(pvargSrc->bstrVal, SysStringLen(pvargSrc->bstrVal)); // null becomes empty
    if (IUnknown* pObject = InterfaceOf(copy))
        pObject->AddRef();
    const HRESULT hr = VariantClear(pvargDest);
    if (FAILED(hr))
    {
        VariantClear(&copy);
        return hr;
    }
    if (copy.vt == VT_BSTR && !copy.bstrVal)
        return E_OUTOFMEMORY;
    *pvargDest = copy;
    return S_OK;
}
