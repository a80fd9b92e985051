#include "master/recorded_lines.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "master/source_limits.h"

namespace wavo::master {

namespace {

using recording::Detail;
using recording::Extremes;

/// The largest absolute value; 0 when there is none.
double Largest(const Extremes& extremes) {
    return extremes.IsEmpty() ? 0.0
                              : std::max(std::abs(extremes.minimum), std::abs(extremes.maximum));
}

double IfFinite(double value) {
    return std::isfinite(value) ? value : 0.0;
}

}  // namespace

RecordedLines::RecordedLines(std::unique_ptr<recording::RecordingReader> recording)
    : m_recording(std::move(recording)), m_line(m_recording->Head().axis_names.size()) {}

std::unique_ptr<RecordedLines> RecordedLines::Make(
    std::unique_ptr<recording::RecordingReader> recording, const std::vector<std::string>& axes,
    GapPlaying gaps, std::string* error) {
    std::unique_ptr<RecordedLines> lines(new RecordedLines(std::move(recording)));
    const std::vector<std::string>& names = lines->m_recording->Head().axis_names;
    lines->m_axes = axes.empty() ? names : axes;
    for (const std::string& axis : lines->m_axes) {
        const auto found = std::ranges::find(names, axis);
        if (found == names.end()) {
            *error = "no axis \"" + axis + "\"; there are";
            for (const std::string& name : names) {
                *error += " \"" + name + "\"";
            }
            return nullptr;
        }
        lines->m_places.push_back(static_cast<std::size_t>(found - names.begin()));
    }
    lines->FindStretches(gaps);
    if (lines->m_lines == 0) {
        *error = "there are no lines in the recording";
        return nullptr;
    }
    return lines;
}

void RecordedLines::FindStretches(GapPlaying gaps) {
    m_stretches.push_back({0, m_recording->FirstLine()});
    m_lines = m_recording->EndLine() - m_recording->FirstLine();
    if (gaps == GapPlaying::kKeepTime) {
        return;
    }
    std::uint64_t left_out = 0;
    for (const recording::LineSpan& gap : m_recording->Gaps()) {
        m_stretches.push_back({gap.first - m_recording->FirstLine() - left_out, gap.end});
        left_out += gap.end - gap.first;
    }
    m_lines -= left_out;
}

void RecordedLines::Line(std::uint64_t number, std::span<double> values) const {
    number %= m_lines;
    const auto behind = std::ranges::upper_bound(m_stretches, number, {}, &Stretch::number);
    const Stretch& stretch = *(behind - 1);
    if (!m_recording->ReadLine(stretch.first_line + (number - stretch.number), m_line)) {
        std::ranges::fill(values, std::numeric_limits<double>::quiet_NaN());
        return;
    }
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        values[i] = m_line[m_places[i]];
    }
}

std::optional<double> RecordedLines::CycleTime() const {
    return m_recording->Head().cycle_time;
}

std::optional<std::vector<AxisLimits>> RecordedLines::Limits(double cycle_time) const {
    const auto& told = m_recording->Head().limits;
    const double recorded_cycle = m_recording->Head().cycle_time;
    const auto extremes = [this](std::size_t axis, int order) {
        return m_recording
            ->Extent(axis, order, m_recording->FirstLine(), m_recording->EndLine(), Detail::kChunks)
            .possible.extremes;
    };
    std::vector<AxisLimits> limits;
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const std::size_t axis = m_places[i];
        if (m_axes[i].size() > kLongestLimitedAxisName) {
            continue;
        }
        if (axis < told.size() && told[axis]) {
            limits.push_back({m_axes[i],
                              {told[axis]->upper, told[axis]->lower, told[axis]->velocity,
                               told[axis]->acceleration, told[axis]->resolution}});
            continue;
        }
        const Extremes values = extremes(axis, 0);
        AxisReach reach;
        if (!values.IsEmpty()) {
            reach.lowest = IfFinite(values.minimum);
            reach.highest = IfFinite(values.maximum);
        }
        reach.largest_step = IfFinite(Largest(extremes(axis, 1)) * recorded_cycle);
        reach.largest_change =
            IfFinite(Largest(extremes(axis, 2)) * recorded_cycle * recorded_cycle);
        limits.push_back(LimitsOf(m_axes[i], reach, cycle_time));
    }
    return limits;
}

}  // namespace wavo::master
