// The axis test: gathers commanded and actual values of all axes that have both, and evaluates them
// when values stand still or a recording is looked at.
//
// Between two parts of the work nothing refers to buffers or recordings.
#pragma once

#include <QObject>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "measure/axis_test.h"
#include "measure/contour_error.h"
#include "measure/steps.h"
#include "session/session.h"
#include "view/idle_work.h"
#include "view/line_gatherer.h"
#include "view/past_view.h"

namespace wavo {

/// What is asked of the axes.
struct AxisQuestion {
    std::string axis;  ///< one of them alone; empty: all
    measure::AxisSetup setup;
};

struct AxisOutcome {
    struct Axis {
        measure::AxisPair names;
        std::vector<double> commanded;
        std::vector<double> actual;
        measure::AxisResult result;
    };

    std::vector<Axis> axes;
    measure::AxisSetup setup;
    std::int64_t first_line = 0;
    double cycle_time = 0.001;    ///< s
    std::uint64_t recording = 0;  ///< number of the recording they are of; 0: live values
    /// Of two or three axes together: distance from the commanded path per line, mm; else empty.
    std::vector<double> contour;
    measure::ContourFigures contour_figures;
    std::size_t contour_reach = 0;  ///< segments; 0 without
    std::string data;               ///< where the lines come from, for a report
};

class AxisWatch final : public QObject {
    Q_OBJECT

 public:
    /// No more lines are evaluated at once.
    static constexpr std::int64_t kMostLines = 1'000'000;

    enum class State {
        kNoPairs,   ///< no axis has commanded and actual values
        kFlowing,   ///< values flow: there is something to evaluate when they stand
        kNoValues,  ///< nothing to evaluate
        kTooMany,   ///< more lines are seen than are evaluated at once
        kWorking,
        kDone,
    };

    /// None of the references is owned; all outlive this object.
    AxisWatch(Session& session, const PastView& past);

    /// Nothing is gathered and evaluated while it is not active.
    void SetActive(bool active);
    void Ask(const AxisQuestion& question);

    /// The source, the window of the past, or whether values flow may be others.
    void OnChanged();

    /// The axes that can be tested.
    [[nodiscard]] const std::vector<measure::AxisPair>& Pairs() const { return m_pairs; }
    /// The last one; null when there is none.
    [[nodiscard]] const AxisOutcome* Outcome() const { return m_outcome.get(); }
    [[nodiscard]] State Now() const { return m_state; }

    /// Does all of the work at once, for tests and pictures.
    void Finish() const { m_work.Finish(); }

 Q_SIGNALS:
    /// Another state, another outcome, or other pairs.
    void Changed();

 private:
    void TakePairs();
    void Begin(const GatheredLines& lines);
    void SetState(State state);
    /// A part of the work; false when all is done.
    bool Work();
    bool CopySome();

    Session& m_session;
    LineGatherer m_gatherer;
    IdleWork m_work;
    bool m_is_active = false;
    State m_state = State::kNoPairs;
    AxisQuestion m_question;
    std::vector<measure::AxisPair> m_pairs;

    std::optional<GatheredLines> m_lines;  ///< that are evaluated, or were last
    std::unique_ptr<AxisOutcome> m_next;
    std::int64_t m_copied = 0;  ///< lines of it
    std::optional<measure::Steps<bool>> m_steps;
    std::unique_ptr<AxisOutcome> m_outcome;
};

}  // namespace wavo
