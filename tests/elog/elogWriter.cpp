/// An application that uses the event log. It reads commands from standard input, one a line, answers each with a line,
/// and returns from main() when the input ends.
///
///     write <threads> <count>  every thread writes that many numbered entries     -> written
///     edges                    writes the entries at the limits                   -> written
///     bulk <count>             writes entries of 1 KiB                            -> written
///     big <count>              writes numbered entries of 1 MiB                   -> written
///     settle                   waits until the client has freed what was written  -> settled
///     files                    counts the open files                              -> <count>
///     hurry <seconds>          ends by SIGALRM after that time                    -> hurrying
///     fork <count>             makes children that write an entry and exit        -> <how many did so>
///     go-on <threads> <count> <microseconds>
///                              starts threads that never end: each writes numbered entries, with a pause after each;
///                              waits for <count> entries              -> <how many each of eight threads has written>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <numeric>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <elog/elogIf.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/elog/numberedEntries.h"
#include "tests/support/usedMemory.h"

namespace {

using Corvane::Elog::V2::ElogIf;
using namespace Corvane::Testing;

void write(unsigned int threadCount, unsigned int entryCount)
{
    std::atomic<unsigned int> ready{0};
    std::vector<std::thread> threads;
    for (unsigned int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (++ready; ready < threadCount;) {
                std::this_thread::yield();
            }
            for (unsigned int number = 0; number < entryCount; ++number) {
                ElogIf::getInstance().elogWrite(thread, textOfEntry(thread, number), {number});
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// Returns  the number of children whose exit status is 0. One that doesn't end is killed.
unsigned int forkChildren(unsigned int count)
{
    unsigned int exited = 0;
    for (unsigned int number = 0; number < count; ++number) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(10);
            ElogIf::getInstance().elogWrite(0, "", {});
            std::exit(0);
        }
        int status = -1;
        ::waitpid(child, &status, 0);
        exited += status == 0 ? 1 : 0;
    }
    return exited;
}

void startThreadsThatGoOn(unsigned int threadCount, unsigned int entryCount, unsigned int microseconds)
{
    static std::array<std::atomic<unsigned int>, 8> written{};
    for (unsigned int thread = 0; thread < threadCount; ++thread) {
        std::thread([thread, microseconds] {
            for (unsigned int number = 0;;) {
                ElogIf::getInstance().elogWrite(thread, textOfEntry(thread, number), {number});
                written.at(thread) = ++number;
                std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
            }
        }).detach();
    }
    while (std::accumulate(written.begin(), written.end(), 0U) < entryCount) {
        std::this_thread::yield();
    }
    for (const unsigned int number : written) {
        std::cout << number << ' ';
    }
    std::cout << std::endl;
}

std::ptrdiff_t openFiles()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

} // namespace

int main()
{
    const std::size_t memoryAtStart = usedMemory();
    std::string line;
    while (std::getline(std::cin, line)) {
        std::istringstream words(line);
        std::string command;
        unsigned int first = 0;
        unsigned int second = 0;
        unsigned int third = 0;
        words >> command >> first >> second >> third;
        if (command == "write") {
            write(first, second);
            std::cout << "written" << std::endl;
        } else if (command == "edges") {
            for (const PlainEntry& entry : edgeEntries()) {
                ElogIf::getInstance().elogWrite(entry.eventId, entry.text, entry.params);
            }
            std::cout << "written" << std::endl;
        } else if (command == "bulk") {
            const std::string text(1024, 'b');
            for (unsigned int number = 0; number < first; ++number) {
                ElogIf::getInstance().elogWrite(number, text, {});
            }
            std::cout << "written" << std::endl;
        } else if (command == "big") {
            for (unsigned int number = 0; number < first; ++number) {
                ElogIf::getInstance().elogWrite(0, bigTextOfEntry(number), {number});
            }
            std::cout << "written" << std::endl;
        } else if (command == "settle") {
            while (usedMemory() > memoryAtStart + (std::size_t{1} << 20U)) {
                std::this_thread::yield();
            }
            std::cout << "settled" << std::endl;
        } else if (command == "files") {
            std::cout << openFiles() << std::endl;
        } else if (command == "hurry") {
            ::alarm(first);
            std::cout << "hurrying" << std::endl;
        } else if (command == "fork") {
            std::cout << forkChildren(first) << std::endl;
        } else if (command == "go-on") {
            startThreadsThatGoOn(first, second, third);
        }
    }
    return 0;
}
