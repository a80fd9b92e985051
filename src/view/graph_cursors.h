// The pair of cursors: two moments of the values, one pair for all graphs.
//
// While values flow into a graph a cursor stands at its place on the screen there and reads what
// passes; it is that moment in all other graphs. In a graph that stands still it stands on a
// sample, through zooms too. Over an axis a cursor is the nearest point.
//
// Invariants:
// 1. The moment of a cursor is a line of the source, which every graph can find. Without values
//    there is none, and the cursor has its place alone.
// 2. Nothing is kept of a drawer: graphs are found by their numbers, and may be gone.
#pragma once

#include <QPoint>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>

#include "view/graph_board.h"
#include "view/zoom_target.h"

namespace wavo {

enum class CursorName { kA, kB };
inline constexpr std::array<CursorName, 2> kCursorNames = {CursorName::kA, CursorName::kB};

/// How far a key moves a cursor.
enum class CursorStep {
    kPixel,   ///< at least a sample
    kSample,  ///< a line of the source
    kTenth,   ///< of what the graph shows
};

class GraphCursors {
 public:
    /// Brings a line into sight of a graph that stands still.
    using BringIn = std::function<void(const GraphDraw& graph, std::int64_t line)>;

    /// None of the references is owned; all outlive this object. `values_flow`: the viewer is not
    /// stopped. `moved`: a cursor was put somewhere else, shown or hidden by the user.
    GraphCursors(GraphBoard& board, ZoomTarget& zooms, std::function<bool()> values_flow,
                 BringIn bring_in, std::function<void()> moved);

    /// Shows both, at a third and two thirds of the selected graph, A active; or hides them.
    void Show(bool shown);
    [[nodiscard]] bool IsShown() const { return m_shown; }

    /// The one that keys move.
    [[nodiscard]] std::optional<CursorName> Active() const { return m_active; }
    void Activate(std::optional<CursorName> name);

    /// Follows the values and the graphs; to be called when these have changed. Costs nothing where
    /// nothing was drawn since.
    void Renew();

    /// The line that a cursor stands on, as Renew has found it.
    [[nodiscard]] std::optional<std::int64_t> LineOf(CursorName name) const {
        return Of(name).line;
    }
    /// The graph that a cursor was put into; null when there is none.
    [[nodiscard]] GraphDraw* GraphOf(CursorName name) const;

    /// Where a cursor is seen in a graph, logical pixels; over time its column counts alone.
    /// Nothing when it is not.
    [[nodiscard]] std::optional<QPoint> PlaceIn(const GraphDraw& graph, CursorName name) const;

    /// Puts a cursor to a place of a graph.
    void PutAt(CursorName name, const GraphDraw& graph, const QPoint& point);
    /// Puts a cursor onto a line. In a graph into which values flow it takes the place there.
    void PutOn(CursorName name, std::int64_t line);
    /// The same, and brings the line into sight where it is not seen.
    void JumpTo(CursorName name, std::int64_t line);
    /// Moves a cursor in its graph; `direction` is 1 or -1. One that leaves a window of the past
    /// takes that along.
    void Move(CursorName name, CursorStep step, int direction);

 private:
    struct State {
        std::uint32_t graph = 0;  ///< number of the graph it was put into
        double x = 0.0;           ///< part of the shown time; over an axis of the plot's width
        double y = 0.5;           ///< over an axis: part of the plot's height
        std::optional<std::int64_t> line;
    };

    /// What Renew has followed.
    struct Followed {
        std::uint64_t steps = 0;
        bool values_flow = false;
        friend bool operator==(const Followed&, const Followed&) = default;
    };

    [[nodiscard]] const State& Of(CursorName name) const {
        return m_states[static_cast<std::size_t>(name)];
    }
    [[nodiscard]] State& Of(CursorName name) { return m_states[static_cast<std::size_t>(name)]; }
    [[nodiscard]] GraphDraw* FirstGraph() const;
    [[nodiscard]] bool FlowsInto(const GraphDraw& graph) const;
    [[nodiscard]] static QPoint PixelOf(const GraphDraw& graph, const State& state);
    [[nodiscard]] static bool IsSeen(const GraphDraw& graph, std::int64_t line);
    /// The line that a cursor stands on at its place in a graph.
    [[nodiscard]] static std::optional<std::int64_t> LineAtPlace(const GraphDraw& graph,
                                                                 const State& state, bool flows);
    void Follow(State& state) const;
    static void TakePlace(const GraphDraw& graph, std::int64_t line, State* state);
    void MoveOnScreen(const GraphDraw& graph, CursorStep step, int direction, State* state) const;
    void MoveByLines(const GraphDraw& graph, CursorStep step, int direction, State* state) const;

    GraphBoard& m_board;
    ZoomTarget& m_zooms;
    const std::function<bool()> m_values_flow;
    const BringIn m_bring_in;
    const std::function<void()> m_moved;
    std::array<State, 2> m_states;
    std::optional<CursorName> m_active;
    bool m_shown = false;
    std::optional<Followed> m_followed;  ///< nothing: a cursor was put somewhere else
};

}  // namespace wavo
