/// Measures what the library costs an application: heap and threads after the load, after the first use of each
/// service, and for each thing that a service keeps.
///
/// Writes a line "NAME HEAP THREADS" for each step. HEAP is the number of bytes that C++ code has allocated since the
/// last step, without LTTng, which is written in C. THREADS is the number of threads started since then, without
/// LTTng's. After each line the program waits for a line on standard input; meanwhile tools/footprint looks at the
/// process. Exit status: 0 all steps were done; 1 the event log's client never waited for its engine.
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <mutex>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <zel.h>

#include <command/cmdTableHelperIf.h>
#include <elog/elogIf.h>
#include <ramfs/fileManagerIf.h>

namespace {

std::atomic<long> heapBytes{0};
std::atomic<int> threadsStarted{0};

/// The thread of the event log's client. It stops where it waits for the engine, until it has been measured.
struct Client
{
    std::mutex mutex;
    std::condition_variable changed;
    bool isWaiting = false;
    bool isMeasured = false;
} client;

long sizeOf(void* block)
{
    return static_cast<long>(malloc_usable_size(block));
}

} // namespace

void* operator new(std::size_t size)
{
    void* const block = std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    heapBytes += sizeOf(block);
    return block;
}

void operator delete(void* block) noexcept
{
    heapBytes -= sizeOf(block);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    operator delete(block);
}

// The C library's names for the parameters are reserved.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument)
{
    Dl_info caller = {};
    const bool isKnown = dladdr(__builtin_return_address(0), &caller) != 0 && caller.dli_fname != nullptr;
    const char* const slash = isKnown ? std::strrchr(caller.dli_fname, '/') : nullptr;
    const bool isTracer = slash != nullptr && std::strncmp(slash + 1, "liblttng", std::strlen("liblttng")) == 0;
    threadsStarted += isTracer ? 0 : 1;
    using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    return create(thread, attributes, start, argument);
}

[[gnu::visibility("default")]] zel_msg* __zel_receive(const std::uint32_t* filter, std::uint32_t timeoutMs,
                                                      std::uint32_t from, const char* file, int line)
{
    {
        std::unique_lock<std::mutex> lock(client.mutex);
        client.isWaiting = true;
        client.changed.notify_all();
        client.changed.wait(lock, [] { return client.isMeasured; });
    }
    static const auto receive = reinterpret_cast<decltype(&__zel_receive)>(dlsym(RTLD_NEXT, "__zel_receive"));
    return receive(filter, timeoutMs, from, file, line);
}

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Corvane::Elog::V2::ElogIf;
using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;

constexpr std::size_t many = 1000;

/// Writes what a step cost. Frees what the writing itself allocates.
class Steps
{
public:
    /// `share` is the number of things among which the cost is divided.
    void done(const char* name, std::size_t share = 1)
    {
        const long heap = heapBytes;
        const int threads = threadsStarted;
        std::cout << name << " " << (heap - m_heap) / static_cast<long>(share) << " " << threads - m_threads
                  << std::endl;
        char line[8];
        std::cin.getline(line, sizeof(line));
        m_heap = heapBytes;
        m_threads = threads;
    }

private:
    long m_heap = 0;
    int m_threads = 0;
};

int answer(const std::vector<std::string>&, std::ostream&)
{
    return 0;
}

void measureCommands(Steps& steps)
{
    {
        std::ostringstream out;
        CmdTableHelperIf::getInstance().executeCmd({"nothing"}, out);
    }
    steps.done("commands");
    for (std::size_t i = 0; i < many; ++i) {
        const std::string synopsis = "carrier" + std::to_string(i) + " <power> [-v]";
        CmdTableHelperIf::getInstance().registerCmdTable("carriers",
                                                         std::vector<CmdDefinitionCpp>{{synopsis, answer, "Sets it."}});
    }
    steps.done("synopsis", many);
}

void measureFiles(Steps& steps)
{
    FileManagerIf::getInstance().exists("nothing");
    steps.done("files");
    for (int i = 0; i < static_cast<int>(many); ++i) {
        FileManagerIf::getInstance().create("file" + std::to_string(i), 0, i);
    }
    steps.done("file", many);
    std::array<std::shared_ptr<FileHandleIf>, many> handles;
    for (std::shared_ptr<FileHandleIf>& handle : handles) {
        handle = FileManagerIf::getInstance().open("file1");
    }
    steps.done("handle", many);
    handles.fill(nullptr);
    steps.done("closed");
}

/// Returns  false if the client's thread never waits.
bool measureEventLog(Steps& steps)
{
    ElogIf::getInstance();
    std::unique_lock<std::mutex> lock(client.mutex);
    if (!client.changed.wait_for(lock, std::chrono::minutes(1), [] { return client.isWaiting; })) {
        return false;
    }
    steps.done("elog");
    client.isMeasured = true;
    client.changed.notify_all();
    return true;
}

} // namespace

int main()
{
    Steps steps;
    steps.done("load");
    measureCommands(steps);
    measureFiles(steps);
    return measureEventLog(steps) ? 0 : 1;
}
