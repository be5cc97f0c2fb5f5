/// A live recording, read with babeltrace2: the events in the order of their time, and the description of all events
/// that the tracer wrote.
///
/// Threads  plain data and pure functions.
#ifndef CORVANE_TESTS_SUPPORT_RECORDING_H
#define CORVANE_TESTS_SUPPORT_RECORDING_H

#include <iosfwd>
#include <string>
#include <vector>

namespace Corvane::Testing {

/// A field of a recorded event. Numbers have the form that babeltrace2 prints (0xDEADBEEF if hexadecimal). Texts are
/// the bytes without quotes. Sequences have the form [65, 0, 255]. LTTng records the length of a sequence as another
/// field in front of it: `_data_length` for `data`.
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

/// The tracer's description of a field, in words: "UTF-8 string", "unsigned 32-bit integer, base 10",
/// "sequence of unsigned 8-bit integer, base 10, length in _data_length".
struct DeclaredField
{
    std::string name;
    std::string type;
};

/// The tracer's description of an event, which may not have occurred.
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

/// Reads events from the output of `babeltrace2 --no-delta --names=payload --fields=loglevel`.
///
/// Errors  std::runtime_error with the line, for a line of another form.
std::vector<RecordedEvent> parseEvents(const std::string& text);

/// Reads the descriptions of the events from the metadata of a trace (CTF 1.8).
///
/// Errors  std::runtime_error with the line, for a line of another form.
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
