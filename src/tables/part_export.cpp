#include "tables/part_export.h"

#include <algorithm>
#include <span>
#include <utility>

#include "platform/data_file.h"
#include "platform/file.h"
#include "recording/recording_fault.h"
#include "tables/part_writer.h"

namespace wavo::tables {

namespace {

using recording::LineSpan;
using recording::RecordingFault;

/// Values that are copied in a step.
constexpr std::size_t kValuesPerStep = 8192;
/// Names beside the file that are tried.
constexpr int kMostNamesTried = 100;

bool IsExisting(const Fault& fault) {
    return fault.code == static_cast<int>(RecordingFault::kExists);
}

}  // namespace

PartExport::PartExport(recording::RecordingReader& reader, LineSpan part, PartFile file)
    : m_reader(reader),
      m_part{std::max(part.first, reader.FirstLine()), std::min(part.end, reader.EndLine())},
      m_file(std::move(file)),
      m_gaps(reader.Gaps()),
      m_line(reader.Head().axis_names.size() +
             (m_file.format == PartFormat::kRecording ? 0 : m_file.columns.size())),
      m_next(m_part.first) {}

PartExport::~PartExport() {
    m_writer.reset();
    if (!m_temporary.empty()) {
        platform::DataFiles().RemoveUnused(m_temporary);
    }
}

Expected<std::unique_ptr<PartExport>> PartExport::Begin(recording::RecordingReader& reader,
                                                        LineSpan part, const PartFile& file) {
    if (reader.IsFile(file.path)) {
        return Fault{kOntoItself};
    }
    std::unique_ptr<PartExport> made(new PartExport(reader, part, file));
    made->SkipGap();
    if (made->m_next >= made->m_part.end) {
        return Fault{"there are no lines in this part"};
    }
    if (MaybeFault fault = made->Open()) {
        return *fault;
    }
    return made;
}

MaybeFault PartExport::Open() {
    for (int number = 1;; ++number) {
        const std::string path = m_file.path + ".part" + (number > 1 ? std::to_string(number) : "");
        auto writer = MakePartWriter(m_reader, m_file, path);
        if (writer) {
            m_writer = std::move(*writer);
            m_temporary = path;
            return std::nullopt;
        }
        if (!IsExisting(writer.Why())) {
            platform::DataFiles().RemoveUnused(path);  // it may have been made and not written
            return writer.Why();
        }
        if (number == kMostNamesTried) {
            return writer.Why();
        }
    }
}

double PartExport::Part() const {
    const auto all = static_cast<double>(m_part.end - m_part.first);
    return m_is_done ? 1.0 : static_cast<double>(m_next - m_part.first) / all;
}

void PartExport::SkipGap() {
    while (m_gap < m_gaps.size() && m_gaps[m_gap].end <= m_next) {
        ++m_gap;
    }
    if (m_gap < m_gaps.size() && m_gaps[m_gap].first <= m_next) {
        m_next = std::min(m_gaps[m_gap].end, m_part.end);
    }
}

void PartExport::PutEvents(std::uint64_t line) {
    const std::vector<recording::Event>& events = m_reader.Events();
    for (; m_event < events.size() && events[m_event].line <= line; ++m_event) {
        if (events[m_event].line >= m_part.first) {
            m_writer->PutEvent(events[m_event]);
        }
    }
}

void PartExport::ReadColumns(std::uint64_t line) {
    const std::size_t axes = m_reader.Head().axis_names.size();
    for (std::size_t i = axes; i < m_line.size(); ++i) {
        m_file.columns[i - axes].values->Values(static_cast<std::int64_t>(line), {&m_line[i], 1});
    }
}

StepState PartExport::Step() {
    if (m_fault || m_is_done) {
        return m_fault ? StepState::kFailed : StepState::kDone;
    }
    const std::size_t lines = std::max<std::size_t>(kValuesPerStep / (m_line.size() + 1), 1);
    const std::span axes = std::span(m_line).first(m_reader.Head().axis_names.size());
    for (std::size_t i = 0; i < lines && m_next < m_part.end; ++i) {
        SkipGap();
        // A chunk that is found damaged meanwhile is a gap, too.
        if (m_next < m_part.end && m_reader.ReadLine(m_next, axes)) {
            ReadColumns(m_next);
            PutEvents(m_next);
            if (MaybeFault fault = m_writer->PutLine(m_next, m_line)) {
                return Fail(*fault);
            }
            ++m_lines;
        }
        m_next = std::min(m_next + 1, m_part.end);
    }
    return m_next < m_part.end ? StepState::kWorking : Finish();
}

StepState PartExport::Fail(const Fault& fault) {
    m_fault = fault;
    m_writer.reset();
    platform::DataFiles().RemoveUnused(std::exchange(m_temporary, {}));
    return StepState::kFailed;
}

StepState PartExport::Finish() {
    // What happened behind the last line of the recording belongs to it.
    PutEvents(m_part.end == m_reader.EndLine() ? m_part.end : m_part.end - 1);
    if (MaybeFault fault = m_writer->Finish()) {
        return Fail(*fault);
    }
    m_writer.reset();
    if (m_reader.IsFile(m_file.path)) {
        return Fail({"a recording cannot be exported onto itself"});
    }
    if (!platform::Files().Rename(m_temporary, m_file.path)) {
        return Fail(SystemFault(RecordingFault::kCannotWrite, "cannot write", m_file.path));
    }
    m_temporary.clear();
    m_is_done = true;
    return StepState::kDone;
}

}  // namespace wavo::tables
