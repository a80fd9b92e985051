#include "tables/table_import.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <utility>

namespace wavo::tables {

namespace {

using recording::RecordingWriter;

/// Pieces of text of one step: some milliseconds.
constexpr std::size_t kPiecesPerStep = 4;
/// Latest first time of a table, seconds: the times of its lines fit into nanoseconds.
constexpr double kLatestStart = 8e9;

/// A number with nine digits at most, whatever the locale.
std::string Plain(double number) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::general, 9);
    return {text, end.ptr};
}

/// "1 line", "3 lines".
std::string Counted(std::uint64_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

TableImport::TableImport(const TablePreview& preview, const TimeChoice& choice,
                         TemporaryRecording file)
    : m_preview(preview), m_choice(choice), m_file(std::move(file)) {
    for (std::size_t i = 0; i < m_preview.names.size(); ++i) {
        if (!m_preview.is_text[i] && i != m_choice.column) {
            m_columns.push_back(i);
            m_head.axis_names.push_back(m_preview.names[i]);
        }
    }
    if (m_choice.column) {
        m_columns.push_back(*m_choice.column);
    }
    m_head.cycle_time = m_choice.cycle_time;
    m_values.resize(m_columns.size());
}

TableImport::~TableImport() {
    m_writer.reset();  // before its file is removed
}

Expected<std::unique_ptr<TableImport>> TableImport::Begin(const TablePreview& preview,
                                                          const TimeChoice& choice,
                                                          const std::string& folder,
                                                          std::string program) {
    auto file = TemporaryRecording::TakeName(folder);
    if (!file) {
        return file.Why();
    }
    std::unique_ptr<TableImport> import(new TableImport(preview, choice, std::move(*file)));
    import->m_head.program = std::move(program);
    if (import->m_head.axis_names.empty()) {
        return Fault{preview.path + ": there is no column of numbers"};
    }
    if (MaybeFault fault = import->OpenTable()) {
        return *fault;
    }
    return import;
}

MaybeFault TableImport::OpenTable() {
    auto bytes = TableBytes::Open(m_preview.path);
    if (!bytes) {
        return bytes.Why();
    }
    auto reader = TableReader::Open(std::move(*bytes), m_preview.layout);
    if (!reader) {
        return Fault{m_preview.path + ": " + reader.Why().text};
    }
    m_reader = std::move(*reader);
    const auto names = m_reader->ReadNames(kMostImportedColumns);
    if (!names) {
        return Fault{m_preview.path + ": " + names.Why().text};
    }
    if (names->size() != m_preview.names.size()) {
        return Fault{m_preview.path + ": the columns have changed meanwhile"};
    }
    m_reader->Choose(m_columns);
    return std::nullopt;
}

StepState TableImport::Fail(const std::string& text) {
    m_fault = Fault{text};
    m_phase = Phase::kEnded;
    m_writer.reset();
    m_file.reset();
    return StepState::kFailed;
}

StepState TableImport::Step() {
    switch (m_phase) {
        case Phase::kFindCycle:
            return m_choice.column ? FindCycle() : BeginCopy({});
        case Phase::kCopy:
            return Copy();
        case Phase::kEnded:
            break;
    }
    return m_fault ? StepState::kFailed : StepState::kDone;
}

double TableImport::Part() const {
    if (m_phase == Phase::kEnded) {
        return 1.0;
    }
    const TableBytes& bytes = m_reader->Bytes();
    return m_phase == Phase::kFindCycle || bytes.Size() == 0
               ? 0.0
               : std::min(1.0,
                          static_cast<double>(bytes.Taken()) / static_cast<double>(bytes.Size()));
}

StepState TableImport::FindCycle() {
    m_reader->Allow(kPiecesPerStep);
    while (m_first_times.size() < kRowsForCycle) {
        const TableReader::Row row = m_reader->Next(m_values);
        if (row == TableReader::Row::kLater) {
            return StepState::kWorking;
        }
        if (row == TableReader::Row::kEnd) {
            break;
        }
        if (row == TableReader::Row::kValues && std::isfinite(m_values.back())) {
            m_first_times.push_back(m_values.back() * m_choice.unit);
        }
    }
    // The table is read once more from its begin.
    if (MaybeFault fault = OpenTable()) {
        return Fail(fault->text);
    }
    return BeginCopy(m_first_times);
}

StepState TableImport::BeginCopy(const std::vector<double>& times) {
    if (m_choice.column) {
        const std::optional<double> cycle_time = CycleTimeOf(times);
        if (!cycle_time && times.size() > 1) {
            return Fail(m_preview.path + ": the time in column " +
                        QuotedText(m_preview.names[*m_choice.column]) +
                        " does not rise; tell the cycle time instead");
        }
        m_head.cycle_time = cycle_time.value_or(m_choice.cycle_time);
        m_times.emplace(m_head.cycle_time);
        if (!times.empty() && times.front() > 0.0 && times.front() < kLatestStart) {
            m_head.start_time = static_cast<std::uint64_t>(std::llround(times.front() * 1e9));
        }
    }
    auto writer = RecordingWriter::Create(m_file->Path(), m_head, std::nullopt,
                                          recording::Durability::kTemporary);
    if (!writer) {
        return Fail(writer.Why().text);
    }
    m_writer = std::move(*writer);
    m_phase = Phase::kCopy;
    TellColumns();
    return StepState::kWorking;
}

StepState TableImport::Copy() {
    m_reader->Allow(kPiecesPerStep);
    for (;;) {
        MaybeFault fault;
        switch (m_reader->Next(m_values)) {
            case TableReader::Row::kValues:
                fault = TakeRow();
                break;
            case TableReader::Row::kFault:
                fault = TakeBadRow();
                break;
            case TableReader::Row::kLater:
                return StepState::kWorking;
            case TableReader::Row::kEnd:
                return Finish();
        }
        if (fault) {
            return Fail(fault->text);
        }
    }
}

MaybeFault TableImport::TakeRow() {
    ++m_rows;
    if (!m_times) {
        return PutLine(m_next_line);
    }
    const LineTimes::Place place = m_times->Next(m_values.back() * m_choice.unit);
    if (place.lost > 0 || place.goes_back) {
        TellJump(place);
    }
    return PutLine(place.line);
}

MaybeFault TableImport::PutLine(std::uint64_t line) {
    m_next_line = line + 1;
    return m_writer->Append(line, std::span(m_values).first(m_head.axis_names.size()), 1);
}

MaybeFault TableImport::TakeBadRow() {
    const std::string text = FaultText(m_reader->Fault(), m_preview.names);
    if (m_rows == 0) {
        return Fault{m_preview.path + ": " + text};
    }
    if (++m_bad_rows > kMostBadRows) {
        return Fault{m_preview.path + ": more than " + std::to_string(kMostBadRows) +
                     " lines cannot be read; the last of them: " + text};
    }
    if (m_bad_rows <= kMostTold) {
        m_notices.push_back(text + "; the line is left out");
    }
    ++m_next_line;  // without times, nothing behind it shifts
    return std::nullopt;
}

void TableImport::TellJump(const LineTimes::Place& place) {
    ++m_jumps;
    m_lost += place.lost;
    m_goes_back += place.goes_back ? 1 : 0;
    if (m_jumps <= kMostEvents) {
        m_writer->AddEvent(
            {recording::kEventTimeJump, place.line, place.lost,
             place.goes_back ? "the time goes back" : Counted(place.lost, "line") + " missing"});
    }
}

StepState TableImport::Finish() {
    const BytesEnd end = m_reader->Bytes().End();
    const std::string behind = " behind line " + std::to_string(m_reader->LineNumber());
    if (end == BytesEnd::kUnreadable || end == BytesEnd::kDamaged) {
        return Fail(m_preview.path + ": " +
                    (end == BytesEnd::kDamaged ? "the gzip data is damaged" + behind
                                               : m_reader->Bytes().EndText()));
    }
    if (m_rows == 0) {
        return Fail(m_preview.path + ": " +
                    (end == BytesEnd::kCutOff ? m_reader->Bytes().EndText()
                                              : "there are no lines of values"));
    }
    if (MaybeFault fault = m_writer->Finish()) {
        return Fail(fault->text);
    }
    m_writer.reset();
    if (end == BytesEnd::kCutOff) {
        m_notices.push_back("the file was cut off" + behind);
    }
    if (m_bad_rows > kMostTold) {
        m_notices.push_back("altogether " + Counted(m_bad_rows, "line") +
                            " that cannot be read are left out");
    }
    TellTimes();
    m_phase = Phase::kEnded;
    return StepState::kDone;
}

void TableImport::TellColumns() {
    const auto texts = static_cast<std::uint64_t>(
        std::count(m_preview.is_text.begin(), m_preview.is_text.end(), true));
    std::uint64_t told = 0;
    for (std::size_t i = 0; i < m_preview.names.size() && told < kMostTold; ++i) {
        if (m_preview.is_text[i]) {
            ++told;
            m_notices.push_back("column " + QuotedText(m_preview.names[i]) +
                                " holds no numbers and is left out");
        }
    }
    if (texts > kMostTold) {
        m_notices.push_back("altogether " + Counted(texts, "column") +
                            " without numbers are left out");
    }
}

void TableImport::TellTimes() {
    if (!m_times) {
        return;
    }
    if (m_times->UnevenSteps() > 0) {
        m_notices.push_back(
            "the time is not even, off by more than a tenth in " +
            std::to_string(m_times->UnevenSteps()) + " of " + Counted(m_times->Steps(), "step") +
            "; the lines are shown at the median, " + Plain(m_head.cycle_time) + " s apart");
    }
    if (m_lost > 0) {
        m_notices.push_back("the time jumps over " + Counted(m_lost, "missing line"));
    }
    if (m_goes_back > 0) {
        m_notices.push_back("the time goes back at " + Counted(m_goes_back, "place") +
                            "; the lines go on there");
    }
}

TemporaryRecording TableImport::Take() {
    TemporaryRecording taken = std::move(*m_file);
    m_file.reset();
    return taken;
}

}  // namespace wavo::tables
