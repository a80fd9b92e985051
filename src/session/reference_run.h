// A good run that others are compared with: a part of a recording, held in memory.
//
// Its lines count from 0.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "graph/values/graph_value.h"
#include "graph/values/ring_history.h"
#include "session/open_recording.h"
#include "source/history.h"
#include "support/fault.h"

namespace wavo {

/// Which part of a recording.
struct ReferencePart {
    RecordingToOpen recording;
    LineRange lines;        ///< none: all of it
    std::int64_t mark = 0;  ///< the line of the part that stands at a cursor
};

class ReferenceRun {
 public:
    /// More lines, or more values in all, are not taken.
    static constexpr std::int64_t kMostLines = 1'000'000;
    static constexpr std::int64_t kMostValues = std::int64_t{1} << 25;

    ReferenceRun(std::string path, std::vector<std::string> axes, double cycle_time,
                 std::int64_t lines);

    /// The file that it was taken from.
    [[nodiscard]] const std::string& Path() const { return m_path; }
    [[nodiscard]] const std::vector<std::string>& Axes() const { return m_axes; }
    /// Seconds per line.
    [[nodiscard]] double CycleTime() const { return m_cycle_time; }
    [[nodiscard]] std::int64_t Lines() const { return m_lines; }
    /// Where the values of an axis stand, NaN for lines without one; empty for an axis that it has
    /// not.
    [[nodiscard]] std::span<double> ValuesOf(const std::string& axis);

    /// An axis with an order of derivation, which stays as long as the run; null for an axis that
    /// it has not. The values are those of the first question.
    [[nodiscard]] History* StreamOf(const std::string& axis, std::int32_t order);

 private:
    struct Stream {
        explicit Stream(GraphValue buffer) : value(std::move(buffer)), history(value) {}
        GraphValue value;
        RingHistory history;
    };

    const std::string m_path;
    const std::vector<std::string> m_axes;
    const double m_cycle_time;
    const std::int64_t m_lines;
    std::map<std::string, std::vector<double>> m_values;
    std::map<std::pair<std::string, std::int32_t>, std::unique_ptr<Stream>> m_streams;
};

/// Takes a run out of its recording, part after part.
class ReferenceReading {
 public:
    static constexpr std::int64_t kLinesPerStep = 1024;

    /// Opens the recording; the fault says what is wrong with it or the part.
    static Expected<std::unique_ptr<ReferenceReading>> Begin(const ReferencePart& part);

    /// Reads on. False: it was done before.
    bool Step();
    /// REQUIRES: Step() gave false. The recording is not needed any more.
    [[nodiscard]] std::shared_ptr<ReferenceRun> Run() const { return m_run; }

 private:
    ReferenceReading(std::unique_ptr<OpenRecording> recording, const LineRange& lines,
                     std::vector<std::string> axes);

    std::unique_ptr<OpenRecording> m_recording;
    LineRange m_lines;
    std::shared_ptr<ReferenceRun> m_run;
    std::int64_t m_read = 0;  ///< lines
};

}  // namespace wavo
