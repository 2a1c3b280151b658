// A host that throws when it is told to, and looks at what it is told. Keeps no text: there are large ones.
#pragma once

#include "ovCore/OvEvent.h"
#include "PatchAdapterApi.h"

#include <atomic>
#include <cstdarg>
#include <cstring>

inline constexpr char SECRET[] = "secret-of-the-machine"; ///< no text may hold it
inline constexpr char DIRECTIVES[] = "%s%n%5$x%%";

// va_end has nothing to do on either target when the text makes it throw.
#define OV_LOOK_AT_LINE(operation, nErrors)                                                                            \
    void operation(const char* format, ...) override                                                                   \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, format);                                                                                   \
        m_bHarmed = m_bHarmed || std::strcmp(format, "PatchAdapter: %s") != 0;                                         \
        m_nErrors += nErrors;                                                                                          \
        LookAt(va_arg(arguments, const char*));                                                                        \
        va_end(arguments);                                                                                             \
    }

class CHostileHost final : public ILogSink, public IStateObserver, public IStatusReceiver, public IConfigurationReceiver
{
public:
    OV_LOOK_AT_LINE(LogError, 1)
    OV_LOOK_AT_LINE(LogWarning, 0)
    OV_LOOK_AT_LINE(LogInfo, 0)
    OV_LOOK_AT_LINE(LogDetail, 0)
    OV_LOOK_AT_LINE(LogTrace, 0)
    void OnStateChange(int32_t, const char* status) override { Told(status); }
    void OnStatus(const char* status) override { Told(status); }
    void OnConfiguration(const char* configuration) override { Told(configuration); }

    std::atomic<void (*)()> m_pfnThrow = nullptr;
    std::atomic<unsigned> m_nErrors = 0;     // lines
    std::atomic<unsigned> m_nTold = 0;       // documents
    std::atomic<unsigned> m_nDirectives = 0; // texts with them
    std::atomic<bool> m_bHarmed = false;     // a text came as a format, or had the secret in it
    COvEvent m_told{ false, false, nullptr, nullptr };

private:
    void Told(const char* text)
    {
        ++m_nTold;
        m_told.SetEvent();
        LookAt(text);
    }

    void LookAt(const char* text)
    {
        m_bHarmed = m_bHarmed || std::strstr(text, SECRET) != nullptr;
        m_nDirectives += std::strstr(text, DIRECTIVES) != nullptr ? 1u : 0u;
        if (void (*const pfnThrow)() = m_pfnThrow)
            pfnThrow();
    }
};

#undef OV_LOOK_AT_LINE
