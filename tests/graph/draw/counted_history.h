// A history of values in memory that lets a drawing read so often, grows, and loses lines.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "graph/values/missing_value.h"
#include "source/history.h"

namespace wavo::testing {

class CountedHistory : public History {
 public:
    explicit CountedHistory(std::vector<double> given) : values(std::move(given)) {}

    /// More lines come.
    void Grow(const std::vector<double>& more) {
        values.insert(values.end(), more.begin(), more.end());
        ++version;
    }
    /// The values of lines are there no more.
    void Lose(const LineRange& lines) {
        std::fill(values.begin() + lines.begin, values.begin() + lines.end, NoSample());
        ++version;
        ++losses;
    }

    // History
    [[nodiscard]] LineRange Lines() const override {
        return {0, static_cast<std::int64_t>(values.size())};
    }
    HistoryAnswer Columns(std::span<const std::int64_t>, ColumnRow&) override {
        return HistoryAnswer::kNotLoaded;
    }
    HistoryAnswer Values(std::int64_t first, std::span<double> out) override {
        values_read += out.size();
        for (std::size_t i = 0; i < out.size(); ++i) {
            const auto line = static_cast<std::size_t>(first) + i;  // below 0: beyond all
            out[i] = line < values.size() ? values[line] : NoSample();
        }
        return HistoryAnswer::kAll;
    }
    HistoryAnswer ValuesToDraw(std::int64_t first, std::span<double> out) override {
        if (looks_left == 0) {
            std::fill(out.begin(), out.end(), 1e9);  // nothing that counts
            return HistoryAnswer::kNotLoaded;
        }
        --looks_left;
        return Values(first, out);
    }
    HistoryAnswer Sums(const LineRange&, HistorySums&) override { return HistoryAnswer::kAll; }
    bool Outline(std::span<const std::int64_t> bounds, std::span<ColumnOutline> columns) override {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            columns[i] = {};
            columns[i].missing = bounds[i] < bounds[i + 1];
            if (!is_known_from_far) {
                continue;
            }
            Take(Lines(), columns[i].possible_minimum, columns[i].possible_maximum);
        }
        return true;
    }
    HistoryAnswer LookCloser(const LineRange& lines, ColumnOutline& column) override {
        if (looks_left == 0) {
            return HistoryAnswer::kNotLoaded;
        }
        --looks_left;
        ++closer_looks;
        if (column.closeness == Closeness::kFar) {  // brings nothing but this
            column.closeness = Closeness::kNear;
            return HistoryAnswer::kAll;
        }
        column.missing = false;
        column.closeness = Closeness::kExact;
        for (std::int64_t line = lines.begin; line < lines.end; ++line) {
            const double value = values[static_cast<std::size_t>(line)];
            column.missing = column.missing || std::isnan(value);
            column.first = std::isnan(column.first) ? value : column.first;
            column.last = std::isnan(value) ? column.last : value;
        }
        Take(lines, column.certain_minimum, column.certain_maximum);
        column.possible_minimum = column.certain_minimum;
        column.possible_maximum = column.certain_maximum;
        return HistoryAnswer::kAll;
    }
    [[nodiscard]] std::uint64_t Version() const override { return version; }
    [[nodiscard]] std::uint64_t Losses() const override { return losses; }

    std::vector<double> values;
    bool is_known_from_far = true;
    std::uint64_t version = 1;
    std::uint64_t losses = 0;
    std::size_t looks_left = 0;
    std::size_t closer_looks = 0;
    std::size_t values_read = 0;

 private:
    void Take(const LineRange& lines, double& minimum, double& maximum) const {
        minimum = ColumnOutline::kNone;
        maximum = -ColumnOutline::kNone;
        for (std::int64_t line = lines.begin; line < lines.end; ++line) {
            const double value = values[static_cast<std::size_t>(line)];
            if (!std::isnan(value)) {
                minimum = std::min(minimum, value);
                maximum = std::max(maximum, value);
            }
        }
    }
};

}  // namespace wavo::testing
