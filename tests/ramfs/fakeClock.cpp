/// Replaces time() and strftime(). It is compiled apart from the code that calls them, so that the calls are not
/// inlined.
#include "tests/ramfs/fakeClock.h"

#include <cstdlib>
#include <cstring>

#include <dlfcn.h>

namespace {

std::time_t clockTime = 0;
std::string date;

} // namespace

namespace Corvane::Testing {

void setClock(std::time_t now)
{
    clockTime = now;
}

void setDate(const std::string& text)
{
    date = text;
}

} // namespace Corvane::Testing

extern "C" [[gnu::visibility("default")]] std::time_t time(std::time_t* result) noexcept
{
    if (result != nullptr) {
        *result = clockTime;
    }
    return clockTime;
}

extern "C" [[gnu::visibility("default")]] std::size_t strftime(char* text, std::size_t size, const char* format,
                                                               const std::tm* time) noexcept
{
    using Strftime = std::size_t (*)(char*, std::size_t, const char*, const std::tm*);
    static const auto original = reinterpret_cast<Strftime>(dlsym(RTLD_NEXT, "strftime"));
    if (original == nullptr) {
        std::abort();
    }
    if (date.empty()) {
        return original(text, size, format, time);
    }
    if (date.size() >= size) {
        return 0;
    }
    std::memcpy(text, date.c_str(), date.size() + 1);
    return date.size();
}
