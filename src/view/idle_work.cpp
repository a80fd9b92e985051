#include "view/idle_work.h"

#include <utility>

namespace wavo {

void IdleWork::Begin() {
    if (!std::exchange(m_is_posted, true)) {
        QMetaObject::invokeMethod(
            this, [this] { Go(); }, Qt::QueuedConnection);
    }
}

void IdleWork::Go() {
    using Clock = std::chrono::steady_clock;
    m_is_posted = false;
    const Clock::time_point end = Clock::now() + kSlice;
    bool is_more = m_part();
    while (is_more && Clock::now() < end) {
        is_more = m_part();
    }
    if (is_more) {
        Begin();
    }
}

}  // namespace wavo
