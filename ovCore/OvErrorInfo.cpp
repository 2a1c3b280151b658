#include "ovCore/OvErrorInfo.h"

#include "ovCore/OvBstr.h"
#include "ovCore/OvCallOut.h"
#include "ovCore/OvStringUtil.h"

namespace
{

/// The result of a call into a foreign object; a call that throws has failed.
template <class Call>
HRESULT ResultOf(Call&& call) noexcept
{
    HRESULT hr = E_FAIL;
    try
    {
        OvCallOut([&] { hr = call(); });
    }
    catch (...)
    {
        hr = E_FAIL;
    }
    return hr;
}

} // namespace

std::wstring OvGetErrorInfoText(IUnknown* pObject, IID iid)
{
    void* pFound = nullptr;
    if (pObject == nullptr ||
        FAILED(ResultOf([&] { return pObject->QueryInterface(IID_ISupportErrorInfo, &pFound); })) || pFound == nullptr)
        return L"This object does not implement the ISupportError interface.";
    const COvForeignPtr<ISupportErrorInfo> support(static_cast<ISupportErrorInfo*>(pFound));
    if (ResultOf([&] { return support->InterfaceSupportsErrorInfo(iid); }) != S_OK)
        return L"This interface does not implement the IErrorInfo interface.";
    return OvTakeErrorInfoText(L"");
}

std::wstring OvTakeErrorInfoText(const wchar_t* szLead)
{
    IErrorInfo* pInfo = nullptr;
    HRESULT hr = ResultOf([&] { return ::GetErrorInfo(0, &pInfo); });
    if (hr == S_FALSE)
        return L"The IErrorInfo interface returned the message 'error information is unavailable'.";
    if (FAILED(hr) || pInfo == nullptr)
        return L"A fatal error occurred while trying to retrieve IErrorInfo.";
    const COvForeignPtr<IErrorInfo> info(pInfo);

    COvBstr description;
    BSTR* const pDescription = description.Receive();
    hr = ResultOf([&] { return info->GetDescription(pDescription); });
    if (FAILED(hr))
        return L"Call to IErrorInfo::GetDescription failed with hr [" + std::to_wstring(hr) + L"].";
    return szLead + COvStringUtil::FromBSTR(description);
}
