// How the past of one stream of values is asked: of a ring in memory, of a recording on a disk.
//
// Lines of a source are numbered from the first one on; the numbers survive a reset. A stream holds
// a value for most of the lines of a range: some it may have missed.
//
// Questions are for whole rows of columns, so that they can be answered with wide instructions and
// a disk is read once.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace wavo {

/// Lines from `begin` to before `end`.
struct LineRange {
    std::int64_t begin = 0;
    std::int64_t end = 0;

    [[nodiscard]] std::int64_t Count() const { return end > begin ? end - begin : 0; }
    friend bool operator==(const LineRange&, const LineRange&) = default;
};

/// Columns of a curve, an entry per column. A column without values has a minimum above its maximum
/// and no number as first and last.
struct ColumnRow {
    std::vector<double> first;    ///< value of its first line that has one
    std::vector<double> last;     ///< value of its last line that has one
    std::vector<double> minimum;  ///< of its values, infinite ones included
    std::vector<double> maximum;
    std::vector<std::uint8_t> missing;  ///< 1: some of its lines have no value

    /// As many columns, without values; all their lines are missing.
    void Reset(std::size_t columns) {
        first.assign(columns, std::numeric_limits<double>::quiet_NaN());
        last.assign(columns, std::numeric_limits<double>::quiet_NaN());
        minimum.assign(columns, std::numeric_limits<double>::infinity());
        maximum.assign(columns, -std::numeric_limits<double>::infinity());
        missing.assign(columns, 1);
    }
};

/// What statistics of a range are made from. Only finite values take part.
struct HistorySums {
    std::uint64_t count = 0;
    double sum = 0.0;
    double sum_of_squares = 0.0;  ///< of the differences to the mean
    [[nodiscard]] double Mean() const {
        return count == 0 ? 0.0 : sum / static_cast<double>(count);
    }

    [[nodiscard]] static HistorySums Of(std::span<const double> values) {
        HistorySums sums;
        for (const double value : values) {
            if (std::isfinite(value)) {
                ++sums.count;
                sums.sum += value;
            }
        }
        // In two passes: far from zero the squares of the values would lose the differences.
        const double mean = sums.Mean();
        for (const double value : values) {
            if (std::isfinite(value)) {
                sums.sum_of_squares += (value - mean) * (value - mean);
            }
        }
        return sums;
    }

    /// As if the values of both had come together.
    void Add(const HistorySums& more) {
        if (more.count == 0) {
            return;
        }
        const double both = static_cast<double>(count) + static_cast<double>(more.count);
        const double apart = more.Mean() - Mean();
        sum_of_squares +=
            more.sum_of_squares + (count == 0 ? 0.0
                                              : apart * apart * static_cast<double>(count) *
                                                    (static_cast<double>(more.count) / both));
        count += more.count;
        sum += more.sum;
    }
};

enum class HistoryAnswer {
    kAll,
    kNotLoaded,  ///< not all was there yet; what was is in the answer: ask again later
};

/// How closely a column was looked at.
enum class Closeness {
    kFar,    ///< nothing was read for it
    kNear,   ///< nearly all that can be told without its values
    kExact,  ///< all is known
};

/// A column, known as far as it was looked at. Infinite values take part in the extremes; a minimum
/// above the maximum: none.
struct ColumnOutline {
    static constexpr double kNone = std::numeric_limits<double>::infinity();

    double certain_minimum = kNone;  ///< of lines of the column
    double certain_maximum = -kNone;
    double possible_minimum = kNone;  ///< of those, and of lines that stand beside them
    double possible_maximum = -kNone;
    double first = std::numeric_limits<double>::quiet_NaN();  ///< as in ColumnRow, with kExact
    double last = std::numeric_limits<double>::quiet_NaN();
    bool missing = false;  ///< some of its lines may have no value; with kExact: have none
    Closeness closeness = Closeness::kFar;

    [[nodiscard]] bool IsExact() const { return closeness == Closeness::kExact; }
    [[nodiscard]] bool HasExtremes() const { return possible_minimum <= possible_maximum; }
    /// Its extremes are known.
    [[nodiscard]] bool IsKnown() const {
        return IsExact() || (HasExtremes() && certain_minimum == possible_minimum &&
                             certain_maximum == possible_maximum);
    }
};

class History {
 public:
    virtual ~History() = default;

    /// The lines that the stream reaches over.
    [[nodiscard]] virtual LineRange Lines() const = 0;

    /// Column i is made of the lines from bounds[i] to before bounds[i + 1]; `row` gets one column
    /// less than there are bounds. REQUIRES: the bounds do not fall.
    virtual HistoryAnswer Columns(std::span<const std::int64_t> bounds, ColumnRow& row) = 0;

    /// The values of successive lines from `first` on, NoSample() for lines without one.
    virtual HistoryAnswer Values(std::int64_t first, std::span<double> values) = 0;

    virtual HistoryAnswer Sums(const LineRange& lines, HistorySums& sums) = 0;

    /// Columns from far: reads nothing. Where nothing at all is known of one, its extremes are
    /// none. False when this history only answers exactly. REQUIRES: as Columns, with one outline
    /// less than there are bounds.
    virtual bool Outline(std::span<const std::int64_t> /*bounds*/,
                         std::span<ColumnOutline> /*columns*/) {
        return false;
    }
    /// Looks at a column, the one of these lines, one step closer. kNotLoaded, and nothing changed,
    /// when what a drawing may read is spent. REQUIRES: Outline gave the column; it is not exact.
    virtual HistoryAnswer LookCloser(const LineRange& /*lines*/, ColumnOutline& /*column*/) {
        return HistoryAnswer::kNotLoaded;
    }
    /// Cuts lines into some hundred parts at most, at the places where most is known of them
    /// without their values, if anything is. `bounds` gets those of the parts; of one part alone:
    /// nothing but its values tells more. REQUIRES: some of the lines are there.
    virtual void Cut(const LineRange& lines, std::vector<std::int64_t>& bounds) const {
        bounds.assign({lines.begin, lines.end});
    }
    /// Outline, as near as columns can be told without their values. kNotLoaded, and nothing
    /// changed, when what a drawing may read is spent. REQUIRES: Outline is no false.
    virtual HistoryAnswer LookNear(std::span<const std::int64_t> bounds,
                                   std::span<ColumnOutline> columns) {
        return Outline(bounds, columns) ? HistoryAnswer::kAll : HistoryAnswer::kNotLoaded;
    }
    /// Values, for a drawing: kNotLoaded, and nothing in `values` that counts, when what it may
    /// read is spent.
    virtual HistoryAnswer ValuesToDraw(std::int64_t first, std::span<double> values) {
        return Values(first, values);
    }
    /// A closer look at this column will be asked for soon; changes no answer.
    virtual void Announce(const LineRange& /*lines*/, const ColumnOutline& /*column*/) {}
    /// Changes when what was told of lines no longer holds.
    [[nodiscard]] virtual std::uint64_t Version() const { return 0; }
    /// Changes when a value that was told is there no more; not when lines come.
    [[nodiscard]] virtual std::uint64_t Losses() const { return 0; }
};

/// When a history was asked, to keep what it told while it would tell the same again.
class HistoryMoment {
 public:
    HistoryMoment() = default;
    explicit HistoryMoment(const History& history)
        : m_version(history.Version()), m_losses(history.Losses()), m_lines(history.Lines()) {}

    /// What `history` told then of lines before `end` holds: lines that have come stand behind
    /// them. REQUIRES: the history that was asked.
    [[nodiscard]] bool Holds(const History& history, std::int64_t end) const {
        return m_version == history.Version() ||
               (m_losses == history.Losses() && m_lines.begin == history.Lines().begin &&
                end <= m_lines.end);
    }

 private:
    std::uint64_t m_version = 0;
    std::uint64_t m_losses = 0;
    LineRange m_lines;
};

}  // namespace wavo
