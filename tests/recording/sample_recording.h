// Recordings for tests: what was written, and what is to be read of it.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "recording/recording_reader.h"
#include "recording/recording_writer.h"

namespace wavo::testing {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The lines of a recording by their numbers, and what follows from them, found the plain way.
class PlainLines {
 public:
    explicit PlainLines(double cycle_time) : m_cycle_time(cycle_time) {}

    void Add(std::uint64_t first, const std::vector<std::vector<double>>& lines) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            m_lines[first + i] = lines[i];
        }
    }
    void Remove(std::uint64_t first, std::uint64_t end) {
        m_lines.erase(m_lines.lower_bound(first), m_lines.lower_bound(end));
    }

    [[nodiscard]] const std::map<std::uint64_t, std::vector<double>>& Lines() const {
        return m_lines;
    }

    /// The value of a stream; nothing where there is none.
    [[nodiscard]] std::optional<double> Value(std::size_t axis, int order,
                                              std::uint64_t line) const {
        std::vector<double> history;
        for (int back = order; back >= 0; --back) {
            const auto found = line >= static_cast<std::uint64_t>(back)
                                   ? m_lines.find(line - static_cast<std::uint64_t>(back))
                                   : m_lines.end();
            if (found == m_lines.end()) {
                return std::nullopt;
            }
            history.push_back(found->second[axis]);
        }
        switch (order) {
            case 0:
                return history[0];
            case 1:
                return (history[1] - history[0]) / m_cycle_time;
            case 2:
                return ((history[2] - history[1]) - (history[1] - history[0])) /
                       std::pow(m_cycle_time, 2);
            default:
                return (((history[3] - history[2]) - (history[2] - history[1])) -
                        (history[1] - history[0])) /
                       std::pow(m_cycle_time, 3);
        }
    }

    struct Extent {
        recording::Level level;
        double first = kNaN;
        double last = kNaN;
    };
    [[nodiscard]] Extent Of(std::size_t axis, int order, std::uint64_t from,
                            std::uint64_t to) const {
        Extent extent;
        for (std::uint64_t line = from; line < to; ++line) {
            const std::optional<double> value = Value(axis, order, line);
            if (!value || std::isnan(*value)) {
                extent.level.missing = true;
                continue;
            }
            extent.level.extremes.Take(*value);
            extent.first = std::isnan(extent.first) ? *value : extent.first;
            extent.last = *value;
        }
        return extent;
    }

 private:
    const double m_cycle_time;
    std::map<std::uint64_t, std::vector<double>> m_lines;
};

/// Lines as a machine makes them, with what no machine should make among them when `is_hostile`.
inline std::vector<std::vector<double>> MakeLines(std::size_t axes, std::size_t count,
                                                  unsigned seed, bool is_hostile = false) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> noise(0.0, 0.01);
    std::vector<std::vector<double>> lines(count);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t axis = 0; axis < axes; ++axis) {
            const double phase = static_cast<double>(i + 100 * axis + seed) * 0.003;
            double value = 50.0 * std::sin(phase) + noise(random);
            if (is_hostile && random() % 97 == 0) {
                constexpr double kInfinity = std::numeric_limits<double>::infinity();
                const double strange[] = {kNaN, kInfinity, -kInfinity, 0.0,
                                          -0.0, 1e308,     -1e308,     5e-324};
                value = strange[random() % std::size(strange)];
            }
            lines[i].push_back(value);
        }
    }
    return lines;
}

inline recording::RecordingHead MakeHead(std::size_t axes, double cycle_time = 0.001) {
    recording::RecordingHead head;
    for (std::size_t axis = 0; axis < axes; ++axis) {
        head.axis_names.emplace_back(axis < 3 ? std::string(1, static_cast<char>('X' + axis))
                                              : "Axis " + std::to_string(axis));
        head.limits.push_back(recording::AxisLimits{-100.0, 100.5, 10.0, 0.0, 0.001});
    }
    head.cycle_time = cycle_time;
    head.start_time = 1754056800123456789U;
    head.program = "wavo_record test";
    return head;
}

inline void RequireNoFault(const MaybeFault& fault) {
    ASSERT_FALSE(fault.has_value()) << fault->text;
}

inline void Append(recording::RecordingWriter& writer, std::uint64_t first,
                   const std::vector<std::vector<double>>& lines) {
    std::vector<double> values;
    for (const std::vector<double>& line : lines) {
        values.insert(values.end(), line.begin(), line.end());
    }
    RequireNoFault(writer.Append(first, values, lines.size()));
}

/// Whether two values are the same to the last bit.
inline bool SameBits(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

/// What differs between the lines that are there and those that are read; empty for nothing.
inline std::string CompareLines(recording::RecordingReader& reader, const PlainLines& lines) {
    const std::size_t axes = reader.Head().axis_names.size();
    std::vector<double> line(axes);
    const std::uint64_t end = std::max<std::uint64_t>(
        reader.EndLine(), lines.Lines().empty() ? 0 : lines.Lines().rbegin()->first + 1);
    for (std::uint64_t number = reader.FirstLine() > 2 ? reader.FirstLine() - 2 : 0;
         number < end + 2; ++number) {
        const bool is_there = reader.ReadLine(number, line);
        const auto expected = lines.Lines().find(number);
        if (is_there != (expected != lines.Lines().end())) {
            return "line " + std::to_string(number) + (is_there ? " is there" : " is missing");
        }
        for (std::size_t axis = 0; is_there && axis < axes; ++axis) {
            if (!SameBits(line[axis], expected->second[axis])) {
                return "line " + std::to_string(number) + " differs";
            }
        }
    }
    return {};
}

}  // namespace wavo::testing
