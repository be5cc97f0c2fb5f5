/// What the families of command tables share.
#ifndef CORVANE_TESTS_BOUNDS_COMMANDINPUTS_H
#define CORVANE_TESTS_BOUNDS_COMMANDINPUTS_H

#include <cstddef>
#include <ostream>
#include <string>

namespace Corvane::Testing {

/// A handler.
inline int answer(int /*argc*/, const char* const* /*argv*/, std::ostream& /*out*/)
{
    return 0;
}

/// Returns  `begin`, then n times `before`, the number of the time, and `after`, then `end`.
inline std::string repeated(std::size_t n, const std::string& begin, const std::string& before,
                            const std::string& after, const std::string& end = "")
{
    std::string text = begin;
    for (std::size_t i = 0; i < n; ++i) {
        text += before + std::to_string(i) + after;
    }
    return text + end;
}

} // namespace Corvane::Testing

#endif
