// VariantChangeType: numbers, truth values and texts into one another.
#include "Platform/Automation.h"
#include "Platform/Com/VariantTypes.h"
#include "Platform/Text/NumberText.h"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <limits>
#include <new>

using namespace OvPlatform;

namespace
{

struct CIntegerType
{
    VARTYPE vt;
    unsigned nBytes;
    bool bSigned;
};

constexpr CIntegerType s_integerTypes[] = {
    { VT_I1, 1, true },   { VT_UI1, 1, false }, { VT_I2, 2, true },   { VT_UI2, 2, false }, { VT_I4, 4, true },
    { VT_UI4, 4, false }, { VT_I8, 8, true },   { VT_UI8, 8, false }, { VT_INT, 4, true },  { VT_UINT, 4, false },
};

/// Null for a type that holds no integer.
const CIntegerType* FindIntegerType(VARTYPE vt)
{
    for (const CIntegerType& type : s_integerTypes)
        if (type.vt == vt)
            return &type;
    return nullptr;
}

bool IsReal(VARTYPE vt)
{
    return vt == VT_R4 || vt == VT_R8;
}

bool IsInterface(VARTYPE vt)
{
    return vt == VT_UNKNOWN || vt == VT_DISPATCH;
}

bool IsValue(VARTYPE vt)
{
    return FindIntegerType(vt) || IsReal(vt) || vt == VT_BOOL || vt == VT_BSTR;
}

struct CInteger
{
    bool bNegative;
    uint64_t nMagnitude;
};

uint64_t MaskOf(unsigned nBytes)
{
    return std::numeric_limits<uint64_t>::max() >> (64 - 8 * nBytes);
}

/// The value's bits, sign-extended for a signed type.
uint64_t LoadBits(const VARIANT& value, const CIntegerType& type)
{
    uint64_t nBits = 0;
    std::memcpy(&nBits, &value.llVal, type.nBytes);
    const bool bNegative = type.bSigned && nBits >> (8 * type.nBytes - 1) != 0;
    return bNegative ? nBits | ~MaskOf(type.nBytes) : nBits;
}

CInteger LoadInteger(const VARIANT& value, const CIntegerType& type)
{
    const uint64_t nBits = LoadBits(value, type);
    const bool bNegative = type.bSigned && nBits >> 63 != 0;
    return { bNegative, bNegative ? 0 - nBits : nBits };
}

HRESULT StoreBits(VARIANT& result, const CIntegerType& type, uint64_t nBits)
{
    std::memcpy(&result.llVal, &nBits, type.nBytes);
    return S_OK;
}

HRESULT StoreInteger(VARIANT& result, const CIntegerType& type, const CInteger& integer)
{
    const uint64_t nHalf = uint64_t{ 1 } << (8 * type.nBytes - 1);
    const uint64_t nPositive = type.bSigned ? nHalf - 1 : MaskOf(type.nBytes);
    const uint64_t nNegative = type.bSigned ? nHalf : 0;
    if (integer.nMagnitude > (integer.bNegative ? nNegative : nPositive))
        return DISP_E_OVERFLOW;
    return StoreBits(result, type, integer.bNegative ? 0 - integer.nMagnitude : integer.nMagnitude);
}

HRESULT StoreReal(VARIANT& result, double fValue)
{
    if (result.vt == VT_R8)
        result.dblVal = fValue;
    else if (std::fabs(fValue) > static_cast<double>(FLT_MAX))
        return DISP_E_OVERFLOW;
    else
        result.fltVal = static_cast<float>(fValue);
    return S_OK;
}

HRESULT StoreBool(VARIANT& result, bool bValue)
{
    result.boolVal = bValue ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

HRESULT StoreText(VARIANT& result, const wchar_t* szText)
{
    result.bstrVal = SysAllocString(szText);
    return result.bstrVal ? S_OK : E_OUTOFMEMORY;
}

/// From characters that are ASCII.
HRESULT StoreText(VARIANT& result, const char* pBegin, const char* pEnd)
{
    wchar_t szText[64] = {};
    for (wchar_t* pTo = szText; pBegin != pEnd; ++pBegin, ++pTo)
        *pTo = *pBegin == 'e' ? L'E' : static_cast<wchar_t>(*pBegin);
    return StoreText(result, szText);
}

HRESULT ConvertInteger(VARIANT& result, const CInteger& integer)
{
    const double fMagnitude = static_cast<double>(integer.nMagnitude);
    if (const CIntegerType* pType = FindIntegerType(result.vt))
        return StoreInteger(result, *pType, integer);
    if (IsReal(result.vt))
        return StoreReal(result, integer.bNegative ? -fMagnitude : fMagnitude);
    if (result.vt == VT_BOOL)
        return StoreBool(result, integer.nMagnitude != 0);
    char text[32] = { '-' };
    const char* pEnd = std::to_chars(text + 1, std::end(text), integer.nMagnitude).ptr;
    return StoreText(result, integer.bNegative ? text : text + 1, pEnd);
}

HRESULT ConvertReal(VARIANT& result, double fValue, int nDigits)
{
    if (IsReal(result.vt))
        return StoreReal(result, fValue);
    if (result.vt == VT_BOOL)
        return StoreBool(result, fValue != 0);
    if (result.vt == VT_BSTR)
    {
        char text[32];
        const double fPlain = fValue == 0 ? 0 : fValue; // no "-0"
        const auto end = std::to_chars(text, std::end(text), fPlain, std::chars_format::general, nDigits);
        return StoreText(result, text, end.ptr);
    }
    constexpr double TwoTo64 = 18446744073709551616.0;
    const double fMagnitude = std::nearbyint(std::fabs(fValue)); // halves to even
    if (!(fMagnitude < TwoTo64))
        return DISP_E_OVERFLOW;
    return StoreInteger(result, *FindIntegerType(result.vt), { fValue < 0, static_cast<uint64_t>(fMagnitude) });
}

/// Hexadecimal and octal texts: the bits of the target's size; those that become a real number first become an int.
HRESULT ConvertBits(VARIANT& result, const CNumberText& number)
{
    constexpr uint64_t MinLong = 0x80000000u;
    const CIntegerType* pType = FindIntegerType(result.vt);
    if (number.bTooLong || number.nBits > (pType ? MaskOf(pType->nBytes) : MinLong))
        return DISP_E_OVERFLOW;
    if (pType)
        return StoreBits(result, *pType, number.nBits);
    return ConvertInteger(result, { number.nBits == MinLong, number.nBits });
}

HRESULT ConvertNumberText(VARIANT& result, const wchar_t* szText)
{
    const std::optional<CNumberText> number = ParseNumber(szText);
    if (!number)
        return DISP_E_TYPEMISMATCH;
    if (number->bBits)
        return ConvertBits(result, *number);
    if (const CIntegerType* pType = FindIntegerType(result.vt))
    {
        const std::optional<uint64_t> magnitude = RoundToInteger(*number);
        return magnitude ? StoreInteger(result, *pType, { number->bNegative, *magnitude }) : DISP_E_OVERFLOW;
    }
    const std::optional<double> fValue = ToDouble(*number);
    return fValue ? ConvertReal(result, *fValue, 0) : DISP_E_OVERFLOW;
}

bool EqualsIgnoringCase(const wchar_t* szText, const wchar_t* szLower)
{
    while (*szLower != L'\0' && (*szText == *szLower || *szText == *szLower - L'a' + L'A'))
        ++szText, ++szLower;
    return *szText == *szLower;
}

HRESULT ConvertText(VARIANT& result, const VARIANT& source)
{
    const wchar_t* szText = source.bstrVal ? source.bstrVal : L"";
    if (result.vt != VT_BOOL)
        return ConvertNumberText(result, szText);
    if (EqualsIgnoringCase(szText, L"true") || std::wcscmp(szText, L"#TRUE#") == 0)
        return StoreBool(result, true);
    if (EqualsIgnoringCase(szText, L"false") || std::wcscmp(szText, L"#FALSE#") == 0)
        return StoreBool(result, false);
    return ConvertNumberText(result, szText);
}

/// A truth value counts as the 16-bit number that it holds, sign-extended into any other size.
HRESULT ConvertBool(VARIANT& result, VARIANT_BOOL bValue, USHORT wFlags)
{
    if (result.vt == VT_BSTR && (wFlags & VARIANT_ALPHABOOL) != 0)
        return StoreText(result, bValue ? L"True" : L"False");
    if (const CIntegerType* pType = FindIntegerType(result.vt))
        return StoreBits(result, *pType, static_cast<uint64_t>(int64_t{ bValue }));
    return ConvertInteger(result, { bValue < 0, static_cast<uint64_t>(std::abs(int{ bValue })) });
}

HRESULT ConvertIntegerValue(VARIANT& result, const VARIANT& source, const CIntegerType& type)
{
    const CIntegerType* pTarget = FindIntegerType(result.vt);
    if (pTarget && pTarget->nBytes == type.nBytes) // the platform keeps the bits
        return StoreBits(result, *pTarget, LoadBits(source, type));
    return ConvertInteger(result, LoadInteger(source, type));
}

/// From a value type to a value type.
HRESULT ConvertValue(VARIANT& result, const VARIANT& source, USHORT wFlags)
{
    constexpr int FloatDigits = 7;
    constexpr int DoubleDigits = 15;
    if (const CIntegerType* pType = FindIntegerType(source.vt))
        return ConvertIntegerValue(result, source, *pType);
    switch (source.vt)
    {
    case VT_R4:
        return ConvertReal(result, static_cast<double>(source.fltVal), FloatDigits);
    case VT_R8:
        return ConvertReal(result, source.dblVal, DoubleDigits);
    case VT_BOOL:
        return ConvertBool(result, source.boolVal, wFlags);
    default:
        return ConvertText(result, source);
    }
}

HRESULT ConvertEmpty(VARIANT& result)
{
    return result.vt == VT_BSTR ? StoreText(result, L"") : ConvertInteger(result, { false, 0 });
}

HRESULT ConvertInterface(VARIANT& result, const VARIANT& source)
{
    IUnknown* pSource = InterfaceOf(source);
    if (!pSource)
        return S_OK;
    void* pTarget = nullptr;
    if (FAILED(pSource->QueryInterface(result.vt == VT_UNKNOWN ? IID_IUnknown : IID_IDispatch, &pTarget)))
        return DISP_E_TYPEMISMATCH;
    if (result.vt == VT_UNKNOWN)
        result.punkVal = static_cast<IUnknown*>(pTarget);
    else
        result.pdispVal = static_cast<IDispatch*>(pTarget);
    return S_OK;
}

/// Into the type that the result already has; both types exist and differ.
HRESULT Convert(VARIANT& result, const VARIANT& source, USHORT wFlags)
{
    if (source.vt == VT_ERROR || result.vt == VT_ERROR)
        return DISP_E_TYPEMISMATCH;
    if (result.vt == VT_NULL || (result.vt == VT_EMPTY && source.vt != VT_NULL))
        return S_OK;
    if (IsInterface(source.vt) && IsInterface(result.vt))
        return ConvertInterface(result, source);
    if (!IsValue(result.vt))
        return DISP_E_TYPEMISMATCH;
    if (source.vt == VT_EMPTY)
        return ConvertEmpty(result);
    return IsValue(source.vt) ? ConvertValue(result, source, wFlags) : DISP_E_TYPEMISMATCH;
}

HRESULT ConvertOrCopy(VARIANT& result, const VARIANT& source, USHORT wFlags, VARTYPE vt)
{
    if (source.vt == vt)
        return VariantCopy(&result, &source);
    result.vt = vt;
    try
    {
        return Convert(result, source, wFlags);
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}

} // namespace

HRESULT VariantChangeType(VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, USHORT wFlags, VARTYPE vt)
{
    if (!pvargDest || !pvarSrc)
        return E_INVALIDARG;
    if (!IsVariantType(vt) || !IsVariantType(pvarSrc->vt))
        return DISP_E_BADVARTYPE;
    VARIANT result = {};
    HRESULT hr = ConvertOrCopy(result, *pvarSrc, wFlags, vt);
    if (FAILED(hr))
        return hr;
    hr = VariantClear(pvargDest);
    if (FAILED(hr))
        VariantClear(&result);
    else
        *pvargDest = result;
    return hr;
}
