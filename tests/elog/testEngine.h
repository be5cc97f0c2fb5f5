/// The engine's side of the event log for tests: an engine that looks at every byte, and a client that waits for one.
#ifndef CORVANE_TESTS_ELOG_TESTENGINE_H
#define CORVANE_TESTS_ELOG_TESTENGINE_H

#include <future>
#include <string>
#include <vector>

#include <zel.h>

namespace Corvane::Testing {

/// A received message without the bytes behind the text, which the client doesn't write.
struct ReceivedEntry
{
    std::size_t size = 0; ///< as it was allocated
    unsigned int sender = 0;
    std::vector<unsigned char> written;
};

/// Makes the calling thread the engine.
///
/// Returns  false if its mailbox can't be created.
bool becomeEngine();

/// Waits, in a new mailbox of the calling thread, until there is an engine.
///
/// Returns  the engine's mailbox.
unsigned int locateEngine(const std::string& ownName);

/// Waits until there is an engine: a process that ends before loses what it has written.
void waitForEngine();

/// Waits for the next message, up to a minute.
ReceivedEntry receiveEntry();

/// Reads a message and frees it.
ReceivedEntry entryOf(zel_msg* message);

/// Runs `action` on a thread of its own, whose mailbox ends with it.
template <typename Action>
void onThread(const Action& action)
{
    std::async(std::launch::async, action).get();
}

/// Returns  the bytes that the client should write for an entry.
std::vector<unsigned char> writtenBytes(unsigned int eventId, const std::string& text,
                                        const std::vector<unsigned int>& params);

/// Returns  a whole message as the client sends it: with the three bytes behind the text.
std::vector<unsigned char> messageOf(unsigned int eventId, const std::string& text,
                                     const std::vector<unsigned int>& params);

/// What a test program does when it is started with "--engine <expected> <pause>". It prints "created"; "flowing" when
/// a thousand numbered entries have come; and when `expected` have come, "complete" or what was wrong with them. It
/// pauses `pause` microseconds after each entry; unless that is 0, it also waits for a line of input after "flowing".
/// It ends when its standard input ends.
int runEngine(unsigned long expected, unsigned long pause);

} // namespace Corvane::Testing

#endif
