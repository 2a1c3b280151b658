#include "PatchApi.h"

#include "AdapterEvidence.h"
#include "ovCore/OvErrorInfo.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvVersion.h"
#include "OVTemplates.h"

namespace
{

const wchar_t s_szSource[] = L"PatchAdapter\\PatchApi";

COvEvidence ErrorCode(HRESULT hr) noexcept
{
    return COvEvidence(L"hr", hr, true);
}

COvEvidence ErrorInfo() noexcept
{
    return COvEvidence(L"tzErrorInfo", CPatchApi::ObtainErrorInfo());
}

} // namespace

// Whatever the work throws is reported under one sentence; the exception's own evidence is not.
template <class Work>
bool CPatchApi::Guard(const wchar_t* szFailure, Work&& work) noexcept
{
    try
    {
        return work();
    }
    catch (...)
    {
        m_pTrace->Warning(InfoMsg(szFailure) + ErrorCode(E_FAIL) + ErrorInfo());
        return false;
    }
}

bool CPatchApi::Connect() noexcept
{
    OV_SCOPE(L"CPatchApi::Connect");
    return m_spApi || Guard(L"Exception occurred connecting to the Patch API", [&] { return CreateApi(); });
}

bool CPatchApi::CreateApi()
{
    COvComPtr<IUnknown> spUnknown;
    const HRESULT hr = ::CoCreateInstance(CLSID_TrevokPatchApi, nullptr, CLSCTX_ALL, IID_IUnknown,
                                          reinterpret_cast<void**>(spUnknown.Receive()));
    if (FAILED(hr))
        return false;
    QueryInterfaceChecked(spUnknown.Get(), m_spApi, IID_ITrevokPatchApi, L"ITrevokPatchApi");
    return true;
}

bool CPatchApi::ConnectOrReport() noexcept
{
    if (Connect())
        return true;
    m_pTrace->Warning(InfoMsg(L"Unable to connect to the Patch API"));
    return false;
}

bool CPatchApi::SetPolicySettings(const std::wstring& settingsXml) noexcept
{
    OV_SCOPE(L"CPatchApi::SetPolicySettings");
    return ConnectOrReport() &&
           Guard(L"Exception occurred applying policy settings", [&] { return PushSettings(settingsXml); });
}

bool CPatchApi::PushSettings(const std::wstring& settingsXml)
{
    _variant_t settings;
    settings.bstrVal = COvBstr(settingsXml).Detach();
    settings.vt = VT_BSTR;
    const HRESULT hr = m_spApi->SetState(StateSettingsPolicy, settings);
    if (SUCCEEDED(hr))
        return true;
    m_pTrace->Warning(InfoMsg(L"Unable to apply policy settings") +
                      COvEvidence(L"Method", L"ITrevokPatchApi::SetState") + ErrorCode(hr) +
                      InfoMsg(L"Settings policy") + COvEvidence(L"tzSettingsXml", settingsXml) + ErrorInfo());
    return false;
}

bool CPatchApi::GetStatusInfo(bool* pbWuaInstalled, bool* pbWuaCompatible, std::wstring* pstrWuaCurrentVersion,
                              std::wstring* pstrWuaRequiredVersion, bool* pbAssessmentEnabled,
                              bool* pbServerKeyStatus) noexcept
{
    OV_SCOPE(L"CPatchApi::GetStatusInfo");
    *pbWuaInstalled = false;
    return ConnectOrReport() && Guard(L"Exception occurred retrieving status information", [&] {
               return ReadBool(StateWuaInstalled, L"Unable to retrieve Windows Update Agent installed state",
                               pbWuaInstalled) &&
                      ReadBool(StateWuaCompatible, L"Unable to retrieve Windows Update Agent compatible state",
                               pbWuaCompatible) &&
                      ReadVersion(StateWuaCurrentVersion, L"Unable to retrieve current Windows Update Agent version",
                                  pstrWuaCurrentVersion) &&
                      ReadVersion(StateWuaRequiredVersion, L"Unable to retrieve required Windows Update Agent version",
                                  pstrWuaRequiredVersion) &&
                      ReadBool(StateAssessmentEnabled, L"Unable to retrieve assessment enabled status",
                               pbAssessmentEnabled) &&
                      ReadBool(StateServerKeyStatus, L"Unable to retrieve server key status", pbServerKeyStatus);
           });
}

bool CPatchApi::ReadState(PatchApiStateId stateId, VARTYPE vtExpected, const wchar_t* szFailure, VARIANT* pValue)
{
    HRESULT hr = m_spApi->GetState(stateId, pValue);
    if (SUCCEEDED(hr) && pValue->vt != vtExpected)
        hr = DISP_E_TYPEMISMATCH;
    if (SUCCEEDED(hr))
        return true;
    m_pTrace->Warning(InfoMsg(szFailure) + ErrorCode(hr) + ErrorInfo());
    return false;
}

bool CPatchApi::ReadBool(PatchApiStateId stateId, const wchar_t* szFailure, bool* pbValue)
{
    _variant_t value;
    if (!ReadState(stateId, VT_BOOL, szFailure, &value))
        return false;
    *pbValue = value.boolVal != VARIANT_FALSE;
    return true;
}

bool CPatchApi::ReadVersion(PatchApiStateId stateId, const wchar_t* szFailure, std::wstring* pstrVersion)
{
    _variant_t value;
    if (!ReadState(stateId, VT_BSTR, szFailure, &value))
        return false;
    *pstrVersion = COvVersion(value.bstrVal == nullptr ? L"" : value.bstrVal).AsStr(); // a null BSTR is an empty text
    return true;
}

std::wstring CPatchApi::ObtainErrorInfo() noexcept
{
    OV_SCOPE(L"CPatchApi::ObtainErrorInfo");
    try
    {
        return OvTakeErrorInfoText(L"IErrorInfo Desc: ");
    }
    catch (...) // no memory for the text: the report goes on without it
    {
        return {};
    }
}

std::unique_ptr<COvEvent> OpenServiceEvent(DWORD dwTotalMs, DWORD dwIntervalMs)
{
    const bool bInheritHandle = false;
    return std::unique_ptr<COvEvent>(COvEvent::OpenWithWait(TREVOK_SERVICE_EVENT, dwTotalMs, dwIntervalMs,
                                                            SYNCHRONIZE | READ_CONTROL, bInheritHandle));
}

bool IsServiceRunning()
{
    return OpenServiceEvent(0, 500)->Lock(0);
}
