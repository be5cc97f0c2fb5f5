/// An application that starts the client on one thread while another loads a plug-in that starts it too. The client
/// calls dlopen(), which takes the loader's lock; the thread that loads the plug-in holds that lock. They must not wait
/// for each other.
///
/// The client calls this program's dlopen() instead of the C library's. It delays the call until the plug-in has begun
/// to load.
#include <condition_variable>
#include <iostream>
#include <mutex>
#include <thread>

#include <dlfcn.h>
#include <elog/elogIf.h>

#include "tests/elog/elogPluginHost.h"

namespace {

/// Something that happens once; threads wait for it.
class Moment
{
public:
    void come()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_hasCome = true;
        m_changed.notify_all();
    }

    void wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_hasCome; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_hasCome = false;
};

Moment s_clientAsksLoader;
Moment s_pluginLoads;
thread_local bool t_startsClient = false;

} // namespace

void pluginIsLoading()
{
    s_pluginLoads.come();
}

extern "C" [[gnu::visibility("default")]] void* dlopen(const char* file, int mode)
{
    if (t_startsClient) {
        t_startsClient = false;
        s_clientAsksLoader.come();
        s_pluginLoads.wait();
    }
    static const auto systems = reinterpret_cast<void* (*)(const char*, int)>(::dlsym(RTLD_NEXT, "dlopen"));
    return systems(file, mode);
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        return 2;
    }
    std::thread starter([] {
        t_startsClient = true;
        Corvane::Elog::V2::ElogIf::getInstance().elogWrite(1, "from the application", {});
    });
    s_clientAsksLoader.wait();
    const bool isLoaded = ::dlopen(argv[1], RTLD_NOW) != nullptr;
    if (isLoaded) {
        std::cout << "loaded" << std::endl;
    } else {
        std::cerr << ::dlerror() << "\n";
        s_pluginLoads.come(); // it never will
    }
    starter.join();
    return isLoaded ? 0 : 1;
}
