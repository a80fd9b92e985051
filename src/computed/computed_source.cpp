#include "computed/computed_source.h"

#include <algorithm>
#include <utility>

#include "graph/values/missing_value.h"

namespace wavo::computed {

std::vector<std::string> ComputedSource::Define(std::vector<ComputedAxis> definitions) {
    const SourceDescription& now = m_source.Description();
    if (now != m_described && !now.axis_names.empty()) {  // another source, which has not told
        m_described = m_source.Description();
        m_last.clear();
        m_before = Before::kGap;
    }
    m_definitions = std::move(definitions);
    ++m_generation;
    const ComputedProgram former = std::exchange(m_program, {});
    const std::vector<double> last = std::exchange(m_last, {});
    MakeProgram();
    const std::size_t own = m_described.axis_names.size();
    std::vector<std::string> anew;
    m_last.assign(m_description.axis_names.size(), NoSample());
    if (last.size() >= own) {
        std::copy_n(last.begin(), own, m_last.begin());
    }
    for (std::size_t i = 0; i < m_program.Names().size(); ++i) {
        const std::string& name = m_program.Names()[i];
        if (!m_program.IsSame(i, former)) {
            anew.push_back(name);
        } else if (last.size() >= own) {
            m_last[own + i] = last[own + *former.Find(name)];
        }
    }
    return anew;
}

std::map<std::string, std::string> ComputedSource::Units() const {
    std::map<std::string, std::string> units;
    for (std::size_t i = 0; i < m_program.Names().size(); ++i) {
        if (!m_program.UnitOf(i).empty()) {
            units[m_program.Names()[i]] = m_program.UnitOf(i);
        }
    }
    return units;
}

void ComputedSource::SetEvents(ValueSourceEvents* events) {
    m_events = events;
    m_source.SetEvents(this);
    m_described = m_source.Description();
    MakeProgram();
}

void ComputedSource::MakeProgram() {
    m_program = ComputedProgram(m_definitions, m_described.axis_names);
    m_description = m_described;
    m_description.axis_names.insert(m_description.axis_names.end(), m_program.Names().begin(),
                                    m_program.Names().end());
}

// A source that has lost its axes does not always tell.
const SourceDescription& ComputedSource::Description() const {
    const SourceDescription& own = m_source.Description();
    return m_program.IsEmpty() || own.axis_names.empty() ? own : m_description;
}

void ComputedSource::Described(bool by_itself) {
    if (m_source.Description() != m_described) {
        m_is_new = true;
        m_described = m_source.Description();
        MakeProgram();
    }
    m_events->Described(by_itself);
}

void ComputedSource::ValuesBegin(bool by_itself) {
    const bool is_new = std::exchange(m_is_new, false);
    const bool goes_on = by_itself && !is_new && m_before != Before::kNothing;
    m_before = goes_on ? Before::kGap : Before::kNothing;
    m_events->ValuesBegin(by_itself);
}

BatchOutcome ComputedSource::Take(ValueBatch& batch) {
    const BatchOutcome outcome = m_source.Take(batch);
    if (outcome == BatchOutcome::kTaken && batch.count > 0) {
        Compute(batch);
    }
    return outcome;
}

void ComputedSource::Compute(ValueBatch& batch) {
    const std::size_t own = m_described.axis_names.size();
    if (m_program.IsEmpty() || batch.axes != own || own == 0) {
        m_before = Before::kNothing;
        return;
    }
    const std::size_t axes = own + m_program.Names().size();
    const auto count = static_cast<std::size_t>(batch.count);
    m_lines.resize(count * axes);
    for (std::size_t line = 0; line < count; ++line) {
        std::copy_n(batch.lines + line * own, own, m_lines.begin() + line * axes);
    }
    batch.lines = m_lines.data();
    batch.axes = axes;
    const std::span<const Column> columns = ColumnsOf(batch);
    for (const std::size_t axis : m_program.Order()) {
        m_program.Compute(axis, columns.first(own), columns.subspan(own), m_described.cycle_time,
                          count, m_lines.data() + own + axis, axes);
        if (Column& column = m_columns[own + axis]; IsNoSample(column.before)) {  // begins
            column.before = *column.values;
        }
    }
    m_before = Before::kLine;
    m_last.assign(m_lines.end() - static_cast<std::ptrdiff_t>(axes), m_lines.end());
}

std::span<const Column> ComputedSource::ColumnsOf(const ValueBatch& wide) {
    const std::size_t own = m_described.axis_names.size();
    m_columns.clear();
    for (std::size_t i = 0; i < wide.axes; ++i) {
        double before = m_before == Before::kGap                         ? kNoValue
                        : m_before == Before::kLine && i < m_last.size() ? m_last[i]
                                                                         : NoSample();
        if (i < own && IsNoSample(before)) {
            before = wide.lines[i];
        }
        m_columns.push_back({wide.lines + i, wide.axes, before});
    }
    return m_columns;
}

std::string ComputedSource::Notes() const {
    if (m_source.Description().axis_names.empty()) {
        return {};
    }
    std::string first;
    std::size_t more = 0;
    for (std::size_t i = 0; i < m_definitions.size(); ++i) {
        const Finding& finding = m_program.Findings()[i];
        if (finding.kind == Finding::Kind::kNone) {
            continue;
        }
        more += first.empty() ? 0 : 1;
        if (first.empty()) {
            first = "computed axis " + m_definitions[i].name + ": " + finding.text;
        }
    }
    return more == 0 ? first : first + " (and " + std::to_string(more) + " more)";
}

const std::string& ComputedSource::StateText() const {
    const std::string notes = Notes();
    if (notes.empty()) {
        return m_source.StateText();
    }
    m_text = m_source.StateText() + "; " + notes;
    return m_text;
}

std::optional<AxisCapabilities> ComputedSource::SourceLimits::FindAxis(const std::string& name) {
    return m_owner.m_program.Find(name) ? std::nullopt : m_owner.m_source.Limits().FindAxis(name);
}

}  // namespace wavo::computed
