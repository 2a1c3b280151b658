/// @file
/// What a host includes to load the patch adapter and drive it. Copy this one file; it includes nothing of ours.
///
/// Texts are NUL-terminated narrow strings in the system's ANSI code page. No interface is reference-counted.
/// On 32-bit Windows the interfaces follow the platform compiler's rules: virtual operations are __thiscall in the
/// order in which they stand here, variadic ones and the exported functions are __cdecl, and a virtual destructor takes
/// one slot. Elsewhere the order is the same and the platform's own convention holds.
///
/// What a callback throws ends at the operation that called it, which reports it to the log; the exceptions are the
/// log's own, which are dropped, and the configuration receiver's, which the host gets back. On Windows that holds for
/// the C++ exceptions of the platform's own compiler. A host that GCC has built for Windows must let none leave a
/// callback: its run-time library knows no frame outside its own module and ends the process at the throw.
#pragma once

#include <cstdint>

/// Calling convention of the exported functions.
#if defined(_WIN32)
#define PATCHADAPTER_CDECL __cdecl
#else
#define PATCHADAPTER_CDECL
#endif

/// GCC gives a virtual destructor two slots where the platform's own compiler gives it one. With GCC for Windows the
/// interfaces that a host destroys through therefore declare that one slot as an operation of its own.
#if defined(_WIN32) && defined(__GNUC__)
#define PATCHADAPTER_DESTRUCTOR_SLOT 1
#else
#define PATCHADAPTER_DESTRUCTOR_SLOT 0
#endif

/// The kinds of trace line: the operations of ILogSink in their order.
enum PatchTraceKind : int32_t
{
    TraceError = 0,   ///< an exception that reached a handler
    TraceWarning = 1, ///< a failure that is handled without an exception
    TraceInfo = 2,    ///< normal progress
    TraceDetail = 3,  ///< values and documents
    TraceCall = 4     ///< function entry and exit
};

/// The host's log. The adapter calls it from the host's threads and from its own, several at once.
/// It must stay valid while the factory and the adapter exist. The format is always "PatchAdapter: %s" and the one
/// argument behind it the text, so a text is never read as a format. What an operation throws is dropped.
class ILogSink
{
public:
    virtual void LogError(const char* format, ...) = 0;   ///< TraceError
    virtual void LogWarning(const char* format, ...) = 0; ///< TraceWarning
    virtual void LogInfo(const char* format, ...) = 0;    ///< TraceInfo
    virtual void LogDetail(const char* format, ...) = 0;  ///< TraceDetail
    virtual void LogTrace(const char* format, ...) = 0;   ///< TraceCall

protected:
    ~ILogSink() = default;
};

/// Told every new status document. Registered with IAdapter::RegisterStateObserver.
class IStateObserver
{
public:
    /// @param value   always 1.
    /// @param status  the status document; valid only during the call.
    /// Called on the host's threads and on the adapter's monitor thread, with the adapter's observer lock held: it must
    /// not wait for another thread that registers or deregisters observers, nor have the adapter destroyed. It may
    /// itself register and deregister observers, its own object among them: who is removed is not called any more,
    /// who is added gets the document of its registration and then hears from the next change on.
    virtual void OnStateChange(int32_t value, const char* status) = 0;

protected:
    ~IStateObserver() = default;
};

/// Takes the answer of IAdapter::GetStatus.
class IStatusReceiver
{
public:
    /// @param status  the status document; valid only during the call.
    virtual void OnStatus(const char* status) = 0;

protected:
    ~IStatusReceiver() = default;
};

/// Takes the answer of IAdapter::GetConfiguration.
class IConfigurationReceiver
{
public:
    /// @param configuration  always an empty text.
    virtual void OnConfiguration(const char* configuration) = 0;

protected:
    ~IConfigurationReceiver() = default;
};

/// The adapter. Obtained from IAdapterFactory::Initialise and destroyed by IAdapterFactory::Uninitialise; a host does
/// not delete it. Operations may be called from several threads at once; a thread that asks for status, registers an
/// observer or hands in a configuration must have entered a COM apartment. Every failure is reported to the log alone.
class IAdapter
{
public:
    /// Builds the current status document and hands it to the receiver before returning.
    /// @return always true. After a failure the receiver is not called.
    virtual bool GetStatus(IStatusReceiver* receiver) = 0;

    /// Adds an observer at the end of the list and tells it the current status before returning. The host keeps the
    /// observer alive until DeRegisterStateObserver has returned. The same observer may be added more than once.
    virtual void RegisterStateObserver(IStateObserver* observer) = 0;

    /// Removes the observer's first entry; an unknown observer changes nothing. Once it has returned, the observer is
    /// not called again through that entry.
    virtual void DeRegisterStateObserver(IStateObserver* observer) = 0;

    /// Hands the receiver an empty text. What the receiver throws goes on to the host. @return always true.
    virtual bool GetConfiguration(IConfigurationReceiver* receiver) = 0;

    /// Takes a policy document: checks it, pushes its settings to the patch service, records its revision and tells
    /// every observer. One call at a time. A document that is refused, or that the service does not take, changes
    /// nothing outside; but once its revision has been read, status documents show it. Null counts as an empty text.
    virtual void SetConfiguration(const char* configuration) = 0;

    /// @{
    /// Not implemented: writes one line to the log and looks at no argument.
    virtual void RegisterEventObserver(void* value) = 0;
    virtual void DeRegisterEventObserver(void* value) = 0;
    virtual void RegisterConfigStateObserver(void* value) = 0;
    virtual void DeRegisterConfigStateObserver(void* value) = 0;
    virtual void DoAction(void* value1, void* value2) = 0;
    virtual void RegisterActionOutcomeObserver(void* value) = 0;
    virtual void DeRegisterActionOutcomeObserver(void* value) = 0;
    virtual void SetFeature(void* value) = 0;
    /// @}

#if PATCHADAPTER_DESTRUCTOR_SLOT
    /// The destructor's slot: destroys the object, frees it when bit 0 is set, returns its address.
    virtual void* DestructorSlot(unsigned flags) = 0;

protected:
    ~IAdapter() = default;
#else
    virtual ~IAdapter() = default;
#endif
};

/// Makes the adapter; at most one exists in a process at a time. The host owns the factory, calls it from one thread at
/// a time and never while an operation of the adapter is still running.
class IAdapterFactory
{
public:
    /// Makes the adapter and starts its monitor thread.
    /// @param value1, value2, value4  values of the host that are not looked at.
    /// @param sink  the host's log; may be null, then nothing is written.
    /// @return the adapter, which this factory owns; the same one when it had made it before; null when another factory
    ///         has made one or it could not be made; after that it may be tried again.
    virtual IAdapter* Initialise(void* value1, void* value2, ILogSink* sink, void* value4) = 0;

    /// Destroys the adapter that this factory made. Waits for the monitor thread: up to about ten seconds. Any other
    /// pointer changes nothing; it is reported to the log, unless the adapter is another factory's.
    virtual void Uninitialise(IAdapter* adapter) = 0;

#if PATCHADAPTER_DESTRUCTOR_SLOT
    /// The destructor's slot: destroys the object, frees it when bit 0 is set, returns its address.
    virtual void* DestructorSlot(unsigned flags) = 0;

protected:
    ~IAdapterFactory() = default;
#else
    virtual ~IAdapterFactory() = default;
#endif
};

/// Deletes a factory, with whichever compiler the host is built. Destroys an adapter that it still holds; after that
/// no adapter can be made in this process any more, so Uninitialise comes first. Null is allowed.
inline void DeleteAdapterFactory(IAdapterFactory* factory)
{
#if PATCHADAPTER_DESTRUCTOR_SLOT
    if (factory != nullptr)
        factory->DestructorSlot(1u);
#else
    delete factory;
#endif
}

// The exported functions, undecorated; ordinals 1 and 2 on Windows.

/// Makes a factory, another one with each call; null when there is no memory for it. One thread at a time.
typedef IAdapterFactory*(PATCHADAPTER_CDECL* GetAdapterFactory1_0Function)();

/// Stores the plug-in interface version; nothing when either pointer is null. Any thread.
typedef void(PATCHADAPTER_CDECL* GetAdapterVersionFunction)(uint32_t* major, uint32_t* minor);

/// @{
/// The name by which an exported function is found.
#define PATCHADAPTER_GET_FACTORY_NAME "GetAdapterFactory1_0"
#define PATCHADAPTER_GET_VERSION_NAME "GetAdapterVersion"
/// @}

/// The largest policy document that SetConfiguration takes, in bytes without the final NUL: 16 MB. A longer one is
/// refused.
#define PATCHADAPTER_MAX_POLICY_BYTES (16u * 1024u * 1024u)

/// @{
/// The plug-in interface version that this header describes.
#define PATCHADAPTER_INTERFACE_MAJOR 2u
#define PATCHADAPTER_INTERFACE_MINOR 0u
/// @}
