// A complete host in one file: loads the adapter library, hands it a policy, shows the status and the log.
//   exampleHost LIBRARY POLICY
// It takes nothing from this project but PatchAdapterApi.h. OvPlatform.h is <windows.h> on Windows, and the same names
// elsewhere. docs/hosting.md says why each step is as it is.
#include "OvPlatform.h"
#include "PatchAdapterApi.h"

#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace
{

/// The log: the adapter's own threads write to it too. Shows errors and warnings.
class CLog final : public ILogSink
{
public:
    void LogError(const char* format, ...) override
    {
        va_list arguments;
        va_start(arguments, format);
        Write("error: ", format, arguments);
        va_end(arguments);
    }

    void LogWarning(const char* format, ...) override
    {
        va_list arguments;
        va_start(arguments, format);
        Write("warning: ", format, arguments);
        va_end(arguments);
    }

    void LogInfo(const char*, ...) override {}
    void LogDetail(const char*, ...) override {}
    void LogTrace(const char*, ...) override {}

private:
    static void Write(const char* kind, const char* format, va_list arguments)
    {
        char text[1024]; // a longer line is cut
        std::vsnprintf(text, sizeof(text), format, arguments);
        std::fprintf(stderr, "%s%s\n", kind, text);
    }
};

void Show(const char* kind, const char* document)
{
    std::printf("%s%s\n", kind, document);
    std::fflush(stdout); // so that it stands where it belongs among the lines of the log
}

/// Is told every new status document, on whichever thread the change was seen. It must be quick and must not call the
/// adapter's registration: the adapter holds a lock meanwhile.
class CObserver final : public IStateObserver
{
public:
    void OnStateChange(int32_t, const char* status) override { Show("observer: ", status); }
};

class CReceiver final : public IStatusReceiver
{
public:
    void OnStatus(const char* status) override { Show("status: ", status); }
};

std::string ReadFile(const char* path)
{
    std::ifstream stream(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}

/// One exported function; null when the library lacks it.
template <class Function>
Function Find(HMODULE hLibrary, const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(hLibrary, name)));
}

/// What the agent does with an adapter; the policy is in the system's ANSI code page.
void Work(IAdapter& adapter, const std::string& policy)
{
    CObserver observer;
    adapter.RegisterStateObserver(&observer); // told the current status before this returns
    adapter.SetConfiguration(policy.c_str()); // whether it worked is in the log alone
    CReceiver receiver;
    adapter.GetStatus(&receiver);
    adapter.DeRegisterStateObserver(&observer); // from now on the observer is not called, and may go
}

/// @return whether an adapter could be made.
bool Drive(GetAdapterFactory1_0Function getFactory, const std::string& policy)
{
    CLog log; // outlives factory and adapter
    IAdapterFactory* const factory = getFactory();
    if (factory == nullptr) // out of memory
        return false;
    IAdapter* const adapter = factory->Initialise(nullptr, nullptr, &log, nullptr);
    if (adapter != nullptr)
    {
        Work(*adapter, policy);
        factory->Uninitialise(adapter); // up to ten seconds
    }
    DeleteAdapterFactory(factory); // after Uninitialise: else no adapter can be made in this process any more
    return adapter != nullptr;
}

/// @return whether the library was driven; it is unloaded again.
bool Run(const wchar_t* library, const std::string& policy)
{
    const HMODULE hLibrary = ::LoadLibraryW(library);
    if (hLibrary == nullptr)
        return false;
    const auto getVersion = Find<GetAdapterVersionFunction>(hLibrary, PATCHADAPTER_GET_VERSION_NAME);
    const auto getFactory = Find<GetAdapterFactory1_0Function>(hLibrary, PATCHADAPTER_GET_FACTORY_NAME);
    uint32_t nMajor = 0;
    uint32_t nMinor = 0;
    if (getVersion != nullptr)
        getVersion(&nMajor, &nMinor);
    const bool bFits = nMajor == PATCHADAPTER_INTERFACE_MAJOR && getFactory != nullptr;
    const bool bDriven = bFits && Drive(getFactory, policy);
    ::FreeLibrary(hLibrary);
    return bDriven;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        std::fprintf(stderr, "exampleHost LIBRARY POLICY\n");
        return 2;
    }
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED); // each thread that calls the adapter enters an apartment
    const std::string library = argv[1];
    const bool bDriven = Run(std::wstring(library.begin(), library.end()).c_str(), ReadFile(argv[2]));
    ::CoUninitialize();
    return bDriven ? 0 : 1;
}
