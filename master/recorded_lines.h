// The lines of a recording, in bounded memory however long it is.
//
// Lines that are not there, because the recorder missed them or their bytes are damaged, are lines
// of missing values, so that everything keeps its time; or they are left out, where that is wanted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "master/line_source.h"
#include "recording/recording_reader.h"

namespace wavo::master {

enum class GapPlaying {
    kKeepTime,  ///< as lines of missing values
    kSkip,
};

class RecordedLines : public LineSource {
 public:
    /// Plays the axes `axes` of an open recording, in that order; without `axes` all. Returns null
    /// on failure; `*error` then says why, without the file.
    static std::unique_ptr<RecordedLines> Make(
        std::unique_ptr<recording::RecordingReader> recording, const std::vector<std::string>& axes,
        GapPlaying gaps, std::string* error);

    [[nodiscard]] const std::vector<std::string>& AxisNames() const override { return m_axes; }
    [[nodiscard]] std::uint64_t LinesPerRound() const override { return m_lines; }
    void Line(std::uint64_t number, std::span<double> values) const override;
    [[nodiscard]] std::optional<double> CycleTime() const override;
    [[nodiscard]] std::optional<std::vector<AxisLimits>> Limits(double cycle_time) const override;

 private:
    explicit RecordedLines(std::unique_ptr<recording::RecordingReader> recording);

    void FindStretches(GapPlaying gaps);

    /// Successive lines of the recording, and the number of the first of them in a round.
    struct Stretch {
        std::uint64_t number = 0;
        std::uint64_t first_line = 0;
    };

    const std::unique_ptr<recording::RecordingReader> m_recording;
    std::vector<std::string> m_axes;
    std::vector<std::size_t> m_places;  // of the axes in the recording
    std::vector<Stretch> m_stretches;
    std::uint64_t m_lines = 0;
    mutable std::vector<double> m_line;  // all axes of the recording
};

}  // namespace wavo::master
