/// Records the provider live and compares what is read back: every field, type, order and log level.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/liveSession.h"

namespace {

using Corvane::Testing::DeclaredEvent;
using Corvane::Testing::DeclaredField;
using Corvane::Testing::LiveSession;
using Corvane::Testing::RecordedEvent;
using Corvane::Testing::RecordedField;
using Corvane::Testing::Recording;
using testing::ElementsAre;
using testing::ElementsAreArray;

class LiveTrace : public testing::Test
{
protected:
    void SetUp() override
    {
#ifdef CORVANE_TEST_SANITIZED
        GTEST_SKIP() << "a live recording is not made under a sanitizer";
#else
        m_session = std::make_unique<LiveSession>();
        if (!m_session->whyNot().empty()) {
            GTEST_SKIP() << m_session->whyNot();
        }
#endif
    }

    Recording record(const std::string& program)
    {
        const auto result = m_session->run({program});
        EXPECT_EQ(result.status, 0) << result.out << result.err;
        return m_session->finish();
    }

    std::unique_ptr<LiveSession> m_session;
};

/// An event with its fields in their order.
RecordedEvent event(const std::string& name, const std::string& logLevel, const std::vector<RecordedField>& fields)
{
    return {name, logLevel, fields};
}

std::vector<RecordedField> timed(const std::string& file, const std::string& line, const std::string& sec,
                                 const std::string& usec, const std::string& process, const std::string& msg,
                                 const std::string& length, const std::string& data)
{
    return {{"file", file}, {"line", line},           {"sec", sec},  {"usec", usec}, {"process", process},
            {"msg", msg},   {"_data_length", length}, {"data", data}};
}

std::vector<RecordedField> plain(const std::string& file, const std::string& line, const std::string& obj,
                                 const std::string& msg)
{
    return {{"file", file}, {"line", line}, {"obj", obj}, {"msg", msg}};
}

std::vector<RecordedField> notice(const std::string& file, const std::string& line, const std::string& msg)
{
    return {{"file", file}, {"line", line}, {"msg", msg}};
}

TEST_F(LiveTrace, RecordsEveryFieldOfTheTwentyEventsOfAnApplication)
{
    const Recording recording = record(CORVANE_EMIT_ALL_EVENTS);

    const std::vector<RecordedEvent> expected = {
        event("TRACE_UTS7", "TRACE_DEBUG (14)",
              timed("uts7.cpp", "71", "72", "73", "uts7 process", "uts7 msg", "5", "[65, 0, 255, 127, 128]")),
        event("TRACE_UTS6", "TRACE_DEBUG_LINE (13)",
              timed("(null)", "61", "62", "63", "(null)", "(null)", "1", "[65]")),
        event("TRACE_UTS5", "TRACE_DEBUG_FUNCTION (12)",
              timed("uts5.cpp", "51", "52", "53", "uts5 process", "uts5 msg", "0", "[]")),
        event("TRACE_UTS4", "TRACE_DEBUG_UNIT (11)",
              timed("uts4.cpp", "41", "42", "43", "uts4 process", "uts4 msg", "0", "[]")),
        event("TRACE_UTS3", "TRACE_DEBUG_MODULE (10)",
              timed("uts3.cpp", "4294967295", "2147483648", "0", "uts3 process", "uts3 msg", "0", "[]")),
        event("TRACE_UTS2", "TRACE_DEBUG_PROCESS (9)", timed("", "21", "22", "23", "", "", "2", "[0, 255]")),
        event("TRACE_UTS1", "TRACE_DEBUG_PROGRAM (8)",
              timed("uts1.cpp", "11", "12", "13", "prozess \xC3\xA4\xE2\x82\xAC", "say \"uts1\" \\ {x = 1}", "2",
                    "[127, 128]")),
        event("DATA", "TRACE_DEBUG (14)",
              {{"file", "data.cpp"},
               {"line", "101"},
               {"obj", "data obj"},
               {"msg", "data msg"},
               {"_data_length", "5"},
               {"data", "[65, 0, 255, 127, 128]"}}),
        event("SEND_SIG", "TRACE_DEBUG_SYSTEM (7)",
              {{"file", "send.cpp"},
               {"line", "102"},
               {"obj", "send obj"},
               {"sig_no", "0xDEADBEEF"},
               {"pid", "4000000001"},
               {"msg", "send msg"}}),
        event("REC_SIG", "TRACE_DEBUG_SYSTEM (7)",
              {{"file", "rec.cpp"}, {"line", "103"}, {"obj", "rec obj"}, {"sig_no", "0xA"}, {"msg", "rec msg"}}),
        event("TRACE7", "TRACE_DEBUG (14)", plain("t7.cpp", "207", "t7 obj", "t7 msg")),
        event("TRACE6", "TRACE_DEBUG_LINE (13)", plain("t6.cpp", "206", "t6 obj", "t6 msg")),
        event("TRACE5", "TRACE_DEBUG_FUNCTION (12)", plain("t5.cpp", "205", "t5 obj", "t5 msg")),
        event("TRACE4", "TRACE_DEBUG_UNIT (11)", plain("t4.cpp", "204", "t4 obj", "t4 msg")),
        event("TRACE3", "TRACE_DEBUG_MODULE (10)", plain("t3.cpp", "203", "t3 obj", "t3 msg")),
        event("TRACE2", "TRACE_DEBUG_PROCESS (9)", plain("t2.cpp", "202", "(null)", "t2 msg")),
        event("TRACE1", "TRACE_DEBUG_PROGRAM (8)", plain("t1.cpp", "201", "t1 obj", "(null)")),
        event("STATE_CHANGE", "TRACE_DEBUG_SYSTEM (7)", plain("(null)", "208", "state obj", "two\nlines, a\ttab")),
        event("INFO", "TRACE_INFO (6)", notice("info.cpp", "301", "info msg")),
        event("ERROR", "TRACE_ERR (3)", notice("error.cpp", "302", "error msg")),
    };
    EXPECT_THAT(recording.events, ElementsAreArray(expected));
}

const std::string text = "UTF-8 string";
const std::string number = "unsigned 32-bit integer, base 10";

const std::vector<DeclaredField> timedFields = {{"file", text},
                                                {"line", number},
                                                {"sec", number},
                                                {"usec", number},
                                                {"process", text},
                                                {"msg", text},
                                                {"_data_length", "unsigned 64-bit integer, base 10"},
                                                {"data", "sequence of unsigned 8-bit integer, base 10, length in "
                                                         "_data_length"}};
const std::vector<DeclaredField> dataFields = {
    {"file", text},
    {"line", number},
    {"obj", text},
    {"msg", text},
    {"_data_length", "unsigned 64-bit integer, base 10"},
    {"data", "sequence of unsigned 8-bit integer, base 10, length in _data_length"}};
const std::vector<DeclaredField> sendSigFields = {{"file", text},  {"line", number},
                                                  {"obj", text},   {"sig_no", "unsigned 32-bit integer, base 16"},
                                                  {"pid", number}, {"msg", text}};
const std::vector<DeclaredField> recSigFields = {
    {"file", text}, {"line", number}, {"obj", text}, {"sig_no", "unsigned 32-bit integer, base 16"}, {"msg", text}};
const std::vector<DeclaredField> plainFields = {{"file", text}, {"line", number}, {"obj", text}, {"msg", text}};
const std::vector<DeclaredField> noticeFields = {{"file", text}, {"line", number}, {"msg", text}};

TEST_F(LiveTrace, DeclaresTypeOrderAndLogLevelOfEveryFieldOfTheWholeProvider)
{
    const Recording recording = record(CORVANE_EMIT_ALL_EVENTS);

    const std::vector<DeclaredEvent> expected = {
        {"TRACE_UTS7", 14, false, timedFields}, {"TRACE_UTS6", 13, false, timedFields},
        {"TRACE_UTS5", 12, false, timedFields}, {"TRACE_UTS4", 11, false, timedFields},
        {"TRACE_UTS3", 10, false, timedFields}, {"TRACE_UTS2", 9, false, timedFields},
        {"TRACE_UTS1", 8, false, timedFields},  {"DATA", 14, false, dataFields},
        {"SEND_SIG", 7, false, sendSigFields},  {"REC_SIG", 7, false, recSigFields},
        {"TRACE7", 14, false, plainFields},     {"TRACE6", 13, false, plainFields},
        {"TRACE5", 12, false, plainFields},     {"TRACE4", 11, false, plainFields},
        {"TRACE3", 10, false, plainFields},     {"TRACE2", 9, false, plainFields},
        {"TRACE1", 8, false, plainFields},      {"STATE_CHANGE", 7, false, plainFields},
        {"INFO", 6, false, noticeFields},       {"ERROR", 3, false, noticeFields},
    };
    ASSERT_EQ(recording.declared.size(), expected.size()) << recording.metadata;
    for (const DeclaredEvent& wanted : expected) {
        SCOPED_TRACE(wanted.name);
        const auto declared = std::find_if(recording.declared.begin(), recording.declared.end(),
                                           [&](const DeclaredEvent& event) { return event.name == wanted.name; });
        ASSERT_NE(declared, recording.declared.end());
        EXPECT_EQ(declared->logLevel, wanted.logLevel);
        EXPECT_FALSE(declared->hasModelUri);
        EXPECT_THAT(declared->fields, ElementsAreArray(wanted.fields));
    }
    EXPECT_EQ(recording.metadata.find("model.emf.uri"), std::string::npos);
}

TEST_F(LiveTrace, RecordsWhatTheCommandServiceEmits)
{
    const Recording recording = record(CORVANE_USE_COMMANDS);

    const std::string syntaxFile = "src/cmdSyntax.cpp";
    const std::string serviceFile = "src/cmdTableHelperImplV2.cpp";
    EXPECT_THAT(
        recording.events,
        ElementsAre(event("TRACE2", "TRACE_DEBUG_PROCESS (9)",
                          plain(syntaxFile, "209", "-", "Registered VELK syntax: show [-l] <file> { on | off }")),
                    event("TRACE2", "TRACE_DEBUG_PROCESS (9)",
                          plain(syntaxFile, "209", "-", "Registered VELK syntax: show2 ]{>")),
                    event("ERROR", "TRACE_ERR (3)",
                          notice(syntaxFile, "192", "VELK syntax \"show2 ]{>\": Unbalanced {} brackets")),
                    event("ERROR", "TRACE_ERR (3)",
                          notice(syntaxFile, "192", "VELK syntax \"show2 ]{>\": Unbalanced [] brackets")),
                    event("ERROR", "TRACE_ERR (3)",
                          notice(syntaxFile, "192", "VELK syntax \"show2 ]{>\": Unbalanced <> brackets")),
                    event("TRACE1", "TRACE_DEBUG_PROGRAM (8)",
                          plain(serviceFile, "150", "-", "Execute VELK command: show -l a.txt on")),
                    event("TRACE1", "TRACE_DEBUG_PROGRAM (8)",
                          plain(serviceFile, "150", "-", "Execute VELK command: show  off say \"x\""))));
}

TEST_F(LiveTrace, RecordsOnlyTheProgramsThatTheSessionFollows)
{
    EXPECT_EQ(Corvane::Testing::runProgram({CORVANE_USE_COMMANDS}, m_session->environment()).status, 0);
    EXPECT_EQ(m_session->run({CORVANE_EMIT_ALL_EVENTS}).status, 0);
    EXPECT_EQ(m_session->run({CORVANE_EMIT_ALL_EVENTS}).status, 0);

    const Recording recording = m_session->finish();

    ASSERT_EQ(recording.events.size(), 40U);
    EXPECT_EQ(recording.events.front(), recording.events.at(20));
    EXPECT_EQ(recording.events.at(19), recording.events.back());
    EXPECT_EQ(recording.declared.size(), 20U);
}

} // namespace
