// SPDX-License-Identifier: MIT
/// Lines from a file or a pipe.
#include "lineSource.h"

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <system_error>
#include <utility>

#include <unistd.h>

#include "interrupts.h"

namespace UnitShell {

FileLines::FileLines(int descriptor, std::string name, const char* promptText)
    : m_name(std::move(name)), m_descriptor(descriptor), m_prompt(promptText)
{
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
    std::cout << (m_prompt.empty() ? "" : "\n"); // the next output begins on a new line
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
        throw std::system_error(errno, std::generic_category(), "can't read " + m_name);
    }
    m_pos = 0;
    m_end = static_cast<std::size_t>(count);
    return count > 0;
}

} // namespace UnitShell
