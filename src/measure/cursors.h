// What two cursors read off a curve, and where they jump to.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <span>

#include "measure/figure.h"
#include "measure/series.h"
#include "measure/statistics.h"

namespace wavo::measure {

/// The times of both cursors and what lies between them.
struct CursorTimes {
    double a = 0.0;           ///< s
    double b = 0.0;           ///< s
    double difference = 0.0;  ///< b - a, s
    Figure frequency;         ///< 1 / |b - a|, Hz
};

CursorTimes TimesOf(double a, double b);

/// The sample next to a time; the earlier one of two that are as near. Not told beyond the data,
/// for a cycle that is missing and for a value that is.
Figure SampleAt(const Series& series, double time);

/// The value at a time, on the line between the two samples around it; between samples of which one
/// is missing it is not told.
Figure InterpolatedAt(const Series& series, double time);

/// One curve between the cursors.
struct CurveReading {
    Figure a;           ///< value at cursor A
    Figure b;           ///< value at cursor B
    Figure difference;  ///< b - a
    Figure per_second;  ///< difference over the time from A to B
    Statistics between;
    bool is_whole = true;  ///< false: not all between is known yet
};

CurveReading ReadCurve(const Series& series, double a, double b);

enum class Search { kForward, kBackward };

/// Looks for something in values that it is given one after another, in the direction of the
/// search. Steps count from the first of them, which is 0.
class ValueSearch {
 public:
    /// What is known of successive values, none of them missing, without reading them.
    struct Summary {
        double minimum = 0.0;
        double maximum = 0.0;
        double last = 0.0;  ///< in the direction of the search
    };

    ValueSearch() = default;
    ValueSearch(const ValueSearch&) = delete;
    ValueSearch& operator=(const ValueSearch&) = delete;
    ValueSearch(ValueSearch&&) = delete;
    ValueSearch& operator=(ValueSearch&&) = delete;
    virtual ~ValueSearch() = default;

    /// Takes the next value. True: with it, something is found; the search may go on.
    virtual bool Take(double value) = 0;
    /// Whether nothing is found in such values, whatever their order.
    [[nodiscard]] virtual bool CanSkip(const Summary& values) const = 0;
    /// Goes on behind so many of them. REQUIRES: CanSkip.
    virtual void Skip(std::int64_t count, const Summary& values) = 0;
    /// The step to which what was found leads: see the functions below.
    [[nodiscard]] virtual std::int64_t FoundStep() const = 0;
};

/// Peaks as NextPeak finds them, with `sign` -1 valleys.
class PeakSearch final : public ValueSearch {
 public:
    explicit PeakSearch(double prominence, double sign = 1.0)
        : m_prominence(prominence), m_sign(sign) {}

    bool Take(double value) override;
    [[nodiscard]] bool CanSkip(const Summary& values) const override;
    void Skip(std::int64_t count, const Summary& values) override;
    [[nodiscard]] std::int64_t FoundStep() const override { return (m_top + m_top_end) / 2; }

 private:
    const double m_prominence;
    const double m_sign;
    std::int64_t m_step = 0;  ///< of the next value
    double m_lowest = std::numeric_limits<double>::infinity();
    bool m_has_risen = false;
    double m_top_value = 0.0;
    std::int64_t m_top = 0;
    std::int64_t m_top_end = 0;  ///< last of the equal values
};

/// Passages through zero as NextZeroCrossing finds them.
class CrossingSearch final : public ValueSearch {
 public:
    bool Take(double value) override;
    [[nodiscard]] bool CanSkip(const Summary& values) const override;
    void Skip(std::int64_t count, const Summary& values) override;
    /// The first step behind the passage.
    [[nodiscard]] std::int64_t FoundStep() const override;
    /// The values on both sides of the passage.
    [[nodiscard]] std::int64_t StepBefore() const { return m_found_before; }
    [[nodiscard]] std::int64_t StepBehind() const { return m_found_behind; }
    /// The passage itself, where these stand at the places `before` and `behind`.
    [[nodiscard]] double PlaceBetween(double before, double behind) const;

 private:
    std::int64_t m_step = 0;    ///< of the next value
    std::int64_t m_before = 0;  ///< the last value that was not zero
    double m_value_before = 0.0;
    double m_share = 0.0;  ///< of the way from before to behind
    std::int64_t m_found_before = 0;
    std::int64_t m_found_behind = 0;
};

/// The next peak from a place on, the place itself not included: a sample behind which the values
/// fall by more than `prominence` after they rose by more than it. Of equal samples the one in the
/// middle. A missing value ends a rise.
std::optional<std::size_t> NextPeak(std::span<const double> values, std::size_t from, Search search,
                                    double prominence = 0.0);

/// The same for valleys.
std::optional<std::size_t> NextValley(std::span<const double> values, std::size_t from,
                                      Search search, double prominence = 0.0);

/// Where the values next pass through zero, as a place between samples (on the line between them);
/// of samples that are zero the one in the middle, where the signs before and behind differ. `from`
/// is such a place too and is not included.
std::optional<double> NextZeroCrossing(std::span<const double> values, double from, Search search);

/// Decimals that values carry: the smallest number of decimals, at most `most`, with which each of
/// them is written without loss (within 2 units of its last binary digit). 0 when there are none.
int DecimalsOf(std::span<const double> values, int most = 9);

}  // namespace wavo::measure
