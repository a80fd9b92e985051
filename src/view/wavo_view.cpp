#include "view/wavo_view.h"

#include <QCoreApplication>
#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <map>
#include <utility>

#include "platform/folders.h"
#include "platform/last_error.h"
#include "support/diagnostics.h"
#include "support/diagnostics_output.h"
#include "ui/dialogs/add_text.h"
#include "ui/dialogs/app_messages.h"
#include "ui/dialogs/message_boxes.h"
#include "ui/dialogs/wavo_properties.h"
#include "view/view_settings_file.h"

namespace wavo {

namespace {

constexpr char kNoMessageWindow[] = "No messages from a master can arrive, see the error log";

constexpr char kSettingsFile[] = "wavo.ini";

/// The settings file of a viewer without a graph file; empty, with an error-log entry, when there
/// is no data folder.
std::string DefaultSettingsFile() {
    const std::string folder = platform::DataFolder();
    if (folder.empty()) {
        MERRLOG("GetCommonAppDataFolder() failed %s",
                platform::ErrorText(platform::LastError()).c_str());
        return {};
    }
    return folder + platform::PathSeparator() + kSettingsFile;
}

}  // namespace

CWavoView::CWavoView(QWidget* parent)
    : QWidget(parent),
      m_board(*this, [this](const std::string& text) { ShowError(text); }),
      m_editor(std::make_unique<CAxSelect>(this, this)),
      m_cycle(m_pump, m_board, *m_editor, *this, m_value_lock),
      m_files(m_cycle, m_board, *this),
      m_data_export(m_board, *this),
      m_file_commands(m_files, m_board, m_cycle, *this, m_value_lock),
      m_run_control(m_cycle, m_board, *m_editor, *this),
      m_mouse(m_board, *this),
      m_keys(m_board, *this),
      m_printer({[this] { return m_picture.Image(); }, [this] { return GraphArea(); },
                 [this] { return m_settings.background; }}) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(200, 80);
    m_editor->hide();
    m_editor->SetAxisLimits(&m_cycle.Capabilities());
    connect(m_editor.get(), &CAxSelect::SelectionReset, this, [this] { m_zoom_history.Clear(); });
}

CWavoView::~CWavoView() {
    diagnostics::SetLogFaultHandler(nullptr);
    m_cycle.End();
}

void CWavoView::OnInitialUpdate(const std::string& graph_file) {
    _MTrace_SetLevel("default", 1);
    ReadSettings();
    SetTraceLevel();
    if (!graph_file.empty()) {  // as when it is opened
        m_files.SetCurrentPath(graph_file);
        m_file_commands.ReadSettings(graph_file);
    }
    m_ready_for_painting = true;
    ShowOrHideGraphEditor(m_settings.show_graph_editor);
    m_editor->SetAcquisitionRuns(m_cycle.IsRunning());
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
    Q_EMIT CommandsChanged();  // there is a current file, even when it could not be read
    if (m_settings_unwritten) {
        ShowSettingsFault(m_settings_file);
    }
    diagnostics::SetLogFaultHandler([this](const std::string& path) { ShowLogFault(path); });
}

void CWavoView::ReadSettings() {
    m_settings_file = DefaultSettingsFile();
    if (m_settings_file.empty()) {
        m_settings = DefaultViewSettings();
        m_settings_unwritten = true;
        return;
    }
    m_settings_unwritten = !ReadProperties(m_settings_file, m_settings);
}

void CWavoView::SetTraceLevel() const {
    _MTrace_SetLevel("default", static_cast<unsigned>(std::max(0, m_settings.trace_level)));
}

void CWavoView::SaveSettings() {
    const std::string file = m_settings_file.empty() ? DefaultSettingsFile() : m_settings_file;
    if (file.empty() || !WriteProperties(file, m_settings)) {
        ShowSettingsFault(file);
    }
}

void CWavoView::ShowSettingsFault(const std::string& path) {
    ShowWriteFault(path.empty() ? kSettingsFile : path);
}

void CWavoView::ShowLogFault(const std::string& path) {
    Q_EMIT PaneTextChanged(StatusPane::kMessage,
                           QString::fromStdString("Cannot write the log " + path));
}

void CWavoView::ShowWriteFault(const std::string& path) {
    // Until the next news; what is known of the link is not forgotten.
    const std::string lost_log = diagnostics::LostErrorLog();
    const std::string where = lost_log.empty() ? ", see the error log" : " nor the log " + lost_log;
    Q_EMIT PaneTextChanged(StatusPane::kMessage,
                           QString::fromStdString("Cannot write " + path + where));
}

void CWavoView::ShowAxesLeftOut(const std::string& path) {
    Q_EMIT PaneTextChanged(
        StatusPane::kMessage,
        QString::fromStdString("Axes with names that cannot stand in a file were left out of " +
                               path + ", see the error log"));
}

bool CWavoView::OpenMessageWindow() {
    if (m_pump.OwnWindow() != 0 ||
        m_pump.Open([this](const platform::Message& message) { return m_cycle.OnMessage(message); },
                    [this](platform::WindowHandle window) { m_cycle.OnPeerGone(window); },
                    [this](platform::WindowHandle window, const char* why) {
                        m_cycle.OnPeerRefused(window, why);
                    })) {
        return true;
    }
    SetPaneText(StatusPane::kMessage, kNoMessageWindow);
    return false;
}

void CWavoView::OnClose() {
    m_data_export.Cancel();
    m_cycle.End();
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
    const bool editor_was_wanted = m_settings.show_graph_editor;
    m_settings = settings;
    SaveSettings();
    SetTraceLevel();
    {
        const std::lock_guard guard(m_value_lock);
        RebuildGraphs();
    }
    if (!editor_was_wanted && m_settings.show_graph_editor) {
        ShowGraphEditor();
    } else if (editor_was_wanted && !m_settings.show_graph_editor) {
        PostAppMessage(m_editor.get(), AppMessage::kCloseEditor, 0, 0);
    }
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
        message->SetResult(OnAppMessage(*message));
        return true;
    }
    return QWidget::event(event);
}

std::int64_t CWavoView::OnAppMessage(const AppMessageEvent& message) {
    switch (message.number()) {
        case AppMessage::kEditorClosed:
            ShowOrHideGraphEditor(false);
            [[fallthrough]];
        case AppMessage::kGraphChanged: {
            const std::lock_guard guard(m_value_lock);
            RebuildGraphs();
            return 1;
        }
        case AppMessage::kSaveValues:
            // NOLINTNEXTLINE(performance-no-int-to-ptr): what a message carries is a number
            return m_data_export.OnSaveValues(reinterpret_cast<const WavoGraph*>(message.lParam()));
        case AppMessage::kZoomOut:
            ZoomOut(static_cast<std::uint32_t>(message.lParam()));
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
    if (!m_ready_for_painting || m_picture.IsEmpty()) {  // nothing was drawn yet
        painter.fillRect(event->rect(), ToQColor(m_settings.background));
    } else {
        m_picture.CopyTo(painter, event->rect());
        PaintBands(painter, m_board, m_settings.background);
    }
    if (m_shows_focus && hasFocus()) {
        PaintFocus(painter, GraphArea(), m_settings.background);
    }
}

void CWavoView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_picture.Resize(size(), devicePixelRatioF());
    LayOut();
    DrawAndShow();
}

QRect CWavoView::GraphArea() const {
    QRect area = rect();
    if (IsGraphEditorShown()) {
        area.setTop(std::min(m_editor->y() + m_editor->height() + 1, height()));
    }
    return area;
}

BandText CWavoView::AdditionalText() const {
    return {m_files.AdditionalText(), m_settings.font, ComplementColor(m_settings.background)};
}

QRect CWavoView::AreaAboveText() {
    QRect area = GraphArea();
    if (!m_files.AdditionalText().empty() && !m_picture.IsEmpty()) {
        area.setBottom(std::min(area.bottom(), m_picture.EndOfGraphs(AdditionalText()) - 1));
    }
    return area;
}

void CWavoView::LayOut() {
    if (IsGraphEditorShown()) {
        m_editor->setGeometry(0, 0, width(), m_editor->heightForWidth(width()));
    }
    const std::lock_guard guard(m_graph_lock);
    m_laid_out = AreaAboveText();
    m_board.Layout(m_laid_out);
    m_picture.Invalidate();
}

void CWavoView::ShowOrHideGraphEditor(bool show) {
    m_editor->setVisible(show);
    LayOut();
    Q_EMIT CommandsChanged();
}

void CWavoView::ShowGraphEditor() {
    ShowOrHideGraphEditor(true);
    DrawAndShow();
}

void CWavoView::DrawAndShow() {
    if (m_ready_for_painting && !m_picture.IsEmpty()) {
        if (m_picture.Image().devicePixelRatio() != devicePixelRatioF()) {
            m_picture.Resize(size(), devicePixelRatioF());  // moved to another screen
        }
        if (AreaAboveText() != m_laid_out) {
            LayOut();  // there is another text, or none
        }
        const bool could_start = m_run_control.CanStartAfterTrigger();
        m_drawing = true;
        m_picture.Draw(m_board, m_settings.background, m_restart, AdditionalText());
        m_restart = false;
        m_drawing = false;
        if (m_run_control.CanStartAfterTrigger() != could_start) {
            Q_EMIT CommandsChanged();  // a trigger has stopped a graph
        }
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
    // Changes that were announced before are in the graphs that are made now. Made once more after
    // its trigger has stopped it, a graph would get no values.
    QCoreApplication::removePostedEvents(this, AppMessageEvent::EventType());
    m_editor->SetBackground(m_settings.background);
    ClearZoomHistory();
    m_mouse.Cancel();
    m_keys.Cancel();
    {
        const std::lock_guard guard(m_graph_lock);
        m_laid_out = AreaAboveText();
        m_board.CreateAllGraphRects(m_laid_out, m_cycle.CycleTime(), m_cycle.AxisNames(),
                                    m_settings);
        m_picture.Invalidate();
    }
    m_run_control.OnGraphsRebuilt();
    DrawAndShow();
    Q_EMIT CommandsChanged();
}

void CWavoView::ClearZoomHistory() {
    m_zoom_history.Clear();
    m_editor->SetZooms({});
}

std::vector<GraphDraw*> CWavoView::ZoomedTogether(const GraphDraw& drawer) const {
    std::vector<GraphDraw*> together;
    for (const auto& other : m_board.Drawers()) {
        const bool over_time = other->Graph().XCoorType == CoorType::kTime;
        if (over_time && (other.get() == &drawer || m_editor->AllGraphs())) {
            together.push_back(other.get());
        }
    }
    return together;
}

void CWavoView::ZoomGraph(std::size_t index, double start, double end) {
    const GraphDraw& drawer = *m_board.Drawers()[index];
    const TimeWindow span = drawer.ZoomSpanOf({start, end});
    for (GraphDraw* const graph : ZoomedTogether(drawer)) {
        ZoomState before = graph->Zoom();
        before.definition = graph->Graph();
        graph->SetZoomRange(span.start, span.end);
        if (!graph->Zoom().active || graph->Zoom().start != span.start ||
            graph->Zoom().end != span.end) {
            continue;  // refused, and reported
        }
        for (GraphValue* const value : graph->Values()) {
            value->MarkFirstRangeRequest();
        }
        m_zoom_history.Push(graph->Graph().GraphNumber, before);
    }
    TellZoom(drawer);
    DrawAndShow();
    Q_EMIT CommandsChanged();  // a zoomed graph leaves the state that its trigger brought it to
}

void CWavoView::ZoomOut(std::uint32_t graph_number) {
    const auto& drawers = m_board.Drawers();
    const auto drawer = std::find_if(drawers.begin(), drawers.end(), [&](const auto& graph) {
        return graph->Graph().GraphNumber == graph_number;
    });
    if (drawer == drawers.end() || m_zoom_history.IsEmpty()) {
        return;
    }
    for (GraphDraw* const graph : ZoomedTogether(**drawer)) {
        if (const std::optional<ZoomState> before =
                m_zoom_history.Pop(graph->Graph().GraphNumber)) {
            graph->RestoreZoom(*before);
        }
    }
    TellZoom(**drawer);
    DrawAndShow();
}

// The editor shows how long a span is seen; it is not to be edited while that is a zoom.
void CWavoView::TellZoom(const GraphDraw& drawer) {
    const ZoomState& zoom = drawer.Zoom();
    const GraphAndTime shown{drawer.Graph().GraphNumber,
                             zoom.active ? zoom.end - zoom.start : drawer.Graph().XScale.TimeRange};
    SendAppMessage(m_editor.get(), AppMessage::kSelectGraphAndTime, 0,
                   reinterpret_cast<std::int64_t>(&shown));
    std::map<std::uint32_t, double> spans;
    for (const auto& other : m_board.Drawers()) {
        if (other->Zoom().active) {
            spans[other->Graph().GraphNumber] = other->Zoom().end - other->Zoom().start;
        }
    }
    m_editor->SetZooms(std::move(spans));
}

void CWavoView::ShowRunTitle() {
    Q_EMIT FrameTitleChanged(QString::fromStdString(
        m_files.DocumentName() + (m_cycle.IsRunning() ? " - running" : " - stopped")));
}

void CWavoView::ShowError(const std::string& text) {
    ShowErrorBox(this, text);
}

void CWavoView::SetPaneText(StatusPane pane, const std::string& text) {
    if (pane == StatusPane::kMessage) {
        m_link_text = text;
    }
    Q_EMIT PaneTextChanged(pane, QString::fromStdString(text));
}

void CWavoView::AddToRecentFiles(const std::string& path) {
    Q_EMIT RecentFileOpened(QString::fromStdString(path));
}

void CWavoView::LinkChanged() {
    Q_EMIT CommandsChanged();
}

void CWavoView::EndProcess() {
    m_data_export.Cancel();
    Q_EMIT QuitRequested();
}

void CWavoView::RecordingEnded() {
    SendAppMessage(window(), AppMessage::kRecordingEnded, 0, 0);
}

}  // namespace wavo
