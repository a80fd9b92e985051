#include "support/ordered_mutex.h"

#include "support/diagnostics.h"

namespace wavo {

namespace {

/// The lock that this thread took last of those that it holds.
OrderedMutex*& Innermost() {
    thread_local OrderedMutex* innermost = nullptr;
    return innermost;
}

}  // namespace

void OrderedMutex::lock() {
    m_mutex.lock();
    if (++m_depth > 1) {
        return;
    }
    m_outer = Innermost();
    Innermost() = this;
    if (m_outer != nullptr && m_outer->m_place >= m_place) {
        MERRLOG("OrderedMutex::lock(): the %s is taken inside the %s", m_name, m_outer->m_name);
    }
}

void OrderedMutex::unlock() {
    if (--m_depth == 0) {
        Innermost() = m_outer;
    }
    m_mutex.unlock();
}

bool OrderedMutex::IsHeld() const {
    const OrderedMutex* lock = Innermost();
    while (lock != nullptr && lock != this) {
        lock = lock->m_outer;
    }
    return lock == this;
}

}  // namespace wavo
