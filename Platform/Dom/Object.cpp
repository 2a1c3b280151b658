#include "Platform/Dom/Object.h"

namespace OvPlatform::Dom
{

namespace
{

struct CReleaser
{
    void operator()(IUnknown* pUnknown) const { pUnknown->Release(); }
};

void LeaveErrorObject(std::wstring wzDescription)
{
    ICreateErrorInfo* pCreate = nullptr;
    if (FAILED(::CreateErrorInfo(&pCreate)))
        return;
    const std::unique_ptr<ICreateErrorInfo, CReleaser> spCreate(pCreate);
    std::wstring wzSource = L"msxml6.dll";
    pCreate->SetSource(wzSource.data());
    pCreate->SetDescription(wzDescription.data());
    void* pError = nullptr;
    if (FAILED(pCreate->QueryInterface(IID_IErrorInfo, &pError)))
        return;
    const std::unique_ptr<IErrorInfo, CReleaser> spError(static_cast<IErrorInfo*>(pError));
    ::SetErrorInfo(0, spError.get());
}

} // namespace

HRESULT Report(const CFailure& failure) noexcept
{
    try
    {
        LeaveErrorObject(failure.m_wzDescription);
    }
    catch (const std::bad_alloc&)
    {
        ::SetErrorInfo(0, nullptr);
    }
    return failure.m_hr;
}

BSTR NewBstr(const std::wstring& wzText)
{
    const BSTR bstrText = ::SysAllocStringLen(wzText.data(), static_cast<UINT>(wzText.size()));
    if (bstrText == nullptr)
        throw std::bad_alloc();
    return bstrText;
}

HRESULT Give(const std::optional<std::wstring>& text, BSTR* pbstr)
{
    if (!text)
        return S_FALSE;
    *pbstr = NewBstr(*text);
    return S_OK;
}

HRESULT Give(const std::optional<std::wstring>& text, VARIANT* pValue)
{
    pValue->vt = VT_NULL;
    if (!text)
        return S_FALSE;
    pValue->bstrVal = NewBstr(*text);
    pValue->vt = VT_BSTR;
    return S_OK;
}

std::wstring Input(BSTR bstr)
{
    if (bstr == nullptr)
        throw CFailure{ E_INVALIDARG, L"The parameter is incorrect." };
    return std::wstring(bstr, ::SysStringLen(bstr));
}

} // namespace OvPlatform::Dom
