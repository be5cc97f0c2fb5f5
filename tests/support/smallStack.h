/// Runs a function on a thread with a small stack. For tests that depth costs heap, not stack.
#ifndef CORVANE_TESTS_SUPPORT_SMALLSTACK_H
#define CORVANE_TESTS_SUPPORT_SMALLSTACK_H

#include <functional>
#include <stdexcept>

#include <pthread.h>

namespace Corvane::Testing {

/// Runs `function` on a thread with a stack of 256 KiB and waits for its end.
inline void runOnSmallStack(const std::function<void()>& function)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 256 * 1024);
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    const int error = pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&function));
    pthread_attr_destroy(&attributes);
    if (error != 0) {
        throw std::runtime_error("no thread with a small stack");
    }
    pthread_join(thread, nullptr);
}

} // namespace Corvane::Testing

#endif
