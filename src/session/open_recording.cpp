#include "session/open_recording.h"

#include <algorithm>
#include <utility>

#include "graph/values/missing_value.h"
#include "recording/utc_text.h"
#include "session/graph_files.h"

namespace wavo {

namespace {

/// What computing a block costs, as if so much were read.
constexpr std::uint64_t kBytesPerComputedBlock = 32 * recording::ReadingBudget::kBytesPerUnit;

std::uint64_t NextNumber() {
    static std::uint64_t number = 0;
    return ++number;
}

/// The place of a name among those of the axes; nothing when it is not there.
std::optional<std::size_t> AxisOf(const recording::RecordingReader& reader,
                                  const std::string& name) {
    const std::vector<std::string>& names = reader.Head().axis_names;
    const auto found = std::ranges::find(names, name);
    return found == names.end() ? std::nullopt
                                : std::optional(static_cast<std::size_t>(found - names.begin()));
}

}  // namespace

RecordingSource::RecordingSource(recording::RecordingReader& reader)
    : m_reader(reader), m_description{reader.Head().axis_names, reader.Head().cycle_time} {
    Renew();
}

void RecordingSource::Renew(const std::string& next) {
    const std::uint64_t lines = m_reader.LineCount();
    m_text = std::to_string(lines) + (lines == 1 ? " line" : " lines");
    if (lines > 0) {
        m_text += ", from " + recording::MomentText(m_reader.Clock().TimeOf(m_reader.FirstLine())) +
                  " on";
    }
    if (!m_reader.IsComplete()) {
        m_text += "; " + m_reader.CutOffText();
    }
    if (!m_reader.Notices().empty()) {
        m_text += "; " + m_reader.Notices().back();
    }
    if (!next.empty()) {
        m_text += "; the next file is " + next;
    }
}

bool RecordingSource::GoOn() {
    m_events->ValuesBegin(false);
    return true;
}

BatchOutcome RecordingSource::Take(ValueBatch& batch) {
    batch = {};
    return BatchOutcome::kFailed;
}

std::optional<AxisCapabilities> RecordingSource::FindAxis(const std::string& name) {
    const std::optional<std::size_t> axis = AxisOf(m_reader, name);
    const auto& limits = m_reader.Head().limits;
    if (!axis || *axis >= limits.size() || !limits[*axis]) {
        return std::nullopt;
    }
    const recording::AxisLimits& known = *limits[*axis];
    return AxisCapabilities{known.upper, known.lower, known.velocity, known.acceleration,
                            known.resolution};
}

OpenRecording::OpenRecording(RecordingToOpen opened,
                             std::unique_ptr<recording::RecordingReader> reader)
    : m_number(NextNumber()),
      m_opened(std::move(opened)),
      m_reader(std::move(reader)),
      m_source(*m_reader),
      m_graphs(m_reader->ReadGraphFile()) {
    LookAround();
}

Expected<std::unique_ptr<OpenRecording>> OpenRecording::Open(RecordingToOpen opened) {
    auto reader = recording::RecordingReader::Open(opened.path);
    if (!reader) {
        return reader.Why();
    }
    return std::unique_ptr<OpenRecording>(new OpenRecording(std::move(opened), std::move(*reader)));
}

LineRange OpenRecording::Lines() const {
    return {static_cast<std::int64_t>(m_reader->FirstLine()),
            static_cast<std::int64_t>(m_reader->EndLine())};
}

History* OpenRecording::StreamOf(const std::string& axis_name, std::int32_t order) {
    const std::optional<std::size_t> axis = AxisOf(*m_reader, axis_name);
    if (!axis) {
        computed::ComputedStreams* const computed = Computed();
        const std::optional<std::size_t> computed_axis =
            computed == nullptr ? std::nullopt : computed->Program().Find(axis_name);
        return computed_axis ? &computed->StreamOf(*computed_axis, order) : nullptr;
    }
    return &m_streams.try_emplace({*axis, order}, *m_reader, *axis, order, NoSample(), &m_budget)
                .first->second;
}

bool OpenRecording::HasLevels(const std::string& axis_name, std::int32_t order) const {
    return order < static_cast<std::int32_t>(recording::kLevelOrders) &&
           AxisOf(*m_reader, axis_name).has_value();
}

computed::ComputedStreams* OpenRecording::Computed() {
    const std::vector<std::string>& names = m_reader->Head().axis_names;
    if (m_computed == nullptr || names.empty()) {
        return nullptr;
    }
    if (m_computed_streams.empty() || m_generation != m_computed->Generation()) {
        m_generation = m_computed->Generation();
        // Somebody may still ask them, but not for long.
        for (const auto& former : m_computed_streams) {
            former->ForgetValues();
        }
        computed::ComputedStreams::Origin origin;
        origin.axis = [this](std::size_t i) { return StreamOf(m_reader->Head().axis_names[i], 0); };
        origin.cycle_time = CycleTime();
        origin.losses = [this] { return m_reader->Versions().losses; };
        origin.has_lines = [this](const LineRange& lines) {
            return m_reader->Table().CountLines(static_cast<std::uint64_t>(lines.begin),
                                                static_cast<std::uint64_t>(lines.end)) > 0;
        };
        origin.may_compute = [this] {
            const bool may = !m_budget.IsSpent();
            m_budget.Spend(kBytesPerComputedBlock);
            return may;
        };
        m_computed_streams.push_back(std::make_unique<computed::ComputedStreams>(
            computed::ComputedProgram(m_computed->Definitions(), names), std::move(origin)));
    }
    return m_computed_streams.back().get();
}

bool OpenRecording::Refresh() {
    const bool has_more = m_reader->Refresh();
    if (has_more) {
        RenewText();
    }
    return has_more;
}

bool OpenRecording::LookAround() {
    const recording::Neighbours around =
        m_opened.source.empty() ? recording::NeighboursOf(m_opened.path) : recording::Neighbours();
    const bool are_others = std::exchange(m_around, around) != around;
    RenewText();
    return are_others;
}

void OpenRecording::RenewText() {
    m_source.Renew(FileNameOf(m_around.next));
}

}  // namespace wavo
