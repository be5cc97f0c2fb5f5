/// Takes two locks in opposite orders, one thread after the other: nothing waits, and ThreadSanitizer must report it.
///
///     oppositeOrders exclusive|shared|recursive|platform|library
///
/// exclusive: a Mutex and a SharedMutex. shared: two SharedMutexes, one of them shared by both threads. recursive: a
/// Mutex and a std::recursive_mutex. platform: a Mutex and a std::mutex, which the stand-in for the framework library
/// also has. library: the lock of the command tables and a lock of the application.
#include <cstring>
#include <mutex>
#include <ostream>
#include <streambuf>
#include <string>
#include <thread>
#include <vector>

#include <command/cmdTableHelperIf.h>

#include "sync/mutex.h"

namespace {

using Corvane::ExclusiveLock;
using Corvane::Mutex;
using Corvane::SharedLock;
using Corvane::SharedMutex;

template <typename Function>
void onAThread(const Function& function)
{
    std::thread(function).join();
}

template <typename FirstMutex, typename SecondMutex>
void takeInBothOrders(FirstMutex& first, SecondMutex& second)
{
    onAThread([&] {
        const std::lock_guard<FirstMutex> outer(first);
        const std::lock_guard<SecondMutex> inner(second);
    });
    onAThread([&] {
        const std::lock_guard<SecondMutex> outer(second);
        const std::lock_guard<FirstMutex> inner(first);
    });
}

void shareInBothOrders()
{
    SharedMutex first;
    SharedMutex second;
    onAThread([&] {
        const SharedLock outer(first);
        const ExclusiveLock<SharedMutex> inner(second);
    });
    onAThread([&] {
        const ExclusiveLock<SharedMutex> outer(second);
        const SharedLock inner(first);
    });
}

/// Takes an application's lock for each text.
class LockedBuffer : public std::streambuf
{
public:
    explicit LockedBuffer(Mutex& mutex) : m_mutex(mutex) {}

private:
    std::streamsize xsputn(const char* /*text*/, std::streamsize size) override
    {
        const ExclusiveLock lock(m_mutex);
        return size;
    }

    Mutex& m_mutex;
};

/// A usage is written under the lock of the command tables.
void writeAUsageAndRegister()
{
    using namespace Corvane::CmdTableHelper;
    auto& commands = V2::CmdTableHelperIf::getInstance();
    Mutex mutex;
    LockedBuffer buffer(mutex);
    std::ostream out(&buffer);
    onAThread([&] { commands.executeCmd({"unknown"}, out); });
    onAThread([&] {
        const ExclusiveLock lock(mutex);
        commands.registerCmdTable("known", std::vector<CmdDefinitionCpp>{});
    });
}

} // namespace

int main(int argc, char** argv)
{
    const std::string locks = argc == 2 ? argv[1] : "";
    Mutex mutex;
    if (locks == "exclusive") {
        SharedMutex other;
        takeInBothOrders(mutex, other);
    } else if (locks == "shared") {
        shareInBothOrders();
    } else if (locks == "recursive") {
        std::recursive_mutex other;
        takeInBothOrders(mutex, other);
    } else if (locks == "platform") {
        std::mutex other;
        takeInBothOrders(mutex, other);
    } else if (locks == "library") {
        writeAUsageAndRegister();
    } else {
        return 2;
    }
    return 0;
}
