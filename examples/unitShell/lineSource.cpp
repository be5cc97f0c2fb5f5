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

[[noreturn]] void throwReadError(const std::string& name)
{
    throw std::system_error(errno, std::generic_category(), "can't read " + name);
}

} // namespace

FileLines::FileLines(int descriptor, const char* promptText)
    : m_name("standard input"), m_descriptor(descriptor), m_isOwn(false), m_prompt(promptText)
{
}

// A named pipe is opened at once, and waited for as any other input is: open() itself would wait through a signal.
FileLines::FileLines(const std::string& path)
    : m_name("'" + path + "'"), m_descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)), m_isOwn(true)
{
    if (m_descriptor < 0) {
        throwReadError(m_name);
    }
}

FileLines::~FileLines()
{
    if (m_isOwn) {
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
        throwReadError(m_name);
    }
    m_pos = 0;
    m_end = static_cast<std::size_t>(count);
    return count > 0;
}

} // namespace UnitShell
