/// A recorder beside a live recording of LTTng.
#include <string>

#include <gtest/gtest.h>

#include "tests/support/liveSession.h"

namespace {

TEST(EventRecorderLive, DoesNotDisturbARecordingOfLttng)
{
    Corvane::Testing::LiveSession session;
    if (!session.whyNot().empty()) {
        GTEST_SKIP() << session.whyNot();
    }
    constexpr unsigned int count = 100;
    EXPECT_EQ(session.run({CORVANE_RECORD_AND_EMIT, std::to_string(count)}).out, std::to_string(count) + "\n");
    unsigned int line = 0;
    for (const auto& event : session.finish().events) {
        EXPECT_EQ(event.name, "INFO");
        EXPECT_EQ(event.fields.at(1).value, std::to_string(line++));
    }
    EXPECT_EQ(line, 3 * count);
}

} // namespace
