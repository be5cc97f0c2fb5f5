/// Fakes of libzel and libpindle for a test of the client: they record every call with its arguments, fail on demand,
/// and run jobs when the test says so. The client calls these functions because the program defines them itself.
///
/// Threads  the test's alone: the fake active object starts none.
#ifndef CORVANE_TESTS_ELOG_FAKEPLATFORM_H
#define CORVANE_TESTS_ELOG_FAKEPLATFORM_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace Corvane::Testing {

/// A message that was sent: every allocated byte. Bytes that the sender didn't write are 0xEE.
using SentMessage = std::vector<unsigned char>;

class FakePlatform
{
public:
    /// The fakes' calls reach the newest. Each test has its own.
    FakePlatform();
    ~FakePlatform();
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    // What the calls return.
    std::uint32_t mailboxId = 0x101;
    std::uint32_t engineId = 0x202;
    int timeouts = 0; ///< receives that time out before the reply comes
    bool refuseAllocation = false;
    bool refuseThread = false; ///< no active object can be started

    std::function<void()> whilePosting; ///< runs inside each post()

    // What the client did.
    std::vector<std::string> calls;
    std::vector<SentMessage> sent;
    std::function<void()> init;
    std::deque<std::function<void()>> jobs;
    bool hasActiveObject = false; ///< from its creation until its last owner releases it
    std::size_t messages = 0;     ///< allocated, and neither sent nor freed
    static int loaderCalls;       ///< dlopen(), by the whole program

    /// Runs the initial job and then the queued ones, as the active object's thread would.
    void run();

    static FakePlatform& current();
    static bool exists() { return s_current != nullptr; }

private:
    static FakePlatform* s_current;
};

} // namespace Corvane::Testing

#endif
