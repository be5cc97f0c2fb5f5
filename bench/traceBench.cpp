/// What an event costs that is on, beside the least code that makes the same text and emits the same event.
///
/// The probe of each event does nothing, so a recording's own time is in none of the figures. The floor emits TRACE3,
/// which the library leaves to applications, and calls the operation while its event is off.
#include <array>
#include <functional>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <command/cmdTableHelperIf.h>
#include <ramfs/fileHandleIf.h>
#include <ramfs/fileManagerIf.h>

#include <trace/corvaneTracepoints.h>

#include "bench/bench.h"
#include "tests/support/tracepointObjects.h"

namespace {

using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;
using Corvane::RamFs::V1::FileHandleIf;
using Corvane::RamFs::V1::FileManagerIf;

void takeNothing(void* /*data*/, const char* /*file*/, unsigned int /*line*/, const char* /*obj*/, const char* /*msg*/)
{
}

// The registration functions of the provider's header take names that are not const; from 2.13 on they take one more.
std::string provider = "com_brimlow_kelpsys_corvane";
#if CORVANE_TEST_OLD_LTTNG
#define CORVANE_CALL(operation, event) __tracepoint_##operation##_com_brimlow_kelpsys_corvane___##event
#define CORVANE_NAME(event) (provider + ":" #event).data()
#else
#define CORVANE_CALL(operation, event) lttng_ust_tracepoint_##operation##_com_brimlow_kelpsys_corvane___##event
#define CORVANE_NAME(event) provider.data(), std::string(#event).data()
#endif

/// Turns an event on while it lives.
#define CORVANE_ON(event)                                                                                              \
    struct event##On                                                                                                   \
    {                                                                                                                  \
        event##On() { CORVANE_CALL(register, event)(CORVANE_NAME(event), probe(), nullptr); }                          \
        event##On(const event##On&) = delete;                                                                          \
        event##On& operator=(const event##On&) = delete;                                                               \
        ~event##On() { CORVANE_CALL(unregister, event)(CORVANE_NAME(event), probe(), nullptr); }                       \
        static void (*probe())() { return reinterpret_cast<void (*)()>(takeNothing); }                                 \
    }
CORVANE_ON(TRACE1);
CORVANE_ON(TRACE3);

/// Emits by hand.
void emit(const char* file, unsigned int line, const std::string& text)
{
    do_tracepoint(com_brimlow_kelpsys_corvane, TRACE3, file, line, "-", text.c_str());
}

void run(benchmark::State& state, const std::function<void()>& operation)
{
    {
        const Corvane::Bench::Allocations allocations;
        operation();
        state.counters["allocations"] = allocations.count();
    }
    for (auto _ : state) {
        operation();
    }
}

template <typename On>
void runWith(benchmark::State& state, const std::function<void()>& operation)
{
    const On on;
    run(state, operation);
}

int answer(const std::vector<std::string>& /*arguments*/, std::ostream& /*out*/)
{
    return 0;
}

struct Command
{
    Command()
    {
        commands.registerCmdTable("show", std::vector<CmdDefinitionCpp>{{"show [-l] <file> { on | off }", answer, ""}});
    }

    void execute() { commands.executeCmd(line, out); }

    void emitByHand() const
    {
        std::ostringstream text;
        text << "Execute VELK command: ";
        const char* separator = "";
        for (const std::string& word : line) {
            text << separator << word;
            separator = " ";
        }
        emit("src/cmdTableHelperImplV2.cpp", 113, text.str());
    }

    CmdTableHelperIf& commands = CmdTableHelperIf::getInstance();
    std::ostringstream out;
    const std::vector<std::string> line = {"show", "-l", "interfaces.txt", "on"};
};

struct File
{
    File() { handle->write(bytes.data(), size); }

    void setPos() { handle->setPos(0); }

    void write()
    {
        handle->setPos(0);
        handle->write(bytes.data(), size);
    }

    void emitSetPosByHand() const
    {
        std::ostringstream text;
        text << "setPos: " << name << " fileRef(" << 1 << "), offset(" << 0UL << ")";
        emit("src/fileHandleImpl.cpp", 50, text.str());
    }

    void emitWriteByHand() const
    {
        emitSetPosByHand();
        std::ostringstream call;
        call << "write: " << name << " fileRef(" << 1 << "), length(" << size << ")";
        emit("src/fileHandleImpl.cpp", 100, call.str());
        std::ostringstream result;
        result << "write: FileEntry::write() returns <" << std::to_string(1) << ">";
        emit("src/fileHandleImpl.cpp", 101, result.str());
    }

    static constexpr unsigned int size = 16;
    const std::string name = "interfaces.txt";
    std::array<unsigned char, size> bytes = {};
    const std::shared_ptr<FileHandleIf> handle = FileManagerIf::getInstance().create(name, 0, 1);
};

template <typename Subject>
Subject& the()
{
    static Subject subject;
    return subject;
}

void addOperation(const std::string& name, const std::function<void()>& operation,
                  const std::function<void()>& emitByHand)
{
    using Corvane::Bench::add;
    add("T2/" + name + "/ours", [=](benchmark::State& state) { runWith<TRACE1On>(state, operation); });
    add("T2/" + name + "/floor", [=](benchmark::State& state) {
        runWith<TRACE3On>(state, [&] {
            emitByHand();
            operation();
        });
    });
    add("T2/" + name + "/off", [=](benchmark::State& state) { run(state, operation); });
}

[[maybe_unused]] const bool areAdded = [] {
    addOperation(
        "executeCmd", [] { the<Command>().execute(); }, [] { the<Command>().emitByHand(); });
    addOperation(
        "setPos", [] { the<File>().setPos(); }, [] { the<File>().emitSetPosByHand(); });
    addOperation(
        "write", [] { the<File>().write(); }, [] { the<File>().emitWriteByHand(); });
    return true;
}();

} // namespace
