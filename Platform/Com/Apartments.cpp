#include "Platform/Com/Apartments.h"

#include "Platform/Com.h"
#include "Platform/Kernel/Counters.h"

#include <atomic>

namespace OvPlatform
{

namespace
{

std::atomic<unsigned> s_nMultithreaded{ 0 }; // threads in the multithreaded apartment
std::atomic<ApartmentId> s_lastApartment{ MultithreadedApartment };

/// The apartment that a thread has entered, and how often.
class CThreadApartment
{
public:
    CThreadApartment() = default;
    CThreadApartment(const CThreadApartment&) = delete;
    CThreadApartment& operator=(const CThreadApartment&) = delete;

    /// A thread that ends without having left is taken out.
    ~CThreadApartment()
    {
        if (m_apartment == NoApartment)
            return;
        ++AbandonedApartmentCounter();
        Leave();
    }

    HRESULT Enter(bool bMultithreaded)
    {
        if (m_apartment != NoApartment && bMultithreaded != (m_apartment == MultithreadedApartment))
            return RPC_E_CHANGED_MODE;
        if (m_nEntered++ != 0)
            return S_FALSE;
        m_apartment = bMultithreaded ? MultithreadedApartment : ++s_lastApartment;
        if (bMultithreaded)
            ++s_nMultithreaded;
        return S_OK;
    }

    void LeaveOnce()
    {
        if (m_nEntered != 0 && --m_nEntered == 0)
            Leave();
    }

    ApartmentId Get() const { return m_apartment; }

private:
    void Leave()
    {
        const ApartmentId apartment = m_apartment;
        m_apartment = NoApartment;
        if (apartment != MultithreadedApartment || --s_nMultithreaded == 0)
            RevokeClassObjects(apartment);
    }

    ApartmentId m_apartment = NoApartment;
    unsigned m_nEntered = 0;
};

CThreadApartment& ThreadApartment()
{
    thread_local CThreadApartment t_apartment;
    return t_apartment;
}

} // namespace

ApartmentId CurrentApartment()
{
    const ApartmentId apartment = ThreadApartment().Get();
    if (apartment != NoApartment)
        return apartment;
    return s_nMultithreaded != 0 ? MultithreadedApartment : NoApartment;
}

} // namespace OvPlatform

using namespace OvPlatform;

HRESULT CoInitializeEx(LPVOID pvReserved, DWORD dwCoInit)
{
    if (pvReserved || (dwCoInit != COINIT_MULTITHREADED && dwCoInit != COINIT_APARTMENTTHREADED))
        return E_INVALIDARG;
    return ThreadApartment().Enter(dwCoInit == COINIT_MULTITHREADED);
}

void CoUninitialize()
{
    ThreadApartment().LeaveOnce();
}
