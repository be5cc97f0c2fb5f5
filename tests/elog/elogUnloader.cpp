/// An application that loads the library, starts the client if it has a second argument, and unloads the library.
#include <cstring>
#include <iostream>

#include <dlfcn.h>
#include <elog/elogIf.h>

#include "tests/elog/numberedEntries.h"

int main(int argc, char** argv)
{
    using Corvane::Elog::V2::ElogIf;
    void* const library = argc > 1 ? ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (library == nullptr) {
        std::cerr << ::dlerror() << "\n";
        return 1;
    }
    if (argc > 2) {
        void* const symbol = ::dlsym(library, "_ZN7Corvane4Elog2V26ElogIf11getInstanceEv");
        ElogIf& (*getInstance)() = nullptr;
        static_assert(sizeof getInstance == sizeof symbol);
        std::memcpy(&getInstance, &symbol, sizeof symbol);
        getInstance().elogWrite(0, Corvane::Testing::textOfEntry(0, 0), {0});
    }
    ::dlclose(library);
    const bool isLoaded = ::dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != nullptr;
    std::cout << (isLoaded ? "still loaded" : "unloaded") << std::endl;
    return 0;
}
