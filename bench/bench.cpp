/// Counts allocations by replacing the C library's functions, and runs the program's benchmarks.
#include "bench/bench.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include <malloc.h>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

struct Counts
{
    bool isOn;
    long count;
    long bytes;
};

thread_local Counts counts = {};

void* counted(void* block)
{
    if (counts.isOn) {
        ++counts.count;
        counts.bytes += static_cast<long>(malloc_usable_size(block));
    }
    return block;
}

void forget(void* block)
{
    if (counts.isOn) {
        counts.bytes -= static_cast<long>(malloc_usable_size(block));
    }
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t size)
{
    return counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size)
{
    return counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size)
{
    forget(block);
    return counted(__libc_realloc(block, size));
}

void* memalign(std::size_t alignment, std::size_t size)
{
    return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size)
{
    *block = memalign(alignment, size);
    return *block != nullptr ? 0 : ENOMEM;
}

void free(void* block)
{
    forget(block);
    __libc_free(block);
}
}
#pragma GCC visibility pop

namespace Corvane::Bench {

Allocations::Allocations()
{
    counts = {true, 0, 0};
}

Allocations::~Allocations()
{
    counts.isOn = false;
}

double Allocations::count() const
{
    return static_cast<double>(counts.count);
}

double Allocations::liveBytes() const
{
    return static_cast<double>(counts.bytes);
}

Percentiles::Percentiles(std::size_t size)
{
    m_samples.reserve(size);
}

void Percentiles::add(double sample)
{
    m_samples.push_back(sample);
}

void Percentiles::report(benchmark::State& state)
{
    const auto percentile = [this](std::size_t percent) {
        const auto sample = m_samples.begin() + static_cast<std::ptrdiff_t>((m_samples.size() - 1) * percent / 100);
        std::nth_element(m_samples.begin(), sample, m_samples.end());
        return *sample;
    };
    state.counters["p50"] = percentile(50);
    state.counters["p99"] = percentile(99);
}

benchmark::internal::Benchmark* add(const std::string& name, std::function<void(benchmark::State&)> run)
{
    static const bool isTerminal = isatty(STDERR_FILENO) != 0;
    static int registered = 0;
    static int started = 0;
    ++registered;
    return benchmark::RegisterBenchmark(name.c_str(), [run = std::move(run)](benchmark::State& state) {
        if (isTerminal) { // the search for the number of iterations takes three starts or so, and then come repetitions
            std::fprintf(stderr, "\r%d of about %d runs ", ++started, registered * 12);
        }
        run(state);
    });
}

} // namespace Corvane::Bench

BENCHMARK_MAIN();
