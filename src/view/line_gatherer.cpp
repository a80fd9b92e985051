#include "view/line_gatherer.h"

#include <algorithm>
#include <limits>

#include "session/line_values.h"

namespace wavo {

void LineGatherer::Take(const std::vector<std::string>& columns) {
    const bool is_live = m_session.Recording() == nullptr;
    if (is_live && m_live != nullptr) {
        Drop(m_tapped);
        m_tapped = std::move(m_live);
        m_takes_live = true;
    }
    if (m_tapped != nullptr && m_tapped->Columns() == columns) {
        return;
    }
    Leave();
    m_tapped = std::make_unique<TappedLines>(columns);
    m_takes_live = is_live;
    m_session.Streams().AddTap(*m_tapped);
}

void LineGatherer::Leave() {
    if (m_takes_live && m_session.Recording() != nullptr) {
        m_live = std::move(m_tapped);
        m_takes_live = false;
    }
    Drop(m_tapped);
}

void LineGatherer::Forget() {
    Drop(m_tapped);
    Drop(m_live);
    m_takes_live = false;
}

void LineGatherer::Drop(std::unique_ptr<TappedLines>& tapped) {
    if (tapped != nullptr) {
        m_session.Streams().RemoveTap(*tapped);
        tapped.reset();
    }
}

bool LineGatherer::IsLive() const {
    return m_session.Recording() == nullptr && m_session.Values().IsRunning();
}

const GraphValue* LineGatherer::BufferOf(const std::string& axis) const {
    for (const GraphValue& value : m_session.Streams().Registry().Values()) {
        if (value.Name() == axis && value.DerivationOrder() < 1) {
            return &value;
        }
    }
    return nullptr;
}

GatheredLines LineGatherer::Now() const {
    GatheredLines now;
    if (m_tapped == nullptr) {
        return now;
    }
    now.cycle_time = m_session.Values().CycleTime();
    now.definitions = m_session.Computed().Generation();
    if (const OpenRecording* const recording = m_session.Recording()) {
        now.recording = recording->Number();
        const LineRange held = recording->Lines();
        now.lines = m_past.IsShown() ? m_past.Window().Seen() : held;
        now.lines.begin = std::clamp(now.lines.begin, held.begin, held.end);
        now.lines.end = std::clamp(now.lines.end, now.lines.begin, held.end);
    } else if (m_tapped->Lines().Count() > 0) {
        now.is_tapped = true;
        now.lines = m_tapped->Lines();
    } else if (!IsLive()) {
        for (const std::string& axis : m_tapped->Columns()) {
            const GraphValue* const value = BufferOf(axis);
            const LineRange held = value == nullptr ? LineRange() : BufferValues(*value).Lines();
            if (held.Count() > now.lines.Count()) {
                now.lines = held;
            }
        }
    }
    return now;
}

std::string LineGatherer::Name() const {
    const OpenRecording* const recording = m_session.Recording();
    return recording == nullptr ? "live" : recording->Path();
}

bool LineGatherer::Copy(const GatheredLines& what, std::int64_t first,
                        std::span<const std::span<double>> columns) const {
    OpenRecording* const recording = m_session.Recording();
    if ((recording == nullptr ? 0 : recording->Number()) != what.recording || m_tapped == nullptr) {
        return false;
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].empty()) {
            continue;
        }
        std::ranges::fill(columns[i], std::numeric_limits<double>::quiet_NaN());
        const std::string& axis = m_tapped->Columns()[i];
        if (recording != nullptr) {
            if (History* const history = recording->StreamOf(axis, 0)) {
                HistoryValues(*history).Read(first, columns[i]);
            }
        } else if (what.is_tapped) {
            m_tapped->Read(i, first, columns[i]);
        } else if (const GraphValue* const value = BufferOf(axis)) {
            BufferValues(*value).Read(first, columns[i]);
        }
    }
    return true;
}

void LineGatherer::KeepFrom(std::int64_t line) {
    if (m_tapped != nullptr) {
        m_tapped->KeepFrom(line);
    }
}

}  // namespace wavo
