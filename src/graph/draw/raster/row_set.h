// Rows that are covered, as stretches that do not touch, from top to bottom.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace wavo {

/// Successive rows; none when top > bottom.
struct RowStretch {
    std::int32_t top = 0;
    std::int32_t bottom = -1;

    [[nodiscard]] bool IsEmpty() const { return top > bottom; }
    /// Both, and what lies between them.
    [[nodiscard]] RowStretch Joined(const RowStretch& other) const {
        if (IsEmpty() || other.IsEmpty()) {
            return IsEmpty() ? other : *this;
        }
        return {std::min(top, other.top), std::max(bottom, other.bottom)};
    }
    [[nodiscard]] RowStretch Within(const RowStretch& limits) const {
        return {std::max(top, limits.top), std::min(bottom, limits.bottom)};
    }
    friend bool operator==(const RowStretch&, const RowStretch&) = default;
};

class RowSet {
 public:
    void Add(RowStretch rows) {
        if (Holds(rows)) {
            return;
        }
        const auto first = FirstThatEndsFrom(rows.top - 1);
        auto end = first;
        for (; end != m_stretches.end() && end->top <= rows.bottom + 1; ++end) {
            rows = rows.Joined(*end);
        }
        m_stretches.insert(m_stretches.erase(first, end), rows);
    }

    /// All of these rows are covered.
    [[nodiscard]] bool Holds(const RowStretch& rows) const {
        const auto found = FirstThatEndsFrom(rows.bottom);
        return rows.IsEmpty() || (found != m_stretches.end() && found->top <= rows.top);
    }

    [[nodiscard]] const std::vector<RowStretch>& Stretches() const { return m_stretches; }

 private:
    [[nodiscard]] std::vector<RowStretch>::const_iterator FirstThatEndsFrom(
        std::int32_t row) const {
        return std::ranges::lower_bound(m_stretches, row, {}, &RowStretch::bottom);
    }

    std::vector<RowStretch> m_stretches;
};

}  // namespace wavo
