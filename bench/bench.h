/// What the benchmarks of all services share. tools/bench runs them and makes docs/benchmarks.md.
///
/// A benchmark is named "ROW/case/who": "C1/line/ours". ROW is a row of docs/benchmarks.md. `case` is what is measured,
/// in letters, digits and '-'. `who` is "ours", "floor" (the least code that does the same duty by hand, with the same
/// locks and copies) or the name of a peer: "libcli". goals.ini says which figures of a row are compared, with which
/// goal.
///
///     CORVANE_BENCHMARK("C1/line/ours", [](benchmark::State& state) {
///         Allocations allocations;
///         execute();
///         state.counters["allocations"] = allocations.count();
///         for (auto _ : state) {
///             execute();
///         }
///     });
///
/// The figure of a benchmark is the CPU time of its thread for one iteration. ->UseRealTime() or ->UseManualTime()
/// after the macro makes it that time instead; use these where a second thread belongs to what is measured. Other
/// figures are counters: allocations, bytes, p50, p99. Each repetition calls the function anew. A run has at least ten
/// repetitions, in random order with those of other benchmarks, so a function must leave nothing behind. With
/// --benchmark_min_time=0 each benchmark runs once; keep that short. One repetition should take 0.1 to 0.3 s. The
/// benchmarks of a peer stand between `#ifdef CORVANE_HAS_LIBCLI` (_CLI11, _PROGRAM_OPTIONS, _LEVELDB, _SPDLOG, _ASIO)
/// and `#endif`, so that a peer that isn't installed is left out.
#ifndef CORVANE_BENCH_BENCH_H
#define CORVANE_BENCH_BENCH_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace Corvane::Bench {

/// Counts what the current thread allocates, in C and C++, while the object lives. Not for use inside a measured loop:
/// counting takes time. One object at a time in a thread.
class Allocations
{
public:
    Allocations();
    ~Allocations();

    /// Returns  the number of allocations; a realloc() is one.
    double count() const;

    /// Returns  the bytes allocated and not freed since, as the allocator rounds them up.
    double liveBytes() const;

    Allocations(const Allocations&) = delete;
    Allocations& operator=(const Allocations&) = delete;
};

/// The time of each operation, where the slow ones matter.
class Percentiles
{
public:
    /// Takes the room for `size` samples, so that add() allocates nothing.
    explicit Percentiles(std::size_t size);

    /// Adds a sample, in nanoseconds.
    void add(double sample);

    /// Sets the counters p50 and p99. Requires at least one sample.
    void report(benchmark::State& state);

private:
    std::vector<double> m_samples;
};

/// Registers a benchmark and shows on a terminal how far the program is.
benchmark::internal::Benchmark* add(const std::string& name, std::function<void(benchmark::State&)> run);

#define CORVANE_BENCHMARK(...)                                                                                         \
    [[maybe_unused]] benchmark::internal::Benchmark* const BENCHMARK_PRIVATE_CONCAT(benchmark, __LINE__, _) =          \
        ::Corvane::Bench::add(__VA_ARGS__)

} // namespace Corvane::Bench

#endif
