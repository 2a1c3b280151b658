// One way to put a function of the test in the place of a platform call.
#pragma once

#include "ImportTable.h"

#include <functional>
#include <memory>
#include <vector>

/// While it lives, a loaded module's calls of some platform functions go to function objects, which may call the
/// functions themselves. No such call may run when it is destroyed.
class CReplacedCalls
{
public:
    /// @param hModule  by default the program's own code, with the product's objects that are linked into it.
    explicit CReplacedCalls(HMODULE hModule = ::GetModuleHandleW(nullptr)) : m_hModule(hModule) {}
    ~CReplacedCalls()
    {
        for (const auto& undo : m_undo)
            undo();
    }
    CReplacedCalls(const CReplacedCalls&) = delete;
    CReplacedCalls& operator=(const CReplacedCalls&) = delete;

    /// @param instead  of a type of its own, as each lambda is.
    template <class R, class... Arguments, class Instead>
    void Replace(R(WINAPI* pFunction)(Arguments...), Instead instead)
    {
        const auto pInstead = std::make_shared<Instead>(std::move(instead));
        using Thunk = CThunk<Instead, R, Arguments...>;
        Thunk::s_pInstead = pInstead.get();
        const void* const pReal = reinterpret_cast<const void*>(pFunction);
        const void* const pNew = reinterpret_cast<const void*>(&Thunk::Call);
        ReplaceImport(m_hModule, pReal, pNew);
        m_undo.push_back([=, hModule = m_hModule, pKept = pInstead] { ReplaceImport(hModule, pNew, pReal); });
    }

private:
    template <class Instead, class R, class... Arguments>
    struct CThunk
    {
        static R WINAPI Call(Arguments... arguments) { return (*s_pInstead)(arguments...); }
        static inline Instead* s_pInstead = nullptr;
    };

    HMODULE m_hModule;
    std::vector<std::function<void()>> m_undo;
};
