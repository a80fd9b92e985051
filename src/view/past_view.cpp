#include "view/past_view.h"

#include <QMetaObject>
#include <QPainter>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <utility>

#include "view/past_marks.h"
#include "view/recorded_values.h"

namespace wavo {

namespace {

using recording::ReadingBudget;

/// What a drawing may read: a few milliseconds.
constexpr std::uint64_t kFrameBudget = 140;

bool IsOverTime(const GraphDraw& drawer) {
    return drawer.Graph().XCoorType != CoorType::kAxis;
}

LineRange Union(const LineRange& a, const LineRange& b) {
    if (a.Count() == 0 || b.Count() == 0) {
        return a.Count() == 0 ? b : a;
    }
    return {std::min(a.begin, b.begin), std::max(a.end, b.end)};
}

}  // namespace

PastView::PastView(Session& session, GraphBoard& board, GraphScreen& screen,
                   std::function<std::uint32_t()> selected, std::function<void()> changed)
    : m_session(session),
      m_board(board),
      m_screen(screen),
      m_selected(std::move(selected)),
      m_changed(std::move(changed)),
      m_status(session) {
    m_screen.SetPast(this);
}

// ---- which past ----

void PastView::OnGraphsMade() {
    m_drag.reset();
    m_buffers.clear();
    OpenRecording* const recording = m_session.Recording();
    if (recording == nullptr) {
        m_live.reset();
        m_is_shown = false;
        m_recording = nullptr;
        m_steps.clear();
        m_mark.reset();
        m_changed();
        return;
    }
    if (m_recording != recording) {
        m_recording = recording;
        m_steps.clear();
        m_mark.reset();
        m_window.ShowAll(recording->Lines());
        m_losses = recording->Reader().Versions().losses;
        recording->Reader().SetLost([this] { PostGoOn(); });
        recording->Budget().Renew(kFrameBudget);
    }
    m_is_shown = true;
    m_origin = recording->Lines().begin;
    m_status.Tell();
    Apply();
}

void PastView::SetLiveAside() {
    if (m_is_shown) {
        m_live =
            OfLive{m_window, m_origin, std::exchange(m_steps, {}), std::exchange(m_buffers, {})};
    }
}

void PastView::OnLiveBack() {
    std::optional<OfLive> kept = std::exchange(m_live, std::nullopt);
    OnGraphsMade();
    if (kept) {
        m_is_shown = true;
        m_window = kept->window;
        m_origin = kept->origin;
        m_steps = std::move(kept->steps);
        m_buffers = std::move(kept->buffers);
        m_changed();
    }
}

void PastView::Leave() {
    if (!m_is_shown || m_session.Recording() != nullptr) {
        return;
    }
    for (const auto& drawer : m_board.Drawers()) {
        drawer->ShowHistory(std::nullopt);
    }
    OnGraphsMade();
}

bool PastView::CanShow(const GraphDraw& drawer) const {
    return m_recording != nullptr || drawer.Past().has_value() || !m_session.Values().IsRunning() ||
           IsStopped(drawer.State());
}

const GraphDraw* PastView::GraphAt(const QPoint& point) const {
    const auto& drawers = m_board.Drawers();
    const auto found = std::ranges::find_if(
        drawers, [&point](const auto& drawer) { return drawer->Rectangle().contains(point); });
    return found == drawers.end() ? SelectedGraph() : found->get();
}

const GraphDraw* PastView::SelectedGraph() const {
    const auto& drawers = m_board.Drawers();
    const GraphDraw* const selected = m_board.Find(m_selected());
    return selected != nullptr || drawers.empty() ? selected : drawers.front().get();
}

bool PastView::Begin(const GraphDraw* drawer) {
    if (m_screen.IsDrawing() || drawer == nullptr || !CanShow(*drawer)) {
        return false;
    }
    if (m_is_shown) {
        return true;
    }
    const LineRange held = HeldLines();
    if (held.Count() < 2) {
        return false;
    }
    m_is_shown = true;
    m_window.ShowAll(held);
    const LineRange shown = ShownLines(*drawer);
    if (shown.Count() > 1) {
        m_window.Show(shown);
    }
    m_origin = m_window.Seen().begin;
    return true;
}

LineRange PastView::HeldLines() const {
    LineRange held;
    for (const auto& drawer : m_board.Drawers()) {
        if (!CanShow(*drawer)) {
            continue;
        }
        for (GraphValue* const value : drawer->Recorder().Values()) {
            held = Union(held, RingHistory(*value).Lines());
        }
    }
    return held;
}

History* PastView::HistoryOf(GraphValue* value) {
    return value == nullptr ? nullptr : &m_buffers.try_emplace(value, *value).first->second;
}

ShownHistory PastView::HistoryOf(const GraphDraw& drawer) {
    const WavoGraph& graph = drawer.Graph();
    ShownHistory history{{}, nullptr, m_window.Seen(), m_origin};
    OpenRecording* const recording = m_session.Recording();
    for (std::size_t i = 0; i < graph.YCoorAxName.size(); ++i) {
        history.y.push_back(
            recording != nullptr
                ? recording->StreamOf(graph.YCoorAxName[i], std::max(0, graph.YCoorAxDerivation[i]))
                : HistoryOf(drawer.Recorder().Taken(i).value));
    }
    if (!IsOverTime(drawer)) {
        history.x = recording != nullptr
                        ? recording->StreamOf(graph.XCoorAxName, 0)
                        : HistoryOf(drawer.Recorder().Taken(graph.YCoorAxName.size()).value);
    }
    return history;
}

// ---- moving ----

void PastView::Apply() {
    for (const auto& drawer : m_board.Drawers()) {
        if (CanShow(*drawer)) {
            drawer->ShowHistory(HistoryOf(*drawer));
        }
    }
    m_changed();
}

void PastView::ApplyAndDraw() {
    m_status.LeavePlace();
    Apply();
    m_screen.DrawAndShow();
}

template <typename Change>
bool PastView::Do(Change change) {
    if (!Begin(SelectedGraph())) {
        return false;
    }
    change();
    ApplyAndDraw();
    return true;
}

bool PastView::ZoomAt(const QPoint& point, double factor) {
    const GraphDraw* const drawer = GraphAt(point);
    if (!Begin(drawer)) {
        return false;
    }
    const QRect& plot = drawer->PlotArea();
    double place = 0.5;
    if (IsOverTime(*drawer) && plot.width() > 1) {
        place = std::clamp((point.x() - plot.left()) / (plot.width() - 1.0), 0.0, 1.0);
    }
    m_window.Zoom(place, factor);
    ApplyAndDraw();
    return true;
}

bool PastView::ZoomInMiddle(double factor) {
    return Do([&] { m_window.Zoom(0.5, factor); });
}

bool PastView::MoveBy(double windows) {
    return Do([&] { m_window.Move(windows); });
}

bool PastView::MoveToBegin() {
    return Do([&] {
        TakeInNews();
        m_window.MoveToBegin();
    });
}

bool PastView::MoveToEnd() {
    return Do([&] {
        TakeInNews();
        m_window.MoveToEnd();
    });
}

bool PastView::Show(const LineRange& lines) {
    return Do([&] { m_window.Show(lines); });
}

bool PastView::ZoomTo(const TimeWindow& span) {
    if (!m_is_shown) {
        return false;
    }
    const double step = m_session.Values().CycleTime();
    const LineRange before = m_window.Seen();
    const auto line_at = [&](double time) {
        return before.begin + static_cast<std::int64_t>(std::llround(time / step));
    };
    m_window.Show({line_at(span.start), line_at(span.end) + 1});
    if (m_window.Seen() != before) {
        m_steps.push_back(before);
    }
    ApplyAndDraw();
    return true;
}

bool PastView::StepBack() {
    if (!m_is_shown) {
        return false;
    }
    if (!m_steps.empty()) {
        m_window.Show(m_steps.back());
        m_steps.pop_back();
    } else if (m_recording != nullptr) {
        m_window.Show(m_window.Held());
    } else {
        Leave();
        m_screen.DrawAndShow();
        return true;
    }
    ApplyAndDraw();
    return true;
}

void PastView::GoTo(std::int64_t line, const GraphDraw* unmarked_in) {
    if (unmarked_in == nullptr) {
        m_mark = line;
    } else if (!Begin(unmarked_in)) {
        return;
    }
    m_window.BringIn(line);
    ApplyAndDraw();
}

bool PastView::TakeInNews() {
    OpenRecording* const recording = m_session.Recording();
    if (recording == nullptr || recording != m_recording ||
        (!recording->Refresh() && recording->Lines() == m_window.Held())) {
        return false;
    }
    const bool was_all = m_window.IsAllSeen();
    m_window.SetHeld(recording->Lines());
    if (was_all) {
        m_window.Show(m_window.Held());
    }
    m_session.CommandsChanged();  // it may have come to its end
    return true;
}

void PastView::Refresh(bool follow) {
    if (m_session.Recording() == nullptr) {
        return;
    }
    const bool has_lost_lines = HasLostLines();
    if (has_lost_lines) {
        m_losses = m_session.Recording()->Reader().Versions().losses;
    }
    if (TakeInNews() || has_lost_lines) {
        if (follow) {
            m_window.MoveToEnd();
        }
        Apply();
        m_screen.DrawAndShow();
    }
    m_status.TellNews();
}

bool PastView::BeginDrag(const QPoint& point) {
    const GraphDraw* const drawer = GraphAt(point);
    if (drawer == nullptr || !IsOverTime(*drawer) || !Begin(drawer)) {
        return false;
    }
    m_drag = Drag{point, m_window.Seen(), std::max(1, drawer->PlotArea().width() - 1)};
    return true;
}

bool PastView::DragTo(const QPoint& point) {
    if (!m_drag || !m_is_shown) {
        return false;
    }
    // What is under the pointer stays there.
    const double lines = static_cast<double>(m_drag->seen.Count() - 1) *
                         (m_drag->from.x() - point.x()) / m_drag->width;
    const std::int64_t begin = m_drag->seen.begin + std::llround(lines);
    m_window.Show({begin, begin + m_drag->seen.Count()});
    ApplyAndDraw();
    return true;
}

// ---- drawing ----

void PastView::OnDrawn() {
    if (m_session.Recording() != nullptr) {
        m_session.Recording()->Budget().Renew(kFrameBudget);
        if (m_session.Recording()->Reader().Notices().size() != m_notices) {
            m_notices = m_session.Recording()->Reader().Notices().size();
            m_status.TellNews();
        }
    }
    if (!m_board.IsExact() || HasLostLines()) {
        PostGoOn();
    }
}

void PastView::PostGoOn() {
    if (m_is_going_on || !m_screen.IsSeen()) {
        return;
    }
    m_is_going_on = true;
    QMetaObject::invokeMethod(
        &m_screen.Widget(), [this] { GoOn(); }, Qt::QueuedConnection);
}

bool PastView::HasLostLines() const {
    return m_recording != nullptr && m_recording == m_session.Recording() &&
           m_session.Recording()->Reader().Versions().losses != m_losses;
}

void PastView::GoOn() {
    m_is_going_on = false;
    if (m_screen.IsDrawing()) {
        return;
    }
    if (HasLostLines()) {
        Refresh(false);
    } else if (!m_board.IsExact()) {
        m_screen.DrawAndShow();
    }
}

void PastView::AllowAll() {
    if (m_session.Recording() != nullptr) {
        m_session.Recording()->Budget().Renew(ReadingBudget::kUnlimited);
    }
}

void PastView::PaintMarks(QPainter& painter) {
    const ColorRef background = m_session.Settings().Current().background;
    for (const auto& drawer : m_board.Drawers()) {
        if (!drawer->Past().has_value()) {
            continue;
        }
        if (!drawer->IsExact()) {
            PaintNotExact(painter, *drawer, background);
        }
        if (m_mark && IsOverTime(*drawer)) {
            PaintPlace(painter, *drawer, *m_mark, background);
        }
    }
}

}  // namespace wavo
