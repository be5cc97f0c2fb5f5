/// A module for the dynamic loader (LD_AUDIT) that hides LTTng from a process: the loader doesn't find the tracepoint
/// library, and loads the library that CORVANE_NO_TRACER names instead of the tracer.
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <link.h>

namespace {

std::string_view fileName(const char* path)
{
    const char* const slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

bool begins(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

} // namespace

extern "C" {

[[gnu::visibility("default")]] unsigned int la_version(unsigned int)
{
    return LAV_CURRENT;
}

[[gnu::visibility("default")]] char* la_objsearch(const char* name, uintptr_t*, unsigned int)
{
    if (begins(fileName(name), "liblttng-ust-tracepoint.so")) {
        return nullptr;
    }
    if (begins(fileName(name), "liblttng-ust.so")) {
        return std::getenv("CORVANE_NO_TRACER");
    }
    return const_cast<char*>(name);
}
}
