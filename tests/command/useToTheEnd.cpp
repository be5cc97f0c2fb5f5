/// An application whose detached threads go on using the command service while main() returns, and after.
///
/// An object that is destroyed later than the service would be keeps the process until each thread has met the ended
/// service many times: its lines find no command, and what it registers is dropped at once. Exits with 0 then.
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <command/cmdTableHelperIf.h>
#include <unistd.h>

namespace {

using namespace Corvane::CmdTableHelper;
using V2::CmdTableHelperIf;

constexpr unsigned int secondsToHang = 100;
constexpr int lateRounds = 100;

/// How often each thread has used the service: before the end and after it.
struct Uses
{
    std::atomic<int> before{0};
    std::atomic<int> after{0};
};

class Threads
{
public:
    static constexpr std::size_t number = 4;

    ~Threads() { waitFor(&Uses::after, lateRounds); }

    void waitFor(std::atomic<int> Uses::*count, int least)
    {
        for (Uses& uses : m_uses) {
            while (uses.*count < least) {
                std::this_thread::yield();
            }
        }
    }

    Uses& operator[](std::size_t thread) { return m_uses.at(thread); }

private:
    std::array<Uses, number> m_uses;
};

Threads threads; // made before the service, so destroyed after the end of its state

void expect(bool condition, const char* text)
{
    if (!condition) {
        std::fputs(text, stderr);
        std::_Exit(1);
    }
}

[[noreturn]] void useForEver(std::size_t thread)
{
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    const std::string name = "x" + std::to_string(thread);
    for (;;) {
        const bool hasEnded = threads[thread].after > 0;
        const auto token = std::make_shared<int>(7);
        service.registerCmdTable(name, std::vector<CommandDefinitions>{
                                           {name, [token](int, const char* const*) { return *token; }, nullptr}});
        const unsigned int hook = service.registerPostExecutionHook([token](int, int, const char* const*) {});
        expect(!hasEnded || token.use_count() == 1, "the ended service keeps a handler or a hook\n");
        std::ostringstream out;
        const int result = service.executeCmd({name}, out);
        service.deregisterPostExecutionHook(hook);
        expect(result == 20 || (result == 7 && !hasEnded), "a line was answered wrongly\n");
        expect(out.str() == (result == 20 ? "Usage: \n\n" : ""), "a usage is wrong\n");
        ++(result == 20 ? threads[thread].after : threads[thread].before);
    }
}

} // namespace

int main()
{
    ::alarm(secondsToHang);
    for (std::size_t thread = 0; thread < Threads::number; ++thread) {
        std::thread(useForEver, thread).detach();
    }
    threads.waitFor(&Uses::before, 1);
    return 0;
}
