/// What the library costs an application: heap and threads after the load, after the first use of each service, and for
/// each thing that a service keeps.
///
/// Writes a line "NAME HEAP THREADS" for each step, where HEAP are the bytes that C++ code took from the heap since the
/// step before (LTTng's are not among them: it is written in C) and THREADS the threads started since then by anybody
/// but LTTng. After each it waits for a line on standard input, so that somebody else may look at the process.
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>

#include <command/cmdTableHelperIf.h>
#include <elog/elogIf.h>
#include <ramfs/fileManagerIf.h>

namespace {

std::atomic<long> heapBytes{0};
std::atomic<int> threadsStarted{0};

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

// The parameters have other names in the C library, which are reserved.
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

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Corvane::Elog::V2::ElogIf;
using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;

constexpr std::size_t many = 1000;

/// Tells what a step cost. What the telling itself takes is freed before it is over.
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

} // namespace

int main()
{
    Steps steps;
    steps.done("load");
    measureCommands(steps);
    measureFiles(steps);
    ElogIf::getInstance();
    steps.done("client");
    std::this_thread::sleep_for(std::chrono::milliseconds(200)); // the client's thread has then settled down to wait
    steps.done("elog");
    return 0;
}
