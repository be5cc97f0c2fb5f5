/// The event log beside other ways to hand a message to another thread, and to send it to another process.
///
/// All of them do the same: the writer copies an entry of 32 characters and 4 numbers, a second thread sends it as one
/// message, a second process takes it. The messages of "ours" go through the messaging library to a mailbox
/// "ElogEngine", the others to a datagram socket.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <elog/elogIf.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <zel.h>

#ifdef CORVANE_HAS_ASIO
#include <boost/asio.hpp>
#endif
#ifdef CORVANE_HAS_SPDLOG
#include <spdlog/async.h>
#include <spdlog/sinks/base_sink.h>
#endif

#include "bench/bench.h"

namespace {

using namespace std::chrono_literals;
using Corvane::Bench::Allocations;
using Corvane::Bench::Percentiles;
using Corvane::Elog::V2::ElogIf;

constexpr std::size_t burst = 1000;
constexpr std::size_t headSize = 16;

struct Entry
{
    unsigned int id = 1007;
    std::string text = std::string(32, 'x');
    std::vector<unsigned int> params = std::vector<unsigned int>(4); // the first two: when it was written
};

std::int64_t nanoseconds(clockid_t clock)
{
    timespec time = {};
    ::clock_gettime(clock, &time);
    return time.tv_sec * INT64_C(1000000000) + time.tv_nsec;
}

/// The other process, which takes what arrives.
class Receiver
{
public:
    /// Starts it. `take` gives the address of the next message's bytes.
    template <typename Open, typename Take>
    Receiver(const Open& open, const Take& take)
        : m_state(new (::mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) State)
    {
        const pid_t parent = ::getpid();
        if (::fork() == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            auto source = ::getppid() == parent ? open() : (::_exit(1), open());
            for (m_state->isReady = true;;) {
                take(source, [this](const void* message) {
                    std::int64_t written = 0;
                    std::memcpy(&written, static_cast<const unsigned char*>(message) + headSize, sizeof written);
                    m_state->lastDelay = nanoseconds(CLOCK_MONOTONIC) - written;
                    ++m_state->count;
                });
            }
        }
        while (!m_state->isReady) {
            std::this_thread::sleep_for(1ms);
        }
    }

    /// Waits until that many more have arrived than had when this was called last.
    void waitFor(std::uint64_t more)
    {
        for (m_awaited += more; m_state->count < m_awaited;) {
            std::this_thread::sleep_for(50us);
        }
    }

    /// Returns  nanoseconds from the writing of the last message to its arrival.
    double lastDelay() const { return static_cast<double>(m_state->lastDelay); }

private:
    struct State
    {
        std::atomic<bool> isReady{false};
        std::atomic<std::uint64_t> count{0};
        std::atomic<std::int64_t> lastDelay{0};
    };

    State* const m_state;
    std::uint64_t m_awaited = 0;
};

/// A folder of its own for the mailboxes, and for the socket of the raw messages.
struct Folder
{
    Folder() { ::setenv("XDG_RUNTIME_DIR", ::mkdtemp(path), 1); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { std::filesystem::remove_all(path); }

    char path[32] = "/tmp/corvane-elogBench.XXXXXX";
} folder;

Receiver& engine()
{
    static Receiver receiver([] { return __zel_create_mailbox("ElogEngine", 0, "", 0); },
                             [](std::uint32_t /*mailbox*/, const auto& taken) {
                                 zel_msg* message = __zel_receive(nullptr, UINT32_MAX, ZEL_ANY_SENDER, "", 0);
                                 taken(message);
                                 __zel_free(&message, "", 0);
                             });
    return receiver;
}

/// A socket to another process. A datagram socket is bound, as a mailbox is: any number of senders can reach it.
class RawSocket
{
public:
    explicit RawSocket(int type)
    {
        int ends[2] = {};
        if (type != SOCK_DGRAM) {
            ::socketpair(AF_UNIX, type, 0, ends);
        } else {
            ends[0] = ::socket(AF_UNIX, type, 0);
            sockaddr_un address = {};
            address.sun_family = AF_UNIX;
            (std::string(folder.path) + "/raw").copy(address.sun_path, sizeof address.sun_path - 1);
            const auto* const place = static_cast<const sockaddr*>(static_cast<const void*>(&address));
            ends[1] = ::socket(AF_UNIX, type, 0);
            if (::bind(ends[1], place, sizeof address) != 0 || ::connect(ends[0], place, sizeof address) != 0) {
                throw std::system_error(errno, std::generic_category(), "raw socket");
            }
        }
        m_socket = ends[0];
        m_receiver = std::make_unique<Receiver>([&] { return ends[1]; },
                                                [](int socket, const auto& taken) {
                                                    unsigned char message[1024];
                                                    ::recv(socket, message, sizeof message, 0);
                                                    taken(message);
                                                });
        ::close(ends[1]);
    }

    void send(const void* message, std::size_t size) { ::send(m_socket, message, size, MSG_NOSIGNAL); }

    void send(const Entry& entry)
    {
        unsigned char message[1024];
        send(message, pack(message, entry));
    }

    /// Writes the message of an entry. Returns  its size.
    static std::size_t pack(unsigned char* message, const Entry& entry)
    {
        const auto numParams = static_cast<std::uint32_t>(entry.params.size());
        const std::uint32_t head[] = {0x17070D1, entry.id, numParams, static_cast<std::uint32_t>(entry.text.size())};
        std::memcpy(message, head, headSize);
        std::memcpy(message + headSize, entry.params.data(), numParams * sizeof(std::uint32_t));
        const std::size_t text = headSize + numParams * sizeof(std::uint32_t);
        std::memcpy(message + text, entry.text.c_str(), entry.text.size() + 1);
        return text + entry.text.size() + 1;
    }

    Receiver& receiver() { return *m_receiver; }

private:
    int m_socket = -1;
    std::unique_ptr<Receiver> m_receiver;
};

RawSocket& datagrams()
{
    static RawSocket socket(SOCK_DGRAM);
    return socket;
}

RawSocket& packets()
{
    static RawSocket socket(SOCK_SEQPACKET);
    return socket;
}

// Ways to write an entry. They live to the end of the program, as the event log does.

struct Ours
{
    static Receiver& receiver() { return engine(); }
    void write(const Entry& entry) { log.elogWrite(entry.id, entry.text, entry.params); }

    ElogIf& log = (engine(), ElogIf::getInstance());
};

struct Datagrams
{
    static Receiver& receiver() { return datagrams().receiver(); }
};

/// A queue of functions and a thread, by hand.
struct Floor : Datagrams
{
    Floor()
    {
        std::thread([this] {
            std::unique_lock<std::mutex> lock(mutex);
            for (;;) {
                while (jobs.empty()) {
                    isIdle = true;
                    changed.wait(lock);
                }
                std::function<void()> job = std::move(jobs.front());
                jobs.pop_front();
                lock.unlock();
                job();
                job = nullptr;
                lock.lock();
            }
        }).detach();
    }

    void write(const Entry& entry)
    {
        std::function<void()> job = [copy = entry] { datagrams().send(copy); };
        bool wasIdle = false;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            jobs.push_back(std::move(job));
            wasIdle = std::exchange(isIdle, false);
        }
        if (wasIdle) {
            changed.notify_one();
        }
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> jobs;
    bool isIdle = false;
};

#ifdef CORVANE_HAS_ASIO
struct Asio : Datagrams
{
    Asio()
    {
        std::thread([this] { context.run(); }).detach();
    }
    void write(const Entry& entry)
    {
        boost::asio::post(context, [copy = entry] { datagrams().send(copy); });
    }

    boost::asio::io_context context{1};
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work{context.get_executor()};
};
#endif

#ifdef CORVANE_HAS_SPDLOG
struct Spdlog : Datagrams
{
    class Sink : public spdlog::sinks::base_sink<std::mutex>
    {
        void sink_it_(const spdlog::details::log_msg& message) override
        {
            datagrams().send(message.payload.data(), message.payload.size());
        }
        void flush_() override {}
    };

    void write(const Entry& entry)
    {
        unsigned char message[1024];
        const std::size_t size = RawSocket::pack(message, entry);
        log.log(spdlog::level::info, {reinterpret_cast<const char*>(message), size});
    }

    std::shared_ptr<spdlog::details::thread_pool> pool = std::make_shared<spdlog::details::thread_pool>(1U << 16U, 1);
    std::shared_ptr<spdlog::async_logger> logger =
        std::make_shared<spdlog::async_logger>("bench", std::make_shared<Sink>(), pool);
    spdlog::async_logger& log = *logger;
};
#endif

struct Raw : Datagrams
{
    static void write(const Entry& entry) { datagrams().send(entry); }
};

struct Seqpacket
{
    static Receiver& receiver() { return packets().receiver(); }
    static void write(const Entry& entry) { packets().send(entry); }
};

template <typename Way>
Way& the()
{
    static Way& way = *new Way;
    return way;
}

/// What reading a clock twice takes.
double costOf(clockid_t clock)
{
    std::vector<std::int64_t> costs(1001);
    for (std::int64_t& cost : costs) {
        cost = -nanoseconds(clock);
        cost += nanoseconds(clock);
    }
    std::nth_element(costs.begin(), costs.begin() + 500, costs.end());
    return static_cast<double>(costs[500]);
}

/// The time is the writing thread's CPU time for a call; p50 and p99 are what single calls take by the wall clock.
template <typename Way>
void writeBursts(benchmark::State& state)
{
    Way& way = the<Way>();
    const Entry entry;
    const double clock = costOf(CLOCK_MONOTONIC);
    Percentiles calls(std::size_t{1} << 22U);
    for (auto _ : state) {
        const std::int64_t cpu = nanoseconds(CLOCK_THREAD_CPUTIME_ID);
        for (std::size_t number = 0; number < burst; ++number) {
            const std::int64_t begin = nanoseconds(CLOCK_MONOTONIC);
            way.write(entry);
            calls.add(static_cast<double>(nanoseconds(CLOCK_MONOTONIC) - begin) - clock);
        }
        const auto used = static_cast<double>(nanoseconds(CLOCK_THREAD_CPUTIME_ID) - cpu);
        state.SetIterationTime((used / burst - clock) * 1e-9);
        way.receiver().waitFor(burst);
    }
    calls.report(state);
}

/// Each entry finds both the second thread and the other process asleep. All figures are the writing thread's CPU time:
/// the woken thread may take the core, and the wall clock would go on.
template <typename Way>
void writeNowAndThen(benchmark::State& state)
{
    Way& way = the<Way>();
    const Entry entry;
    const double clock = costOf(CLOCK_THREAD_CPUTIME_ID);
    Percentiles calls(std::size_t{1} << 16U);
    for (auto _ : state) {
        std::this_thread::sleep_for(300us);
        const std::int64_t begin = nanoseconds(CLOCK_THREAD_CPUTIME_ID);
        way.write(entry);
        const double used = static_cast<double>(nanoseconds(CLOCK_THREAD_CPUTIME_ID) - begin) - clock;
        calls.add(used);
        state.SetIterationTime(used * 1e-9);
        way.receiver().waitFor(1);
    }
    calls.report(state);
}

/// The wall time until all have arrived, for an entry.
template <typename Way>
void writeStream(benchmark::State& state)
{
    constexpr std::size_t count = 20000;
    Way& way = the<Way>();
    const Entry entry;
    for (auto _ : state) {
        const std::int64_t begin = nanoseconds(CLOCK_MONOTONIC);
        for (std::size_t number = 0; number < count; ++number) {
            way.write(entry);
        }
        way.receiver().waitFor(count);
        state.SetIterationTime(static_cast<double>(nanoseconds(CLOCK_MONOTONIC) - begin) * 1e-9 / count);
    }
}

/// From the call to the arrival in the other process.
template <typename Way>
void writeOneWay(benchmark::State& state)
{
    Way& way = the<Way>();
    Entry entry;
    Percentiles delays(std::size_t{1} << 16U);
    for (auto _ : state) {
        std::this_thread::sleep_for(300us);
        const std::int64_t now = nanoseconds(CLOCK_MONOTONIC);
        std::memcpy(entry.params.data(), &now, sizeof now);
        way.write(entry);
        way.receiver().waitFor(1);
        delays.add(way.receiver().lastDelay());
        state.SetIterationTime(way.receiver().lastDelay() * 1e-9);
    }
    delays.report(state);
}

/// What the writing thread allocates for an entry, the allocator's 8 bytes for each block included. What other threads
/// free meanwhile isn't subtracted.
template <typename Way>
void keepWaiting(benchmark::State& state)
{
    constexpr int count = 10000;
    Way& way = the<Way>();
    const Entry entry;
    way.write(entry);
    double bytes = 0;
    double allocations = 0;
    {
        const Allocations all;
        for (int number = 0; number < count; ++number) {
            way.write(entry);
        }
        bytes = all.liveBytes() + 8 * all.count();
        allocations = all.count();
    }
    way.receiver().waitFor(count + 1);
    for (auto _ : state) {
        way.write(entry);
        way.receiver().waitFor(1);
    }
    state.counters["bytes"] = bytes / count;
    state.counters["allocations"] = allocations / count;
}

CORVANE_BENCHMARK("E1/burst/ours", writeBursts<Ours>)->UseManualTime()->Iterations(100);
CORVANE_BENCHMARK("E1/burst/floor", writeBursts<Floor>)->UseManualTime()->Iterations(100);
CORVANE_BENCHMARK("E1/sparse/ours", writeNowAndThen<Ours>)->UseManualTime()->Iterations(400);
CORVANE_BENCHMARK("E1/sparse/floor", writeNowAndThen<Floor>)->UseManualTime()->Iterations(400);
#ifdef CORVANE_HAS_ASIO
CORVANE_BENCHMARK("E1/burst/asio", writeBursts<Asio>)->UseManualTime()->Iterations(100);
CORVANE_BENCHMARK("E1/sparse/asio", writeNowAndThen<Asio>)->UseManualTime()->Iterations(400);
#endif
#ifdef CORVANE_HAS_SPDLOG
CORVANE_BENCHMARK("E1/burst/spdlog", writeBursts<Spdlog>)->UseManualTime()->Iterations(100);
CORVANE_BENCHMARK("E1/sparse/spdlog", writeNowAndThen<Spdlog>)->UseManualTime()->Iterations(400);
#endif

CORVANE_BENCHMARK("E2/stream/ours", writeStream<Ours>)->UseManualTime()->Iterations(4);
CORVANE_BENCHMARK("E2/stream/raw", writeStream<Raw>)->UseManualTime()->Iterations(4);
CORVANE_BENCHMARK("E2/stream/seqpacket", writeStream<Seqpacket>)->UseManualTime()->Iterations(4);
CORVANE_BENCHMARK("E2/one-way/ours", writeOneWay<Ours>)->UseManualTime()->Iterations(400);
CORVANE_BENCHMARK("E2/one-way/floor", writeOneWay<Floor>)->UseManualTime()->Iterations(400);
CORVANE_BENCHMARK("E2/one-way/raw", writeOneWay<Raw>)->UseManualTime()->Iterations(400);
CORVANE_BENCHMARK("E2/one-way/seqpacket", writeOneWay<Seqpacket>)->UseManualTime()->Iterations(400);

CORVANE_BENCHMARK("E3/waiting/ours", keepWaiting<Ours>)->Iterations(1);
CORVANE_BENCHMARK("E3/waiting/floor", keepWaiting<Floor>)->Iterations(1);
#ifdef CORVANE_HAS_ASIO
CORVANE_BENCHMARK("E3/waiting/asio", keepWaiting<Asio>)->Iterations(1);
#endif
CORVANE_BENCHMARK("E3/waiting/payload", [](benchmark::State& state) {
    const Entry entry;
    for (auto _ : state) {
        benchmark::DoNotOptimize(entry.text.data());
    }
    state.counters["bytes"] = static_cast<double>(entry.text.size() + 1 + entry.params.size() * sizeof(unsigned int));
});

} // namespace
