/// An application that ends while entries are queued. It writes 20 numbered entries of 1 MiB. If the engine doesn't
/// read, not all of them can be sent. Then it prints "written" and waits for a line of input, which names the way to
/// end.
///
///     return, exit, quick_exit, _exit, abort, SIGTERM, SIGKILL, exec
///     new_handler   a thread calls exit(3) inside elogWrite(), as a handler of missing memory may
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <new>
#include <string>

#include <elog/elogIf.h>
#include <sys/resource.h>
#include <unistd.h>

#include "tests/elog/numberedEntries.h"

namespace {

using Corvane::Elog::V2::ElogIf;
using namespace Corvane::Testing;

bool hasToExit = false;

void endBy(const std::string& way)
{
    if (way == "exit") {
        std::exit(0);
    } else if (way == "quick_exit") {
        std::quick_exit(0);
    } else if (way == "_exit") {
        ::_exit(0);
    } else if (way == "abort") {
        std::abort();
    } else if (way == "SIGTERM") {
        std::raise(SIGTERM);
    } else if (way == "SIGKILL") {
        std::raise(SIGKILL);
    } else if (way == "exec") {
        ::execlp("true", "true", nullptr);
    } else if (way == "new_handler") {
        hasToExit = true;
        ElogIf::getInstance().elogWrite(0, "", {});
    }
}

} // namespace

void* operator new(std::size_t size)
{
    if (hasToExit) {
        hasToExit = false;
        std::exit(3);
    }
    void* const memory = std::malloc(size == 0 ? 1 : size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

void* operator new[](std::size_t size) // a sanitizer's own would not call it
{
    return operator new(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

int main()
{
    const rlimit noCore = {0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    for (unsigned int number = 0; number < 20; ++number) {
        ElogIf::getInstance().elogWrite(0, uniformTextOfEntry(number), {number});
    }
    std::cout << "written" << std::endl;
    std::string way;
    std::getline(std::cin, way);
    endBy(way);
    return way == "return" ? 0 : 1;
}
