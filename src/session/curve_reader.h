// What is read off one stream of values: its value at a line, the figures between two lines, where
// it peaks or passes through zero next.
//
// Lines are the absolute ones of the source. What a stream has told once is not read again, so that
// figures can be renewed with every batch.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

#include "measure/cursors.h"
#include "measure/figure.h"
#include "measure/moment_blocks.h"
#include "session/line_values.h"

namespace wavo {

class CurveReader {
 public:
    /// `cycle_time`: seconds from line to line, above 0. `derivation`: the order of the stream.
    CurveReader(std::unique_ptr<LineValues> values, double cycle_time, std::int32_t derivation);

    /// The lines that the stream reaches over.
    [[nodiscard]] LineRange Lines() const { return m_values->Lines(); }

    /// The value of a line; not told beyond the stream and where it has none.
    [[nodiscard]] measure::Figure ValueAt(std::int64_t line);

    /// Values at both lines and the figures of what lies between, both ends included, in either
    /// order; cycles of the result are lines. A line that is not there tells nothing.
    [[nodiscard]] measure::CurveReading Between(std::optional<std::int64_t> a,
                                                std::optional<std::int64_t> b);

    /// The line of the next peak from `line` on, that not included: see measure::NextPeak.
    [[nodiscard]] std::optional<std::int64_t> NextPeak(std::int64_t line, measure::Search search,
                                                       double prominence);
    [[nodiscard]] std::optional<std::int64_t> NextValley(std::int64_t line, measure::Search search,
                                                         double prominence);
    /// The first line behind the next passage through zero.
    [[nodiscard]] std::optional<std::int64_t> NextZeroCrossing(std::int64_t line,
                                                               measure::Search search);

    /// Decimals that the values seen so far carry. Those of a derived stream are what is left of
    /// its axis' decimals when it is divided by the cycle time.
    [[nodiscard]] int Decimals();

 private:
    /// The place of what is searched among values of which one is where the search begins.
    using Finder =
        std::function<std::optional<double>(std::span<const double> values, std::size_t from)>;

    [[nodiscard]] std::optional<double> Find(std::int64_t line, measure::Search search,
                                             const Finder& finder);
    [[nodiscard]] int DecimalsOfValues(std::span<double> values) const;

    // Constant after construction.
    std::unique_ptr<LineValues> m_values;
    double m_cycle_time;
    std::int32_t m_derivation;

    measure::MomentBlocks m_moments;
    int m_decimals = 0;
    std::int64_t m_seen = 0;  ///< lines before it are in m_decimals
    bool m_any_seen = false;
};

}  // namespace wavo
