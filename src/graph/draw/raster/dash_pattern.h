// Which pixels of a curve are painted where curves are told apart by their dashes.
//
// Dashes stand at places of the plot area, not of the curve: it moves under them, and they never
// crawl along it. Over time they follow the columns. What a curve covers of a column in a gap is
// left out, but for the ends of what is long: no spike ever falls into a gap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "graph/draw/raster/column_spans.h"

namespace wavo {

class DashPattern {
 public:
    /// Patterns there are; the curve of this number looks as the one of number 0 again.
    static constexpr std::size_t kPatterns = 8;

    /// A solid line.
    DashPattern() = default;
    /// Of the curve of a number, which counts from 0: solid, dashed, dotted, dash and dot, and so
    /// on. `device_ratio`: device pixels per logical pixel.
    DashPattern(std::size_t curve, double device_ratio);

    [[nodiscard]] bool IsSolid() const { return m_period.empty(); }

    /// Whether a column (of a curve that goes down or up: a row) is painted; device pixels from the
    /// edge of the plot area on.
    [[nodiscard]] bool Paints(std::int32_t pixel) const {
        return IsSolid() || m_period[static_cast<std::uint32_t>(pixel) % m_period.size()] != 0;
    }

    /// Rows of a column in a gap that are left out even so; more than that show their ends.
    [[nodiscard]] std::int32_t MostHidden() const { return m_most_hidden; }
    /// Rows that each of these ends has.
    [[nodiscard]] std::int32_t EndRows() const { return m_most_hidden / 2; }

    /// Leaves in `dashed` what is painted of `whole`.
    void Cut(const ColumnSpans& whole, ColumnSpans& dashed) const;

    friend bool operator==(const DashPattern&, const DashPattern&) = default;

 private:
    std::vector<std::uint8_t> m_period;  ///< per pixel: painted or not; empty: all are
    std::int32_t m_most_hidden = 0;
};

}  // namespace wavo
