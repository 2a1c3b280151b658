// The classes of the compiler's COM support library.
#include "Platform/Automation.h"

#include <utility>

namespace
{

void CheckComCall(HRESULT hr)
{
    if (FAILED(hr))
        _com_issue_error(hr);
}

/// A truth value or the type's own number; anything else is no type for the constructor.
bool IsBoolOr(VARTYPE vtWanted, VARTYPE vt)
{
    if (vt != VT_BOOL && vt != vtWanted)
        _com_issue_error(E_INVALIDARG);
    return vt == VT_BOOL;
}

VARIANT_BOOL VariantBool(bool bValue)
{
    return bValue ? VARIANT_TRUE : VARIANT_FALSE;
}

} // namespace

_com_error::_com_error(HRESULT hr, IErrorInfo* perrinfo, bool fAddRef) noexcept : m_hresult(hr), m_perrinfo(perrinfo)
{
    if (m_perrinfo && fAddRef)
        m_perrinfo->AddRef();
}

_com_error::_com_error(const _com_error& that) noexcept : _com_error(that.m_hresult, that.m_perrinfo, true) {}

_com_error& _com_error::operator=(const _com_error& that) noexcept
{
    _com_error copy(that);
    std::swap(m_hresult, copy.m_hresult);
    std::swap(m_perrinfo, copy.m_perrinfo);
    return *this;
}

_com_error::~_com_error()
{
    if (m_perrinfo)
        m_perrinfo->Release();
}

IErrorInfo* _com_error::ErrorInfo() const noexcept
{
    if (m_perrinfo)
        m_perrinfo->AddRef();
    return m_perrinfo;
}

void _com_issue_error(HRESULT hr)
{
    throw _com_error(hr);
}

_variant_t::_variant_t() noexcept : tagVARIANT() {}

_variant_t::_variant_t(const VARIANT& varSrc) : tagVARIANT()
{
    CheckComCall(VariantCopy(this, &varSrc));
}

_variant_t::_variant_t(const VARIANT* pSrc) : tagVARIANT()
{
    if (!pSrc)
        _com_issue_error(E_POINTER);
    CheckComCall(VariantCopy(this, pSrc));
}

_variant_t::_variant_t(const _variant_t& varSrc) : _variant_t(static_cast<const VARIANT&>(varSrc)) {}

_variant_t::_variant_t(VARIANT& varSrc, bool fCopy) : tagVARIANT()
{
    if (fCopy)
        CheckComCall(VariantCopy(this, &varSrc));
    else
        Attach(varSrc);
}

_variant_t::_variant_t(short sSrc, VARTYPE vtSrc) : tagVARIANT()
{
    iVal = IsBoolOr(VT_I2, vtSrc) ? VariantBool(sSrc != 0) : sSrc;
    vt = vtSrc;
}

_variant_t::_variant_t(LONG lSrc, VARTYPE vtSrc) : tagVARIANT()
{
    if (IsBoolOr(vtSrc == VT_ERROR ? VT_ERROR : VT_I4, vtSrc))
        boolVal = VariantBool(lSrc != 0);
    else
        lVal = lSrc;
    vt = vtSrc;
}

_variant_t::_variant_t(double dblSrc) noexcept : tagVARIANT()
{
    vt = VT_R8;
    dblVal = dblSrc;
}

_variant_t::_variant_t(bool boolSrc) noexcept : tagVARIANT()
{
    vt = VT_BOOL;
    boolVal = VariantBool(boolSrc);
}

_variant_t::_variant_t(const wchar_t* pSrc) : tagVARIANT()
{
    bstrVal = SysAllocString(pSrc);
    if (pSrc && !bstrVal)
        _com_issue_error(E_OUTOFMEMORY);
    vt = VT_BSTR;
}

_variant_t::~_variant_t()
{
    VariantClear(this);
}

_variant_t& _variant_t::operator=(const VARIANT& varSrc)
{
    CheckComCall(VariantCopy(this, &varSrc));
    return *this;
}

_variant_t& _variant_t::operator=(const _variant_t& varSrc)
{
    return *this = static_cast<const VARIANT&>(varSrc);
}

void _variant_t::Clear()
{
    CheckComCall(VariantClear(this));
}

void _variant_t::Attach(VARIANT& varSrc)
{
    Clear();
    GetVARIANT() = varSrc;
    varSrc.vt = VT_EMPTY;
}

VARIANT _variant_t::Detach()
{
    const VARIANT value = *this;
    vt = VT_EMPTY;
    return value;
}

VARIANT* _variant_t::GetAddress()
{
    Clear();
    return this;
}

void _variant_t::ChangeType(VARTYPE vartype, const _variant_t* pSrc)
{
    CheckComCall(VariantChangeType(this, pSrc ? pSrc : this, 0, vartype));
}
