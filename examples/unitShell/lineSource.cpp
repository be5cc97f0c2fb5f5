/// Lines from a file or a pipe.
#include "lineSource.h"

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "interrupts.h"

namespace UnitShell {

namespace {

[[noreturn]] void throwReadError(const std::string& path)
{
    const std::string what = path.empty() ? "can't read standard input" : "can't read '" + path + "'";
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

FileLines::FileLines(int descriptor, const char* promptText) : m_descriptor(descriptor), m_prompt(promptText) {}

FileLines::FileLines(const std::string& path) : m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC)), m_path(path)
{
    if (m_descriptor < 0) {
        throwReadError(path);
    }
}

FileLines::~FileLines()
{
    if (!m_path.empty()) {
        close(m_descriptor);
    }
}

bool FileLines::next(std::string& line)
{
    std::cout << m_prompt << std::flush;
    line.clear();
    bool anything = false; // the last line may lack its line feed
    while (m_pos != m_end || fill()) {
        anything = true;
        const char* const begin = m_buffer.data() + m_pos;
        const char* const end = m_buffer.data() + m_end;
        const char* const feed = std::find(begin, end, '\n');
        const auto length = static_cast<std::size_t>(feed - begin);
        line.append(begin, std::min(length, maxLineLength + 1 - line.size()));
        m_pos += length;
        if (feed != end) {
            ++m_pos;
            return true;
        }
    }
    std::cout << (m_prompt.empty() ? "" : "\n"); // whatever comes next begins a line of its own
    return anything && Interrupts::received() == 0;
}

bool FileLines::fill()
{
    ssize_t count = -1;
    do {
        if (!Interrupts::waitForInput(m_descriptor)) {
            return false;
        }
        count = read(m_descriptor, m_buffer.data(), m_buffer.size());
    } while (count < 0 && (errno == EINTR || errno == EAGAIN));
    if (count < 0) {
        throwReadError(m_path);
    }
    m_pos = 0;
    m_end = static_cast<std::size_t>(count);
    return count > 0;
}

} // namespace UnitShell
