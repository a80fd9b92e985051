// Makes a recording of a table, in steps, so that it is looked at like any other.
//
//   auto import = TableImport::Begin(preview, choice, folder, "wavo 1.0");
//   while ((*import)->Step() == StepState::kWorking) { show (*import)->Part(); }
//   TemporaryRecording recording = (*import)->Take();
//
// Every column of numbers becomes an axis, but for the one with the time. A row that cannot be
// read, and rows that the time misses, are gaps in the recording, and told.
//
// Invariants:
// 1. Memory does not grow with the table.
// 2. Values are the nearest doubles of what stands in the table.
// 3. Whatever ends an import before its recording is taken leaves no file behind.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recording/recording_writer.h"
#include "support/fault.h"
#include "tables/line_times.h"
#include "tables/stepped_work.h"
#include "tables/table_preview.h"
#include "tables/table_reader.h"
#include "tables/temporary_recording.h"

namespace wavo::tables {

class TableImport final : public SteppedWork {
 public:
    /// Rows of which the cycle time is found, from a column with the time.
    static constexpr std::size_t kRowsForCycle = 10'000;
    /// With more rows that cannot be read it is no table.
    static constexpr std::uint64_t kMostBadRows = 1000;
    /// Rows that cannot be read, columns that are left out, and jumps that are told one by one.
    static constexpr std::uint64_t kMostTold = 10;
    static constexpr std::uint64_t kMostEvents = 10'000;

    /// `folder` is there; the recording is made in it. `program` is name and version of who
    /// imports.
    static Expected<std::unique_ptr<TableImport>> Begin(const TablePreview& preview,
                                                        const TimeChoice& choice,
                                                        const std::string& folder,
                                                        std::string program);
    ~TableImport() override;

    StepState Step() override;
    [[nodiscard]] double Part() const override;
    [[nodiscard]] const Fault& Why() const override { return *m_fault; }

    /// What a user should know of the table, in words; whole when it is done.
    [[nodiscard]] const std::vector<std::string>& Notices() const { return m_notices; }
    /// Seconds per line; known when it is done.
    [[nodiscard]] double CycleTime() const { return m_head.cycle_time; }

    /// The recording, whole. REQUIRES: Step gave kDone; called once.
    TemporaryRecording Take();

 private:
    enum class Phase { kFindCycle, kCopy, kEnded };

    TableImport(const TablePreview& preview, const TimeChoice& choice, TemporaryRecording file);

    MaybeFault OpenTable();
    StepState Fail(const std::string& text);
    StepState FindCycle();
    StepState BeginCopy(const std::vector<double>& times);
    StepState Copy();
    MaybeFault TakeRow();
    MaybeFault TakeBadRow();
    MaybeFault PutLine(std::uint64_t line);
    void TellJump(const LineTimes::Place& place);
    StepState Finish();
    void TellColumns();
    void TellTimes();

    // Constant after construction.
    const TablePreview m_preview;
    const TimeChoice m_choice;
    std::vector<std::size_t> m_columns;  // of the axes; behind them that of the time

    std::optional<TemporaryRecording> m_file;
    std::unique_ptr<TableReader> m_reader;
    recording::RecordingHead m_head;
    std::unique_ptr<recording::RecordingWriter> m_writer;
    Phase m_phase = Phase::kFindCycle;
    MaybeFault m_fault;
    std::vector<std::string> m_notices;
    std::vector<double> m_values;       // of a row
    std::vector<double> m_first_times;  // seconds
    std::optional<LineTimes> m_times;   // where a column has the time
    std::uint64_t m_next_line = 0;
    std::uint64_t m_rows = 0;
    std::uint64_t m_bad_rows = 0;
    std::uint64_t m_jumps = 0;
    std::uint64_t m_lost = 0;
    std::uint64_t m_goes_back = 0;
};

}  // namespace wavo::tables
