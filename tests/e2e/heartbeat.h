// Whether the event loop goes on while something is done to the viewer: measured by what it waits
// for and how much it works from event to event, not by the clock, since another program may have
// the processor.
#pragma once

#include <gtest/gtest.h>

#include <QObject>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>

#include "expect_errors.h"
#include "platform/message_window.h"
#include "processor_time.h"
#include "slowness.h"

namespace wavo::testing {

/// A window that handles no event for so long is frozen.
inline constexpr std::chrono::milliseconds kLongestGap{1000};
static_assert(platform::MessageWindow::kSendTimeout < kLongestGap);

/// Counts the answers that the viewer has waited for in vain since this was made.
class VainWaits {
 public:
    [[nodiscard]] std::size_t Count() const {
        const auto texts = m_reports.Texts();
        return static_cast<std::size_t>(
            std::count_if(texts.begin(), texts.end(), [](const std::string& text) {
                return text.rfind("WindowChannel::Send(): no answer to message ", 0) == 0;
            }));
    }

 private:
    const CollectReports m_reports{diagnostics::Service::kErrorTrace};
};

/// Beats every 10 ms from when it is made, as long as events are handled.
class Heartbeat {
 public:
    Heartbeat() {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { Beat(); });
        m_timer.start(10);
    }

    /// Fails when no event was handled, or when there was more between two than one wait in vain,
    /// or than work for kLongestGap.
    void ExpectNoFreeze() {
        EXPECT_GT(m_beats, 0);
        Beat();
        EXPECT_LE(m_most_waits, 1U) << "waits between two events";
        EXPECT_LT(std::chrono::duration_cast<std::chrono::milliseconds>(m_most_work).count(),
                  (kSlowness * kLongestGap).count())
            << "ms of work between two events";
    }
    /// Fails unless there was one wait in vain so far; a second one follows where what the master
    /// had posted before was handled behind the first: it was heard of again.
    void ExpectOneWait() const {
        EXPECT_GE(m_waits.Count(), 1U);
        EXPECT_LE(m_waits.Count(), 2U);
    }

 private:
    void Beat() {
        ++m_beats;
        const auto work = ThreadProcessorTime();
        m_most_work = std::max(m_most_work, work - m_work);
        m_work = work;
        const std::size_t waits = m_waits.Count();
        m_most_waits = std::max(m_most_waits, waits - m_waited);
        m_waited = waits;
    }

    QTimer m_timer;
    const VainWaits m_waits;
    std::chrono::nanoseconds m_work = ThreadProcessorTime();
    std::chrono::nanoseconds m_most_work{0};
    std::size_t m_waited = 0;
    std::size_t m_most_waits = 0;
    int m_beats = 0;
};

}  // namespace wavo::testing
