#include "OvErrorInfo.h"

#include "OvBstr.h"
#include "OvComPtr.h"
#include "OvStringUtil.h"

std::wstring OvGetErrorInfoText(IUnknown* pObject, IID iid)
{
    COvComPtr<ISupportErrorInfo> support;
    if (pObject == nullptr ||
        FAILED(pObject->QueryInterface(IID_ISupportErrorInfo, reinterpret_cast<void**>(support.Receive()))))
        return L"This object does not implement the ISupportError interface.";
    if (support->InterfaceSupportsErrorInfo(iid) != S_OK)
        return L"This interface does not implement the IErrorInfo interface.";
    return OvTakeErrorInfoText(L"");
}

std::wstring OvTakeErrorInfoText(const wchar_t* szLead)
{
    COvComPtr<IErrorInfo> info;
    HRESULT hr = ::GetErrorInfo(0, info.Receive());
    if (hr == S_FALSE)
        return L"The IErrorInfo interface returned the message 'error information is unavailable'.";
    if (FAILED(hr) || !info)
        return L"A fatal error occurred while trying to retrieve IErrorInfo.";

    COvBstr description;
    hr = info->GetDescription(description.Receive());
    if (FAILED(hr))
        return L"Call to IErrorInfo::GetDescription failed with hr [" + std::to_wstring(hr) + L"].";
    return szLead + COvStringUtil::FromBSTR(description);
}
