/// Loads a plug-in that uses the command service and unloads it, a thousand times. Exits with 0 if the library is
/// unloaded each time as well, and the heap doesn't grow by a block each time.
#include <iostream>

#include <dlfcn.h>
#include <malloc.h>

namespace {

bool useOnce(const char* plugin)
{
    void* const library = ::dlopen(plugin, RTLD_NOW | RTLD_LOCAL);
    void* const symbol = library != nullptr ? ::dlsym(library, "useCommands") : nullptr;
    const bool works = symbol != nullptr && reinterpret_cast<int (*)()>(symbol)() == 3;
    return works && ::dlclose(library) == 0 && ::dlopen("libcorvane.so.0", RTLD_NOW | RTLD_NOLOAD) == nullptr;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: commandPluginHost PLUGIN\n";
        return 2;
    }
    constexpr int rounds = 1000;
    std::size_t before = 0;
    for (int round = -rounds / 10; round < rounds; ++round) {
        if (round == 0) {
            before = ::mallinfo2().uordblks;
        }
        if (!useOnce(argv[1])) {
            std::cerr << "the plug-in doesn't work, or the library is still there\n";
            return 1;
        }
    }
    constexpr std::size_t smallestBlock = 24;
    const std::size_t after = ::mallinfo2().uordblks;
    if (after >= before + rounds * smallestBlock) { // less is the loader's
        std::cerr << "the heap grew by " << after - before << " bytes\n";
        return 1;
    }
    return 0;
}
