// How long the event loop stands still while something is done to the viewer.
#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>
#include <cstdint>

#include "slowness.h"

namespace wavo::testing {

/// A window that handles no event for so long is frozen, ms.
inline constexpr std::int64_t kLongestGap = 1000LL * kSlowness;

/// Beats every 10 ms from when it is made, as long as events are handled.
class Heartbeat {
 public:
    Heartbeat() {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { Beat(); });
        m_since_beat.start();
        m_timer.start(10);
    }

    /// The longest time between two beats, ms; that since the last one counts too.
    [[nodiscard]] std::int64_t LargestGap() const {
        return std::max<std::int64_t>(m_largest, m_since_beat.elapsed());
    }
    /// Number of beats: 0 when no event was handled.
    [[nodiscard]] int Beats() const { return m_beats; }

 private:
    void Beat() {
        m_largest = std::max<std::int64_t>(m_largest, m_since_beat.restart());
        ++m_beats;
    }

    QTimer m_timer;
    QElapsedTimer m_since_beat;
    std::int64_t m_largest = 0;
    int m_beats = 0;
};

}  // namespace wavo::testing
