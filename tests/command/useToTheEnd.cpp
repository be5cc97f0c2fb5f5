/// An application whose detached threads go on using the command service while main() returns, and after.
///
/// An object that is destroyed after the service's state has ended keeps the process until each thread has met the
/// ended service many times: no line leads to a handler, and what is registered is dropped at once. Exits with 0 then.
/// With an argument, children made by fork() call exit() before.
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <command/cmdTableHelperIf.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace Corvane::CmdTableHelper;
using V2::CmdTableHelperIf;

/// How often each thread has used the service, while it lived and after.
struct Uses
{
    ~Uses()
    {
        if (!isForkedChild) { // which has none of the threads
            waitFor(after, 100);
        }
    }

    static void waitFor(const std::array<std::atomic<int>, 4>& counts, int least)
    {
        for (const auto& count : counts) {
            while (count < least) {
                std::this_thread::yield();
            }
        }
    }

    bool isForkedChild = false;
    std::array<std::atomic<int>, 4> before{};
    std::array<std::atomic<int>, 4> after{};
};

Uses uses; // made before the service

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
        const bool hasEnded = uses.after.at(thread) > 0;
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
        ++(result == 20 ? uses.after : uses.before).at(thread);
    }
}

} // namespace

int main(int argc, char** /*argv*/)
{
    ::alarm(100); // ends a hang
    for (std::size_t thread = 0; thread < uses.before.size(); ++thread) {
        std::thread(useForEver, thread).detach();
    }
    Uses::waitFor(uses.before, 1);
    for (int child = 0; argc > 1 && child < 40; ++child) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::alarm(20); // ends one that waits for a lock of a thread that it doesn't have
            uses.isForkedChild = true;
            std::exit(0);
        }
        int status = -1;
        ::waitpid(pid, &status, 0);
        expect(status == 0, "a forked child didn't exit\n");
    }
    return 0;
}
