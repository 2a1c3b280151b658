// Automation: counted strings (BSTR), tagged values (VARIANT) with their conversions, error objects, and the classes
// that the compiler's COM support library gives C++ code (_com_error, _variant_t).
#pragma once

#include "Platform/Com.h"

/// Points to UTF-16 units, one in each element, that a NUL follows; the count of units stands before them. Null is
/// valid and counts as empty. May hold NULs.
using BSTR = OLECHAR*;
using VARTYPE = uint16_t;
using VARIANT_BOOL = int16_t;
using SCODE = LONG;
using FLOAT = float;
using DOUBLE = double;
using DISPID = LONG;

constexpr VARIANT_BOOL VARIANT_TRUE = -1;
constexpr VARIANT_BOOL VARIANT_FALSE = 0;

enum VARENUM : VARTYPE
{
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_BSTR = 8,
    VT_DISPATCH = 9,
    VT_ERROR = 10,
    VT_BOOL = 11,
    VT_UNKNOWN = 13,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23
};

// Flags of VariantChangeType.
constexpr USHORT VARIANT_NOVALUEPROP = 0x1;
constexpr USHORT VARIANT_ALPHABOOL = 0x2;

struct IDispatch;

struct tagVARIANT
{
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        LONGLONG llVal;
        LONG lVal;
        BYTE bVal;
        SHORT iVal;
        FLOAT fltVal;
        DOUBLE dblVal;
        VARIANT_BOOL boolVal;
        SCODE scode;
        BSTR bstrVal;
        IUnknown* punkVal;
        IDispatch* pdispVal;
        CHAR cVal;
        USHORT uiVal;
        ULONG ulVal;
        ULONGLONG ullVal;
        INT intVal;
        UINT uintVal;
    };
};
using VARIANT = tagVARIANT;
using VARIANTARG = VARIANT;

struct ITypeInfo;
struct DISPPARAMS;
struct EXCEPINFO;

/// Declared for its place in the tables of the interfaces that derive from it; nothing here calls its four operations.
struct IDispatch : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                                    DISPID* rgDispId) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags,
                                             DISPPARAMS* pDispParams, VARIANT* pVarResult, EXCEPINFO* pExcepInfo,
                                             UINT* puArgErr) = 0;

protected:
    ~IDispatch() = default;
};

/// What a failed call left behind for its caller. The texts are copies that the caller frees, null when not set.
struct IErrorInfo : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetGUID(GUID* pGUID) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSource(BSTR* pBstrSource) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDescription(BSTR* pBstrDescription) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* pBstrHelpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* pdwHelpContext) = 0;

protected:
    ~IErrorInfo() = default;
};

/// Fills an error object; the same object gives IErrorInfo. The texts are copied.
struct ICreateErrorInfo : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE SetGUID(REFGUID rguid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR szSource) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR szDescription) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR szHelpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD dwHelpContext) = 0;

protected:
    ~ICreateErrorInfo() = default;
};

struct ISupportErrorInfo : public IUnknown
{
    /// @return S_OK when a failure of that interface leaves an error object, else S_FALSE.
    virtual HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID riid) = 0;

protected:
    ~ISupportErrorInfo() = default;
};

inline constexpr IID IID_IDispatch = { 0x00020400, 0x0000, 0x0000, { 0xC0, 0, 0, 0, 0, 0, 0, 0x46 } };
inline constexpr IID IID_IErrorInfo = {
    0x1CF2B120, 0x547D, 0x101B, { 0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19 }
};
inline constexpr IID IID_ICreateErrorInfo = {
    0x22F03340, 0x547D, 0x101B, { 0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19 }
};
inline constexpr IID IID_ISupportErrorInfo = {
    0xDF0B3D60, 0x548F, 0x101B, { 0x8E, 0x65, 0x08, 0x00, 0x2B, 0x2B, 0xD1, 0x19 }
};

extern "C"
{
    /// Copies a NUL-terminated text. @return the string, which SysFreeString frees; null for null or without memory.
    OVPLATFORM_API BSTR WINAPI SysAllocString(const OLECHAR* psz);

    /// Copies ui units, NULs included; a null strIn gives ui zero units. @return null without memory.
    OVPLATFORM_API BSTR WINAPI SysAllocStringLen(const OLECHAR* strIn, UINT ui);

    /// Frees a string; null is ignored.
    OVPLATFORM_API void WINAPI SysFreeString(BSTR bstrString);

    /// The units before the closing NUL; 0 for null.
    OVPLATFORM_API UINT WINAPI SysStringLen(BSTR bstr);

    /// The same in UTF-16 bytes: twice SysStringLen.
    OVPLATFORM_API UINT WINAPI SysStringByteLen(BSTR bstr);

    /// Makes the value VT_EMPTY without looking at what it held.
    OVPLATFORM_API void WINAPI VariantInit(VARIANTARG* pvarg);

    /// Frees or releases what the value holds and makes it VT_EMPTY.
    /// @return DISP_E_BADVARTYPE for a type that does not exist, then the value stays; E_INVALIDARG for null.
    OVPLATFORM_API HRESULT WINAPI VariantClear(VARIANTARG* pvarg);

    /// Clears the destination, then copies the value: strings are duplicated, interfaces counted.
    /// @return DISP_E_BADVARTYPE for a source type that does not exist; E_OUTOFMEMORY, then the destination is
    /// VT_EMPTY.
    OVPLATFORM_API HRESULT WINAPI VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc);

    /// Puts the source, converted to the type vt, into the destination, which may be the source itself.
    /// Numbers in texts are read as in the English (United States) locale.
    /// @return DISP_E_TYPEMISMATCH when the value has no meaning in that type, DISP_E_OVERFLOW when it does not fit,
    ///         DISP_E_BADVARTYPE for a type that does not exist. After a failure the destination is unchanged.
    OVPLATFORM_API HRESULT WINAPI VariantChangeType(VARIANTARG* pvargDest, const VARIANTARG* pvarSrc, USHORT wFlags,
                                                    VARTYPE vt);

    /// A new, empty error object. @return E_INVALIDARG for null, E_OUTOFMEMORY.
    OVPLATFORM_API HRESULT WINAPI CreateErrorInfo(ICreateErrorInfo** pperrinfo);

    /// Makes perrinfo the calling thread's error object (null: none). Keeps a reference. @return S_OK.
    OVPLATFORM_API HRESULT WINAPI SetErrorInfo(ULONG dwReserved, IErrorInfo* perrinfo);

    /// Hands over the calling thread's error object, which the thread then no longer has.
    /// @return S_OK; S_FALSE when there is none, with *pperrinfo null; E_INVALIDARG for a reserved value other than 0.
    OVPLATFORM_API HRESULT WINAPI GetErrorInfo(ULONG dwReserved, IErrorInfo** pperrinfo);
}

/// A failure of a COM call as a C++ exception: the code and perhaps an error object, to which it keeps a reference.
class OVPLATFORM_API _com_error
{
public:
    explicit _com_error(HRESULT hr, IErrorInfo* perrinfo = nullptr, bool fAddRef = false) noexcept;
    _com_error(const _com_error& that) noexcept;
    _com_error& operator=(const _com_error& that) noexcept;
    virtual ~_com_error();

    HRESULT Error() const noexcept { return m_hresult; }

    /// The error object with a reference for the caller; null when there is none.
    IErrorInfo* ErrorInfo() const noexcept;

private:
    HRESULT m_hresult;
    IErrorInfo* m_perrinfo; // counted
};

/// Throws a _com_error with that code and no error object.
[[noreturn]] OVPLATFORM_API void WINAPI _com_issue_error(HRESULT hr);

/// An owner of a VARIANT. What fails throws _com_error with the call's code; a text without memory E_OUTOFMEMORY.
/// The types of the constructors are those with one meaning on every target: a 32-bit number is a LONG.
class OVPLATFORM_API _variant_t : public ::tagVARIANT
{
public:
    _variant_t() noexcept;
    _variant_t(const VARIANT& varSrc);
    _variant_t(const VARIANT* pSrc);
    _variant_t(const _variant_t& varSrc);
    _variant_t(VARIANT& varSrc, bool fCopy);       ///< fCopy false takes the value over and leaves varSrc empty
    _variant_t(short sSrc, VARTYPE vtSrc = VT_I2); ///< VT_I2 or VT_BOOL, else E_INVALIDARG is raised
    _variant_t(LONG lSrc, VARTYPE vtSrc = VT_I4);  ///< VT_I4, VT_ERROR or VT_BOOL, else E_INVALIDARG is raised
    _variant_t(double dblSrc) noexcept;
    _variant_t(bool boolSrc) noexcept;
    _variant_t(const wchar_t* pSrc);
    _variant_t(const void*) = delete; // narrow texts and objects have no constructor here; none may become a bool
    ~_variant_t();

    _variant_t& operator=(const VARIANT& varSrc);
    _variant_t& operator=(const _variant_t& varSrc);

    void Clear();
    void Attach(VARIANT& varSrc); ///< frees the old value, takes varSrc over and leaves it empty
    VARIANT Detach();             ///< hands the value over; this one is empty afterwards
    VARIANT& GetVARIANT() noexcept { return *this; }
    VARIANT* GetAddress(); ///< clears, for use as an output

    /// Converts the value of pSrc (null: its own) into this one; after a failure this one is unchanged.
    void ChangeType(VARTYPE vartype, const _variant_t* pSrc = nullptr);
};
