/// The example of docs/event-log-message.md: the client sends these bytes, and the engine shown there understands them.
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <future>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zelStandin.h>

#include <elog/elogIf.h>

#include "tests/support/childProcess.h"
#include "tests/support/runtimeFolder.h"

namespace {

using Corvane::Testing::Companion;
using Corvane::Testing::RuntimeFolder;

/// Returns  the bytes of the document's example; -1 for one that is not set.
std::vector<int> documentedBytes()
{
    std::vector<int> bytes;
    std::ifstream document(CORVANE_TEST_DOCUMENT);
    for (std::string line; std::getline(document, line);) {
        if (line.find(':') != 2 || line.size() < 15) {
            continue;
        }
        std::istringstream fields(line.substr(3, 12));
        for (std::string field; fields >> field;) {
            bytes.push_back(field == ".." ? -1 : std::stoi(field, nullptr, 16));
        }
    }
    return bytes;
}

class EventLogMessage : public testing::Test
{
protected:
    /// A mailbox ends with its thread.
    template <typename Work>
    static auto onAnotherThread(const Work& work)
    {
        return std::async(std::launch::async, work).get();
    }

    RuntimeFolder m_folder;
};

TEST_F(EventLogMessage, HasTheDocumentedBytes)
{
    const std::vector<int> sent = onAnotherThread([] {
        std::vector<int> bytes;
        __zel_create_mailbox("ElogEngine", 0, "", 0);
        Corvane::Elog::V2::ElogIf::getInstance().elogWrite(1007, "carrier down", {2, 3});
        zel_msg* message = __zel_receive(nullptr, 60000, ZEL_ANY_SENDER, "", 0);
        const auto* const data = reinterpret_cast<const unsigned char*>(message);
        bytes.assign(data, data + zel_standin_size(message));
        __zel_free(&message, "", 0);
        return bytes;
    });
    std::vector<int> documented = documentedBytes();
    ASSERT_EQ(documented.size(), 40U);
    ASSERT_EQ(sent.size(), documented.size());
    for (std::size_t i = 0; i < documented.size(); ++i) {
        if (documented[i] != -1) {
            EXPECT_EQ(sent[i], documented[i]) << "at offset " << i;
        }
    }
}

TEST_F(EventLogMessage, IsUnderstoodByTheDocumentedEngine)
{
    Companion engine({CORVANE_TEST_ENGINE}, {});
    onAnotherThread([] {
        __zel_create_mailbox("Sender", 0, "", 0);
        zel_msg* reply = __zel_alloc(4, 1, "", 0);
        __zel_locate_async("ElogEngine", &reply, ZEL_OWN_MAILBOX, "", 0);
        reply = __zel_receive(nullptr, 60000, ZEL_ANY_SENDER, "", 0);
        const std::uint32_t found = __zel_sender(reply, "", 0);
        __zel_free(&reply, "", 0);

        const std::vector<int> documented = documentedBytes();
        const std::vector<unsigned char> bytes(documented.begin(), documented.end());
        zel_msg* message = __zel_alloc(bytes.size(), 0, "", 0);
        std::memcpy(static_cast<void*>(message), bytes.data(), bytes.size());
        __zel_send(&message, found, ZEL_OWN_MAILBOX, "", 0);
        return found;
    });
    EXPECT_EQ(engine.readLine(), "event 1007 2 3: carrier down");
    ::kill(engine.pid(), SIGTERM);
    EXPECT_EQ(engine.finish(), -SIGTERM);
}

} // namespace
