/// Loads the library that its argument names and unloads it, twice. If CORVANE_NO_TRACER names a tracer, says each time
/// what is registered with it. Exits with 0 if the library is no longer in the process after each time.
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

#include <dlfcn.h>

namespace {

using RegisteredEvent = const char*(unsigned int);

bool isMapped(const std::string& library)
{
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(library) != std::string::npos) {
            return true;
        }
    }
    return false;
}

void report(const char* state, RegisteredEvent* registeredEvent)
{
    std::cout << state;
    if (registeredEvent != nullptr) {
        const char* const event = registeredEvent(0);
        std::cout << ": " << (event != nullptr ? event : "nothing") << " is registered";
    }
    std::cout << "\n";
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: loadAndUnload LIBRARY\n";
        return 2;
    }
    RegisteredEvent* registeredEvent = nullptr;
    if (const char* const tracer = std::getenv("CORVANE_NO_TRACER")) {
        void* const loaded = dlopen(tracer, RTLD_NOW); // stays, so that it can be asked when the library is unloaded
        registeredEvent = loaded == nullptr
                              ? nullptr
                              : reinterpret_cast<RegisteredEvent*>(dlsym(loaded, "corvaneTestRegisteredEvent"));
    }
    for (int round = 0; round < 2; ++round) {
        void* const library = dlopen(argv[1], RTLD_NOW);
        if (library == nullptr) {
            std::cerr << dlerror() << "\n";
            return 1;
        }
        report("loaded", registeredEvent);
        dlclose(library);
        if (isMapped("libcorvane.so")) {
            std::cerr << "the library is still there\n";
            return 1;
        }
        report("unloaded", registeredEvent);
    }
    return 0;
}
