// SPDX-License-Identifier: MIT
/// Takes the place of the event-log engine: receives the event-log entries of this process and of the programs that it
/// starts.
///
///     Corvane::Testing::EntryRecorder recorder;
///     startCarrier(3);                                                          // writes an entry
///     const std::vector<Corvane::Testing::Entry> entries = recorder.take(1);    // waits for it, up to 10 seconds
///     // entries[0].eventId, .text, .params, .writer
///
/// A client and an engine find each other in a folder. The first recorder makes a new folder for this process, and sets
/// the environment variable XDG_RUNTIME_DIR to it until the process ends. So no entry reaches an engine that runs on
/// this machine. Programs that the process starts later inherit the variable: their entries are recorded as well. Later
/// recorders use the same folder.
///
/// If the event-log client of this process was started before the first recorder:
///
///     it hasn't found an engine       it finds the recorder. The entries that waited so far are not recorded.
///     it has found an engine          its entries still go to that engine. So does one entry of the recorder, with
///                                     event id 0 and text "EntryRecorder 1". The recorder's constructor throws.
///
/// Otherwise the recorder starts the client. Then a child made by fork() has no client. Programs that are started with
/// exec() have their own.
///
/// Only the stand-in for the messaging library uses such a folder. So recorders work only with the stand-in.
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

/// Writes an entry on one line. Test frameworks use it to show entries.
std::ostream& operator<<(std::ostream& out, const Entry& entry);

class EntryRecorder
{
public:
    /// Waits until all entries that this process wrote before have arrived. They are not recorded. Entries of other
    /// processes are recorded as soon as they arrive.
    ///
    /// Requires  for the first recorder of a process: no other thread uses the environment variables meanwhile. A
    ///           client that waits for an engine uses them. Construct the first recorder before the process starts
    ///           threads.
    /// Errors    std::runtime_error if the client has found another engine before, or doesn't answer for 10 seconds;
    ///           std::system_error if a folder or a thread can't be made; std::logic_error if another recorder lives;
    ///           std::bad_alloc.
    EntryRecorder();

    /// Ends the recording. Entries that arrive from now on are dropped, until there is another recorder.
    ~EntryRecorder();

    /// Takes the entries that have arrived. Waits first until there are `atLeast` entries, or the time `limit` is over.
    ///
    /// Returns  the entries since the last call, in the order in which they arrived; fewer than `atLeast` if the time
    ///          was over. The entries of one thread are in the order in which it wrote them.
    /// Errors   std::bad_alloc, also if there was no memory for an entry that arrived.
    /// Threads  any.
    std::vector<Entry> take(std::size_t atLeast = 0, std::chrono::milliseconds limit = std::chrono::seconds(10));

    EntryRecorder(const EntryRecorder&) = delete;
    EntryRecorder& operator=(const EntryRecorder&) = delete;
};

} // namespace Corvane::Testing

#endif
