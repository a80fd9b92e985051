// Moving through the past: one window of lines that all graphs concerned show, over time as curves,
// over an axis as points.
//
// The past is a recording that is open, shown by all graphs; or what the buffers hold of graphs
// that stand still, because the user has stopped them or their triggers have. Graphs that run are
// not concerned.
//
// Invariants:
// 1. Moving leaves the run state of graphs alone.
// 2. Drawings read no more than a frame's budget; what is then not exact is drawn again, with more
//    budget, when the event loop has nothing else to do, until it is.
#pragma once

#include <QPoint>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "graph/values/ring_history.h"
#include "graph/values/time_window.h"
#include "session/seen_lines.h"
#include "session/session.h"
#include "view/graph_board.h"
#include "view/graph_screen.h"
#include "view/recording_status.h"

namespace wavo {

class PastView final : private PastDrawing {
 public:
    /// None of the references is owned; all outlive this object. `selected`: the number of the
    /// graph that the user has selected. `changed`: another window is shown, or none.
    PastView(Session& session, GraphBoard& board, GraphScreen& screen,
             std::function<std::uint32_t()> selected, std::function<void()> changed);

    /// The graphs were made anew; not drawn yet. Those of a recording show what they showed.
    void OnGraphsMade();
    /// The live graphs are set aside for those of a recording: keeps what of their past is shown.
    void SetLiveAside();
    /// They are back as they were.
    void OnLiveBack();
    /// Values flow again: graphs that showed their buffers' past are live; not drawn yet.
    void Leave();

    /// The user has selected another graph.
    void OnSelected() { m_changed(); }

    /// A window of the past is shown.
    [[nodiscard]] bool IsShown() const { return m_is_shown; }
    [[nodiscard]] const SeenLines& Window() const { return m_window; }
    /// A graph shows the past, or could.
    [[nodiscard]] bool CanShow(const GraphDraw& drawer) const;

    // Each is shown at once. False when there is no past to move in: nothing was done.
    /// Zooms at a point of the view, logical pixels.
    bool ZoomAt(const QPoint& point, double factor);
    bool ZoomInMiddle(double factor);
    bool MoveBy(double windows);
    bool MoveToBegin();
    bool MoveToEnd();
    bool Show(const LineRange& lines);
    /// Zooms to a span of the displayed time axis, seconds; StepBack takes it back.
    bool ZoomTo(const TimeWindow& span);
    /// Takes the last ZoomTo back; without one shows all of a recording, or the live graphs.
    bool StepBack();
    /// Brings a line into sight and marks it; with a graph only brings it into sight there, if that
    /// has a past to move in.
    void GoTo(std::int64_t line, const GraphDraw* unmarked_in = nullptr);
    [[nodiscard]] std::optional<std::int64_t> Mark() const { return m_mark; }

    /// Takes in what was written to the recording since: the window stays, or with `follow` goes to
    /// the end. Shown, and told, if there is any news.
    void Refresh(bool follow);

    /// Lets a drag begin at a point; the window follows it until EndDrag. False, all three: there
    /// is nothing to drag.
    bool BeginDrag(const QPoint& point);
    bool DragTo(const QPoint& point);
    bool EndDrag() { return std::exchange(m_drag, std::nullopt).has_value(); }

    /// What the status bar says of the recording.
    [[nodiscard]] RecordingStatus& Status() { return m_status; }

 private:
    // PastDrawing
    void OnDrawn() override;
    void AllowAll() override;
    void PaintMarks(QPainter& painter) override;

    /// Where the live graphs that stand still were moved to.
    struct OfLive {
        SeenLines window;
        std::int64_t origin;
        std::vector<LineRange> steps;
        std::map<GraphValue*, RingHistory> buffers;
    };
    struct Drag {
        QPoint from;
        LineRange seen;
        int width;
    };

    /// The graph that is at hand: at a point, else the selected one; null when there is none.
    [[nodiscard]] const GraphDraw* GraphAt(const QPoint& point) const;
    [[nodiscard]] const GraphDraw* SelectedGraph() const;
    /// Shows the past if that is not shown yet. False when `drawer` has none.
    bool Begin(const GraphDraw* drawer);
    [[nodiscard]] LineRange HeldLines() const;
    History* HistoryOf(GraphValue* value);
    [[nodiscard]] ShownHistory HistoryOf(const GraphDraw& drawer);
    /// Takes in what was written since, and what was lost. False when that is nothing.
    bool TakeInNews();
    /// Lines of the recording turned out to be damaged since that was last taken in.
    [[nodiscard]] bool HasLostLines() const;
    /// Draws what is not exact yet, or no longer, when the event loop comes to it.
    void PostGoOn();
    void GoOn();
    /// Gives the window to the graphs.
    void Apply();
    void ApplyAndDraw();
    template <typename Change>
    bool Do(Change change);

    Session& m_session;
    GraphBoard& m_board;
    GraphScreen& m_screen;
    const std::function<std::uint32_t()> m_selected;
    const std::function<void()> m_changed;

    RecordingStatus m_status;
    bool m_is_shown = false;
    const OpenRecording* m_recording = nullptr;  // that is shown
    SeenLines m_window;
    std::int64_t m_origin = 0;       // the line at time 0
    std::vector<LineRange> m_steps;  // windows before those that were zoomed to
    std::optional<std::int64_t> m_mark;
    std::optional<Drag> m_drag;
    std::map<GraphValue*, RingHistory> m_buffers;
    std::optional<OfLive> m_live;  // while a recording is open
    std::uint64_t m_losses = 0;    // of the recording, that were taken in
    std::size_t m_notices = 0;     // of the recording, that were told
    bool m_is_going_on = false;    // another drawing is on its way
};

}  // namespace wavo
