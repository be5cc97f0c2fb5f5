// SPDX-License-Identifier: MIT
/// What a recorder has recorded and nobody has taken yet.
///
/// Threads  any.
#ifndef CORVANE_TESTING_ARRIVALS_H
#define CORVANE_TESTING_ARRIVALS_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <new>
#include <utility>
#include <vector>

#include "sync/mutex.h"

namespace Corvane::Testing {

template <typename Item>
class Arrivals
{
public:
    /// Calls `make` for an item and keeps it. If there is no memory for that, the next take() throws.
    template <typename Make>
    void add(const Make& make) noexcept
    {
        const ExclusiveLock lock(m_mutex);
        try {
            m_items.push_back(make());
        } catch (const std::bad_alloc&) {
            m_isIncomplete = true;
        }
        m_changed.notify_all();
    }

    std::vector<Item> take(std::size_t atLeast, std::chrono::milliseconds limit)
    {
        const auto end = std::chrono::steady_clock::now() + limit;
        const ExclusiveLock lock(m_mutex);
        while (m_items.size() < atLeast && !m_isIncomplete &&
               m_changed.wait_until(m_mutex, end) == std::cv_status::no_timeout) {
        }
        if (std::exchange(m_isIncomplete, false)) {
            throw std::bad_alloc();
        }
        return std::exchange(m_items, {});
    }

    void clear()
    {
        const ExclusiveLock lock(m_mutex);
        m_items.clear();
        m_isIncomplete = false;
    }

private:
    Mutex m_mutex;
    std::condition_variable_any m_changed;
    std::vector<Item> m_items CORVANE_GUARDED_BY(m_mutex);
    bool m_isIncomplete CORVANE_GUARDED_BY(m_mutex) = false;
};

} // namespace Corvane::Testing

#endif
