// The one exception type, and the helpers of the places that raise it.
#pragma once

#include "ovCore/OvEvidence.h"
#include "OvPlatform.h"

#include <exception>
#include <string>

/// What a handler needs of an exception. Texts are NUL-terminated and stay valid until the next call of the same
/// operation or the exception's end. One thread at a time.
class COvBaseException
{
public:
    virtual ~COvBaseException() = default;

    /// The error code.
    virtual HRESULT GetCode() const = 0;

    /// The source line at which it was raised.
    virtual LONG GetLine() const = 0;

    /// The evidence. @param szSeparator  written for each break mark; null: the text as stored. May be null.
    virtual const wchar_t* GetEvidence(const wchar_t* szSeparator) const = 0;

    /// The name of the source file, without folders. May be null.
    virtual const wchar_t* GetFile() const = 0;

    /// Adds an item on the way up.
    /// @param szFile  the adding source file's path, not null; only what follows its last backslash is kept.
    virtual void AddInfo(const wchar_t* szFile, LONG nLine, const COvEvidence& evidence) = 0;

    /// Writes the exception to the debugger output stream. Always returns normally.
    virtual void WriteDebug() const = 0;

protected:
    COvBaseException() = default;
    COvBaseException(const COvBaseException&) = default;
    COvBaseException& operator=(const COvBaseException&) = default;
};

/// Every failure of the system: a code, the place where it was raised, and the evidence.
class COvException : public COvBaseException
{
public:
    /// Never fails: when a value cannot be stored the exception has the code E_FAIL, no file, line 0 and no evidence.
    /// @param szFile  a source path; what follows its last backslash is kept; null gives an empty name.
    COvException(const HRESULT& hr, const wchar_t* szFile, LONG nLine, const COvEvidence& evidence) noexcept;

    /// The same, with evidence whose text need not be copied.
    COvException(const HRESULT& hr, const wchar_t* szFile, LONG nLine, COvEvidence&& evidence) noexcept;

    HRESULT GetCode() const override { return m_hr; }
    LONG GetLine() const override { return m_nLine; }
    const wchar_t* GetEvidence(const wchar_t* szSeparator) const override { return m_Evidence.ToString(szSeparator); }
    const wchar_t* GetFile() const override { return m_strFile.c_str(); }

    /// Never fails; without memory the evidence stays as it was.
    void AddInfo(const wchar_t* szFile, LONG nLine, const COvEvidence& evidence) noexcept override;

    void WriteDebug() const noexcept override;

private:
    template <class Take>
    void Fill(const wchar_t* szFile, Take&& takeEvidence) noexcept;

    HRESULT m_hr;
    std::wstring m_strFile;
    LONG m_nLine;
    COvEvidence m_Evidence;
};

/// A standard exception that carries a text, which the standard's own base class does not on every compiler.
class COvStdException : public std::exception
{
public:
    /// @param szText  narrow text that outlives the exception and its copies: a literal.
    explicit COvStdException(const char* szText) noexcept : m_szText(szText) {}

    const char* what() const noexcept override { return m_szText; }

private:
    const char* m_szText;
};

/// The item "Stack Dump": the calling thread's open stack-trace scopes. Never fails.
COvEvidence OvStackDump() noexcept;

/// Raises a failure of the core library: throws COvException with the evidence and, last, the item "Stack Dump".
/// @param szSource  the source's fixed path (L"ovCore\\OvEvent").
/// A caller that needs GetLastError takes it first: building evidence may change it.
[[noreturn]] void OvRaise(HRESULT hr, const wchar_t* szSource, LONG nLine, const COvEvidence& evidence);

/// Raises what OvCheckPointer does for a null pointer.
[[noreturn]] void OvRaiseNullPointer(const wchar_t* szName, const wchar_t* szFile, LONG nLine);

/// Returns when p is not null; raises E_INVALIDARG at the given place otherwise.
/// @param szName  the expression in the source, as which the evidence names the pointer.
inline void OvCheckPointer(const wchar_t* szName, const void* p, const wchar_t* szFile, LONG nLine)
{
    if (p == nullptr)
        OvRaiseNullPointer(szName, szFile, nLine);
}
