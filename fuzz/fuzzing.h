/// What the fuzz targets share: how they read an input, and how they report a difference.
#ifndef CORVANE_FUZZ_FUZZING_H
#define CORVANE_FUZZ_FUZZING_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <testing/eventRecorder.h>

/// Runs a target on one input. A difference ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Corvane::Fuzz {

/// Reads choices out of an input. After its end all choices are 0.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : m_next(data), m_end(data + size) {}

    bool isEmpty() const { return m_next == m_end; }

    unsigned int byte() { return isEmpty() ? 0 : *m_next++; }

    /// Returns  a number below `end`.
    unsigned int below(unsigned int end)
    {
        unsigned int number = byte();
        for (unsigned int largest = 0xFF; largest < end - 1; largest = largest << 8U | 0xFFU) {
            number = number << 8U | byte();
        }
        return number % end;
    }

    /// Returns  the next `length` bytes, or what is left.
    std::string bytes(std::size_t length)
    {
        const std::size_t taken = std::min(length, static_cast<std::size_t>(m_end - m_next));
        const std::string text(m_next, m_next + taken);
        m_next += taken;
        return text;
    }

    std::string rest() { return bytes(SIZE_MAX); }

private:
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
};

inline std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

/// Returns  the text as a string literal of C++.
inline std::string quoted(const std::string& text)
{
    std::string literal = "\"";
    for (const char c : text) {
        char escaped[8] = {};
        static_cast<void>(std::snprintf(escaped, sizeof escaped, "\\%03o", static_cast<unsigned char>(c)));
        literal += c == '\n'             ? "\\n"
                   : c == '"'            ? "\\\""
                   : c == '\\'           ? "\\\\"
                   : c < ' ' || c == 127 ? escaped
                                         : std::string(1, c);
    }
    return literal + "\"";
}

inline std::string shown(const std::string& text)
{
    return quoted(text);
}

template <typename Number>
std::string shown(const Number& number)
{
    return std::to_string(number);
}

inline std::string shown(const std::vector<std::string>& texts)
{
    std::string all = "{";
    for (const std::string& text : texts) {
        all += "\n    " + quoted(text);
    }
    return all + "}";
}

/// The operations of one input, and what they led to.
class Report
{
public:
    void add(const std::string& operation) { m_operations.push_back(operation); }

    /// Ends the process after a difference.
    [[noreturn]] void fail(const std::string& what) const
    {
        std::cerr << "\nThe library differs from the model. Operations:\n";
        for (const std::string& operation : m_operations) {
            std::cerr << "  " << operation << "\n";
        }
        std::cerr << what << std::endl;
        std::abort();
    }

    template <typename Value>
    void expectSame(const std::string& what, const Value& library, const Value& model) const
    {
        if (!(library == model)) {
            fail(what + "\n  library: " + shown(library) + "\n  model:   " + shown(model));
        }
    }

private:
    std::vector<std::string> m_operations;
};

/// The recorder of the process, which turns all events on.
inline Testing::EventRecorder& recorder()
{
    static Testing::EventRecorder instance;
    return instance;
}

/// Returns  what was emitted since the last call, such as "150 Execute ...".
inline std::vector<std::string> takeEmissions()
{
    std::vector<std::string> emissions;
    for (const auto& record : recorder().take()) {
        emissions.push_back(std::to_string(record.line) + " " + record.msg);
    }
    return emissions;
}

} // namespace Corvane::Fuzz

#endif
