// Writes a part of a recording to a file of its own, in steps: as a recording, or as a table, plain
// or compressed with gzip.
//
//   auto part = PartExport::Begin(reader, part, file);
//   while ((*part)->Step() == StepState::kWorking) { show (*part)->Lines(); }
//
// A recording keeps what the whole one tells: its metadata, the numbers and times of the lines, the
// events of the part and the graph file. A table has the time in its first column, seconds since
// line 0 of the recording; lines that are not there are not in it, and values that are not there
// are empty fields.
//
// Invariants:
// 1. The file appears whole or not at all, and a file that is there is replaced only by a whole
//    one: until the end it is written under another name beside it.
// 2. Memory does not grow with the part.
// 3. The recording that is read is never written onto.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "recording/recording_reader.h"
#include "settings/export_settings.h"
#include "source/history.h"
#include "support/fault.h"
#include "tables/stepped_work.h"

namespace wavo::tables {

enum class PartFormat { kRecording, kTable, kPackedTable };

/// Why no recording is written onto itself.
inline constexpr char kOntoItself[] = "a recording cannot be exported onto itself";

/// A column of a table that is no axis of the recording.
struct PartColumn {
    std::string name;
    History* values = nullptr;  ///< by the lines of the recording; not owned, outlives the export
};

/// Where a part is written to, and how.
struct PartFile {
    std::string path;  ///< UTF-8
    PartFormat format = PartFormat::kRecording;
    /// Of tables: separator, decimal point and end of line.
    ExportSettings settings;
    /// Of tables: behind the axes.
    std::vector<PartColumn> columns = {};
};

/// What the file is written by.
class PartWriter;

class PartExport final : public SteppedWork {
 public:
    /// `reader` is not owned and outlives this object. The fault says why the part cannot be
    /// written: it has no lines, or the path leads to the recording that is read.
    static Expected<std::unique_ptr<PartExport>> Begin(recording::RecordingReader& reader,
                                                       recording::LineSpan part,
                                                       const PartFile& file);
    /// Until it is done: removes what was written.
    ~PartExport() override;

    /// Also takes as long as the disk does for a MiB.
    StepState Step() override;
    [[nodiscard]] double Part() const override;
    /// Lines that were written so far.
    [[nodiscard]] std::uint64_t Lines() const { return m_lines; }
    [[nodiscard]] const Fault& Why() const override { return *m_fault; }

 private:
    PartExport(recording::RecordingReader& reader, recording::LineSpan part, PartFile file);

    MaybeFault Open();
    StepState Fail(const Fault& fault);
    StepState Finish();
    /// Puts the values of a line, without those of the axes, behind these.
    void ReadColumns(std::uint64_t line);
    /// Goes over the gap that m_next lies in, if any.
    void SkipGap();
    /// Puts the events up to a line that are due.
    void PutEvents(std::uint64_t line);

    // Constant after construction.
    recording::RecordingReader& m_reader;
    const recording::LineSpan m_part;
    const PartFile m_file;
    const std::vector<recording::LineSpan> m_gaps;

    std::string m_temporary;  // the name that is written under; empty: there is no such file
    std::unique_ptr<PartWriter> m_writer;
    MaybeFault m_fault;
    bool m_is_done = false;
    std::vector<double> m_line;  // the axes, and the columns of a table
    std::uint64_t m_next = 0;
    std::size_t m_gap = 0;  // the first that does not end before m_next
    std::size_t m_event = 0;
    std::uint64_t m_lines = 0;
};

}  // namespace wavo::tables
