// A recursive lock that knows its place in the order in which locks are taken.
//
// Invariant: a lock that is taken inside one of the same or a later place is reported to the error
// log. Nothing else changes by it: the lock is taken.
#pragma once

#include <mutex>

namespace wavo {

class OrderedMutex {
 public:
    /// Locks of a lower `place` are taken first. `name` is for the report; static storage.
    OrderedMutex(int place, const char* name) : m_place(place), m_name(name) {}
    OrderedMutex(const OrderedMutex&) = delete;
    OrderedMutex& operator=(const OrderedMutex&) = delete;

    // As std::lock_guard wants them. REQUIRES: a thread gives its locks back in the reverse order.
    void lock();
    void unlock();

    /// This thread holds the lock.
    [[nodiscard]] bool IsHeld() const;

 private:
    const int m_place;
    const char* const m_name;

    std::recursive_mutex m_mutex;
    // Of the thread that holds the lock:
    int m_depth = 0;                  // how often it has taken it
    OrderedMutex* m_outer = nullptr;  // the lock that it took before
};

}  // namespace wavo
