/// What the threads of a soak client share: counters that outlive the client, random choices, and the report of a
/// difference, which ends the client.
#ifndef CORVANE_TESTS_SOAK_WORKER_H
#define CORVANE_TESTS_SOAK_WORKER_H

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

namespace Corvane::Soak {

/// The state of one thread, in a file that tools/soak reads while the client lives and after it.
struct ThreadState
{
    std::array<char, 32> step; ///< what the thread does now
    std::atomic<std::uint64_t> operations;
    std::atomic<std::uint64_t> begunEntries;
    std::atomic<std::uint64_t> queuedEntries;
    std::atomic<std::uint64_t> promisedEntries; ///< queued before main() returned
};
static_assert(sizeof(ThreadState) == 64 && std::atomic<std::uint64_t>::is_always_lock_free);

/// A flaw that the client makes on purpose, so that a test sees the soak fail: "leak", "loss", "result", "hang" or
/// none.
inline std::string plantedFlaw; // NOLINT(cert-err58-cpp): an empty text doesn't throw

/// One thread of the client.
class Worker
{
public:
    Worker(ThreadState& state, unsigned int seed, unsigned int client, unsigned int thread)
        : m_thread(thread), m_state(state)
    {
        std::seed_seq seeds{seed, client, thread};
        m_random.seed(seeds);
    }

    /// Returns  a number below `end`.
    unsigned int below(unsigned int end) { return std::uniform_int_distribution<unsigned int>(0, end - 1)(m_random); }

    template <typename List>
    const auto& oneOf(const List& list)
    {
        return *std::next(std::begin(list), below(static_cast<unsigned int>(std::size(list))));
    }

    void enter(const char* step) { std::snprintf(m_state.step.data(), m_state.step.size(), "%s", step); }
    void count() { ++m_state.operations; }
    unsigned int thread() const { return m_thread; }
    ThreadState& state() { return m_state; }

    template <typename Real, typename Model>
    void expectSame(const char* what, const Real& real, const Model& model)
    {
        if (!(real == model)) {
            std::ostringstream text;
            text << "thread " << m_thread << " after " << m_state.operations << " operations, " << m_state.step.data()
                 << ": " << what << "\n  library: " << real << "\n  model:   " << model << "\n";
            std::fputs(text.str().c_str(), stderr);
            ::_exit(1); // now: other threads would hide where it happened
        }
    }

private:
    const unsigned int m_thread;
    ThreadState& m_state;
    std::mt19937 m_random;
};

} // namespace Corvane::Soak

#endif
