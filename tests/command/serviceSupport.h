/// Helpers for tests of the command-table service.
#ifndef CORVANE_TESTS_COMMAND_SERVICESUPPORT_H
#define CORVANE_TESTS_COMMAND_SERVICESUPPORT_H

#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <command/cmdDefinitions.h>

namespace Corvane::CmdTableHelper::Testing {

using Words = std::vector<std::string>;

/// Collects what is written to std::cout while it lives.
class CapturedCout
{
public:
    CapturedCout() : m_before(std::cout.rdbuf(m_text.rdbuf())) {}
    ~CapturedCout() { std::cout.rdbuf(m_before); }
    CapturedCout(const CapturedCout&) = delete;
    CapturedCout& operator=(const CapturedCout&) = delete;
    std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    std::streambuf* m_before;
};

/// A table of one command.
template <typename Record>
std::vector<Record> table(const std::string& synopsis, decltype(Record::handler) handler)
{
    return {{synopsis, std::move(handler), nullptr}};
}

/// A table of one command whose handler returns `result`.
inline std::vector<CmdDefinition> tableOf(const std::string& synopsis, int result)
{
    return {{synopsis, [result](int, const char* const*, std::ostream&) { return result; }, nullptr}};
}

} // namespace Corvane::CmdTableHelper::Testing

#endif
