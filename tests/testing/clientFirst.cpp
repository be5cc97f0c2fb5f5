/// A process whose event-log client starts before its first EntryRecorder. Prints what the recorder receives.
///
///   clientFirst waiting      no engine runs
///   clientFirst connected    the client has found another engine
#include <exception>
#include <future>
#include <iostream>
#include <string>

#include <elog/elogIf.h>
#include <testing/entryRecorder.h>
#include <zel.h>

namespace {

using Corvane::Elog::V2::ElogIf;

void receiveAnEntryAsTheEngine()
{
    __zel_create_mailbox("ElogEngine", 0, "", 0);
    ElogIf::getInstance().elogWrite(0, "to the engine", {});
    zel_msg* entry = __zel_receive(nullptr, 60000, ZEL_ANY_SENDER, "", 0);
    __zel_free(&entry, "", 0);
}

} // namespace

int main(int, char** argv)
try {
    ElogIf::getInstance().elogWrite(1, "early", {});
    if (std::string(argv[1]) == "connected") {
        std::async(std::launch::async, receiveAnEntryAsTheEngine).get();
    }
    Corvane::Testing::EntryRecorder recorder;
    ElogIf::getInstance().elogWrite(2, "late", {});
    for (const Corvane::Testing::Entry& entry : recorder.take(1)) {
        std::cout << "event " << entry.eventId << " [] \"" << entry.text << "\"\n";
    }
    return 0;
} catch (const std::exception& error) {
    std::cout << error.what() << "\n";
    return 0;
}
