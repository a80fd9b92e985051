#include "master/pipe/number_stream.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

namespace wavo::master {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string Quoted(std::string_view text) {
    constexpr std::size_t kMost = 40;
    std::string quoted = "\"";
    for (const char character : text.substr(0, kMost)) {
        const bool is_control = static_cast<unsigned char>(character) < 0x20;
        quoted.push_back(is_control ? '?' : character);
    }
    return quoted.append(text.size() > kMost ? "...\"" : "\"");
}

std::string Plain(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", number);
    return text;
}

std::string FaultText(const ParsedLine& line, std::size_t wanted) {
    if (line.fault == LineFault::kNoNumber) {
        return Quoted(line.bad_field) + " is no number";
    }
    return std::to_string(line.fields) + (line.fields == 1 ? " field" : " fields") +
           " in place of " + std::to_string(wanted);
}

/// A name as graph files can keep it: without quotation marks around it and blanks in it.
std::string NameOf(std::string_view field) {
    if (field.size() >= 2 && field.front() == field.back() &&
        (field.front() == '"' || field.front() == '\'')) {
        field = field.substr(1, field.size() - 2);
    }
    std::string name(field);
    std::ranges::replace_if(
        name, [](char character) { return character == ' ' || character == ','; }, '_');
    return name;
}

/// Steps of clocks are written rounded; their median is freed of the digits that the rounding and
/// the subtraction left.
double Rounded(double seconds) {
    char text[32];
    const auto end =
        std::to_chars(text, text + sizeof text, seconds, std::chars_format::scientific, 5);
    std::from_chars(text, end.ptr, seconds);
    return seconds;
}

}  // namespace

void Reports::Add(const std::string& text) {
    ++m_count;
    if (m_count <= kMost) {
        m_print(text);
    }
    if (m_count == kMost) {
        m_print("further ones are counted only");
    }
}

NumberStream::NumberStream(StreamOptions options, LineSink& sink, Reports& bad_lines, Reports& gaps)
    : m_options(std::move(options)),
      m_sink(sink),
      m_bad_lines(bad_lines),
      m_gaps(gaps),
      m_axes(m_options.axes),
      m_cycle_time(m_options.cycle_time.value_or(0.0)) {}

bool NumberStream::Start() {
    return m_axes.empty() || m_cycle_time == 0.0 || Begin();
}

bool NumberStream::Begin() {
    m_began = true;
    m_values.resize(m_axes.size() + (m_options.has_time ? 1 : 0));
    m_missing.assign(m_axes.size(), std::numeric_limits<double>::quiet_NaN());
    return m_sink.Begin(m_axes, m_cycle_time);
}

std::string NumberStream::Numbered(const std::string& what) const {
    return "line " + std::to_string(m_line_number) + ": " + what;
}

bool NumberStream::Fail(const std::string& what) {
    m_error = what;
    return false;
}

bool NumberStream::Put(std::span<const double> values) {
    return m_sink.Line(values);
}

bool NumberStream::Take(std::string_view line) {
    ++m_line_number;
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    if (m_line_number == 1 && line.starts_with(kByteOrderMark)) {
        line.remove_prefix(kByteOrderMark.size());
    }
    return m_separator ? TakeValues(line) : TakeFirst(line);
}

bool NumberStream::TakeTooLong() {
    ++m_line_number;
    if (!m_began) {
        return Fail(Numbered("it is too long"));
    }
    return TakeBad("it is too long");
}

/// The line that tells the separator, and the names where all its fields are some.
bool NumberStream::TakeFirst(std::string_view line) {
    const bool is_comment = !line.empty() && (line.front() == '#' || line.front() == '%');
    const std::string_view names_line = is_comment ? line.substr(1) : line;
    m_separator = FindSeparator(names_line);
    const std::vector<std::string_view> fields = SplitFields(names_line, *m_separator);
    const bool has_values = std::ranges::any_of(fields, [this](std::string_view field) {
        return !field.empty() && IsValue(field, *m_separator);
    });
    if (!m_axes.empty()) {
        // Names that were given hold: those of the line are no line of values.
        const bool is_empty = std::ranges::all_of(fields, &std::string_view::empty);
        return has_values || is_empty ? TakeValues(line) : true;
    }
    if (has_values) {
        return Fail(
            Numbered("it has numbers where the names of the axes are expected; name them "
                     "with --axes"));
    }
    return TakeNames(fields);
}

bool NumberStream::TakeNames(const std::vector<std::string_view>& fields) {
    for (std::size_t i = m_options.has_time ? 1 : 0; i < fields.size(); ++i) {
        m_axes.push_back(NameOf(fields[i]));
        if (m_axes.back().empty()) {
            return Fail(Numbered("column " + std::to_string(i + 1) + " has no name"));
        }
        if (std::find(m_axes.begin(), m_axes.end() - 1, m_axes.back()) != m_axes.end() - 1) {
            return Fail(Numbered("two columns are named " + m_axes.back()));
        }
    }
    if (m_axes.empty()) {
        return Fail(Numbered("it has no column behind the time; give --cycle when there is none"));
    }
    return m_cycle_time == 0.0 || Begin();
}

/// Begins with the median of the steps of the time in the lines that are held.
bool NumberStream::FindCycleTime() {
    std::vector<double> steps;
    std::optional<double> last;
    std::vector<double> values(m_axes.size() + 1);
    for (const std::string& line : m_held) {
        if (ParseLine(line, *m_separator, values).fault != LineFault::kNone ||
            std::isnan(values[0])) {
            continue;
        }
        if (last && values[0] > *last) {
            steps.push_back((values[0] - *last) * m_options.time_unit);
        }
        last = values[0];
    }
    if (steps.empty()) {
        return Fail("the first column is no time that rises; give --cycle when there is none");
    }
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
    std::ranges::nth_element(steps, middle);
    m_cycle_time = Rounded(*middle);
    // The lines are numbered once more as they are taken for good.
    const std::vector<std::string> held = std::exchange(m_held, {});
    m_line_number -= held.size();
    return Begin() && std::ranges::all_of(held, [this](const std::string& line) {
               ++m_line_number;
               return TakeValues(line);
           });
}

bool NumberStream::TakeValues(std::string_view line) {
    if (!m_began) {
        m_held.emplace_back(line);
        return m_held.size() < kLinesForCycle || FindCycleTime();
    }
    const ParsedLine parsed = ParseLine(line, *m_separator, m_values);
    if (parsed.fault != LineFault::kNone) {
        return TakeBad(FaultText(parsed, m_values.size()));
    }
    if (!m_options.has_time) {
        return Put(m_values);
    }
    const double time = m_values[0] * m_options.time_unit;
    if (std::isnan(time)) {
        return TakeBad("it has no time");
    }
    if (!m_last_time) {
        m_last_time = time;
    } else if (time - *m_last_time <= 0.5 * m_cycle_time) {
        const bool goes_on = TakeBad("its time " + Plain(time) + " s is not a cycle behind " +
                                     Plain(*m_last_time) + " s");
        m_last_time = time;  // a clock that was set back costs one line
        return goes_on;
    } else if (!FillGap(time)) {
        return false;
    }
    m_last_time = time;
    return Put(std::span(m_values).subspan(1));
}

/// A line of missing values for one that cannot be read; its time is taken for regular.
bool NumberStream::TakeBad(const std::string& what) {
    m_bad_lines.Add(Numbered(what));
    if (m_last_time) {
        *m_last_time += m_cycle_time;
    }
    return Put(m_missing);
}

/// Lines of missing values for those that are missing before the line of `time`.
bool NumberStream::FillGap(double time) {
    const double steps = std::round((time - *m_last_time) / m_cycle_time);
    if (steps < 2.0) {
        return true;
    }
    const auto most = static_cast<double>(m_options.most_missing);
    const auto count = static_cast<std::uint64_t>(std::min(steps - 1.0, most));
    std::string text = Plain(steps - 1.0) + (steps < 3.0 ? " line is" : " lines are") +
                       " missing before it, between " + Plain(*m_last_time) + " s and " +
                       Plain(time) + " s";
    if (steps - 1.0 > most) {
        text += "; of these " + std::to_string(count) + " are shown";
    }
    m_gaps.Add(Numbered(text));
    for (std::uint64_t i = 0; i < count; ++i) {
        ++m_missing_lines;
        if (!Put(m_missing)) {
            return false;
        }
    }
    return true;
}

bool NumberStream::Finish() {
    if (m_began) {
        return true;
    }
    if (m_axes.empty()) {
        return Fail("the input ended before the line with the names of the axes");
    }
    if (m_held.empty()) {
        return Fail("the input ended before a line that tells the cycle time");
    }
    return FindCycleTime();
}

}  // namespace wavo::master
