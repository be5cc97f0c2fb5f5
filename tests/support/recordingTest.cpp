/// The reading of recordings, on which the live tests rely.
#include "tests/support/recording.h"

#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Corvane::Testing::DeclaredField;
using Corvane::Testing::parseEvents;
using Corvane::Testing::parseMetadata;
using Corvane::Testing::RecordedEvent;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string head = "[02:51:03.904247882] TRACE_DEBUG (14) provider:EVENT: { 1 }, ";

TEST(RecordedEvents, AreReadWithNumbersTextsAndSequences)
{
    EXPECT_THAT(
        parseEvents(head + "{ line = 4, sig_no = 0xBEEF, msg = \"m\", data = [ [0] = 65, [1] = 0 ], e = [ ] }\n" +
                    head + "{ }\n"),
        ElementsAre(
            RecordedEvent{"EVENT",
                          "TRACE_DEBUG (14)",
                          {{"line", "4"}, {"sig_no", "0xBEEF"}, {"msg", "m"}, {"data", "[65, 0]"}, {"e", "[]"}}},
            RecordedEvent{"EVENT", "TRACE_DEBUG (14)", {}}));
    EXPECT_THAT(parseEvents(""), IsEmpty());
}

TEST(RecordedEvents, HaveTheBytesOfTheirTexts)
{
    const auto events = parseEvents(head + R"({ msg = "a \"b\" \\ { x = 1, y }\n\t\e\'\x01\x7f" })");
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].fields.at(0).value, "a \"b\" \\ { x = 1, y }\n\t\x1B'\x01\x7F");
}

TEST(RecordedEvents, AreRefusedInAnyOtherForm)
{
    for (const char* const fields : {"", "{", "{ line }", "{ line = }", "{ msg = \"open }", "{ a = 1 b = 2 }"}) {
        EXPECT_THROW(parseEvents(head + fields), std::runtime_error) << fields;
    }
    EXPECT_THROW(parseEvents("nonsense"), std::runtime_error);
}

TEST(DeclaredEvents, AreReadWithTypesInWords)
{
    const auto events =
        parseMetadata("trace {\n};\n\nevent {\n\tname = \"provider:EVENT\";\n\tid = 0;\n"
                      "\tstream_id = 0;\n\tloglevel = 13;\n\tmodel.emf.uri = \"x\";\n"
                      "\tfields := struct {\n"
                      "\t\tstring _file;\n"
                      "\t\tstring { encoding = ASCII; } _old;\n"
                      "\t\tinteger { size = 32; align = 8; signed = 1; encoding = none; base = 16; } _n;\n"
                      "\t\tinteger { size = 8; align = 8; signed = 0; encoding = none; base = 10; } "
                      "_data[ __data_length ];\n"
                      "\t};\n};\n");
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].name, "EVENT");
    EXPECT_EQ(events[0].logLevel, 13);
    EXPECT_TRUE(events[0].hasModelUri);
    EXPECT_THAT(
        events[0].fields,
        ElementsAre(DeclaredField{"file", "UTF-8 string"}, DeclaredField{"old", "string with encoding = ASCII;"},
                    DeclaredField{"n", "signed 32-bit integer, base 16"},
                    DeclaredField{"data", "sequence of unsigned 8-bit integer, base 10, length in _data_length"}));
}

TEST(DeclaredEvents, AreRefusedInAnyOtherForm)
{
    EXPECT_THROW(parseMetadata("event {\n\tname = \"p:E\";\n"), std::runtime_error);
    EXPECT_THROW(parseMetadata("event {\n\tfields := struct {\n\t\tfloating_point { } _x;\n\t};\n};\n"),
                 std::runtime_error);
}

} // namespace
