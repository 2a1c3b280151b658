// The main job while chosen calls or allocations fail.
#pragma once

#include "FailingCalls.h"

#include <memory>
#include <optional>
#include <set>
#include <string>

/// How far apart the samples of a long list are: every seventh is taken, or each in the long form (OV_LONG is set).
unsigned SampleStep();

/// What a host and the service saw of one run.
struct COutcome
{
    std::string failed;                  ///< the functions that failed, in order
    unsigned nCalls = 0;                 ///< how many calls were counted
    bool bEscaped = false;               ///< an exception reached the host
    bool bAdapter = false;               ///< Initialise gave an adapter
    std::set<std::string> documents;     ///< the different status and settings documents, masked
    std::optional<std::wstring> wzRevId; ///< the recorded revision
    std::string trace;                   ///< every line, of all threads
    std::string leak;                    ///< what was left open, in words
};

/// Loads the library, applies a policy to a running service with an observer registered and a status asked for, lets
/// the service go and come when bTransitions, stops and unloads. The revision before is OLD_REVISION.
COutcome RunMainJob(const CCallFailure& failure, bool bTransitions = false);

/// The same while the n-th allocation of this thread fails, or it and all that follow. `failed` is "allocation" when it
/// was reached.
COutcome RunMainJobShortOfMemory(unsigned nFail, bool bOnwards);

/// An adapter that stays, to which the policy is handed in again and again with calls failing. The service runs.
class CRepeatedApply
{
public:
    CRepeatedApply();
    ~CRepeatedApply();

    /// Hands the policy in, with OLD_REVISION recorded before. @return how many calls were counted.
    unsigned Apply(const CCallFailure& failure);

    /// Whether an exception has reached the host.
    bool HasEscaped() const { return m_bEscaped; }

private:
    std::unique_ptr<class CScratchRegistry> m_pRegistry;
    std::unique_ptr<class CMainJob> m_pJob;
    bool m_bEscaped = false;
};
