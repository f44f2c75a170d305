#ifndef FERROLINK_EVENT_H
#define FERROLINK_EVENT_H

#include "export.h"

/// @file
/// The host's event service: callbacks for Win32 events, all on one thread, the event thread. The completions of
/// http_session.h run on that same thread. Any number of events may be registered.
///
/// The thread starts with the first use of either service. From then on the library stays loaded, and the thread ends
/// with the process: unloading never waits for it.

#ifdef __cplusplus
extern "C"
{
#endif

    /// Called on the event thread each time a registered event has been signalled, in the order of the signals; of
    /// events that are signalled while another callback runs, in any order, and each has its turn however busy
    /// another is. It must not throw, and must not wait for anything that happens on the event thread.
    /// @param event   the event's handle
    /// @param context what was given to frl_event_add_win32_event
    typedef void (*frl_event_callback)(void* event, void* context);

    /// Registers a Win32 event. A signal that came before the registration counts. May be called from any thread.
    /// @param event    handle of an auto-reset event, which the caller keeps open until it is removed. The service
    ///                 waits for it, and so resets it; several signals before the callback runs may be one.
    /// @param callback called once for each signal; not null
    /// @param context  passed to it as it is
    /// @return 0, or the system's error code; then nothing is registered anew. An event that is registered already
    ///         gives ERROR_ALREADY_EXISTS.
    FERROLINK_API int frl_event_add_win32_event(void* event, frl_event_callback callback, void* context);

    /// Ends a registration. On return the callback is not running and does not run again, unless it is the callback
    /// itself that made this call: then it is running for the last time. Other events' callbacks are not waited for.
    /// Signals that come afterwards are the caller's own again. May be called from any thread.
    /// @param event the event's handle
    /// @return 0, or ERROR_NOT_FOUND when the event was not registered
    FERROLINK_API int frl_event_remove_win32_event(void* event);

#ifdef __cplusplus
} // extern "C"
#endif

#endif
