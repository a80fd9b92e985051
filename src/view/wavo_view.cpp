#include "view/wavo_view.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>

#include "platform/folders.h"
#include "platform/last_error.h"
#include "support/diagnostics.h"
#include "ui/dialogs/add_text.h"
#include "ui/dialogs/app_messages.h"
#include "ui/dialogs/message_boxes.h"
#include "ui/dialogs/wavo_properties.h"
#include "view/view_settings_file.h"

namespace wavo {

namespace {

constexpr char kNoMessageWindow[] = "No messages from a master can arrive, see the error log";

}  // namespace

CWavoView::CWavoView(QWidget* parent)
    : QWidget(parent),
      m_board(*this, [this](const std::string& text) { ShowError(text); }),
      m_editor(this),
      m_cycle(m_pump, m_board, m_editor, *this, m_value_lock),
      m_files(m_cycle, m_board, *this) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(200, 80);
}

CWavoView::~CWavoView() {
    m_cycle.End();
}

void CWavoView::OnInitialUpdate(const std::string& graph_file) {
    _MTrace_SetLevel("default", 1);
    ReadSettings();
    SetTraceLevel();
    m_ready_for_painting = true;
    m_editor.SetAcquisitionRuns(m_cycle.IsRunning());
    {
        const std::lock_guard guard(m_value_lock);
        RebuildGraphs();  // something to see until a master and a graph file are there
    }
    if (OpenMessageWindow()) {
        m_cycle.Connect(true);
    }
    const std::string& file = graph_file.empty() ? m_settings_file : graph_file;
    if (!file.empty()) {
        MTRACE(1, "CWavoView::OnInitialUpdate(): read graph ini. file %s", file.c_str());
        m_files.Open(file, FileNameOf(file), true);
    }
}

void CWavoView::ReadSettings() {
    const std::string folder = platform::DataFolder();
    if (folder.empty()) {
        MERRLOG("GetCommonAppDataFolder() failed %s",
                platform::ErrorText(platform::LastError()).c_str());
        m_settings = DefaultViewSettings();
        return;
    }
    m_settings_file = folder + platform::PathSeparator() + "wavo.ini";
    ReadProperties(m_settings_file, m_settings);
}

void CWavoView::SetTraceLevel() const {
    _MTrace_SetLevel("default", static_cast<unsigned>(std::max(0, m_settings.trace_level)));
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

bool CWavoView::IsEnabled(CommandId id) const {
    if (id == CommandId::kConnect) {
        return m_cycle.CanConnect();
    }
    if (id == CommandId::kStart || id == CommandId::kStop) {
        return m_cycle.IsRunning() == (id == CommandId::kStop);
    }
    return id == CommandId::kProperties || id == CommandId::kAdditionalText;
}

bool CWavoView::IsChecked(CommandId) const {
    return false;
}

void CWavoView::Execute(CommandId id) {
    if (!IsEnabled(id)) {
        return;
    }
    if (id == CommandId::kConnect) {
        ConnectMachineData();
    } else if (id == CommandId::kStart) {
        Start();
    } else if (id == CommandId::kStop) {
        Stop();
    } else if (id == CommandId::kProperties) {
        EditProperties();
    } else if (id == CommandId::kAdditionalText) {
        EditAdditionalText();
    }
}

void CWavoView::Start() {
    m_cycle.SetRunning(true);
    m_restart = true;
    ShowRunTitle();
    m_editor.SetAcquisitionRuns(true);
    m_board.EnableBuffers();
    // At once: a restart that waited for the next batch would throw that batch away.
    DrawAndShow();
    Q_EMIT CommandsChanged();
}

void CWavoView::Stop() {
    m_cycle.SetRunning(false);
    ShowRunTitle();
    m_editor.SetAcquisitionRuns(false);
    Q_EMIT CommandsChanged();
}

void CWavoView::ConnectMachineData() {
    if (OpenMessageWindow()) {
        m_cycle.ConnectByUser();
    } else {
        ShowError(kNoMessageWindow);
    }
}

void CWavoView::EditProperties() {
    ViewSettings settings = m_settings;
    if (CWavoProperties(settings, this).exec() != QDialog::Accepted) {
        return;
    }
    m_settings = settings;
    WriteProperties(m_settings_file, m_settings);
    SetTraceLevel();
    const std::lock_guard guard(m_value_lock);
    RebuildGraphs();
}

void CWavoView::EditAdditionalText() {
    std::string text = m_files.AdditionalText();
    if (CAddText(text, this).exec() == QDialog::Accepted) {
        m_files.SetAdditionalText(text);
        DrawAndShow();
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
        m_picture.Draw(
            m_board, m_settings.background, m_restart,
            {m_files.AdditionalText(), m_settings.font, ComplementColor(m_settings.background)});
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
    Q_EMIT BatchShown(m_cycle.TotalLines());
}

void CWavoView::RebuildGraphs() {
    {
        const std::lock_guard guard(m_graph_lock);
        m_board.CreateAllGraphRects(rect(), m_cycle.CycleTime(), m_cycle.AxisNames(), m_settings);
        m_picture.Invalidate();
    }
    DrawAndShow();
}

void CWavoView::ShowRunTitle() {
    Q_EMIT FrameTitleChanged(QString::fromStdString(
        m_files.DocumentName() + (m_cycle.IsRunning() ? " - running" : " - stopped")));
}

void CWavoView::ShowError(const std::string& text) {
    ShowErrorBox(this, text);
}

void CWavoView::SetPaneText(StatusPane pane, const std::string& text) {
    Q_EMIT PaneTextChanged(pane, QString::fromStdString(text));
}

void CWavoView::AddToRecentFiles(const std::string& path) {
    Q_EMIT RecentFileOpened(QString::fromStdString(path));
}

void CWavoView::LinkChanged() {
    Q_EMIT CommandsChanged();
}

void CWavoView::EndProcess() {
    Q_EMIT QuitRequested();
}

void CWavoView::RecordingEnded() {
    SendAppMessage(window(), AppMessage::kRecordingEnded, 0, 0);
    Q_EMIT CommandsChanged();
}

}  // namespace wavo
