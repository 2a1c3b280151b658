// A host's callbacks that keep what they are told.
#pragma once

#include "OvPlatform.h"
#include "PatchAdapterApi.h"
#include "Recorder.h"

#include <functional>
#include <string>

/// One call of OnStateChange, OnStatus or OnConfiguration.
struct CCallback
{
    DWORD dwThreadId;
    int32_t nValue; ///< 0 where the operation has no value
    std::string text;
};

/// Records each call and then runs the hook, which may throw.
class CCallbackRecord
{
public:
    using Hook = std::function<void()>;

    explicit CCallbackRecord(Hook hook) : m_hook(std::move(hook)) {}

    std::vector<CCallback> Calls() const { return m_calls.All(); }
    size_t Count() const { return m_calls.All().size(); }
    void Clear() { m_calls.Clear(); }

    /// The text of the last call; "<none>" when there was none.
    std::string Last() const;

    /// Blocks until there have been nCalls calls, at most half a minute. @return whether they came.
    bool WaitForCalls(size_t nCalls) const;

protected:
    ~CCallbackRecord() = default;
    void Record(int32_t nValue, const char* text);

private:
    CRecorder<CCallback> m_calls;
    Hook m_hook;
};

class CRecordingObserver final : public IStateObserver, public CCallbackRecord
{
public:
    explicit CRecordingObserver(Hook hook = {}) : CCallbackRecord(std::move(hook)) {}
    void OnStateChange(int32_t value, const char* status) override { Record(value, status); }
};

class CRecordingStatusReceiver final : public IStatusReceiver, public CCallbackRecord
{
public:
    explicit CRecordingStatusReceiver(Hook hook = {}) : CCallbackRecord(std::move(hook)) {}
    void OnStatus(const char* status) override { Record(0, status); }
};

class CRecordingConfigurationReceiver final : public IConfigurationReceiver, public CCallbackRecord
{
public:
    explicit CRecordingConfigurationReceiver(Hook hook = {}) : CCallbackRecord(std::move(hook)) {}
    void OnConfiguration(const char* configuration) override { Record(0, configuration); }
};
