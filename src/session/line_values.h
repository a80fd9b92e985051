// Values of a stream by their lines, as they can be measured: of a buffer, of any history.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "graph/values/graph_value.h"
#include "graph/values/ring_history.h"
#include "source/history.h"

namespace wavo {

/// Of lines that all have a value.
struct LineBounds {
    double minimum = 0.0;
    double maximum = 0.0;
    double first = 0.0;
    double last = 0.0;
};

/// Extremes of lines, and where they are.
struct LineExtremes {
    double minimum = 0.0;
    double maximum = 0.0;
    std::int64_t minimum_line = 0;  ///< of the first of equal ones
    std::int64_t maximum_line = 0;
};

class LineValues {
 public:
    LineValues() = default;
    virtual ~LineValues() = default;
    LineValues(const LineValues&) = delete;
    LineValues& operator=(const LineValues&) = delete;
    LineValues(LineValues&&) = delete;
    LineValues& operator=(LineValues&&) = delete;

    /// The lines that the stream reaches over.
    [[nodiscard]] virtual LineRange Lines() const = 0;
    /// The values of successive lines from `first` on, NaN for lines without one. False: some are
    /// to come yet.
    virtual bool Read(std::int64_t first, std::span<double> values) = 0;
    /// What is known of successive lines without reading them all: first and last value, extremes.
    /// Nothing where that is not known, or some of them have no value.
    [[nodiscard]] virtual std::optional<LineBounds> Bounds(const LineRange& /*lines*/) {
        return std::nullopt;
    }
    /// Minimum and maximum of successive lines that may lack values, as far as they are known
    /// without reading them all; infinite values take part.
    [[nodiscard]] virtual std::optional<LineExtremes> Extremes(const LineRange& /*lines*/) {
        return std::nullopt;
    }
    /// Bytes that were read for what was asked so far; grows.
    [[nodiscard]] virtual std::uint64_t BytesRead() const { return 0; }
    /// Changes when what was told of a line no longer holds.
    [[nodiscard]] virtual std::uint64_t Losses() const { return 0; }
    /// The same where they lie in memory one behind the other; empty where they do not. Valid until
    /// the stream changes.
    [[nodiscard]] virtual std::span<const double> InMemory(std::int64_t /*first*/,
                                                           std::size_t /*count*/) const {
        return {};
    }
};

class HistoryValues final : public LineValues {
 public:
    /// `history` is not owned and outlives the values. `bytes_read`: for whoever asks it.
    explicit HistoryValues(History& history, std::function<std::uint64_t()> bytes_read = {})
        : m_history(history), m_bytes_read(std::move(bytes_read)) {}

    // LineValues
    [[nodiscard]] LineRange Lines() const override { return m_history.Lines(); }
    bool Read(std::int64_t first, std::span<double> values) override {
        return m_history.Values(first, values) == HistoryAnswer::kAll;
    }
    [[nodiscard]] std::optional<LineBounds> Bounds(const LineRange& lines) override;
    [[nodiscard]] std::optional<LineExtremes> Extremes(const LineRange& lines) override;
    [[nodiscard]] std::uint64_t BytesRead() const override {
        return m_bytes_read ? m_bytes_read() : 0;
    }
    [[nodiscard]] std::uint64_t Losses() const override { return m_history.Losses(); }

 private:
    /// Whether there is something to tell without reading every line.
    [[nodiscard]] bool IsOutlined(const LineRange& lines);
    /// The line at which the extreme is that a column of the range has.
    std::int64_t Find(LineRange lines, double extreme, std::vector<double> ColumnRow::*kind);

    History& m_history;
    const std::function<std::uint64_t()> m_bytes_read;
    std::vector<std::int64_t> m_bounds;
    ColumnRow m_row;
};

/// Those of a buffer; where a derived stream has no derivative, it has no value either.
class BufferValues final : public LineValues {
 public:
    /// `value` is not owned and outlives the values. It may change between two questions.
    explicit BufferValues(const GraphValue& value) : m_value(value), m_history(value) {}

    // LineValues
    [[nodiscard]] LineRange Lines() const override { return m_history.Lines(); }
    bool Read(std::int64_t first, std::span<double> values) override;
    [[nodiscard]] std::span<const double> InMemory(std::int64_t first,
                                                   std::size_t count) const override;

 private:
    /// The lines, in order, that came without a derivative.
    [[nodiscard]] std::vector<LineLog::Run> Underived() const;

    const GraphValue& m_value;
    RingHistory m_history;
};

}  // namespace wavo
