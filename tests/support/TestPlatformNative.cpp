#include "TestPlatform.h"

#include "Platform/Control.h"
#include "ReplacedCalls.h"

#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>

CDebuggerTexts::CDebuggerTexts()
{
    OvPlatform::CaptureDebuggerTexts(true);
}

CDebuggerTexts::~CDebuggerTexts()
{
    OvPlatform::CaptureDebuggerTexts(false);
}

std::vector<std::wstring> CDebuggerTexts::Take()
{
    std::vector<std::wstring> texts;
    for (const OvPlatform::CDebuggerText& text : OvPlatform::TakeDebuggerTexts())
        texts.push_back(text.text);
    return texts;
}

CFastPauses::CFastPauses(HMODULE hModule) : m_hModule(hModule)
{
    OvPlatform::SetTimeScale(1000); // of every module
}

CFastPauses::~CFastPauses()
{
    OvPlatform::SetTimeScale(1);
}

CScratchRegistry::CScratchRegistry()
{
    OvPlatform::SetRegistryInMemory();
}

CScratchRegistry::~CScratchRegistry()
{
    OvPlatform::SetRegistryInMemory();
}

std::shared_ptr<void> WatchLocks(HMODULE hModule, std::function<void(const void* pLock, bool bEnters)> seen)
{
    auto pReplaced = std::make_shared<CReplacedCalls>(hModule); // a section is a mutex here
    pReplaced->Replace(&::pthread_mutex_lock,
                       [=](pthread_mutex_t* p) { return seen(p, true), ::pthread_mutex_lock(p); });
    pReplaced->Replace(&::pthread_mutex_unlock,
                       [=](pthread_mutex_t* p) { return seen(p, false), ::pthread_mutex_unlock(p); });
    return pReplaced;
}

std::string CountResources()
{
    return std::to_string(OvPlatform::OpenHandles()) + " handles, " + std::to_string(OvPlatform::LiveComObjects()) +
           " COM objects, " + std::to_string(OvPlatform::LiveBstrs()) + " BSTRs, " +
           std::to_string(OvPlatform::AbandonedApartments()) + " apartments that were not left";
}

char* PagesBeforeAWall(size_t nPages)
{
    void* const p = ::mmap(nullptr, (nPages + 1) * PAGE_BYTES, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ::mprotect(p, nPages * PAGE_BYTES, PROT_READ | PROT_WRITE);
    return static_cast<char*>(p);
}

unsigned PeakMemoryMb()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<unsigned>(usage.ru_maxrss / 1024);
}
