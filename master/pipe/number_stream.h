// Lines of text become lines of values at a regular cycle time.
//
// The first lines tell the names of the axes and the cycle time, where these are not given. From
// then on each line of text gives one line of values, so that nothing shifts in time: one that
// cannot be read is reported and becomes a line of missing values. With a column of time, lines
// that are missing before a line are reported and become missing values, too.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "master/pipe/number_line.h"

namespace wavo::master {

struct StreamOptions {
    std::vector<std::string> axes;      ///< empty: the first line has the names
    bool has_time = false;              ///< the first column is the time
    double time_unit = 1.0;             ///< seconds
    std::optional<double> cycle_time;   ///< seconds; nothing: found from the time. Then has_time
    std::uint64_t most_missing = 1000;  ///< lines that one gap is filled with, at most
};

/// Where the values go. What returns false ends the stream: no more lines are wanted.
class LineSink {
 public:
    LineSink() = default;
    virtual ~LineSink() = default;
    LineSink(const LineSink&) = delete;
    LineSink& operator=(const LineSink&) = delete;

    /// Names and cycle time are known; comes once, before the first line.
    virtual bool Begin(const std::vector<std::string>& axes, double cycle_time) = 0;
    virtual bool Line(std::span<const double> values) = 0;
};

/// Writes the first reports of a kind and counts all.
class Reports {
 public:
    static constexpr std::uint64_t kMost = 10;
    using Print = std::function<void(const std::string&)>;

    explicit Reports(Print print) : m_print(std::move(print)) {}

    void Add(const std::string& text);
    [[nodiscard]] std::uint64_t count() const { return m_count; }

 private:
    const Print m_print;
    std::uint64_t m_count = 0;
};

class NumberStream {
 public:
    /// Cycle time is found from so many lines.
    static constexpr std::size_t kLinesForCycle = 9;

    /// The references stay valid as long as the stream. `bad_lines` gets a report for each line
    /// that cannot be read, `gaps` one for each gap in the time.
    NumberStream(StreamOptions options, LineSink& sink, Reports& bad_lines, Reports& gaps);

    /// Begins at once where everything is known before the first line. Like the calls below it
    /// returns false when nothing more is wanted: the sink said so, or error() tells what is wrong.
    bool Start();

    /// Takes the next line, without its end.
    bool Take(std::string_view line);

    /// A line that is longer than anybody can read.
    bool TakeTooLong();

    /// The input has ended.
    bool Finish();

    /// Why nothing can be made of the input; empty when something can.
    [[nodiscard]] const std::string& error() const { return m_error; }

    /// Lines taken, and lines of missing values that stand for those that were not there.
    [[nodiscard]] std::uint64_t lines() const { return m_line_number; }
    [[nodiscard]] std::uint64_t missing_lines() const { return m_missing_lines; }

 private:
    bool TakeFirst(std::string_view line);
    bool TakeNames(const std::vector<std::string_view>& fields);
    bool FindCycleTime();
    bool Begin();
    bool TakeValues(std::string_view line);
    bool TakeBad(const std::string& what);
    bool FillGap(double time);
    bool Fail(const std::string& what);
    bool Put(std::span<const double> values);
    [[nodiscard]] std::string Numbered(const std::string& what) const;

    const StreamOptions m_options;
    LineSink& m_sink;
    Reports& m_bad_lines;
    Reports& m_gaps;

    std::vector<std::string> m_axes;
    double m_cycle_time = 0.0;  ///< seconds; 0: not known yet
    std::optional<Separator> m_separator;
    bool m_began = false;
    std::vector<std::string> m_held;  ///< lines that wait for the cycle time
    std::vector<double> m_values;     ///< of the line, the time too
    std::vector<double> m_missing;
    std::optional<double> m_last_time;  ///< seconds, of the line before
    std::uint64_t m_line_number = 0;
    std::uint64_t m_missing_lines = 0;
    std::string m_error;
};

}  // namespace wavo::master
