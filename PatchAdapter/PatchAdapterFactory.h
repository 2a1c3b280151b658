// The factory that the host obtains from the library.
#pragma once

#include "PatchAdapter/OneSlotDestructor.h"
#include "PatchAdapter/PatchTrace.h"

class CPatchAdapter;

/// The library's own module handle, from which its version is read; null until the library has been loaded as one.
extern HINSTANCE g_hInstance;

/// An adapter exists that some factory made and has not taken back. Of all factories together; a factory that is
/// deleted while it holds its adapter leaves it set.
extern bool g_bAdapterCreated;

/// Makes one adapter at a time in a process. See IAdapterFactory for what the host may do; nothing is locked here.
class PatchAdapterFactory final : public COneSlotDestructor<PatchAdapterFactory, IAdapterFactory>
{
public:
    PatchAdapterFactory() = default;
    PatchAdapterFactory(const PatchAdapterFactory&) = delete;
    PatchAdapterFactory& operator=(const PatchAdapterFactory&) = delete;

    /// Deletes an adapter that the factory still holds. Writes no line.
    ~PatchAdapterFactory();

    IAdapter* Initialise(void* value1, void* value2, ILogSink* pSink, void* value4) override;
    void Uninitialise(IAdapter* pAdapter) override;

private:
    void CreateAdapter(ILogSink* pSink);
    void DestroyAdapter(const IAdapter* pAdapter);

    CPatchAdapter* m_pAdapter = nullptr; // owned
    CPatchTrace m_Trace;
};
