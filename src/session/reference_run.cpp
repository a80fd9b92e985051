#include "session/reference_run.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace wavo {

namespace {

constexpr double kNoValueInLine = std::numeric_limits<double>::quiet_NaN();

/// Gives a buffer the values of successive lines; those without a value it misses.
void Fill(GraphValue& value, std::span<const double> values) {
    std::size_t first = 0;
    while (first < values.size()) {
        std::size_t end = first;
        while (end < values.size() && !std::isnan(values[end])) {
            ++end;
        }
        if (end > first) {
            value.ForgetHistory();
            value.ExpectLine(static_cast<std::int64_t>(first));
            value.SetValues(&values[first], end - first, 1);
        }
        first = end + 1;
    }
    value.EmptyNewValues();
}

/// The values derived; nothing where there are no earlier ones to derive from.
std::vector<double> Derived(std::span<const double> values, const GraphValue& like) {
    GraphValue buffer = like;
    Fill(buffer, values);
    std::vector<double> derived(values.size());
    RingHistory(buffer).Values(0, derived);
    int since_gap = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        since_gap = std::isnan(values[i]) ? 0 : since_gap + 1;
        derived[i] = since_gap > like.DerivationOrder() ? derived[i] : kNoValueInLine;
    }
    return derived;
}

}  // namespace

ReferenceRun::ReferenceRun(std::string path, std::vector<std::string> axes, double cycle_time,
                           std::int64_t lines)
    : m_path(std::move(path)), m_axes(std::move(axes)), m_cycle_time(cycle_time), m_lines(lines) {
    for (const std::string& axis : m_axes) {
        m_values[axis].assign(static_cast<std::size_t>(lines), kNoValueInLine);
    }
}

std::span<double> ReferenceRun::ValuesOf(const std::string& axis) {
    const auto found = m_values.find(axis);
    return found == m_values.end() ? std::span<double>() : std::span(found->second);
}

History* ReferenceRun::StreamOf(const std::string& axis, std::int32_t order) {
    const auto values = m_values.find(axis);
    if (values == m_values.end()) {
        return nullptr;
    }
    std::unique_ptr<Stream>& stream = m_streams[{axis, std::max(order, 0)}];
    if (stream == nullptr) {
        const double range = static_cast<double>(m_lines + 1) * m_cycle_time;
        stream = std::make_unique<Stream>(GraphValue(axis, m_cycle_time, range, 0));
        Fill(stream->value,
             order > 0 ? Derived(values->second, GraphValue(axis, m_cycle_time, range, order))
                       : values->second);
    }
    return &stream->history;
}

ReferenceReading::ReferenceReading(std::unique_ptr<OpenRecording> recording, const LineRange& lines,
                                   std::vector<std::string> axes)
    : m_recording(std::move(recording)),
      m_lines(lines),
      m_run(std::make_shared<ReferenceRun>(m_recording->Path(), std::move(axes),
                                           m_recording->CycleTime(), lines.Count())) {}

Expected<std::unique_ptr<ReferenceReading>> ReferenceReading::Begin(const ReferencePart& part) {
    auto opened = OpenRecording::Open(part.recording);
    if (!opened) {
        return opened.Why();
    }
    std::unique_ptr<OpenRecording> recording = std::move(*opened);
    const LineRange held = recording->Lines();
    LineRange lines = part.lines.Count() == 0 ? held : part.lines;
    lines.begin = std::clamp(lines.begin, held.begin, held.end);
    lines.end = std::clamp(lines.end, lines.begin, held.end);
    const std::vector<std::string>& axes = recording->Source().Description().axis_names;
    if (lines.Count() < 2) {
        return Fault{recording->Path() + ": there are no lines to compare with"};
    }
    if (lines.Count() > ReferenceRun::kMostLines ||
        lines.Count() * static_cast<std::int64_t>(axes.size()) > ReferenceRun::kMostValues) {
        return Fault{recording->Path() + ": " + std::to_string(lines.Count()) +
                     " lines are too many to compare with; open it, and take the part that counts"};
    }
    std::vector<std::string> names = axes;
    return std::unique_ptr<ReferenceReading>(
        new ReferenceReading(std::move(recording), lines, std::move(names)));
}

bool ReferenceReading::Step() {
    if (m_recording == nullptr) {
        return false;
    }
    const std::int64_t count = std::min(kLinesPerStep, m_lines.Count() - m_read);
    m_recording->Budget().Renew(recording::ReadingBudget::kUnlimited);
    for (const std::string& axis : m_run->Axes()) {
        if (History* const history = m_recording->StreamOf(axis, 0)) {
            history->Values(m_lines.begin + m_read,
                            m_run->ValuesOf(axis).subspan(static_cast<std::size_t>(m_read),
                                                          static_cast<std::size_t>(count)));
        }
    }
    m_read += count;
    if (m_read == m_lines.Count()) {
        m_recording.reset();
    }
    return true;
}

}  // namespace wavo
