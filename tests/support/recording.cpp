/// Reads recordings.
#include "tests/support/recording.h"

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <sstream>
#include <stdexcept>

namespace Corvane::Testing {

namespace {

/// Reads a line from its front to its back.
class Reader
{
public:
    explicit Reader(const std::string& line) : m_line(line) {}

    bool take(const std::string& expected)
    {
        if (m_line.compare(m_at, expected.size(), expected) != 0) {
            return false;
        }
        m_at += expected.size();
        return true;
    }

    void need(const std::string& expected)
    {
        if (!take(expected)) {
            fail();
        }
    }

    std::string upTo(const std::string& end)
    {
        const std::size_t found = m_line.find(end, m_at);
        if (found == std::string::npos) {
            fail();
        }
        std::string text = m_line.substr(m_at, found - m_at);
        m_at = found + end.size();
        return text;
    }

    std::string whileOneOf(const char* characters)
    {
        const std::size_t begin = m_at;
        m_at = std::min(m_line.find_first_not_of(characters, m_at), m_line.size());
        return m_line.substr(begin, m_at - begin);
    }

    /// Reads a quoted text, after its opening quote.
    std::string quoted()
    {
        std::string text;
        for (char c = next(); c != '"'; c = next()) {
            text += c == '\\' ? escaped() : c;
        }
        return text;
    }

    [[noreturn]] void fail() const
    {
        throw std::runtime_error("can't be read from column " + std::to_string(m_at) + " on: " + m_line);
    }

private:
    char next()
    {
        if (m_at == m_line.size()) {
            fail();
        }
        return m_line[m_at++];
    }

    char escaped()
    {
        static const std::string letters = "abefnrtv";
        static const std::string meanings = "\a\b\x1B\f\n\r\t\v";
        const char c = next();
        if (c == 'x') {
            const std::string digits{next(), next()};
            return static_cast<char>(std::stoi(digits, nullptr, 16));
        }
        const std::size_t letter = letters.find(c);
        return letter == std::string::npos ? c : meanings[letter];
    }

    const std::string& m_line;
    std::size_t m_at = 0;
};

constexpr const char* numberCharacters = "-+.0123456789ABCDEFXabcdefx";

std::string readSequence(Reader& line)
{
    std::string value = "[";
    for (bool first = true; !line.take(" ]"); first = false) {
        line.need(first ? " [" : ", [");
        line.upTo("] = ");
        value += (first ? "" : ", ") + line.whileOneOf(numberCharacters);
    }
    return value + "]";
}

std::string readValue(Reader& line)
{
    if (line.take("\"")) {
        return line.quoted();
    }
    if (line.take("[")) {
        return readSequence(line);
    }
    std::string number = line.whileOneOf(numberCharacters);
    if (number.empty()) {
        line.fail();
    }
    return number;
}

RecordedEvent readEvent(const std::string& text)
{
    Reader line(text);
    RecordedEvent event;
    line.upTo("] "); // the time
    event.logLevel = line.upTo(")") + ")";
    line.upTo(":"); // the provider
    event.name = line.upTo(":");
    line.upTo("{"); // of the packet's context
    line.upTo("}");
    line.need(", {");
    for (bool first = true; !line.take(" }"); first = false) {
        line.need(first ? " " : ", ");
        const std::string name = line.upTo(" = ");
        event.fields.push_back({name, readValue(line)});
    }
    return event;
}

/// The metadata has an underscore in front of every name.
std::string nameOf(const std::string& identifier)
{
    return identifier.substr(identifier.compare(0, 1, "_") == 0 ? 1 : 0);
}

DeclaredField readString(Reader& line)
{
    // A string without an encoding is UTF-8.
    const std::string type = line.take("{ ") ? "string with " + line.upTo(" } ") : "UTF-8 string";
    return {nameOf(line.upTo(";")), type};
}

DeclaredField readInteger(Reader& line)
{
    line.need("{ size = ");
    const std::string size = line.upTo("; align = ");
    line.upTo("; signed = ");
    const std::string sign = line.take("0") ? "unsigned " : "signed ";
    line.upTo("; encoding = none; base = ");
    const std::string type = sign + size + "-bit integer, base " + line.upTo("; } ");
    const std::string declarator = line.upTo(";");
    const std::size_t bracket = declarator.find("[ ");
    if (bracket == std::string::npos) {
        return {nameOf(declarator), type};
    }
    const std::string length = declarator.substr(bracket + 2, declarator.rfind(" ]") - bracket - 2);
    return {nameOf(declarator.substr(0, bracket)), "sequence of " + type + ", length in " + nameOf(length)};
}

DeclaredField readField(const std::string& text)
{
    Reader line(text);
    if (line.take("string ")) {
        return readString(line);
    }
    line.need("integer ");
    return readInteger(line);
}

std::string trimmed(const std::string& line)
{
    const std::size_t begin = line.find_first_not_of("\t ");
    return begin == std::string::npos ? "" : line.substr(begin);
}

DeclaredEvent readDeclaredEvent(std::istream& text)
{
    DeclaredEvent event;
    bool inFields = false;
    for (std::string whole; std::getline(text, whole);) {
        const std::string line = trimmed(whole);
        if (line == "};") {
            if (!inFields) {
                return event;
            }
            inFields = false;
        } else if (inFields) {
            event.fields.push_back(readField(line));
        } else if (line == "fields := struct {") {
            inFields = true;
        } else if (line.compare(0, 8, "name = \"") == 0) {
            const std::size_t colon = line.find(':');
            event.name = line.substr(colon + 1, line.rfind('"') - colon - 1);
        } else if (line.compare(0, 11, "loglevel = ") == 0) {
            event.logLevel = std::stoi(line.substr(11));
        } else if (line.compare(0, 13, "model.emf.uri") == 0) {
            event.hasModelUri = true;
        }
    }
    throw std::runtime_error("the metadata ends inside an event");
}

} // namespace

std::vector<RecordedEvent> parseEvents(const std::string& text)
{
    std::vector<RecordedEvent> events;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        events.push_back(readEvent(line));
    }
    return events;
}

std::vector<DeclaredEvent> parseMetadata(const std::string& text)
{
    std::vector<DeclaredEvent> events;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line == "event {") {
            events.push_back(readDeclaredEvent(lines));
        }
    }
    return events;
}

bool operator==(const RecordedField& left, const RecordedField& right)
{
    return left.name == right.name && left.value == right.value;
}

bool operator==(const RecordedEvent& left, const RecordedEvent& right)
{
    return left.name == right.name && left.logLevel == right.logLevel && left.fields == right.fields;
}

bool operator==(const DeclaredField& left, const DeclaredField& right)
{
    return left.name == right.name && left.type == right.type;
}

std::ostream& operator<<(std::ostream& out, const RecordedField& field)
{
    return out << field.name << " = \"" << field.value << "\"";
}

std::ostream& operator<<(std::ostream& out, const RecordedEvent& event)
{
    out << event.name << ", " << event.logLevel;
    for (const RecordedField& field : event.fields) {
        out << ", " << field;
    }
    return out;
}

std::ostream& operator<<(std::ostream& out, const DeclaredField& field)
{
    return out << field.name << " is " << field.type;
}

} // namespace Corvane::Testing
