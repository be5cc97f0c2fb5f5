/// What a live recording holds, read back by babeltrace2: the events in the order of their time, and the description
/// of the events that the tracer wrote beside them.
///
/// Threads  plain data and pure functions.
#ifndef CORVANE_TESTS_SUPPORT_RECORDING_H
#define CORVANE_TESTS_SUPPORT_RECORDING_H

#include <iosfwd>
#include <string>
#include <vector>

namespace Corvane::Testing {

/// A field of a recorded event. Numbers read as babeltrace2 shows them (hexadecimal ones as 0xDEADBEEF), texts are the
/// bytes themselves without quotes, sequences read [65, 0, 255]. The length that LTTng records in front of a sequence
/// is a field of its own, for `data` the field `_data_length`.
struct RecordedField
{
    std::string name;
    std::string value;
};

/// A recorded event.
struct RecordedEvent
{
    std::string name;     ///< without the provider: "TRACE1"
    std::string logLevel; ///< name and number: "TRACE_DEBUG_PROGRAM (8)"
    std::vector<RecordedField> fields;
};

/// What the tracer says a field is, in words: "UTF-8 string", "unsigned 32-bit integer, base 10",
/// "sequence of unsigned 8-bit integer, base 10, length in _data_length".
struct DeclaredField
{
    std::string name;
    std::string type;
};

/// What the tracer says of an event, whether it occurred or not.
struct DeclaredEvent
{
    std::string name; ///< without the provider
    int logLevel = -1;
    bool hasModelUri = false;
    std::vector<DeclaredField> fields;
};

struct Recording
{
    std::vector<RecordedEvent> events;   ///< in the order of time
    std::vector<DeclaredEvent> declared; ///< the whole provider, in the tracer's order
    std::string metadata;                ///< the text that `declared` was read from
};

/// Reads the events out of what babeltrace2 prints with --no-delta --names=payload --fields=loglevel.
///
/// Errors  std::runtime_error for a line that has another form, with the line.
std::vector<RecordedEvent> parseEvents(const std::string& text);

/// Reads the events' descriptions out of the metadata of a trace (CTF 1.8).
///
/// Errors  std::runtime_error for a line that has another form, with the line.
std::vector<DeclaredEvent> parseMetadata(const std::string& text);

bool operator==(const RecordedField& left, const RecordedField& right);
bool operator==(const RecordedEvent& left, const RecordedEvent& right);
bool operator==(const DeclaredField& left, const DeclaredField& right);

// For the messages of failing tests.
std::ostream& operator<<(std::ostream& out, const RecordedField& field);
std::ostream& operator<<(std::ostream& out, const RecordedEvent& event);
std::ostream& operator<<(std::ostream& out, const DeclaredField& field);

} // namespace Corvane::Testing

#endif
