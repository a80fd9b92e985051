// The samples of a curve over time, and at which time each of them stands.
//
// The time of a sample follows from its place and is not stored: how is what kinds of curves differ
// in (sweep_curve.h, scroll_curve.h). A curve is a row of runs, in each of which sample follows
// sample by one step.
//
// Invariants:
// 1. At most MaxPoints() samples are held, the newest ones (curve_samples.h).
// 2. Positions count from the oldest sample. Places are those of a FIFO that may be overwritten
//    from its front once it is full: place 0 then is what was written there last.
// 3. A window shows samples of another buffer, or a part of the curve's own until Clear. Nothing is
//    added while there is one. Its parts rise in rows and positions; between them the curve has a
//    gap.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "graph/draw/curve/curve_samples.h"
#include "graph/values/graph_value.h"
#include "graph/values/sample_buffer.h"
#include "graph/values/stream_rows.h"

namespace wavo {

/// Samples of a curve that follow one another by one step.
struct CurveRun {
    std::uint64_t position = 0;  ///< of its first sample
    std::uint64_t count = 0;
    std::uint64_t step = 0;  ///< of its first sample
    bool joined = false;     ///< a line leads to it from the run before
};

/// Where the samples that a curve shows stand. Positions of runs count from the first of them.
struct ShownSamples {
    const SampleBuffer& buffer;
    std::uint64_t begin = 0;  ///< sequence number of the first in the buffer
    std::uint64_t count = 0;  ///< to the last one, gaps included
    /// Number of the first: numbers rise by one and are never used twice. Nothing where a window
    /// shows another buffer.
    std::optional<std::uint64_t> number;
};

class TimeCurve {
 public:
    /// `step`: seconds from sample to sample. REQUIRES: max_points >= 1.
    TimeCurve(double step, std::uint64_t max_points);
    virtual ~TimeCurve() = default;
    TimeCurve(const TimeCurve&) = delete;
    TimeCurve& operator=(const TimeCurve&) = delete;
    TimeCurve(TimeCurve&&) = delete;
    TimeCurve& operator=(TimeCurve&&) = delete;

    /// Drops all samples; the next begins at the left.
    void Clear();

    /// Adds a batch. `at_start`: it begins at the left; `range`: what the x scale shows, seconds.
    /// False, and nothing added, for a batch that does not fit; reported.
    /// `origin`: where the samples stand in the buffer of their stream.
    virtual bool Add(std::span<const double> samples, bool at_start, double range,
                     const SampleOrigin& origin) = 0;

    /// Shows stretches of another buffer; row 0 is time 0. It is not owned, and stays until the
    /// next window, Clear or KeepWindow.
    void ShowWindow(const SampleBuffer& buffer, std::vector<RowPart> parts);
    /// Shows a stretch of the samples that the curve holds itself.
    void ShowOwnWindow(const SampleStretch& stretch);
    /// Copies what a window shows, before its ring goes.
    void KeepWindow();

    [[nodiscard]] double Step() const { return m_step; }
    [[nodiscard]] std::uint64_t MaxPoints() const { return m_held.MaxPoints(); }
    [[nodiscard]] std::uint64_t Size() const;
    /// Samples of the curve itself, whatever a window shows.
    [[nodiscard]] std::uint64_t HeldSamples() const { return m_held.Size(); }
    /// One of them, oldest first. REQUIRES: place < HeldSamples().
    [[nodiscard]] double HeldSample(std::uint64_t place) const {
        return m_held.Buffer().Sample(m_held.Begin() + place);
    }
    /// Sample and time, seconds, at a place. REQUIRES: place < Size().
    [[nodiscard]] double Sample(std::uint64_t place) const;
    [[nodiscard]] double Time(std::uint64_t place) const;
    /// The place that is overwritten next; 0 until the FIFO is full.
    [[nodiscard]] std::uint64_t WriteIndex() const { return ShowsWindow() ? 0 : OwnWriteIndex(); }
    /// The position (as in Runs) of the sample that is seen at a time, seconds; nothing where there
    /// is none.
    [[nodiscard]] std::optional<std::uint64_t> PositionAt(double time) const;

    /// Sample and time, seconds, at a position as in Runs. REQUIRES: a run has it.
    [[nodiscard]] double SampleAt(std::uint64_t position) const {
        return Buffer().Sample(FirstOfBuffer() + Stretch().position + position);
    }
    [[nodiscard]] double TimeAt(std::uint64_t position) const;

    /// Copies all samples, oldest first; of a window those of each row, NoSample() in its gaps.
    void CopySamples(std::vector<double>& out) const;
    /// Smallest and largest finite sample that is shown.
    [[nodiscard]] MinMax FiniteExtremes();
    /// All samples stand at steps below this.
    [[nodiscard]] std::uint64_t EndOfSteps() const;

    [[nodiscard]] ShownSamples Shown() const;
    /// Which samples are shown of those of the window's buffer, else of those that the curve holds.
    [[nodiscard]] SampleStretch Stretch() const;
    [[nodiscard]] std::vector<CurveRun> Runs() const;
    /// Times are sums of steps, not places x step.
    [[nodiscard]] bool TimesAreSums() const { return !ShowsWindow() && OwnTimesAreSums(); }
    /// Changes with every change of what the curve shows.
    [[nodiscard]] std::uint64_t Version() const { return m_version; }

 protected:
    /// The samples that the curve holds itself.
    [[nodiscard]] const CurveSamples& Own() const { return m_held; }
    /// Adds samples, and drops the oldest where there would be more than MaxPoints(), or more than
    /// there is memory for.
    void Push(std::span<const double> samples, const SampleOrigin& origin);
    [[nodiscard]] std::uint64_t PositionOf(std::uint64_t place) const;

 private:
    // How the curve's own samples are spread over time; there is no window, and a sample at least.
    virtual void Cleared() = 0;
    [[nodiscard]] virtual double OwnTime(std::uint64_t place) const = 0;
    [[nodiscard]] virtual std::vector<CurveRun> OwnRuns() const = 0;
    [[nodiscard]] virtual std::uint64_t OwnWriteIndex() const { return 0; }
    [[nodiscard]] virtual bool OwnTimesAreSums() const { return false; }

    [[nodiscard]] bool ShowsWindow() const { return m_window != nullptr || m_own_window; }
    [[nodiscard]] const SampleBuffer& Buffer() const {
        return m_window != nullptr ? *m_window : m_held.Buffer();
    }
    /// Sequence number of the sample that the positions of stretches count from.
    [[nodiscard]] std::uint64_t FirstOfBuffer() const {
        return m_window != nullptr ? m_window->FirstSequence() : m_held.Begin();
    }
    void Copy(const SampleStretch& stretch, std::vector<double>& out) const;

    /// The part of the window that a place lies in; `place` counts from there then.
    [[nodiscard]] const RowPart& PartOf(std::uint64_t& place) const;

    double m_step;
    CurveSamples m_held;
    const SampleBuffer* m_window = nullptr;  ///< of another buffer
    bool m_own_window = false;               ///< of the samples that the curve holds
    std::vector<RowPart> m_window_parts;
    std::uint64_t m_window_appended = 0;  ///< of the window's buffer when it was shown last
    std::uint64_t m_window_moves = 0;
    std::uint64_t m_version = 0;
};

}  // namespace wavo
