/// An application that loads the library and ends its use in one of three ways. Exits with 0 if that went well.
///
///     endRamFs LIBRARY fork     children made by fork() call exit() while threads of the parent use the file system
///     endRamFs LIBRARY exit     main() returns while detached threads go on using the file system
///     endRamFs LIBRARY unload   loads, uses and unloads the library 1,000 times; no memory may be left behind
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ramfs/fileManagerIf.h>

namespace {

using Corvane::RamFs::V1::FileManagerIf;
using GetInstance = FileManagerIf& (*)();

GetInstance getInstanceOf(void* library)
{
    const char* const name = "_ZN7Corvane5RamFs2V113FileManagerIf11getInstanceEv";
    void* const symbol = library != nullptr ? ::dlsym(library, name) : nullptr;
    if (symbol == nullptr) {
        std::cerr << ::dlerror() << "\n";
        std::exit(1);
    }
    GetInstance getInstance = nullptr;
    static_assert(sizeof getInstance == sizeof symbol);
    std::memcpy(&getInstance, &symbol, sizeof symbol);
    return getInstance;
}

/// Leaves a file in the directory.
void useFiles(FileManagerIf& manager, const std::string& name)
{
    std::ostringstream out;
    if (const auto handle = manager.create(name, 10, 0)) {
        handle->write("more than ten bytes");
        handle->append(std::string("and more"));
        handle->dump(out);
    }
    manager.openAll();
    const auto buffer = manager.getFileStreamBuf();
    buffer->create("stream of " + name, 0, 0);
    std::ostream(buffer.get()) << "text" << std::flush << "text that waits";
    manager.remove("stream of " + name, out, true);
}

std::atomic<int> rounds{0};

/// Waits until the threads have used the file system some more.
void waitForRounds()
{
    for (const int before = rounds; rounds < before + 200;) {
        std::this_thread::yield();
    }
}

void startThreads(GetInstance getInstance)
{
    for (const std::string name : {"a", "b", "c", "d"}) {
        std::thread([getInstance, name] {
            for (int round = 0;; ++round) {
                useFiles(getInstance(), name);
                getInstance().remove(name, false);
                if (round % 100 == 0) {
                    getInstance().removeAll();
                }
                ++rounds;
            }
        }).detach();
    }
    waitForRounds();
}

int endWithThreads(GetInstance getInstance)
{
    std::atexit(waitForRounds); // runs after the end of the directory, since it is registered before its beginning
    startThreads(getInstance);
    return 0;
}

int endForkedChildren(GetInstance getInstance)
{
    startThreads(getInstance);
    int failures = 0;
    for (int child = 0; child < 40; ++child) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::alarm(20); // ends one that waits for a lock of a thread that it doesn't have
            std::exit(0);
        }
        int status = -1;
        ::waitpid(pid, &status, 0);
        failures += status == 0 ? 0 : 1;
    }
    std::_Exit(failures == 0 ? 0 : 1);
}

/// Returns  how much memory this process has for data.
long dataPages()
{
    std::ifstream statm("/proc/self/statm");
    long pages[6] = {};
    for (long& number : pages) {
        statm >> number;
    }
    return pages[5];
}

int unloadAgainAndAgain(const char* path)
{
    constexpr int loads = 1000;
    long pagesBefore = 0;
    for (int load = 0; load < loads; ++load) {
        void* const library = ::dlopen(path, RTLD_NOW);
        for (int file = 0; file < 200; ++file) {
            getInstanceOf(library)().create("file " + std::to_string(file), 100, 0);
        }
        useFiles(getInstanceOf(library)(), "f");
        ::dlclose(library);
        if (::dlopen(path, RTLD_NOW | RTLD_NOLOAD) != nullptr) {
            std::cerr << "the library is still loaded\n";
            return 1;
        }
        if (load == loads / 10) {
            pagesBefore = dataPages();
        }
    }
    const long more = dataPages() - pagesBefore;
    std::cout << more << " pages more" << std::endl;
#ifdef CORVANE_TEST_SANITIZED
    return 0; // its runtime keeps what is freed; AddressSanitizer reports a leak itself
#else
    return more < 100 ? 0 : 1;
#endif
}

} // namespace

int main(int argc, char** argv)
{
    ::alarm(100); // a hang ends
    const std::string end = argc == 3 ? argv[2] : "";
    if (end == "exit") {
        return endWithThreads(getInstanceOf(::dlopen(argv[1], RTLD_NOW)));
    }
    if (end == "fork") {
        return endForkedChildren(getInstanceOf(::dlopen(argv[1], RTLD_NOW)));
    }
    return end == "unload" ? unloadAgainAndAgain(argv[1]) : 2;
}
