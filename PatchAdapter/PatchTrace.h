// The adapter's trace: lines of five kinds on their way to the host's log.
#pragma once

#include "ovCore/OvEvidence.h"
#include "ovCore/OvException.h"
#include "OvPlatform.h"
#include "PatchAdapterApi.h"

#include <string>
#include <string_view>

/// Writes trace lines to the host's sink. Silent, at no cost, until it is bound.
///
/// No operation fails: a text that cannot be built or converted and whatever the host throws are dropped.
/// Texts reach the host in the system's ANSI code page, as the argument of the format "PatchAdapter: %s". Writing is
/// allowed from several threads at once, binding is not: bind before the object is shared.
class CPatchTrace
{
public:
    /// @param pSink  the host's log, not owned: it must stay valid while it is bound. Null unbinds.
    void SetSink(ILogSink* pSink) noexcept { m_pSink = pSink; }

    /// Whether lines go anywhere: for texts that are worth making only then.
    bool IsBound() const noexcept { return m_pSink != nullptr; }

    /// One line. @param nKind  a PatchTraceKind; nothing is written for another value.
    void Write(int nKind, std::wstring_view text) noexcept;

    /// Kind 0: "Error: <code> File: <name> Line: <line> Evidence: <evidence>".
    void Exception(const COvBaseException& e) noexcept;

    // Kinds 1 to 3: the evidence, with a blank for each break mark.
    void Warning(const COvEvidence& e) noexcept;
    void Info(const COvEvidence& e) noexcept;
    void Detail(const COvEvidence& e) noexcept;

    // The same for one item, which an unbound trace does not make.
    template <class Value>
    void Info(const wchar_t* szName, const Value& value) noexcept
    {
        if (m_pSink != nullptr)
            Info(COvEvidence(szName, value));
    }
    template <class Value>
    void Detail(const wchar_t* szName, const Value& value) noexcept
    {
        if (m_pSink != nullptr)
            Detail(COvEvidence(szName, value));
    }

    /// The line of the one item "Info Msg".
    void Info(const wchar_t* szSentence) noexcept { Info(L"Info Msg", szSentence); }

    // Kind 4: "Entering Function: <name>" and "Exiting Function: <name>".
    void Enter(const wchar_t* szName) noexcept;
    void Leave(const wchar_t* szName) noexcept;

private:
    template <class Build>
    void WriteBuilt(int nKind, Build&& build) noexcept;
    void WriteCall(std::wstring_view begin, std::wstring_view name) noexcept;

    ILogSink* m_pSink = nullptr; // not owned
};

/// Writes the entry line of an operation when made and its exit line when left, by an exception too.
class CPatchTraceScope
{
public:
    /// @param pTrace  not null. @param szName  the operation's qualified name, a literal.
    CPatchTraceScope(CPatchTrace* pTrace, const wchar_t* szName) noexcept : m_pTrace(pTrace), m_szName(szName)
    {
        m_pTrace->Enter(m_szName);
    }
    ~CPatchTraceScope() { m_pTrace->Leave(m_szName); }
    CPatchTraceScope(const CPatchTraceScope&) = delete;
    CPatchTraceScope& operator=(const CPatchTraceScope&) = delete;

private:
    CPatchTrace* m_pTrace; // not owned
    const wchar_t* m_szName;
};
