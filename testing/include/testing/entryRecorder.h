// SPDX-License-Identifier: MIT
/// Stands in for the event-log engine: receives the event-log entries of this process and of the programs it starts.
///
///     Corvane::Testing::EntryRecorder recorder;
///     startCarrier(3);                                                          // writes an entry
///     const std::vector<Corvane::Testing::Entry> entries = recorder.take(1);    // waits for it, up to 10 seconds
///     // entries[0].eventId, .text, .params, .writer
///
/// The first recorder gives the process a meeting folder of its own, until the process ends: the environment variable
/// XDG_RUNTIME_DIR names it. So entries reach no engine that runs on this machine. Programs that are started after it
/// inherit the variable and meet there, too: their entries are recorded as well. Later recorders use the same folder.
///
/// If the event-log client of this process was started before the first recorder:
///
///     it hasn't found an engine       it finds the recorder. The entries that waited so far are not recorded.
///     it has found an engine          its entries keep going there, with one of the recorder: event id 0, text
///                                     "EntryRecorder 1". The recorder's constructor throws.
///
/// The client is started by the recorder if it wasn't. A child made by fork() has no client then; programs that are
/// started with exec() have their own.
///
/// Only the stand-in for the messaging library meets in a folder, so recorders work with the stand-in alone.
///
/// Since  0.1.0
#ifndef CORVANE_TESTING_ENTRYRECORDER_H
#define CORVANE_TESTING_ENTRYRECORDER_H

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace Corvane::Testing {

/// One event-log entry as it arrived.
struct Entry
{
    unsigned int eventId = 0;              ///< as given to elogWrite(), like the next two
    std::string text = {};                 ///< may have NULs
    std::vector<unsigned int> params = {}; ///< in the order of the caller
    int writer = 0;                        ///< the id of the process that sent it, as the kernel says
};

/// Returns  true if all members are equal.
bool operator==(const Entry& left, const Entry& right);
/// Returns  true if one member differs.
bool operator!=(const Entry& left, const Entry& right);

/// Writes an entry on one line. Test frameworks show entries with it.
std::ostream& operator<<(std::ostream& out, const Entry& entry);

class EntryRecorder
{
public:
    /// Waits until what this process wrote before has arrived, and so isn't recorded. Entries of other processes are
    /// recorded as soon as they arrive.
    ///
    /// Requires  if it is the first one: no other thread uses the environment meanwhile, as a client does that waits
    /// for
    ///           an engine. Best is to construct it before the process starts threads.
    /// Errors    std::runtime_error if the client has found another engine before, or doesn't answer for 10 seconds;
    ///           std::system_error if there can't be a folder or a thread; std::logic_error if one lives already;
    ///           std::bad_alloc.
    EntryRecorder();

    /// Ends the recording. What arrives from now on, until the next recorder, is dropped.
    ~EntryRecorder();

    /// Takes out what has arrived. Waits first until that are `atLeast` entries, or `limit` is over.
    ///
    /// Returns  the entries since the last call, in the order in which they arrived; fewer than `atLeast` if the time
    ///          was over. Those of one thread are in the order in which it wrote them.
    /// Errors   std::bad_alloc: also if there was no memory for an entry that arrived.
    /// Threads  any.
    std::vector<Entry> take(std::size_t atLeast = 0, std::chrono::milliseconds limit = std::chrono::seconds(10));

    EntryRecorder(const EntryRecorder&) = delete;
    EntryRecorder& operator=(const EntryRecorder&) = delete;
};

} // namespace Corvane::Testing

#endif
