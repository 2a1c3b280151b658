// The adapter with a service in this process: status, policies, observers.
#include "AgentSimulator/AgentSimulator.h"
#include "Bench.h"
#include "Documents.h"
#include "PatchAdapter/PatchAdapter.h"
#include "PatchAdapter/PatchAdapterFactory.h"
#include "PeerLibxml2.h"
#include "Platform/Control.h"
#include "WriterOurs.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace
{

struct CNullSink final : ILogSink
{
    void LogError(const char*, ...) override {}
    void LogWarning(const char*, ...) override {}
    void LogInfo(const char*, ...) override {}
    void LogDetail(const char*, ...) override {}
    void LogTrace(const char*, ...) override {}
};

struct CNullReceiver final : IStatusReceiver
{
    void OnStatus(const char* status) override { benchmark::DoNotOptimize(status); }
};

/// Notes when the first and the last of its entries in the list are called; nothing else takes time of its own.
class CTimedObserver final : public IStateObserver
{
public:
    void OnStateChange(int32_t, const char*) override
    {
        ++m_nCalls;
        if (m_nCalls != 1 && m_nCalls != m_nExpected)
            return;
        (m_nCalls == 1 ? m_first : m_last) = std::chrono::steady_clock::now();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bDone = m_nCalls == m_nExpected;
        m_condition.notify_one();
    }

    void Expect(int nCalls)
    {
        m_nCalls = 0;
        m_nExpected = nCalls;
        m_bDone = false;
    }

    /// Seconds from the first to the last call.
    double Wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_condition.wait(lock, [&] { return m_bDone; });
        return std::chrono::duration<double>(m_last - m_first).count();
    }

private:
    int m_nCalls = 0;
    int m_nExpected = 0;
    std::chrono::steady_clock::time_point m_first;
    std::chrono::steady_clock::time_point m_last;
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_bDone = false; // guarded by m_mutex
};

/// An adapter, with the service there or not. One at a time.
class CAdapter
{
public:
    explicit CAdapter(bool bService, ILogSink* pSink = nullptr)
    {
        g_hInstance = ::GetModuleHandleW(nullptr);
        if (bService)
            m_service.Start();
        m_pAdapter = new CPatchAdapter(pSink);
    }
    ~CAdapter() { delete m_pAdapter; }
    CAdapter(const CAdapter&) = delete;
    CAdapter& operator=(const CAdapter&) = delete;

    CPatchAdapter* operator->() const { return m_pAdapter; }
    CAgentSimulator& Service() { return m_service; }

private:
    CAgentSimulator m_service;
    CPatchAdapter* m_pAdapter;
};

/// About nBytes of policy. @param bWide  the rest is attributes of few elements instead of many small elements.
std::string MakePolicy(size_t nBytes, bool bWide)
{
    std::string text = R"(<?xml version="1.0"?><policy type="patch"><Comp RevID="HQ-2026-114" policyType="20"/>)"
                       R"(<groupRef name="Head office"/><configuration><policyType name="Daily"/>)"
                       R"(<assessment enabled="true" periodInHours="24"/><serverKey>MIGfMA0GCSqGSIb3</serverKey>)";
    for (size_t i = 0; text.size() + 40 < nBytes;)
    {
        text += "<update";
        for (size_t k = 0; k < (bWide ? 100u : 2u); ++k, ++i)
            text += " a" + std::to_string(k) + "=\"KB" + std::to_string(i) + "\"";
        text += "/>\n";
    }
    return text + "</configuration></policy>";
}

void AddPolicy(const std::string& row, const std::string& text)
{
    const double nBytes = static_cast<double>(text.size());
    benchmark::RegisterBenchmark((row + "|" + OURS).c_str(), [=](benchmark::State& state) {
        const CAdapter adapter(false); // without a service the policy is read, checked and translated
        Run(state, nBytes, [&] { adapter->SetConfiguration(text.c_str()); });
    });
    Add(row, "libxml2", nBytes, [=] { benchmark::DoNotOptimize(Libxml2Parse(text)); });
}

void AddStatusRow(const std::string& row, ILogSink* pSink)
{
    benchmark::RegisterBenchmark((row + "|" + OURS).c_str(), [=](benchmark::State& state) {
        CAdapter adapter(true, pSink);
        CNullReceiver receiver;
        Run(state, 1, [&] {
            adapter->GetStatus(&receiver);
            adapter.Service().ClearRecords(); // the simulator would note every call of the run
        });
    });
    Add(row, "the document alone", 1, [] { benchmark::DoNotOptimize(WriteStatus<CWriterOurs, wchar_t>()); });
}

// The monitor thread tells them; the service comes and goes for it.
void NotifyObservers(benchmark::State& state, int nObservers)
{
    CTimedObserver observer;
    CAdapter adapter(false);
    observer.Expect(-1);
    for (int i = 0; i < nObservers; ++i)
        adapter->RegisterStateObserver(&observer);
    bool bStarted = false;
    for (auto _ : state)
    {
        observer.Expect(nObservers);
        bStarted ? adapter.Service().Stop() : static_cast<void>(adapter.Service().Start());
        bStarted = !bStarted;
        state.SetIterationTime(observer.Wait());
    }
    state.counters["units"] = nObservers - 1;
}

} // namespace

void AddAdapter()
{
    static CNullSink s_sink;
    AddStatusRow("GetStatus, no log", nullptr);
    AddStatusRow("GetStatus, with a log", &s_sink);
    for (const auto& [szName, nBytes] : { std::pair("1 KB", 1'000), { "100 KB", 100'000 }, { "10 MB", 10'000'000 } })
    {
        AddPolicy(std::string("policy, ") + szName, MakePolicy(static_cast<size_t>(nBytes), false));
        AddPolicy(std::string("policy, many attributes, ") + szName, MakePolicy(static_cast<size_t>(nBytes), true));
    }
    for (const int nObservers : { 100, 1'000, 10'000 })
        benchmark::RegisterBenchmark(("observer, of " + std::to_string(nObservers) + "|" + OURS).c_str(),
                                     [=](benchmark::State& state) { NotifyObservers(state, nObservers); })
            ->UseManualTime()
            ->Iterations(4);
}
