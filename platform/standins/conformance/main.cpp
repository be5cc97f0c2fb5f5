/// The conformance suite: what the platform contract promises, tried on the libraries that the loader finds.
///
/// To test other libraries than those it was built with, name their folder:
///
///     LD_LIBRARY_PATH=FOLDER build/desk/tests/platform/platform_conformance
///
/// FOLDER holds libzel.so.1 or libpindle.so.0 or both; `ldd` with the same variable shows what is tried. Where a test
/// can't pass because the other library chose differently, its contract's header says "Stand-in" there.
///
/// Run without arguments it tests. With "--peer" it is the other process of a test: it takes one command per line from
/// standard input, answers each with a line, and ends with its input.
///
///     create <name>                    -> id of its mailbox
///     locate <name>                    -> id of that mailbox
///     send <to> <count> <largest>      -> sent (numbered messages from 0 on)
///     send-one <to> <size>             -> sent (numbered message 0 of that size)
///     receive <count> <largest>        -> ok; or what is wrong with them, and the end
///     exit-with-blocked-active-object  ends by exit(0)
///     throw-in-a-job                   ends as it ends
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <pindle/activeObjectIf.h>
#include <unistd.h>
#include <zel.h>

#include "numberedMessages.h"
#include "tests/support/timeToEnd.h"

namespace {

using namespace Conformance;

/// Returns  what is wrong with the messages that come; empty if nothing is.
std::string receiveNumbered(std::uint32_t count, std::size_t largest)
{
    for (std::uint32_t index = 0; index < count; ++index) {
        zel_msg* message = receive(numberedNo);
        const std::string flaw = flawOf(message, index, sizeOfMessage(index, largest));
        __zel_free(&message, "", 0);
        if (!flaw.empty()) {
            return flaw;
        }
    }
    return "";
}

std::shared_ptr<Pindle::ActiveObject::V1::ActiveObjectIf>& ownedToTheEnd()
{
    static std::shared_ptr<Pindle::ActiveObject::V1::ActiveObjectIf> owner;
    return owner;
}

std::string answer(const std::string& line)
{
    using namespace Pindle::ActiveObject::V1;
    std::istringstream words(line);
    std::string command;
    std::string name;
    std::uint32_t to = 0;
    std::uint32_t count = 0;
    std::size_t largest = 0;
    words >> command;
    if (command == "create" && words >> name) {
        return std::to_string(__zel_create_mailbox(name.c_str(), 0, "", 0));
    }
    if (command == "locate" && words >> name) {
        return std::to_string(locate(name));
    }
    if (command == "send" && words >> to >> count >> largest) {
        for (std::uint32_t index = 0; index < count; ++index) {
            sendNumbered(to, index, sizeOfMessage(index, largest));
        }
        return "sent";
    }
    std::size_t size = 0;
    if (command == "send-one" && words >> to >> size) {
        sendNumbered(to, 0, size);
        return "sent";
    }
    if (command == "receive" && words >> count >> largest) {
        const std::string flaw = receiveNumbered(count, largest);
        if (!flaw.empty()) { // the sender shall not wait for a receiver that has seen enough
            std::cout << flaw << std::endl;
            std::exit(1);
        }
        return "ok";
    }
    if (command == "exit-with-blocked-active-object") {
        const std::string mailbox = uniqueName("blocked");
        ownedToTheEnd() = ActiveObjectIf::create(
            [mailbox] {
                __zel_create_mailbox(mailbox.c_str(), 0, "", 0);
                for (;;) {
                    receive(numberedNo);
                }
            },
            SchedulingPolicy{0});
        ownedToTheEnd()->post([] { std::abort(); });
        ::alarm(Corvane::Testing::timeToEnd());
        std::exit(0);
    }
    if (command == "throw-in-a-job") {
        const auto object = ActiveObjectIf::create([] {}, SchedulingPolicy{0});
        object->post([] { throw std::runtime_error("thrown by a job"); });
        for (;;) {
            ::pause();
        }
    }
    return "what is '" + line + "'?";
}

int runPeer()
{
    std::string line;
    while (std::getline(std::cin, line)) {
        std::cout << answer(line) << std::endl;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 1 && std::string(argv[1]) == "--peer") {
        return runPeer();
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
