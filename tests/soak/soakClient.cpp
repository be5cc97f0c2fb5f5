/// An application that uses all services at once, from several threads, and compares each result with a plain model.
/// tools/soak starts several, and kills some.
///
///   soakClient STATE_FILE CLIENT SEED [FLAW]
///
/// It goes on until standard input has a line, or ends. If the line is "leave", the threads that write entries go on
/// while the process ends. Otherwise they end before. Exit status: 0; 1 and a message if a result was wrong.
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <thread>

#include <elog/elogIf.h>
#include <fcntl.h>
#include <sys/mman.h>

#include "tests/elog/numberedEntries.h"
#include "tests/soak/commands.h"
#include "tests/soak/files.h"

namespace {

using namespace Corvane::Soak;

constexpr unsigned int threadCount = 6;    // two for each service
constexpr unsigned int longText = 250'000; // goes another way than short messages
std::atomic<bool> hasToStop{false};
std::atomic<bool> hasToStopWriting{false};

ThreadState* mapStates(const char* path)
{
    const std::size_t size = threadCount * sizeof(ThreadState);
    const int file = ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    void* const memory = file >= 0 && ::ftruncate(file, size) == 0
                             ? ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0)
                             : MAP_FAILED;
    if (memory == MAP_FAILED) {
        std::perror(path);
        std::exit(2);
    }
    return static_cast<ThreadState*>(memory);
}

/// Several clients share the machine: the pause leaves time for the others.
template <typename Service>
void use(Worker worker)
{
    Service service(worker);
    while (!hasToStop) {
        service.operate();
        worker.count();
        if (plantedFlaw == "leak") {
            static_cast<void>(new std::string(500, '.')); // NOLINT(cppcoreguidelines-owning-memory): it is the flaw
        }
        while (plantedFlaw == "hang" && worker.state().operations > 1000) {
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void writeEntries(Worker worker, unsigned int client)
{
    worker.enter("writes entries");
    ThreadState& state = worker.state();
    for (unsigned int number = 0; !hasToStopWriting; ++number) {
        std::string text = Corvane::Testing::textOfEntry(worker.thread(), number);
        text += number % 500 == 499 ? std::string(longText, 'x') : "";
        state.begunEntries = number + 1;
        const bool isDropped = (plantedFlaw == "gap" && number == 300) || (plantedFlaw == "loss" && number >= 300);
        if (!isDropped) {
            Corvane::Elog::V2::ElogIf::getInstance().elogWrite(worker.thread(), text, {client, number});
        }
        state.queuedEntries = number + 1;
        worker.count();
        std::this_thread::sleep_for(std::chrono::milliseconds(4));
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 4) {
        return 2;
    }
    ThreadState* const states = mapStates(argv[1]);
    const auto client = static_cast<unsigned int>(std::strtoul(argv[2], nullptr, 10));
    const auto seed = static_cast<unsigned int>(std::strtoul(argv[3], nullptr, 10));
    plantedFlaw = argc > 4 ? argv[4] : "";
    const auto worker = [&](unsigned int thread) { return Worker(states[thread], seed, client, thread); };
    Commands::registerSharedCommand();
    std::vector<std::thread> users;
    std::vector<std::thread> writers;
    for (unsigned int thread = 0; thread < 2; ++thread) {
        users.emplace_back([=] { use<Commands>(worker(thread)); });
        users.emplace_back([=] { use<Files>(worker(2 + thread)); });
        writers.emplace_back([=] { writeEntries(worker(4 + thread), client); });
    }
    std::string how;
    std::getline(std::cin, how);
    hasToStop = true;
    for (std::thread& user : users) {
        user.join();
    }
    hasToStopWriting = how != "leave";
    for (std::thread& writer : writers) {
        how == "leave" ? writer.detach() : writer.join();
    }
    for (unsigned int thread = 0; thread < threadCount; ++thread) {
        states[thread].promisedEntries = states[thread].queuedEntries.load();
    }
    return 0;
}
