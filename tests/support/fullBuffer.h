/// A stream buffer that has room for a few characters and then throws, as the device behind a stream may.
#ifndef CORVANE_TESTS_SUPPORT_FULLBUFFER_H
#define CORVANE_TESTS_SUPPORT_FULLBUFFER_H

#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>

namespace Corvane::Testing {

class FullBuffer : public std::streambuf
{
public:
    /// Takes `room` characters, and throws std::runtime_error for each further one.
    explicit FullBuffer(std::size_t room = 0) : m_room(room) {}

    const std::string& text() const { return m_text; }

protected:
    int_type overflow(int_type c) override
    {
        if (m_text.size() >= m_room) {
            throw std::runtime_error("full");
        }
        m_text += traits_type::to_char_type(c);
        return c;
    }

private:
    const std::size_t m_room;
    std::string m_text;
};

/// A stream into a FullBuffer that passes its exceptions on.
class ThrowingStream : public std::ostream
{
public:
    explicit ThrowingStream(std::size_t room = 0) : std::ostream(nullptr), m_buffer(room)
    {
        rdbuf(&m_buffer);
        exceptions(std::ios_base::badbit);
    }

    const std::string& text() const { return m_buffer.text(); }

private:
    FullBuffer m_buffer;
};

} // namespace Corvane::Testing

#endif
