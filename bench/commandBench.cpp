/// Measures the command tables: one line (C1), among many commands (C2), registration (C3), many optional words (C4).
#include <ctime>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include <command/cmdTableHelperIf.h>

#include "bench/bench.h"
#include "bench/commandPeers.h"

namespace {

using namespace Corvane::Bench;
using Corvane::CmdTableHelper::CmdDefinitionCpp;
using Corvane::CmdTableHelper::V2::CmdTableHelperIf;

const Words fullLine = {"show", "-l", "interfaces.txt", "on"};
const Words shortLine = {"show", "-l", "interfaces.txt"};
const Words wrongLine = {"show", "-l", "interfaces.txt", "maybe"};
const Words unknownLine = {"list", "-l", "interfaces.txt", "on"};

/// Returns  the CPU time that the current thread has used, in seconds.
double cpuTime()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// Measures `operation` and counts the allocations of one call.
template <typename Operation>
void measure(benchmark::State& state, const Operation& operation)
{
    operation(); // what only the first call allocates isn't counted
    {
        const Allocations allocations;
        operation();
        state.counters["allocations"] = allocations.count();
    }
    for (auto _ : state) {
        operation();
    }
}

template <typename Service>
void runLine(benchmark::State& state, const Words& words, bool succeeds)
{
    Service service;
    service.add(Service::commandOf("show"));
    const auto line = Service::lineOf(words);
    if ((service.run(line) != service.run(Service::lineOf(unknownLine))) != succeeds) {
        state.SkipWithError("the line doesn't end as expected");
    }
    measure(state, [&] { benchmark::DoNotOptimize(service.run(line)); });
}

/// The exported service, with the forms of handlers and hooks that have a cost of their own.
void runExported(benchmark::State& state, const Words& words)
{
    CmdTableHelperIf& service = CmdTableHelperIf::getInstance();
    service.registerCmdTable("show", Ours::commandOf("show").table);
    NullStream out;
    measure(state, [&] { benchmark::DoNotOptimize(service.executeCmd(words, out)); });
}

void runWordsHandler(benchmark::State& state)
{
    Ours ours;
    ours.service().registerCmdTable(
        "show", std::vector<CmdDefinitionCpp>{
                    {"show [-l] <file> { on | off }",
                     [](const Words& words, std::ostream&) { return static_cast<int>(words.size()); }, ""}});
    measure(state, [&] { benchmark::DoNotOptimize(ours.run(fullLine)); });
}

void runWithHook(benchmark::State& state)
{
    Ours ours;
    ours.add(Ours::commandOf("show"));
    ours.service().registerPostExecutionHook(
        [](int result, int, const char* const*) { benchmark::DoNotOptimize(result); });
    measure(state, [&] { benchmark::DoNotOptimize(ours.run(fullLine)); });
}

CORVANE_BENCHMARK("C1/line/ours", [](benchmark::State& state) { runExported(state, fullLine); });
CORVANE_BENCHMARK("C1/line/floor", [](benchmark::State& state) { runLine<Floor>(state, fullLine, true); });
CORVANE_BENCHMARK("C1/line/getopt", [](benchmark::State& state) { runLine<Getopt>(state, fullLine, true); });
CORVANE_BENCHMARK("C1/line-with-strings/ours", runWordsHandler);
CORVANE_BENCHMARK("C1/line-with-hook/ours", runWithHook);
CORVANE_BENCHMARK("C1/short-line/ours", [](benchmark::State& state) { runExported(state, shortLine); });
CORVANE_BENCHMARK("C1/wrong-word/ours", [](benchmark::State& state) { runExported(state, wrongLine); });
CORVANE_BENCHMARK("C1/unknown-command/ours", [](benchmark::State& state) { runExported(state, unknownLine); });

/// The last of many commands.
template <typename Service>
void runAmongMany(benchmark::State& state, int commands)
{
    Service service;
    for (int i = 0; i < commands; ++i) {
        service.add(Service::commandOf("cmd" + std::to_string(i)));
    }
    const auto line = Service::lineOf({"cmd" + std::to_string(commands - 1), "-l", "interfaces.txt", "on"});
    for (auto _ : state) {
        benchmark::DoNotOptimize(service.run(line));
    }
}

/// Registers that many commands, and again and again as many with a new service. The figure is the time for a command.
template <typename Service>
void registerCommands(benchmark::State& state, int commands)
{
    std::vector<typename Service::Command> inputs;
    for (int i = 0; i < commands; ++i) {
        inputs.push_back(Service::commandOf("cmd" + std::to_string(i)));
    }
    const auto registerAll = [&](Service& service) {
        for (const auto& command : inputs) {
            service.add(command);
        }
    };
    {
        auto service = std::make_unique<Service>();
        const Allocations allocations;
        registerAll(*service);
        state.counters["allocations"] = allocations.count() / commands;
        state.counters["bytes"] = allocations.liveBytes() / commands;
    }
    for (auto _ : state) {
        auto service = std::make_unique<Service>();
        const double begin = cpuTime();
        registerAll(*service);
        state.SetIterationTime((cpuTime() - begin) / commands);
    }
}

/// Registers the rows C2 and C3 of a service for that many commands.
template <typename Service>
bool addManyCommands(const std::string& who, const std::vector<int>& sizes)
{
    for (const int size : sizes) {
        const std::string commands = std::to_string(size);
        add("C2/last-of-" + commands + "/" + who,
            [size](benchmark::State& state) { runAmongMany<Service>(state, size); });
        add("C3/" + commands + "-commands/" + who,
            [size](benchmark::State& state) { registerCommands<Service>(state, size); })
            ->UseManualTime()
            ->Iterations(std::max(1, 20000 / size));
    }
    return true;
}

[[maybe_unused]] const bool addedOurs = addManyCommands<Ours>("ours", {10, 1000, 10000, 100000});
[[maybe_unused]] const bool addedFloor = addManyCommands<Floor>("floor", {10, 1000, 10000, 100000});

#ifdef CORVANE_HAS_LIBCLI
CORVANE_BENCHMARK("C1/line/libcli", [](benchmark::State& state) { runLine<Libcli>(state, fullLine, true); });
CORVANE_BENCHMARK("C1/wrong-word/libcli", [](benchmark::State& state) { runLine<Libcli>(state, wrongLine, false); });
[[maybe_unused]] const bool addedLibcli = addManyCommands<Libcli>("libcli", {10, 1000, 10000});
#endif

#ifdef CORVANE_HAS_CLI11
CORVANE_BENCHMARK("C1/line/cli11", [](benchmark::State& state) { runLine<Cli11>(state, fullLine, true); });
CORVANE_BENCHMARK("C1/wrong-word/cli11", [](benchmark::State& state) { runLine<Cli11>(state, wrongLine, false); });
[[maybe_unused]] const bool addedCli11 = addManyCommands<Cli11>("cli11", {10, 1000});
#endif

#ifdef CORVANE_HAS_PROGRAM_OPTIONS
CORVANE_BENCHMARK("C1/line/program-options",
                  [](benchmark::State& state) { runLine<ProgramOptions>(state, fullLine, true); });
#endif

/// A command with `count` optional words: every word may follow every earlier one.
class OptionalWords
{
public:
    explicit OptionalWords(int count)
    {
        std::string arguments;
        for (int i = 0; i < count; ++i) {
            m_words.push_back("a" + std::to_string(i));
            arguments += " [" + m_words.back() + "]";
        }
        m_command = Ours::commandOf("x", arguments);
    }

    double edges() const { return static_cast<double>(m_words.size() * (m_words.size() + 1)) / 2; }
    const Words& all() const { return m_words; }
    const Ours::Command& command() const { return m_command; }

private:
    Words m_words = {"x"};
    Ours::Command m_command;
};

/// The figure is the time for an edge of the graph: a way from a word to one that may follow it.
void registerOptionalWords(benchmark::State& state, int count)
{
    const OptionalWords words(count);
    for (auto _ : state) {
        auto service = std::make_unique<Ours>();
        const double begin = cpuTime();
        service->add(words.command());
        state.SetIterationTime((cpuTime() - begin) / words.edges());
    }
}

/// The figure is the time for `parts` parts of the line.
void runOptionalWords(benchmark::State& state, int count, const Words& line)
{
    Ours service;
    service.add(OptionalWords(count).command());
    measure(state, [&] { benchmark::DoNotOptimize(service.run(line)); });
}

bool addOptionalWords()
{
    for (const int count : {32, 128, 512}) {
        const std::string words = "-" + std::to_string(count) + "/ours";
        const Words all = OptionalWords(count).all();
        add("C4/register" + words, [count](benchmark::State& state) { registerOptionalWords(state, count); })
            ->UseManualTime()
            ->Iterations(2000000 / count / count + 1);
        add("C4/match-all" + words, [count, all](benchmark::State& state) { runOptionalWords(state, count, all); });
        add("C4/match-last" + words, [count, last = all.back()](benchmark::State& state) {
            runOptionalWords(state, count, {"x", last});
        });
        add("C4/usage" + words, [count](benchmark::State& state) { runOptionalWords(state, count, {"x", "?"}); });
    }
    return true;
}

[[maybe_unused]] const bool addedOptionalWords = addOptionalWords();

} // namespace
