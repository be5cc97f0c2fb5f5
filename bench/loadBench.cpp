/// Measures loading the library beside an empty one, and the first use of each service: row L1.
#include "bench/bench.h"

#include <array>
#include <cstdio>
#include <string>

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr double nanosecond = 1e-9;
constexpr double microsecond = 1e-6;

double seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * microsecond;
}

/// Returns  the CPU time of a whole process in seconds; a negative number if it failed.
double timeOfProcess(const std::string& command)
{
    std::string program = command;
    char* const arguments[] = {program.data(), nullptr};
    pid_t child = 0;
    int status = 0;
    rusage usage = {};
    if (posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0 ||
        wait4(child, &status, 0, &usage) != child || status != 0) {
        return -1;
    }
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Returns  what a program writes about itself, as above.
double timeThatProgramTells(const std::string& command)
{
    FILE* const output = popen(command.c_str(), "r");
    long time = 0;
    const bool isRead = output != nullptr && std::fscanf(output, "%ld", &time) == 1;
    const bool hasEnded = output != nullptr && pclose(output) == 0;
    return isRead && hasEnded ? static_cast<double>(time) * nanosecond : -1;
}

template <typename Measure>
benchmark::internal::Benchmark* add(const char* name, Measure measure, const std::string& command)
{
    const auto run = [measure, command](benchmark::State& state) {
        for (auto _ : state) {
            const double time = measure(command);
            if (time < 0) {
                state.SkipWithError(("failed: " + command).c_str());
                break;
            }
            state.SetIterationTime(time);
        }
    };
    return Corvane::Bench::add(name, run)->UseManualTime();
}

const std::string ours = CORVANE_LOAD_FOLDER "/load_ours";
const std::string empty = CORVANE_LOAD_FOLDER "/load_empty";

[[maybe_unused]] const std::array<benchmark::internal::Benchmark*, 5> rows = {
    add("L1/load/ours", timeOfProcess, ours)->Iterations(20),
    add("L1/load/empty", timeOfProcess, empty)->Iterations(20),
    add("L1/first-use-commands/ours", timeThatProgramTells, ours + " commands")->Iterations(10),
    add("L1/first-use-files/ours", timeThatProgramTells, ours + " files")->Iterations(10),
    add("L1/first-use-elog/ours", timeThatProgramTells, ours + " elog")->Iterations(10),
};

} // namespace
