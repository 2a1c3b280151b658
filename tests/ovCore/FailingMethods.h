// Methods of COM objects that fail, by exchanging their places in the table of functions. For the native target, where
// a function may be called with more arguments than it takes.
#pragma once

#include "OvComPtr.h"
#include "ovCore/OvBstr.h"
#include "OvPlatform.h"

#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

/// The place of a method in the table that the objects of one class share.
template <class Object, class Method>
void** PlaceOf(Object* pObject, Method pMethod)
{
    ptrdiff_t nOffset = 0; // counted from 1 in a pointer to a virtual method
    std::memcpy(&nOffset, &pMethod, sizeof(nOffset));
    return reinterpret_cast<void**>(*reinterpret_cast<char**>(pObject) + nOffset - 1);
}

/// While it lives, some methods fail for all objects of their classes. The first that is called leaves an error object
/// with the description "told", the others one that says "told later".
class CFailingMethods
{
public:
    CFailingMethods(const std::vector<void**>& places, HRESULT hr)
    {
        s_hr = hr;
        s_szDescription = L"told";
        for (void** const pPlace : places)
            m_saved.emplace_back(pPlace, Exchange(pPlace, reinterpret_cast<void*>(&Fail)));
    }
    ~CFailingMethods()
    {
        for (const auto& [pPlace, pMethod] : m_saved)
            Exchange(pPlace, pMethod);
        ::SetErrorInfo(0, nullptr);
    }
    CFailingMethods(const CFailingMethods&) = delete;
    CFailingMethods& operator=(const CFailingMethods&) = delete;

private:
    static HRESULT Fail()
    {
        COvComPtr<ICreateErrorInfo> spCreate;
        COvComPtr<IErrorInfo> spInfo;
        ::CreateErrorInfo(spCreate.Receive());
        spCreate->SetDescription(COvBstr(std::exchange(s_szDescription, L"told later")).Get());
        spCreate->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(spInfo.Receive()));
        ::SetErrorInfo(0, spInfo.Get());
        return s_hr;
    }

    static void* Exchange(void** pPlace, void* pMethod)
    {
        const size_t nPage = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
        ::mprotect(reinterpret_cast<void*>(reinterpret_cast<size_t>(pPlace) & ~(nPage - 1)), nPage,
                   PROT_READ | PROT_WRITE);
        return std::exchange(*pPlace, pMethod);
    }

    static inline HRESULT s_hr = S_OK;
    static inline const wchar_t* s_szDescription = nullptr;
    std::vector<std::pair<void**, void*>> m_saved;
};
