/// An event-log engine for tests.
#include "tests/elog/testEngine.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <future>
#include <iostream>
#include <map>
#include <stdexcept>

#include <zelStandin.h>

#include "tests/elog/numberedEntries.h"

namespace Corvane::Testing {

namespace {

constexpr std::size_t unwrittenBytes = 3;

void append(std::vector<unsigned char>& bytes, const std::vector<std::uint32_t>& words)
{
    const auto* const data = reinterpret_cast<const unsigned char*>(words.data());
    bytes.insert(bytes.end(), data, data + words.size() * sizeof(std::uint32_t));
}

/// Returns  whether this is the entry that should come next from its thread.
bool isNext(const ReceivedEntry& entry, std::map<std::uint32_t, std::uint32_t>& next)
{
    std::uint32_t thread = 0;
    if (entry.written.size() < 2 * sizeof thread) {
        return false;
    }
    std::memcpy(&thread, entry.written.data() + sizeof thread, sizeof thread);
    const std::uint32_t number = next[thread]++;
    return entry.written == writtenBytes(thread, textOfEntry(thread, number), {number});
}

void pauseFor(std::chrono::microseconds duration)
{
    const auto until = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < until) {
    }
}

} // namespace

bool becomeEngine()
{
    return __zel_create_mailbox("ElogEngine", 0, "", 0) != ZEL_NO_MAILBOX;
}

unsigned int locateEngine(const std::string& ownName)
{
    __zel_create_mailbox(ownName.c_str(), 0, "", 0);
    zel_msg* message = __zel_alloc(4, 1, "", 0);
    __zel_locate_async("ElogEngine", &message, ZEL_OWN_MAILBOX, "", 0);
    message = __zel_receive(nullptr, 60000, ZEL_ANY_SENDER, "", 0);
    if (message == nullptr) {
        throw std::runtime_error("there was no engine for a minute");
    }
    const unsigned int id = __zel_sender(message, "", 0);
    __zel_free(&message, "", 0);
    return id;
}

void waitForEngine()
{
    std::async(std::launch::async, [] { locateEngine("WaitsForEngine"); }).get();
}

ReceivedEntry receiveEntry()
{
    zel_msg* message = __zel_receive(nullptr, 60000, ZEL_ANY_SENDER, "", 0);
    if (message == nullptr) {
        throw std::runtime_error("no entry came for a minute");
    }
    return entryOf(message);
}

ReceivedEntry entryOf(zel_msg* message)
{
    ReceivedEntry entry;
    entry.size = zel_standin_size(message);
    entry.sender = __zel_sender(message, "", 0);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(message);
    entry.written.assign(bytes, bytes + entry.size - std::min(entry.size, unwrittenBytes));
    __zel_free(&message, "", 0);
    return entry;
}

std::vector<unsigned char> writtenBytes(unsigned int eventId, const std::string& text,
                                        const std::vector<unsigned int>& params)
{
    std::vector<unsigned char> bytes;
    append(bytes,
           {24146129, eventId, static_cast<std::uint32_t>(params.size()), static_cast<std::uint32_t>(text.size())});
    append(bytes, params);
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.push_back(0);
    return bytes;
}

std::vector<unsigned char> messageOf(unsigned int eventId, const std::string& text,
                                     const std::vector<unsigned int>& params)
{
    std::vector<unsigned char> message = writtenBytes(eventId, text, params);
    message.insert(message.end(), unwrittenBytes, 0xEE);
    return message;
}

int runEngine(unsigned long expected, unsigned long pause)
{
    if (!becomeEngine()) {
        return 1;
    }
    std::cout << "created" << std::endl;
    std::map<std::uint32_t, std::uint32_t> next;
    unsigned long flaws = 0;
    std::string line;
    for (unsigned long received = 1; received <= expected; ++received) {
        flaws += isNext(receiveEntry(), next) ? 0U : 1U;
        if (received == 1000) {
            std::cout << "flowing" << std::endl;
            if (pause > 0) {
                std::getline(std::cin, line);
            }
        }
        pauseFor(std::chrono::microseconds(pause));
    }
    std::cout << (flaws == 0 ? "complete" : std::to_string(flaws) + " entries are not what should have come")
              << std::endl;
    while (std::getline(std::cin, line)) {
    }
    return 0;
}

} // namespace Corvane::Testing
