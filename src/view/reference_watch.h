// Comparing with a good run: reads it, gathers what is to be compared, evaluates it when values
// stand still or a recording is looked at, and says what lies behind the graphs meanwhile.
//
// Between two parts of the work nothing refers to buffers or recordings; a run is in memory.
#pragma once

#include <QObject>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "measure/reference_test.h"
#include "measure/steps.h"
#include "session/reference_run.h"
#include "session/session.h"
#include "view/graph_cursors.h"
#include "view/idle_work.h"
#include "view/line_gatherer.h"
#include "view/past_view.h"
#include "view/reference_triggers.h"

namespace wavo {

/// How a run is laid over the good one.
enum class ReferenceAlignment {
    kBestMatch,  ///< where the curves are most alike
    kTrigger,    ///< where the triggers of a graph fire in both
    kCursor,     ///< the mark of the good run stands at cursor A
};

/// What is asked.
struct ReferenceQuestion {
    std::string axis;  ///< one alone; empty: several
    bool all = false;  ///< all that both have, not only those that graphs show
    ReferenceAlignment alignment = ReferenceAlignment::kBestMatch;
    measure::Tolerance tolerance;
};

struct ReferenceOutcome {
    std::vector<std::string> axes;
    std::vector<std::vector<double>> run;  ///< that was compared, by axis
    std::int64_t first_line = 0;           ///< of the run
    double cycle_time = 0.001;             ///< s
    std::uint64_t recording = 0;           ///< number of the recording it is of; 0: live values
    std::string data;                      ///< where it comes from: "live", or a path
    std::vector<std::string> references;   ///< paths of the good runs
    measure::RunComparison comparison;

    /// The line that belongs to a place of the good run.
    [[nodiscard]] std::int64_t LineOf(std::size_t place) const {
        return first_line + comparison.shift + static_cast<std::int64_t>(place);
    }
};

class ReferenceWatch final : public QObject {
    Q_OBJECT

 public:
    enum class State {
        kNoReference,
        kReading,
        kNoAxes,  ///< the good run has none of the axes that are asked for
        kNoTolerance,
        kOtherTime,  ///< its lines are another time apart
        kFlowing,    ///< values flow: there is something to evaluate when they stand
        kNoValues,   ///< nothing to evaluate
        kTooMany,    ///< more lines are seen than are evaluated at once
        kNotTold,    ///< Reason says why it could not be compared
        kWorking,
        kDone,
    };

    /// None of the references is owned; all outlive this object. `selected`: the number of the
    /// graph that the user has selected.
    ReferenceWatch(Session& session, const GraphBoard& board, const PastView& past,
                   const GraphCursors& cursors, std::function<std::uint32_t()> selected);

    /// Nothing is gathered, evaluated and shown while it is not active.
    void SetActive(bool active);
    void Ask(const ReferenceQuestion& question);

    /// Reads other good runs, the first of them what is compared with. A fault, and those before
    /// stay, when one cannot be used.
    MaybeFault Choose(const std::vector<ReferencePart>& parts);
    /// The same with one more than there are.
    MaybeFault Add(const ReferencePart& part);
    void Forget();
    /// What is seen of the recording that is open; nothing without one.
    [[nodiscard]] std::optional<ReferencePart> Seen() const;

    /// The window of the past will show a place of what is compared: that stays the same until the
    /// window is another one again.
    void KeepCompared() { m_keeps_compared = true; }
    /// Source, graphs, cursors, the window of the past, or whether values flow may be others.
    void OnChanged();

    [[nodiscard]] const std::vector<std::shared_ptr<ReferenceRun>>& Runs() const { return m_runs; }
    /// Axes that good run and source have in common.
    [[nodiscard]] std::vector<std::string> CommonAxes() const;
    [[nodiscard]] State Now() const { return m_state; }
    [[nodiscard]] const std::string& Reason() const { return m_reason; }
    /// The last one; null when there is none.
    [[nodiscard]] const ReferenceOutcome* Outcome() const { return m_outcome.get(); }

    /// What lies behind the curves of a graph.
    [[nodiscard]] std::optional<BackRun> BehindOf(const GraphDraw& graph) const;

    /// Does all of the work at once, for tests and pictures.
    void Finish() const { m_work.Finish(); }

 Q_SIGNALS:
    /// Another state, another outcome, or other runs.
    void Changed();
    /// Something else lies behind the graphs.
    void BehindChanged();

 private:
    /// What an evaluation was begun for.
    struct Begun {
        GatheredLines lines;
        std::optional<std::int64_t> shift;  ///< of lines of the run against those of the good one

        friend bool operator==(const Begun&, const Begun&) = default;
    };

    [[nodiscard]] std::vector<std::string> AskedAxes() const;
    /// Those whose values are kept as they come: so that the user may ask for others afterwards.
    [[nodiscard]] std::vector<std::string> GatheredAxes() const;
    /// The state that keeps from evaluating; kDone when nothing does.
    [[nodiscard]] State WhatKeeps(const GatheredLines& now) const;
    /// By how many lines a run that stands still lies behind the good one; not told why it is not
    /// known, nothing in it for a best match.
    [[nodiscard]] measure::Told<std::optional<std::int64_t>> AskedShift(
        const LineRange& lines) const;
    [[nodiscard]] GatheredLines LinesToCompare();
    [[nodiscard]] std::optional<std::int64_t> ShiftIn(const GraphDraw& graph) const;
    void Begin(const Begun& begun);
    void DropOutcome();
    void ForgetRuns();
    void SetState(State state, const std::string& reason = {});
    /// A part of the work; false when all is done.
    bool Work();
    bool Read();
    bool CopySome();
    void TakeResult();

    Session& m_session;
    const PastView& m_past;
    const GraphCursors& m_cursors;
    ReferenceTriggers m_triggers;
    LineGatherer m_gatherer;
    IdleWork m_work;
    bool m_is_active = false;
    State m_state = State::kNoReference;
    std::string m_reason;
    ReferenceQuestion m_question;

    std::vector<ReferencePart> m_parts;                         ///< that were chosen
    std::vector<std::unique_ptr<ReferenceReading>> m_readings;  ///< of them, while they are read
    std::vector<std::shared_ptr<ReferenceRun>> m_runs;

    std::optional<Begun> m_begun;
    bool m_keeps_compared = false;
    std::optional<LineRange> m_kept_window;  ///< that changes nothing of what is compared
    std::vector<std::string> m_gathered;     ///< axes
    std::vector<std::string> m_axes;         ///< of them, that are asked for
    std::unique_ptr<ReferenceOutcome> m_next;
    std::int64_t m_copied = 0;  ///< lines of it
    std::optional<measure::Steps<measure::Told<measure::RunComparison>>> m_steps;
    std::unique_ptr<ReferenceOutcome> m_outcome;
};

}  // namespace wavo
