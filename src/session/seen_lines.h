// Which of the lines of the past are seen: the one window that all graphs over time show.
//
// Invariants:
// 1. At least two lines are seen, and fewer than kFewest only where there are fewer.
// 2. What is seen lies within what there is, as far as that is long enough.
#pragma once

#include <cstdint>

#include "source/history.h"

namespace wavo {

class SeenLines {
 public:
    /// Fewer lines than these are not zoomed to.
    static constexpr std::int64_t kFewest = 6;

    /// All of `held` is seen.
    void ShowAll(const LineRange& held);
    /// There are other lines. What is seen stays; what has gone leaves it.
    void SetHeld(const LineRange& held);

    /// From the line at the left border to behind the one at the right border.
    [[nodiscard]] const LineRange& Seen() const { return m_seen; }
    [[nodiscard]] const LineRange& Held() const { return m_held; }
    [[nodiscard]] bool IsAllSeen() const { return m_seen == Fitted(m_held); }

    /// Shows these lines, or what there is nearest to them.
    void Show(const LineRange& lines) { m_seen = Fitted(lines); }
    /// Shows so many times as many lines; the one at a place of the window, 0 at the left border to
    /// 1 at the right one, stays where it is. REQUIRES: factor > 0.
    void Zoom(double place, double factor);
    /// Moves by so many windows, to later lines when positive.
    void Move(double windows);
    void MoveToBegin();
    void MoveToEnd();
    /// Moves so that a line is in the middle, if it is not seen or lies near a border.
    void BringIn(std::int64_t line);

 private:
    [[nodiscard]] LineRange Fitted(LineRange lines) const;
    void MoveTo(double begin);

    LineRange m_held;
    LineRange m_seen{0, kFewest};
};

}  // namespace wavo
