// SPDX-License-Identifier: MIT
/// The event-log client: any thread hands over entries; a thread of the library sends them to the event-log engine, the
/// process that has the mailbox "ElogEngine".
///
/// A process has one client, started by the first getInstance(). Several processes may log at once.
///
///     Corvane::Elog::V2::ElogIf::getInstance().elogWrite(1007, "carrier down", {carrier, reason});
///
/// The client waits for the engine without a time limit. Meanwhile the entries wait in the memory of the process; once
/// the engine is found they are sent in their order. The client looks for an engine only once: when that engine ends,
/// the entries that are queued and all later ones are lost, even if another engine starts.
///
/// The event INFO shows what goes wrong, in texts that begin with "ABN: ", unless there is no memory for the text. The
/// client has no mailbox and discards every entry; the engine is still missing after another 60 seconds; an entry was
/// discarded.
///
/// How the process ends decides which entries arrive, each of them whole:
///
///     return from main(), exit()         those queued before, if the engine has been found and takes them
///     quick_exit(), _exit(), abort()     only those sent before
///     exec()                             only those sent before
///     a signal: SIGKILL, or SIGTERM and  only those sent before
///       others without a handler
///     exit() inside elogWrite()          only those sent before, or in the 2 seconds that the end waits then
///
/// If the engine has not been found, none arrives, and no end waits for it.
///
/// A return from main() and exit() send the queued entries, however slow the engine is. What threads write after that
/// has begun is dropped, so the process ends although threads go on writing. They needn't be joined; join a thread to
/// be sure that its last entry is queued in time. If the engine has stopped taking entries, the framework library
/// decides how long to wait (the stand-in gives up when none could be sent for 5 seconds). The entries still queued are
/// lost then, and perhaps the one being sent.
///
/// A thread calls exit() inside elogWrite() if a handler does that which runs there: a handler of a signal, or that of
/// missing memory (std::set_new_handler()).
///
/// A child made by fork() has no client of its own if its parent had started one. What becomes of its entries is up to
/// the framework library (the stand-in drops them). The parent's client is not affected.
///
/// Once the client has been started, the library stays loaded until the process ends: dlclose() doesn't unload it.
///
/// Threads  every operation may be called by any thread at any time, also while and after the static objects of the
///          process are destroyed.
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
    /// An entry is sent as one message: 20 bytes, the text, and 4 bytes for each parameter. It is discarded, and INFO
    /// says so, if the message would be longer than 2^32 - 1 bytes or than the messaging library allows (its stand-in:
    /// 64 MiB), or if there is no memory for it.
    ///
    /// Requires  nothing: the text may be empty and may contain NULs, and there may be no parameters.
    /// Errors    std::bad_alloc; the entry is then not queued.
    /// Owns      copies `text` and `params`.
    virtual void elogWrite(unsigned int eventId, const std::string& text, const std::vector<unsigned int>& params) = 0;

    /// For the library alone. The one client is never destroyed.
    virtual ~ElogIf();

    /// Starts the client on the first call.
    ///
    /// Returns  the one client of this process; the reference stays good until the process has ended.
    /// Errors   std::system_error or std::bad_alloc if the client's thread can't be started; the next call tries again.
    static ElogIf& getInstance();

    ElogIf(const ElogIf&) = delete;
    ElogIf& operator=(const ElogIf&) = delete;

protected:
    ElogIf() = default;
};

} // namespace Corvane::Elog::V2

#endif
