#include "view/wavo_view.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <functional>
#include <utility>

#include "view/cursor_overlay.h"
#include "view/view_access.h"
#include "view/zoom_band.h"

namespace wavo {

namespace {

GraphCursors::BringIn BringerInto(PastView& past) {
    return [&past](const GraphDraw& graph, std::int64_t line) { past.GoTo(line, &graph); };
}

std::function<PlotSize(std::uint32_t)> PlotSizesOf(const GraphBoard& board) {
    return [&board](std::uint32_t number) {
        const GraphDraw* const drawer = board.Find(number);
        return drawer == nullptr
                   ? PlotSize()
                   : PlotSize{drawer->PlotArea().width(), drawer->PlotArea().height()};
    };
}

}  // namespace

CWavoView::CWavoView(const Prompts& prompts, QWidget* parent, std::unique_ptr<ValueSource> source)
    : QWidget(WithAccessibleGraphs(parent)),
      m_source(std::move(source)),
      m_editor(std::make_unique<CAxSelect>(this, prompts, this,
                                           [this] {
                                               if (m_is_made) {
                                                   m_display.OnGraphShown();
                                               }
                                           })),
      m_display({*this, m_news, *m_editor, m_session, m_board, m_screen, m_past, m_zooms, m_mouse,
                 m_keys, m_data_export, m_measurements, prompts}),
      m_session(*m_source, m_board, m_display),
      m_board(m_session.Graphs(), m_session.Streams(),
              [this] { SendAppMessage(window(), AppMessage::kRecordingEnded, 0, 0); }),
      m_screen(*this, *m_editor, m_session, m_board, [this] { m_session.CommandsChanged(); }),
      m_past({*this, m_session, m_board, m_screen, *m_editor, m_zooms, m_news, prompts}),
      m_zooms(m_board, *m_editor, m_screen, m_session.Values(),
              [this] { m_session.CommandsChanged(); }),
      m_mouse(m_board, m_zooms),
      m_keys(m_board, m_zooms),
      m_cursors(
          m_board, m_zooms, [this] { return m_session.Values().IsRunning(); },
          BringerInto(m_past.Window()),
          [this] {
              update();
              Q_EMIT m_news.MeasureChanged();
          }),
      m_measurements(m_session, m_board, m_cursors, m_zooms),
      m_cursor_input({m_board, m_cursors, m_measurements, m_zooms, m_past, *this}),
      m_data_export(m_board, {m_session.Settings().Current().export_settings,
                              [this] { m_session.SaveSettings(); },
                              [this](const std::string& path) { m_session.ShowWriteFault(path); },
                              [this] { return window(); }, prompts}),
      m_printer({[this] { return m_screen.Picture(); }, [this] { return m_screen.GraphArea(); },
                 [this] { return m_session.Settings().Current().background; },
                 [this] {
                     return CursorsOver(m_screen.Picture(), m_board, m_cursors,
                                        m_session.Settings().Current().background);
                 }},
                prompts),
      m_commands(m_session, m_screen, *m_editor, m_printer, prompts, *this) {
    m_is_made = true;
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(200, 80);
    setMouseTracking(true);
    setAccessibleName(QStringLiteral("Graphs"));
    setAccessibleDescription(QStringLiteral("The curves of the values that the master sends"));
    MakeGraphsAccessible(*this);
    m_editor->hide();
    m_zooms.SetPast(&m_past.Window());
    m_editor->SetAxisLimits(&m_session.Source().Limits());
    m_editor->SetPlotSizes(PlotSizesOf(m_board));
    connect(m_editor.get(), &CAxSelect::SelectionReset, this, [this] { m_zooms.Clear(); });
    connect(&m_news, &ViewNews::BatchShown, this, [this] { m_cursors.Renew(); });
}

CWavoView::~CWavoView() {
    m_session.End();
}

void CWavoView::OnInitialUpdate(const std::string& graph_file) {
    m_session.ReadSettings(graph_file);
    m_screen.Begin();
    ShowEditor(m_session.Settings().Current().show_graph_editor);
    m_editor->SetAcquisitionRuns(m_session.Values().IsRunning());
    m_session.Begin(graph_file);
}

void CWavoView::OnClose() {
    m_past.Search().Cancel();
    m_data_export.Cancel();
    m_session.End();
}

void CWavoView::ShowEditor(bool show) {
    m_screen.ShowEditor(show);
    m_session.CommandsChanged();
}

bool CWavoView::event(QEvent* event) {
    if (event->type() == AppMessageEvent::EventType()) {
        auto* const message = static_cast<AppMessageEvent*>(event);
        message->SetResult(OnAppMessage(*message));
        return true;
    }
    if (event->type() == QEvent::KeyPress && hasFocus()) {
        // Before it takes the keyboard elsewhere.
        const auto& key = *static_cast<QKeyEvent*>(event);
        const bool is_tab = key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab;
        if (is_tab && m_cursor_input.KeyPress(key.key(), key.modifiers())) {
            event->accept();
            return true;
        }
    }
    const bool is_of_past =
        event->type() == QEvent::Wheel || event->type() == QEvent::WindowActivate;
    return (is_of_past && m_past.TakeEvent(*event)) || QWidget::event(event);
}

std::int64_t CWavoView::OnAppMessage(const AppMessageEvent& message) {
    switch (message.number()) {
        case AppMessage::kEditorClosed:
            ShowEditor(false);
            [[fallthrough]];
        case AppMessage::kGraphChanged:
            m_session.RebuildGraphs();
            return 1;
        case AppMessage::kSaveValues:
            // NOLINTNEXTLINE(performance-no-int-to-ptr): what a message carries is a number
            return m_data_export.OnSaveValues(reinterpret_cast<const WavoGraph*>(message.lParam()));
        case AppMessage::kZoomOut:
            m_zooms.ZoomOut(static_cast<std::uint32_t>(message.lParam()));
            return 1;
        case AppMessage::kCloseEditor:
        case AppMessage::kSelectGraph:
        case AppMessage::kSelectGraphAndTime:
        case AppMessage::kRecordingEnded:
            break;  // not meant for the view
    }
    return 0;
}

void CWavoView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    m_screen.Expose(painter, event->rect());
    m_cursors.Renew();
    PaintCursors(painter, m_board, m_cursors, m_session.Settings().Current().background);
    if (m_shows_focus && hasFocus()) {
        PaintFocus(painter, m_screen.GraphArea(), m_session.Settings().Current().background);
    }
}

void CWavoView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_screen.Resize();
    m_screen.DrawAndShow();
}

void CWavoView::focusInEvent(QFocusEvent* event) {
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        m_shows_focus = true;
    }
    QWidget::focusInEvent(event);
}

void CWavoView::mousePressEvent(QMouseEvent* event) {
    m_keys.Cancel();
    if (m_shows_focus) {
        m_shows_focus = false;
        update();
    }
    const QPoint point = event->position().toPoint();
    if (event->button() == Qt::LeftButton &&
        m_cursor_input.LeftButtonDown(point, event->modifiers())) {
        return;
    }
    if (event->button() == Qt::LeftButton) {
        m_mouse.LeftButtonDown(point);
    } else if (!m_past.TakeEvent(*event) &&
               (event->button() != Qt::RightButton || !m_mouse.RightButtonDown(point))) {
        QWidget::mousePressEvent(event);
    }
}

void CWavoView::mouseMoveEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    if (event->buttons() == Qt::NoButton) {
        setCursor(m_cursor_input.IsOverCursor(point) ? Qt::SplitHCursor : Qt::ArrowCursor);
    } else if (!m_past.TakeEvent(*event) && !m_cursor_input.MouseMove(point)) {
        m_mouse.MouseMove(point);
    }
}

void CWavoView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && m_cursor_input.LeftButtonUp()) {
        return;
    }
    if (event->button() == Qt::RightButton) {
        m_mouse.RightButtonUp(event->position().toPoint());
    } else if (!m_past.TakeEvent(*event)) {
        QWidget::mouseReleaseEvent(event);
    }
}

void CWavoView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && m_mouse.IsDragging()) {
        m_mouse.Cancel();
    } else if (!m_cursor_input.KeyPress(event->key(), event->modifiers()) &&
               !m_keys.KeyPress(event->key(), event->modifiers()) && !m_past.TakeEvent(*event)) {
        QWidget::keyPressEvent(event);
    }
}

}  // namespace wavo
