#include "session/seen_lines.h"

#include <algorithm>
#include <cmath>

namespace wavo {

void SeenLines::ShowAll(const LineRange& held) {
    m_held = held;
    Show(held);
}

void SeenLines::SetHeld(const LineRange& held) {
    m_held = held;
    Show(m_seen);
}

LineRange SeenLines::Fitted(LineRange lines) const {
    const std::int64_t most = std::max<std::int64_t>(m_held.Count(), 2);
    const std::int64_t count = std::clamp(lines.Count(), std::min(kFewest, most), most);
    const std::int64_t last_begin = std::max(m_held.begin, m_held.end - count);
    const std::int64_t begin = std::clamp(lines.begin, m_held.begin, last_begin);
    return {begin, begin + count};
}

void SeenLines::Zoom(double place, double factor) {
    const auto steps = static_cast<double>(m_seen.Count() - 1);
    const auto most = static_cast<double>(std::max<std::int64_t>(m_held.Count() - 1, 1));
    const double fewest = std::min(static_cast<double>(kFewest - 1), most);
    double wanted = std::clamp(std::round(steps * factor), fewest, most);
    if (wanted == steps && factor != 1.0) {  // of few lines a small factor leaves all
        wanted = std::clamp(steps + (factor > 1.0 ? 1.0 : -1.0), fewest, most);
    }
    const double fixed = static_cast<double>(m_seen.begin) + place * steps;
    const auto begin = static_cast<std::int64_t>(std::llround(fixed - place * wanted));
    m_seen = Fitted({begin, begin + static_cast<std::int64_t>(wanted) + 1});
}

void SeenLines::MoveTo(double begin) {
    const double nearest = std::clamp(begin, static_cast<double>(m_held.begin),
                                      static_cast<double>(std::max(m_held.begin, m_held.end)));
    const auto line = static_cast<std::int64_t>(std::llround(nearest));
    m_seen = Fitted({line, line + m_seen.Count()});
}

void SeenLines::Move(double windows) {
    MoveTo(static_cast<double>(m_seen.begin) + windows * static_cast<double>(m_seen.Count() - 1));
}

void SeenLines::MoveToBegin() {
    MoveTo(static_cast<double>(m_held.begin));
}

void SeenLines::MoveToEnd() {
    MoveTo(static_cast<double>(m_held.end));
}

void SeenLines::BringIn(std::int64_t line) {
    const std::int64_t margin = m_seen.Count() / 20;
    if (line < m_seen.begin + margin || line >= m_seen.end - margin) {
        MoveTo(static_cast<double>(line - m_seen.Count() / 2));
    }
}

}  // namespace wavo
