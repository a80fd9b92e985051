// Values of a stream by their lines, as they can be measured: of a buffer, of any history.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "graph/values/graph_value.h"
#include "graph/values/ring_history.h"
#include "source/history.h"

namespace wavo {

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
    /// The same where they lie in memory one behind the other; empty where they do not. Valid until
    /// the stream changes.
    [[nodiscard]] virtual std::span<const double> InMemory(std::int64_t /*first*/,
                                                           std::size_t /*count*/) const {
        return {};
    }
};

class HistoryValues final : public LineValues {
 public:
    /// `history` is not owned and outlives the values.
    explicit HistoryValues(History& history) : m_history(history) {}

    // LineValues
    [[nodiscard]] LineRange Lines() const override { return m_history.Lines(); }
    bool Read(std::int64_t first, std::span<double> values) override {
        return m_history.Values(first, values) == HistoryAnswer::kAll;
    }

 private:
    History& m_history;
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
