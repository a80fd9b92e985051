// The circle test of the graph that is selected: gathers the lines of its plane, evaluates them in
// the pauses between batches, and keeps the last outcome.
//
// While values flow the lines are taken as they come, and each turn renews the outcome. What stands
// still is evaluated once: the lines that a stopped graph holds, those that are seen of a
// recording.
//
// Invariants:
// 1. Between two parts of the work nothing refers to graphs, buffers or recordings.
// 2. An outcome stays until another one with newer turns is there, or the plane or what is looked
// at
//    changes.
#pragma once

#include <QObject>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "measure/circle_test.h"
#include "session/plane_axes.h"
#include "session/session.h"
#include "view/graph_board.h"
#include "view/idle_work.h"
#include "view/line_gatherer.h"
#include "view/past_view.h"

namespace wavo {

/// What was evaluated, and what came of it.
struct CircleOutcome {
    std::uint32_t graph = 0;  ///< its number
    PlaneAxes axes;
    std::int64_t first_line = 0;               ///< of the first that was evaluated
    std::vector<std::vector<double>> columns;  ///< as in `axes`
    measure::PlanePath path;                   ///< looks at them
    measure::CircleSetup setup;                ///< the same for its other axes
    measure::CircleResult result;
    std::string data;  ///< where the lines come from, for a report: "live", a file
};

/// What the user says of the circle.
struct CircleQuestion {
    std::optional<double> radius;  ///< nominal, mm
    std::optional<double> feed;    ///< programmed, mm/s
    bool minimum_zone = false;

    friend bool operator==(const CircleQuestion&, const CircleQuestion&) = default;
};

class CircleWatch final : public QObject {
    Q_OBJECT

 public:
    /// Of what stands still no more lines are evaluated at once.
    static constexpr std::int64_t kMostLines = 4'000'000;

    enum class State {
        kNoPlane,   ///< no graph over an axis is selected
        kNoValues,  ///< nothing to evaluate yet
        kTooMany,   ///< more lines are seen than are evaluated at once
        kWorking,
        kDone,
    };

    /// None of the references is owned; all outlive this object. `selected`: the number of the
    /// graph that the user has selected.
    CircleWatch(Session& session, GraphBoard& board, PastView& past,
                std::function<std::uint32_t()> selected);
    /// Nothing is gathered and evaluated while it is not active.
    void SetActive(bool active);
    void SetQuestion(const CircleQuestion& question);
    [[nodiscard]] const CircleQuestion& Question() const { return m_question; }

    /// Values came, or were to.
    void OnBatch();
    /// Graphs, their selection, the window of the past, or whether values flow may be others.
    void OnChanged();

    /// The last one; null when there is none.
    [[nodiscard]] const CircleOutcome* Outcome() const { return m_outcome.get(); }
    [[nodiscard]] State Now() const { return m_state; }
    /// The axes that are tested; null without a plane.
    [[nodiscard]] const PlaneAxes* Plane() const { return m_plane ? &*m_plane : nullptr; }

    /// Whether a graph shows a plane that can be tested.
    [[nodiscard]] static bool IsPlane(const WavoGraph& graph);

    /// Does all of the work at once, for tests and pictures.
    void Finish() const { m_work.Finish(); }

 Q_SIGNALS:
    /// Another state or another outcome.
    void Changed();

 private:
    /// What is evaluated, as long as nothing of it changes.
    struct Subject {
        std::uint32_t graph = 0;
        bool is_of_trigger = false;  ///< what a trigger made the graph hold
        GatheredLines gathered;

        [[nodiscard]] const LineRange& Lines() const { return gathered.lines; }

        friend bool operator==(const Subject&, const Subject&) = default;
    };

    [[nodiscard]] const GraphDraw* Graph() const;
    /// Takes the plane of the graph; false when there is none.
    bool TakePlane();
    [[nodiscard]] Subject SubjectNow() const;
    void Begin(const Subject& subject);
    void GiveUp();
    void SetState(State state);
    /// A part of the work; false when all is done.
    bool Work();
    bool CopySome();
    bool Copy(std::int64_t first, std::span<const std::span<double>> columns) const;
    void Evaluate();
    void TakeResult();
    [[nodiscard]] bool IsDue() const;
    void Forget();

    Session& m_session;
    GraphBoard& m_board;
    const std::function<std::uint32_t()> m_selected;

    bool m_is_active = false;
    State m_state = State::kNoPlane;
    CircleQuestion m_question;
    LineGatherer m_gatherer;
    IdleWork m_work;
    std::optional<PlaneAxes> m_plane;
    std::uint32_t m_graph = 0;

    std::optional<Subject> m_subject;  ///< that is evaluated, or was last
    std::unique_ptr<CircleOutcome> m_next;
    std::int64_t m_copied = 0;  ///< lines of it
    std::optional<measure::Steps<measure::CircleResult>> m_steps;
    std::unique_ptr<CircleOutcome> m_outcome;
    std::int64_t m_turn_lines = 0;  ///< that a turn took last; 0: not known yet
};

}  // namespace wavo
