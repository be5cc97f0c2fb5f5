/// A module for the dynamic loader (LD_AUDIT) that hides LTTng from a process: the tracepoint library is nowhere to be
/// found, and the tracer's place is taken by the library that CORVANE_NO_TRACER names. It is how a process looks on a
/// machine that has the library's needed files but no tracing.
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
