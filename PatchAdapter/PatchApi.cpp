#include "PatchAdapter/PatchApi.h"

#include "OvComPtr.h"
#include "ovCore/OvErrorInfo.h"
#include "ovCore/OvStackTrace.h"
#include "ovCore/OvVersion.h"
#include "OVTemplates.h"
#include "PatchAdapter/AdapterEvidence.h"

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

/// The way into the service's object.
template <class Call>
HRESULT CallService(Call&& call)
{
    HRESULT hr = E_FAIL;
    OvCallOut([&] { hr = call(); });
    return hr;
}

/// Gives the reference back, reporting what the object throws at it.
template <class T>
void Release(COvForeignPtr<T>& sp)
{
    T* const p = sp.release();
    OvCallOut([p] { p->Release(); });
}

/// A value of the service, which may hold an object of it.
struct CServiceValue
{
    CServiceValue() { ::VariantInit(&value); }
    ~CServiceValue()
    {
        try
        {
            OvCallOut([this] { ::VariantClear(&value); });
        }
        catch (...)
        {
            // given up, as an object that cannot be released
        }
    }
    CServiceValue(const CServiceValue&) = delete;
    CServiceValue& operator=(const CServiceValue&) = delete;

    VARIANT value;
};

} // namespace

// Whatever the work throws is reported under one sentence; the exception's own evidence is not.
template <class Work>
bool CPatchApi::Guard(const wchar_t* szFailure, Work&& work) noexcept
{
    try
    {
        bool bDone = false;
        OvCallIn([&] { bDone = work(); });
        return bDone;
    }
    catch (...)
    {
        m_pTrace->Warning(InfoMsg(szFailure) + ErrorCode(E_FAIL) + ErrorInfo());
        return false;
    }
}

CPatchApi::~CPatchApi()
{
    if (m_spApi)
        Guard(L"Exception occurred releasing the Patch API", [&] {
            Release(m_spApi);
            return true;
        });
}

bool CPatchApi::Connect() noexcept
{
    OV_SCOPE(L"CPatchApi::Connect");
    return m_spApi || Guard(L"Exception occurred connecting to the Patch API", [&] { return CreateApi(); });
}

// What is stored beside a failure or an exception is not looked at.
bool CPatchApi::CreateApi()
{
    void* pCreated = nullptr;
    const HRESULT hr = CallService(
        [&] { return ::CoCreateInstance(CLSID_TrevokPatchApi, nullptr, CLSCTX_ALL, IID_IUnknown, &pCreated); });
    if (FAILED(hr) || pCreated == nullptr)
        return false;
    COvForeignPtr<IUnknown> spUnknown(static_cast<IUnknown*>(pCreated));
    COvComPtr<ITrevokPatchApi> spApi;
    QueryInterfaceChecked(spUnknown.get(), spApi, IID_ITrevokPatchApi, L"ITrevokPatchApi");
    COvForeignPtr<ITrevokPatchApi> spConnected(spApi.Detach());
    Release(spUnknown);
    m_spApi = std::move(spConnected);
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
    CServiceValue settings;
    settings.value.bstrVal = COvBstr(settingsXml).Detach();
    settings.value.vt = VT_BSTR;
    const HRESULT hr = CallService([&] { return m_spApi->SetState(StateSettingsPolicy, settings.value); });
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
    HRESULT hr = CallService([&] { return m_spApi->GetState(stateId, pValue); });
    if (SUCCEEDED(hr) && pValue->vt != vtExpected)
        hr = DISP_E_TYPEMISMATCH;
    if (SUCCEEDED(hr))
        return true;
    m_pTrace->Warning(InfoMsg(szFailure) + ErrorCode(hr) + ErrorInfo());
    return false;
}

bool CPatchApi::ReadBool(PatchApiStateId stateId, const wchar_t* szFailure, bool* pbValue)
{
    CServiceValue state;
    if (!ReadState(stateId, VT_BOOL, szFailure, &state.value))
        return false;
    *pbValue = state.value.boolVal != VARIANT_FALSE;
    return true;
}

bool CPatchApi::ReadVersion(PatchApiStateId stateId, const wchar_t* szFailure, std::wstring* pstrVersion)
{
    CServiceValue state;
    if (!ReadState(stateId, VT_BSTR, szFailure, &state.value))
        return false;
    const BSTR bstrVersion = state.value.bstrVal;
    *pstrVersion = COvVersion(bstrVersion == nullptr ? L"" : bstrVersion).AsStr(); // a null BSTR is an empty text
    return true;
}

std::wstring CPatchApi::ObtainErrorInfo() noexcept
{
    OV_SCOPE(L"CPatchApi::ObtainErrorInfo");
    try
    {
        std::wstring strText;
        OvCallIn([&] { strText = OvTakeErrorInfoText(L"IErrorInfo Desc: "); });
        return strText;
    }
    catch (...) // no memory for the text, or a text that nobody can read: the report goes on without it
    {
        return {};
    }
}

COvEvent OpenServiceEvent(DWORD dwTotalMs, DWORD dwIntervalMs)
{
    const bool bInheritHandle = false;
    return COvEvent::Open(TREVOK_SERVICE_EVENT, dwTotalMs, dwIntervalMs, SYNCHRONIZE | READ_CONTROL, bInheritHandle);
}

bool IsServiceRunning()
{
    return OpenServiceEvent(0, 500).Lock(0);
}
