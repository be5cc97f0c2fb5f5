/// Measures the files: write and read back (F1), growth (F2, F2r), names (F3), streams (F4), threads (F5), dumps (F6).
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <functional>
#include <thread>

#include <malloc.h>
#include <sys/resource.h>

#include "bench/bench.h"
#include "bench/ramfsPeers.h"

namespace {

using namespace Corvane::Bench;
using Clock = std::chrono::steady_clock;

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

double seconds(Clock::duration time)
{
    return std::chrono::duration<double>(time).count();
}

double cpuTime()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// F1

template <typename File>
void addWriteAndReadBack(const std::string& who)
{
    for (const std::size_t size : {16U, 4096U, 65536U, 1048576U}) {
        add("F1/" + std::to_string(size) + "/" + who, [size](benchmark::State& state) {
            const std::string data(size, 'x');
            std::string buffer(size, 'y');
            File file(size);
            for (auto _ : state) {
                file.writeAndReadBack(data.data(), buffer.data(), size);
                benchmark::DoNotOptimize(buffer.data());
            }
        });
    }
}

// F2

/// Returns  a number of the process in /proc/self/status, in bytes.
double memory(const std::string& name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, name.size(), name) == 0) {
            return 1024 * std::stod(line.substr(name.size() + 1));
        }
    }
    return 0;
}

/// The time is that of one append. The counter `peak` is the most memory that the process had, in sizes of the content.
template <typename File>
void addGrowth(const std::string& who)
{
    for (const std::size_t total : {16 * mebibyte, 256 * mebibyte}) {
        for (const std::size_t size : {64U, 4096U}) {
            const std::string name = std::to_string(size) + "-to-" + std::to_string(total / mebibyte) + "M";
            add("F2/" + name + "/" + who,
                [=](benchmark::State& state) {
                    const std::string data(size, 'x');
                    malloc_trim(0);
                    std::ofstream("/proc/self/clear_refs") << 5; // the peak begins anew
                    const double before = memory("VmRSS");
                    for (auto _ : state) {
                        const double start = cpuTime();
                        File file(0);
                        for (std::size_t length = 0; length < total; length += size) {
                            file.append(data.data(), size);
                        }
                        state.SetIterationTime((cpuTime() - start) * static_cast<double>(size) /
                                               static_cast<double>(total));
                    }
                    state.counters["peak"] = (memory("VmHWM") - before) / static_cast<double>(total);
                })
                ->UseManualTime()
                ->Iterations(total > 16 * mebibyte ? 1 : 5);
        }
    }
}

template <typename File>
void addReservedAppend(const std::string& who)
{
    for (const std::size_t size : {64U, 4096U}) {
        add("F2r/" + std::to_string(size) + "/" + who, [size](benchmark::State& state) {
            constexpr std::size_t total = 64 * mebibyte; // more than malloc() keeps: each file has fresh memory
            const std::string data(size, 'x');
            auto file = std::make_unique<File>(total);
            std::size_t length = 0;
            for (auto _ : state) {
                if (length == total) {
                    state.PauseTiming();
                    file.reset();
                    file = std::make_unique<File>(total);
                    length = 0;
                    state.ResumeTiming();
                }
                file->append(data.data(), size);
                length += size;
            }
        });
    }
}

// F3

enum class Step
{
    Create,
    Open,
    Exists,
    Remove
};

template <typename Directory, typename Operation>
double timeOfAll(const std::vector<std::string>& names, Directory& files, Operation operation)
{
    const double start = cpuTime();
    for (const std::string& name : names) {
        (files.*operation)(name);
    }
    return (cpuTime() - start) / static_cast<double>(names.size());
}

/// The time is that of one operation.
template <typename Directory>
void addNames(const std::string& who)
{
    const std::pair<Step, std::string> steps[] = {
        {Step::Create, "create"}, {Step::Open, "open"}, {Step::Exists, "exists"}, {Step::Remove, "remove"}};
    for (const auto& [measured, name] : steps) {
        for (const int count : {10, 1000, 100'000}) {
            add("F3/" + name + "-" + std::to_string(count) + "/" + who,
                [count, step = measured](benchmark::State& state) {
                    Directory files;
                    std::vector<std::string> names;
                    for (int i = 0; i < count; ++i) {
                        names.push_back("file" + std::to_string(i));
                    }
                    for (auto _ : state) {
                        double time = timeOfAll(names, files, &Directory::create);
                        if (step == Step::Open) {
                            time = timeOfAll(names, files, &Directory::open);
                        } else if (step == Step::Exists) {
                            time = timeOfAll(names, files, &Directory::exists);
                        }
                        const double timeOfRemoval = timeOfAll(names, files, &Directory::remove);
                        state.SetIterationTime(step == Step::Remove ? timeOfRemoval : time);
                    }
                })
                ->UseManualTime()
                ->Iterations(std::max(100'000 / count / 4, 1));
        }
    }
}

long involuntarySwitches()
{
    rusage usage = {};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nivcsw;
}

/// Measures the longest exists() of another thread while `action` runs. Calls in which another process took the
/// processor from that thread don't count.
void holdUp(benchmark::State& state, unsigned int size, const std::function<void()>& action)
{
    for (auto _ : state) {
        directory().create("large", size, 0);
        std::atomic<bool> hasBegun{false};
        std::atomic<bool> isOver{false};
        double longest = 0;
        std::thread other([&] {
            const std::string name = "other";
            while (!isOver) {
                const long switches = involuntarySwitches();
                const Clock::time_point start = Clock::now();
                directory().exists(name);
                const double time = seconds(Clock::now() - start);
                if (switches == involuntarySwitches()) {
                    longest = std::max(longest, time);
                }
                hasBegun = true;
            }
        });
        while (!hasBegun) {
        }
        action();
        isOver = true;
        other.join();
        directory().remove("large", false);
        state.SetIterationTime(longest);
    }
}

void addHoldUp(const std::string& who, unsigned int size, const std::function<void()>& action)
{
    add("F3/hold-up/" + who, [size, action](benchmark::State& state) { holdUp(state, size, action); })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(21);
}

// F4

constexpr int lines = 4096;
constexpr std::size_t lineLength = 65;
const std::string line = std::string(lineLength - 1, 'x') + "\n";

void stream(std::ostream& out, int flushEvery)
{
    for (int i = 1; i <= lines; ++i) {
        out.write(line.data(), static_cast<std::streamsize>(line.size()));
        if (i % flushEvery == 0) {
            out.flush();
        }
    }
}

/// The time is that of one line. `run` streams all lines and returns the time that it took.
void addStreaming(
    const std::string& who, const std::function<double(int flushEvery)>& run,
    const std::function<void(benchmark::State&)>& count = [](benchmark::State&) {})
{
    const std::pair<int, std::string> cases[] = {{lines, "flush-once"}, {64, "flush-64"}, {1, "flush-each"}};
    for (const auto& [flushEvery, name] : cases) {
        add("F4/" + name + "/" + who,
            [run, count, every = flushEvery](benchmark::State& state) {
                count(state);
                for (auto _ : state) {
                    state.SetIterationTime(run(every) / lines);
                }
            })
            ->UseManualTime()
            ->Iterations(100);
    }
}

double streamInto(std::ostream& out, int flushEvery)
{
    const double start = cpuTime();
    stream(out, flushEvery);
    return cpuTime() - start;
}

double streamIntoOurs(int flushEvery)
{
    const auto buffer = directory().getFileStreamBuf();
    buffer->create("file", lines * lineLength, 0);
    std::ostream out(buffer.get());
    const double time = streamInto(out, flushEvery);
    buffer->close();
    directory().remove("file", false);
    return time;
}

/// Sets the counters `allocations` (of a line with its flush) and `kept` (bytes that a closed buffer keeps).
void countOurs(benchmark::State& state)
{
    const auto buffer = directory().getFileStreamBuf();
    std::ostream out(buffer.get());
    streamIntoOurs(lines); // the directory allocates its table for the first file
    {
        const Allocations allocations;
        buffer->create("file", lines * lineLength, 0);
        stream(out, lines);
        buffer->close();
        directory().remove("file", false);
        state.counters["kept"] = allocations.liveBytes();
    }
    buffer->create("file", lines * lineLength, 0);
    out << line << std::flush;
    {
        const Allocations allocations;
        out << line << std::flush;
        state.counters["allocations"] = allocations.count();
    }
    buffer->close();
    directory().remove("file", false);
}

double streamIntoFloor(int flushEvery)
{
    FloorFile file(lines * lineLength);
    FloorStreamBuf buffer(file);
    std::ostream out(&buffer);
    return streamInto(out, flushEvery);
}

double streamIntoTmpfs(int flushEvery)
{
    const std::string name = tmpfs + "corvane-bench.stream";
    std::ofstream out(name);
    const double time = streamInto(out, flushEvery);
    std::remove(name.c_str());
    return time;
}

double streamIntoString(int flushEvery)
{
    std::ostringstream out;
    return streamInto(out, flushEvery);
}

// F5

/// The time is that of one operation, all threads together. Each thread has a file of its own.
void addThreads(const std::string& name, const std::function<void(Corvane::RamFs::V1::FileHandleIf&)>& operation)
{
    for (const std::size_t count : {1U, 2U}) {
        const std::string threads = std::to_string(count) + (count == 1 ? "-thread" : "-threads");
        add("F5/" + name + "-" + threads + "/ours",
            [=](benchmark::State& state) {
                constexpr int operations = 1'000'000;
                for (auto _ : state) {
                    std::atomic<std::size_t> ready{0};
                    std::atomic<bool> isStarted{false};
                    std::vector<std::thread> workers;
                    for (std::size_t i = 0; i < count; ++i) {
                        workers.emplace_back([&, own = "file" + std::to_string(i)] {
                            const auto handle = directory().create(own, operations * 64, 0);
                            ++ready;
                            while (!isStarted) {
                            }
                            for (int k = 0; k < operations; ++k) {
                                operation(*handle);
                            }
                            directory().remove(own, false);
                        });
                    }
                    while (ready != count) {
                    }
                    const Clock::time_point start = Clock::now();
                    isStarted = true;
                    for (std::thread& worker : workers) {
                        worker.join();
                    }
                    state.SetIterationTime(seconds(Clock::now() - start) / static_cast<double>(count) / operations);
                }
            })
            ->UseManualTime()
            ->Iterations(2);
    }
}

// F6

std::string dumped(bool isText)
{
    std::string content(mebibyte, 'x');
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<char>(isText ? 'a' + i % 26 : i * 7);
    }
    return content;
}

void addDump(bool isText)
{
    const std::string row = std::string("F6/") + (isText ? "text" : "hexadecimal") + "/";
    add(row + "ours", [isText](benchmark::State& state) {
        const auto handle = directory().create("file", 0, 0);
        handle->append(dumped(isText));
        Sink sink;
        std::ostream out(&sink);
        for (auto _ : state) {
            handle->setPos(0);
            handle->dump(out);
        }
        directory().remove("file", false);
    });
    const auto addFloor = [&](const std::string& who, const std::function<void(FloorFile&, std::ostream&)>& dump) {
        add(row + who, [isText, dump](benchmark::State& state) {
            const std::string content = dumped(isText);
            const auto file = std::make_unique<FloorFile>(content.size());
            file->append(content.data(), content.size());
            Sink sink;
            std::ostream out(&sink);
            for (auto _ : state) {
                file->setPos(0);
                dump(*file, out);
            }
        });
    };
    addFloor("floor", [](FloorFile& file, std::ostream& out) { dumpFloor(file, [&](char c) { out.put(c); }); });
    addFloor("sputc",
             [](FloorFile& file, std::ostream& out) { dumpFloor(file, [&](char c) { out.rdbuf()->sputc(c); }); });
}

[[maybe_unused]] const bool isRegistered = [] {
    addWriteAndReadBack<OurFile>("ours");
    addWriteAndReadBack<FloorFile>("floor");
    addWriteAndReadBack<MemfdFile>("memfd");
    addWriteAndReadBack<TmpfsFile>("tmpfs");
    addWriteAndReadBack<StringStreamFile>("stringstream");
    addGrowth<OurFile>("ours");
    addGrowth<VectorFile>("vector");
    addGrowth<MemfdFile>("memfd");
    addGrowth<StringStreamFile>("stringstream");
#ifdef CORVANE_HAS_LEVELDB
    addGrowth<LevelDbFile>("leveldb");
#endif
    addReservedAppend<OurFile>("ours");
    addReservedAppend<FloorFile>("floor");
    addNames<OurDirectory>("ours");
    addNames<FloorDirectory>("floor");
    addNames<TmpfsDirectory>("tmpfs");
    addHoldUp("ours", 512 * mebibyte, [] { directory().remove("large", false); });
    addHoldUp("idle", 0, [] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); });
    addStreaming("ours", streamIntoOurs, countOurs);
    addStreaming("floor", streamIntoFloor);
    addStreaming("tmpfs", streamIntoTmpfs);
    addStreaming("ostringstream", streamIntoString);
    const std::string record(64, 'x');
    addThreads("append", [record](auto& handle) { handle.append(record.data(), 64); });
    addThreads("read", [](auto& handle) {
        unsigned char buffer[64];
        handle.setPos(0);
        handle.read(buffer, sizeof buffer);
    });
    addDump(true);
    addDump(false);
    return true;
}();

} // namespace
