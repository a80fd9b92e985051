// The samples of a curve over time, and at which time each of them stands.
//
// The time of a sample follows from its place and is not stored: in continuity mode the places
// are those of the FIFO, in classic mode the steps of a sweep. A curve is a row of runs, in each of
// which sample follows sample by one step.
//
// Invariants:
// 1. At most MaxPoints() samples are held, the newest ones.
// 2. Positions count from the oldest sample. Places are those of a FIFO that, in classic mode, is
//    overwritten from its front once it is full: place 0 then is what was written there last.
// 3. In continuity mode times grow by addition of the step until the FIFO has scrolled once; from
//    then on the time of a place is place x step.
// 4. A window shows samples of another ring, or a part of the curve's own until Clear. Nothing is
//    added while there is one. Its parts rise in rows and positions; between them the curve has a
//    gap.
#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "graph/values/graph_value.h"
#include "graph/values/min_max_pyramid.h"
#include "graph/values/sample_ring.h"
#include "graph/values/stream_rows.h"

namespace wavo {

/// Samples of a curve that follow one another by one step.
struct CurveRun {
    std::uint64_t position = 0;  ///< of its first sample
    std::uint64_t count = 0;
    std::uint64_t step = 0;  ///< of its first sample
    bool joined = false;     ///< a line leads to it from the run before
};

class TimeCurve {
 public:
    /// `step`: seconds from sample to sample. REQUIRES: max_points >= 1.
    TimeCurve(GraphMode mode, double step, std::uint64_t max_points);

    /// Drops all samples; the next begins at the left.
    void Clear();

    /// Begins a batch: the sweep goes on by one step, or begins at 0 when `at_start` is set or
    /// the step would lead beyond `range` seconds.
    void BeginBatch(bool at_start, double range);
    /// Adds a batch that scrolls. REQUIRES: not more than MaxPoints() samples.
    void AddContinuity(std::span<const double> samples);
    /// Adds a batch to a sweep over `range` seconds.
    void AddClassic(std::span<const double> samples, double range);

    /// Shows a stretch of another ring, the first sample at time 0. The ring is not owned; it stays
    /// until the next window, Clear or KeepWindow.
    void ShowWindow(const SampleRing& ring, const SampleStretch& stretch) {
        ShowWindow(ring, std::vector<RowPart>{{0, stretch}});
    }
    /// The same for several stretches; row 0 is time 0.
    void ShowWindow(const SampleRing& ring, std::vector<RowPart> parts);
    /// Shows a stretch of the samples that the curve holds itself.
    void ShowOwnWindow(const SampleStretch& stretch);
    /// Copies what a window shows, before its ring goes.
    void KeepWindow();

    [[nodiscard]] std::uint64_t MaxPoints() const { return m_max_points; }
    [[nodiscard]] std::uint64_t Size() const;
    /// Samples of the curve itself, whatever a window shows.
    [[nodiscard]] std::uint64_t HeldSamples() const { return m_own.Size(); }
    /// Sample and time, seconds, at a place. REQUIRES: place < Size().
    [[nodiscard]] double Sample(std::uint64_t place) const;
    [[nodiscard]] double Time(std::uint64_t place) const;
    /// The place that is overwritten next; 0 until the FIFO is full.
    [[nodiscard]] std::uint64_t WriteIndex() const;
    /// Time of the newest sample of the sweep, seconds.
    [[nodiscard]] double SweepPosition() const { return static_cast<double>(m_sweep) * m_step; }

    /// Copies all samples, oldest first; of a window those of each row, NoSample() in its gaps.
    void CopySamples(std::vector<double>& out) const;
    /// Smallest and largest finite sample that is shown.
    [[nodiscard]] MinMax FiniteExtremes();
    /// All samples stand at steps below this.
    [[nodiscard]] std::uint64_t EndOfSteps() const;

    /// The ring whose samples are shown, and which of them. Positions of runs count from the
    /// stretch's first sample.
    [[nodiscard]] const SampleRing& Ring() const { return m_window != nullptr ? *m_window : m_own; }
    [[nodiscard]] SampleStretch Stretch() const;
    /// The pyramid over Ring(), up to date.
    [[nodiscard]] const MinMaxPyramid& Pyramid();
    [[nodiscard]] std::vector<CurveRun> Runs() const;
    /// Times are sums of steps, not places x step.
    [[nodiscard]] bool TimesAreSums() const;
    /// Changes with every change of what the curve shows.
    [[nodiscard]] std::uint64_t Version() const { return m_version; }

 private:
    /// A sample whose step is not the one after that of the sample before.
    struct Anchor {
        std::uint64_t sequence;
        std::uint64_t step;
    };

    void Push(std::span<const double> samples);
    void ForgetOldAnchors();
    [[nodiscard]] std::uint64_t PositionOf(std::uint64_t place) const;
    /// The part of the window that a place lies in; `place` counts from there then.
    [[nodiscard]] const RowPart& PartOf(std::uint64_t& place) const;

    GraphMode m_mode;
    double m_step;
    std::uint64_t m_max_points;

    SampleRing m_own;
    MinMaxPyramid m_pyramid;
    const SampleRing* m_window = nullptr;
    std::vector<RowPart> m_window_parts;
    std::uint64_t m_window_appended = 0;  // of the window's ring when it was shown last
    std::uint64_t m_window_moves = 0;
    std::int64_t m_sweep = -1;        // step that the next sample follows; -1: it begins at 0
    std::uint64_t m_newest_step = 0;  // of a sweep
    std::deque<Anchor> m_anchors;
    std::vector<double> m_sums;  // times of every kSumDistance-th place, while times are sums
    std::uint64_t m_version = 0;
};

}  // namespace wavo
