/// The client on fakes of its platform: every call with its arguments, every byte of a message, every trace.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <testing/eventRecorder.h>
#include <zel.h>

#include "elog/src/elogImpl_V2.h"
#include "tests/elog/fakePlatform.h"
#include "tests/support/failingAllocation.h"

namespace {

using Corvane::Elog::V2::ElogIf;
using Corvane::Elog::V2::ElogImpl;
using Corvane::Elog::V2::messageSize;
using Corvane::Testing::Event;
using Corvane::Testing::EventName;
using Corvane::Testing::EventRecorder;
using Corvane::Testing::failEachAllocation;
using Corvane::Testing::FakePlatform;
using Corvane::Testing::SentMessage;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Words in the host's byte order.
void append(SentMessage& message, const std::vector<std::uint32_t>& words)
{
    const auto* const bytes = reinterpret_cast<const unsigned char*>(words.data());
    message.insert(message.end(), bytes, bytes + words.size() * sizeof(std::uint32_t));
}

SentMessage expectedMessage(unsigned int eventId, const std::string& text, const std::vector<unsigned int>& params)
{
    SentMessage message;
    append(message,
           {0x17070D1, eventId, static_cast<std::uint32_t>(params.size()), static_cast<std::uint32_t>(text.size())});
    append(message, params);
    message.insert(message.end(), text.begin(), text.end());
    message.push_back(0);
    message.insert(message.end(), 3, 0xEE); // allocated, not written
    return message;
}

Event info(unsigned int line, const std::string& msg)
{
    return {EventName::Info, "src/elogImpl_V2.cpp", line, "", msg};
}

class ElogClient : public testing::Test
{
protected:
    FakePlatform m_platform;
    EventRecorder m_recorder;
};

TEST_F(ElogClient, StartsAnActiveObjectOfPolicyZero)
{
    const ElogImpl client;
    EXPECT_THAT(m_platform.calls, ElementsAre("create(0)"));
    EXPECT_TRUE(m_platform.hasActiveObject);
    EXPECT_THAT(m_platform.jobs, IsEmpty());
}

TEST_F(ElogClient, CreatesItsMailboxAndThenLocatesTheEngine)
{
    const ElogImpl client;
    m_platform.calls.clear();
    m_platform.run();
    EXPECT_THAT(m_platform.calls,
                ElementsAre(R"(create_mailbox("ElogEngineClient", 0, "", 0))", R"(alloc(0x4, 0x17070d0, "", 0))",
                            R"(locate_async("ElogEngine", 0x4, 0xfff00000, "", 0))",
                            R"(receive(0x1, 0x17070d0, 0xea60, 0xfff11111, "", 0))", R"(sender("", 0))",
                            R"(free("", 0))"));
    EXPECT_THAT(m_recorder.take(), IsEmpty());
    EXPECT_EQ(m_platform.messages, 0U);
}

TEST_F(ElogClient, ReportsEveryTimeoutAndGoesOnWaiting)
{
    m_platform.timeouts = 3;
    const ElogImpl client;
    m_platform.calls.clear();
    m_platform.run();
    const Event waiting = info(71, "ABN: 'ElogEngine' not available. Still waiting ...");
    EXPECT_THAT(m_recorder.take(), ElementsAre(waiting, waiting, waiting));
    EXPECT_EQ(std::count(m_platform.calls.begin(), m_platform.calls.end(),
                         R"(receive(0x1, 0x17070d0, 0xea60, 0xfff11111, "", 0))"),
              4);
    EXPECT_EQ(std::count(m_platform.calls.begin(), m_platform.calls.end(),
                         R"(locate_async("ElogEngine", 0x4, 0xfff00000, "", 0))"),
              1);
}

TEST_F(ElogClient, ReportsThatItHasNoMailboxAndDiscardsEveryEntry)
{
    m_platform.mailboxId = ZEL_NO_MAILBOX;
    ElogImpl client;
    client.elogWrite(7, "early", {1});
    m_platform.calls.clear();
    m_platform.run();
    client.elogWrite(4294967295, "late", {});
    m_platform.run();
    EXPECT_THAT(m_recorder.take(), ElementsAre(info(59, "ABN: Failed to create ZEL mailbox: ElogEngineClient"),
                                               info(98, "ABN: Discarding elog write for eventId: 7"),
                                               info(98, "ABN: Discarding elog write for eventId: 4294967295")));
    EXPECT_THAT(m_platform.calls, ElementsAre(R"(create_mailbox("ElogEngineClient", 0, "", 0))"));
    EXPECT_THAT(m_platform.sent, IsEmpty());
}

TEST_F(ElogClient, QueuesAnEntryWithoutCallingTheMessagingLibrary)
{
    ElogImpl client;
    m_platform.calls.clear();
    client.elogWrite(1, "text", {2, 3});
    EXPECT_THAT(m_platform.calls, IsEmpty());
    EXPECT_THAT(m_platform.jobs, SizeIs(1));
}

TEST_F(ElogClient, SendsAnEntryAsOneMessage)
{
    ElogImpl client;
    m_platform.run();
    m_platform.calls.clear();
    client.elogWrite(1007, "abc", {11, 22});
    m_platform.run();
    EXPECT_THAT(m_platform.calls, ElementsAre(R"(alloc(0x1f, 0x17070d1, "", 0))", R"(send(0x202, 0xfff00000, "", 0))"));
    EXPECT_THAT(m_platform.sent, ElementsAre(expectedMessage(1007, "abc", {11, 22})));
    EXPECT_EQ(m_platform.sent[0].size(), 31U);
    EXPECT_EQ(m_platform.messages, 0U);
    EXPECT_THAT(m_recorder.take(), IsEmpty());
}

TEST_F(ElogClient, SendsAnEntryWithoutParametersAndText)
{
    ElogImpl client;
    client.elogWrite(0, "", {});
    m_platform.run();
    EXPECT_THAT(m_platform.sent, ElementsAre(expectedMessage(0, "", {})));
    EXPECT_EQ(m_platform.sent[0].size(), 20U);
}

TEST_F(ElogClient, SendsTextsWithNulsLongTextsAndManyParameters)
{
    using namespace std::string_literals;
    std::vector<unsigned int> params(10000);
    for (std::size_t index = 0; index < params.size(); ++index) {
        params[index] = static_cast<unsigned int>(index * 429496U);
    }
    const std::string longText(std::size_t{1} << 20U, '\xFF');
    ElogImpl client;
    client.elogWrite(1, "\0a\0\0b\0"s, {0xFFFFFFFF});
    client.elogWrite(2, longText, {});
    client.elogWrite(3, "many", params);
    client.elogWrite(4, longText, params);
    m_platform.run();
    EXPECT_TRUE(
        m_platform.sent ==
        (std::vector<SentMessage>{expectedMessage(1, "\0a\0\0b\0"s, {0xFFFFFFFF}), expectedMessage(2, longText, {}),
                                  expectedMessage(3, "many", params), expectedMessage(4, longText, params)}));
}

TEST_F(ElogClient, KeepsEntriesWrittenBeforeTheEngineIsThereInTheirOrder)
{
    m_platform.timeouts = 2;
    ElogImpl client;
    std::vector<SentMessage> expected;
    for (unsigned int entry = 0; entry < 100; ++entry) {
        client.elogWrite(entry, std::to_string(entry), {entry});
        expected.push_back(expectedMessage(entry, std::to_string(entry), {entry}));
    }
    EXPECT_THAT(m_platform.sent, IsEmpty());
    m_platform.run();
    EXPECT_EQ(m_platform.sent, expected);
}

TEST_F(ElogClient, CopiesItsArguments)
{
    ElogImpl client;
    {
        std::string text = "before";
        std::vector<unsigned int> params = {1, 2};
        client.elogWrite(5, text, params);
        text = "after!";
        params = {3, 4};
    }
    m_platform.run();
    EXPECT_THAT(m_platform.sent, ElementsAre(expectedMessage(5, "before", {1, 2})));
}

TEST_F(ElogClient, SendsAnEntryFromACopyOfItsJobToo)
{
    ElogImpl client;
    client.elogWrite(6, "copied", {1, 2, 3});
    m_platform.jobs.push_back(m_platform.jobs.front());
    m_platform.run();
    EXPECT_THAT(m_platform.sent,
                ElementsAre(expectedMessage(6, "copied", {1, 2, 3}), expectedMessage(6, "copied", {1, 2, 3})));
}

TEST_F(ElogClient, CopiesTextAndParametersOnceAndQueuesNothingWithoutTheMemory)
{
    const std::string text(32, 'x');
    const std::vector<unsigned int> params(4);
    ElogImpl client;
    client.elogWrite(1, text, params); // the fake's queue has room for the next from now on
    const int allocations = failEachAllocation([&] { client.elogWrite(2, text, params); },
                                               [&] { EXPECT_THAT(m_platform.jobs, SizeIs(1)); });
    EXPECT_EQ(allocations, 2); // entry, job
    EXPECT_THAT(m_platform.jobs, SizeIs(2));
}

TEST_F(ElogClient, StartsAtTheFirstCallThatCanStartAThreadAndCallsTheLoaderOnlyOnce)
{
    m_platform.refuseThread = true;
    EXPECT_THROW(ElogIf::getInstance(), std::system_error);
    m_platform.refuseThread = false;
    ElogIf& client = ElogIf::getInstance();
    const int loaderCalls = FakePlatform::loaderCalls;
    m_platform.run();
    m_platform.calls.clear();
    ElogIf::getInstance().elogWrite(1, "text", {});
    m_platform.run();
    EXPECT_EQ(&ElogIf::getInstance(), &client);
    EXPECT_THAT(m_platform.sent, ElementsAre(expectedMessage(1, "text", {})));
    EXPECT_EQ(FakePlatform::loaderCalls, loaderCalls);
}

TEST_F(ElogClient, DiscardsAnEntryForWhichNoMessageCanBeAllocated)
{
    ElogImpl client;
    m_platform.run();
    m_platform.calls.clear();
    m_platform.refuseAllocation = true;
    client.elogWrite(31, "refused", {1});
    m_platform.run();
    m_platform.refuseAllocation = false;
    client.elogWrite(32, "sent", {});
    m_platform.run();
    EXPECT_THAT(m_recorder.take(), ElementsAre(info(98, "ABN: Discarding elog write for eventId: 31")));
    EXPECT_THAT(m_platform.sent, ElementsAre(expectedMessage(32, "sent", {})));
}

TEST_F(ElogClient, ComputesTheSizeOfAMessageUpToThirtyTwoBits)
{
    constexpr std::size_t most = 0xFFFFFFFF;
    EXPECT_EQ(messageSize(0, 0), 20U);
    EXPECT_EQ(messageSize(3, 2), 31U);
    EXPECT_EQ(messageSize(most - 20, 0), most);
    EXPECT_EQ(messageSize(most - 19, 0), std::nullopt);
    EXPECT_EQ(messageSize(most - 24, 1), most);
    EXPECT_EQ(messageSize(most - 23, 1), std::nullopt);
    EXPECT_EQ(messageSize(0, 0x3FFFFFFA), 0xFFFFFFFCU);
    EXPECT_EQ(messageSize(3, 0x3FFFFFFA), most);
    EXPECT_EQ(messageSize(4, 0x3FFFFFFA), std::nullopt);
    EXPECT_EQ(messageSize(0, 0x3FFFFFFB), std::nullopt);
    EXPECT_EQ(messageSize(0, std::size_t{1} << 62U), std::nullopt); // times four is a multiple of 2^64
    EXPECT_EQ(messageSize(std::numeric_limits<std::size_t>::max(), 0), std::nullopt);
}

TEST_F(ElogClient, DiscardsAnEntryWhoseMessageDoesNotFitThirtyTwoBits)
{
    if (std::getenv("CORVANE_TEST_4GIB") == nullptr) {
        GTEST_SKIP() << "takes 4 GiB of memory; set CORVANE_TEST_4GIB to run it";
    }
    ElogImpl client;
    m_platform.run();
    m_platform.calls.clear();
    client.elogWrite(33, std::string((std::size_t{1} << 32U) - 20, 'x'), {});
    m_platform.run();
    EXPECT_THAT(m_recorder.take(), ElementsAre(info(98, "ABN: Discarding elog write for eventId: 33")));
    EXPECT_THAT(m_platform.calls, IsEmpty());
}

TEST_F(ElogClient, OnlyReleasesTheActiveObjectAtItsEndAndDropsWhatIsWrittenAfterThat)
{
    ElogImpl client;
    m_platform.run();
    m_platform.calls.clear();
    client.end();
    EXPECT_FALSE(m_platform.hasActiveObject);
    client.elogWrite(1, "late", {});
    EXPECT_THAT(m_platform.jobs, IsEmpty());
    EXPECT_THAT(m_platform.calls, ElementsAre("release()"));
}

TEST_F(ElogClient, OnlyReleasesTheActiveObjectWhenItIsDestroyed)
{
    auto client = std::make_unique<ElogImpl>();
    m_platform.calls.clear();
    client.reset();
    EXPECT_THAT(m_platform.calls, ElementsAre("release()"));
}

} // namespace
