// Has work done that may take long: in steps, with events in between. What takes longer than a
// moment shows how far it is, and can be cancelled.
//
// Events are handled some 50 times a second on the one thread, so anything may happen meanwhile;
// the window below is blocked once the progress shows.
#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <memory>

#include "tables/stepped_work.h"
#include "ui/dialogs/table_dialog.h"

namespace wavo {

enum class WorkProgressId {
    kCancel = 2,
    kWhat = 1301,
    kBar = 1302,
};

/// Shows how far the work is.
class WorkProgress : public TableDialog {
 public:
    /// `what` is the file that is worked on.
    WorkProgress(const QString& title, const QString& what, QWidget* parent);

    /// From 0 to 1.
    void SetPart(double part);

    /// Whether the user wants it to end: the button, Esc, or the window closed.
    [[nodiscard]] bool WasCancelled() const { return m_was_cancelled; }

    void reject() override;

 private:
    bool m_was_cancelled = false;
};

class WorkInSteps {
 public:
    using Clock = std::function<std::chrono::milliseconds()>;

    /// Work that takes longer than this shows how far it is.
    static constexpr std::chrono::milliseconds kPatience{500};
    /// Events wait no longer than this, and the time of one step.
    static constexpr std::chrono::milliseconds kEventPause{20};

    enum class Ending { kDone, kCancelled, kFailed };

    /// `clock` only ever goes forward.
    explicit WorkInSteps(Clock clock = SteadyClock) : m_clock(std::move(clock)) {}

    /// Has the work done. After kCancelled the caller gives it up. REQUIRES: none is under way.
    Ending Run(tables::SteppedWork& work, const QString& title, const QString& what,
               QWidget* parent);

    /// Ends the work that is under way, if any, as a cancel does. For the end of the window.
    void Cancel() { m_is_cancelled = true; }
    [[nodiscard]] bool IsUnderWay() const { return m_is_under_way; }

    static std::chrono::milliseconds SteadyClock();

 private:
    const Clock m_clock;
    bool m_is_under_way = false;
    bool m_is_cancelled = false;
};

}  // namespace wavo
