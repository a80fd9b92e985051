#include "view/wavo_view.h"

#include <QPaintEvent>
#include <QPainter>

#include "support/diagnostics.h"
#include "ui/dialogs/app_messages.h"
#include "ui/dialogs/message_boxes.h"

namespace wavo {

namespace {

constexpr char kNoMessageWindow[] = "No messages from a master can arrive, see the error log";

}  // namespace

CWavoView::CWavoView(QWidget* parent)
    : QWidget(parent),
      m_board(*this, [this](const std::string& text) { ShowError(text); }),
      m_editor(this),
      m_cycle(m_pump, m_board, m_editor, *this, m_value_lock) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(200, 80);
}

CWavoView::~CWavoView() {
    m_cycle.End();
}

void CWavoView::OnInitialUpdate() {
    _MTrace_SetLevel("default", 1);
    _MTrace_SetLevel("default", static_cast<unsigned>(m_settings.trace_level));
    m_ready_for_painting = true;
    m_editor.SetAcquisitionRuns(m_cycle.IsRunning());
    {
        const std::lock_guard guard(m_value_lock);
        RebuildGraphs();  // without a master too there is something to see
    }
    if (OpenMessageWindow()) {
        m_cycle.Connect(true);
    }
}

bool CWavoView::OpenMessageWindow() {
    if (m_pump.OwnWindow() != 0 ||
        m_pump.Open([this](const platform::Message& message) { return m_cycle.OnMessage(message); },
                    [this](platform::WindowHandle window) { m_cycle.OnPeerGone(window); })) {
        return true;
    }
    SetPaneText(StatusPane::kMessage, kNoMessageWindow);
    return false;
}

void CWavoView::OnClose() {
    m_cycle.End();
}

void CWavoView::Start() {
    m_cycle.SetRunning(true);
    m_restart = true;
    ShowRunTitle();
    m_editor.SetAcquisitionRuns(true);
    m_board.EnableBuffers();
    // At once: a restart that waited for the next batch would throw that batch away.
    DrawAndShow();
    emit CommandsChanged();
}

void CWavoView::Stop() {
    m_cycle.SetRunning(false);
    ShowRunTitle();
    m_editor.SetAcquisitionRuns(false);
    emit CommandsChanged();
}

void CWavoView::ConnectMachineData() {
    if (OpenMessageWindow()) {
        m_cycle.ConnectByUser();
    } else {
        ShowError(kNoMessageWindow);
    }
}

bool CWavoView::event(QEvent* event) {
    if (event->type() == AppMessageEvent::EventType()) {
        auto* const message = static_cast<AppMessageEvent*>(event);
        message->SetResult(OnAppMessage(message->number()));
        return true;
    }
    return QWidget::event(event);
}

std::int64_t CWavoView::OnAppMessage(AppMessage number) {
    switch (number) {
        case AppMessage::kEditorClosed:
        case AppMessage::kGraphChanged: {
            const std::lock_guard guard(m_value_lock);
            RebuildGraphs();
            return 1;
        }
        case AppMessage::kSaveValues:
        case AppMessage::kZoomOut:
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
    if (!m_ready_for_painting || m_picture.IsEmpty()) {  // nothing was drawn yet
        painter.fillRect(event->rect(), ToQColor(m_settings.background));
        return;
    }
    m_picture.CopyTo(painter, event->rect());
}

void CWavoView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_picture.Resize(size(), devicePixelRatioF());
    m_board.Layout(rect());
    DrawAndShow();
}

void CWavoView::DrawAndShow() {
    if (m_ready_for_painting && !m_picture.IsEmpty()) {
        if (m_picture.Image().devicePixelRatio() != devicePixelRatioF()) {
            m_picture.Resize(size(), devicePixelRatioF());  // moved to another screen
        }
        m_drawing = true;
        m_picture.Draw(m_board, m_settings.background, m_restart);
        m_restart = false;
        m_drawing = false;
        if (isVisible()) {
            repaint();
        }
    }
    m_cycle.SendPendingReady();
}

void CWavoView::DrawNewValues() {
    DrawAndShow();
    emit BatchShown(m_cycle.TotalLines());
}

void CWavoView::RebuildGraphs() {
    {
        const std::lock_guard guard(m_graph_lock);
        m_board.CreateAllGraphRects(rect(), m_cycle.CycleTime(), m_cycle.AxisNames(), m_settings);
    }
    DrawAndShow();
}

void CWavoView::ShowRunTitle() {
    emit FrameTitleChanged(QString::fromStdString(
        m_document_name + (m_cycle.IsRunning() ? " - running" : " - stopped")));
}

void CWavoView::ShowError(const std::string& text) {
    ShowErrorBox(this, text);
}

void CWavoView::SetPaneText(StatusPane pane, const std::string& text) {
    emit PaneTextChanged(pane, QString::fromStdString(text));
}

void CWavoView::LinkChanged() {
    emit CommandsChanged();
}

void CWavoView::EndProcess() {
    emit QuitRequested();
}

void CWavoView::RecordingEnded() {
    SendAppMessage(window(), AppMessage::kRecordingEnded, 0, 0);
    emit CommandsChanged();
}

}  // namespace wavo
