/// The event-log client: entries handed over by any thread, sent by a thread of the library's own to the event-log
/// engine, the process that owns the mailbox "ElogEngine".
///
/// There is one client in a process, made by the first getInstance(). It owns the mailbox "ElogEngineClient" and waits
/// for the engine for as long as it takes. Entries written meanwhile wait in the process's memory and are sent, in
/// order, once the engine is found. There is no way back from there: entries written after the engine has gone are
/// lost.
///
///     Corvane::Elog::V2::ElogIf::getInstance().elogWrite(1007, "carrier down", {carrier, reason});
///
/// What goes wrong shows in the event INFO, in texts that begin with "ABN: ": the mailbox can't be created (and then
/// every entry is discarded), the engine is still not there after another 60 seconds, an entry is discarded.
///
/// The library can't be unloaded once the client has been started. The end of the process doesn't wait for an engine
/// that isn't there: the entries that wait for it are lost. Entries that are queued while the engine is connected are
/// sent first, for as long as the engine takes them, however slowly. How long the end waits for an engine that has
/// stalled is up to the framework library (its stand-in gives up when no entry could be sent for 5 seconds); the
/// entries that are still queued then are lost, and the one that is being sent may be.
///
/// A child made by fork() has no client: its entries are up to the framework library (its stand-in drops them).
///
/// Threads  every operation may be called by any thread at any time, until the process's static objects are destroyed.
/// Since    0.1.0
#ifndef CORVANE_ELOG_ELOGIF_H
#define CORVANE_ELOG_ELOGIF_H

#include <string>
#include <vector>

namespace Corvane::Elog::V2 {

class [[gnu::visibility("default")]] ElogIf
{
public:
    /// Queues an entry and returns at once, whatever the engine does. The entries of one thread stay in their order.
    ///
    /// An entry goes out as one message. One whose message would pass 2^32 - 1 bytes, text and parameters together, or
    /// for which there is no memory when it is sent, is discarded and reported by INFO.
    ///
    /// Requires  nothing: the text may be empty and may hold NULs, and there may be no parameters.
    /// Errors    std::bad_alloc; the entry is then not queued.
    /// Owns      copies `text` and `params`.
    virtual void elogWrite(unsigned int eventId, const std::string& text, const std::vector<unsigned int>& params) = 0;

    /// For the library alone; the one client ends with the process.
    virtual ~ElogIf();

    /// Starts the client on the first call.
    ///
    /// Returns  the one client of this process. It lives until the process's static objects are destroyed.
    /// Errors   what keeps the client's thread from starting (std::system_error, std::bad_alloc); the next call tries
    ///          again.
    static ElogIf& getInstance();

    ElogIf(const ElogIf&) = delete;
    ElogIf& operator=(const ElogIf&) = delete;

protected:
    ElogIf() = default;
};

} // namespace Corvane::Elog::V2

#endif
