// The view: the widget that shows all graphs and owns everything that feeds them.
//
// It holds no logic of its own beyond its events: the acquisition cycle takes the values, the
// board keeps the graphs, the picture is what is on the screen.
//
// Order after a batch: draw, show where visible, answer the master. A view that nobody sees draws
// and answers all the same.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ui/dialogs/app_messages.h"
#include "ui/dialogs/ax_select.h"
#include "ui/dialogs/view_settings.h"
#include "view/acquisition_cycle.h"
#include "view/command_target.h"
#include "view/data_export.h"
#include "view/file_commands.h"
#include "view/graph_board.h"
#include "view/graph_files.h"
#include "view/graph_picture.h"
#include "view/graph_printer.h"
#include "view/message_pump.h"
#include "view/run_control.h"
#include "view/view_keys.h"
#include "view/view_mouse.h"
#include "view/zoom_history.h"

namespace wavo {

class CWavoView : public QWidget,
                  public CommandTarget,
                  private AcquisitionHost,
                  private DataExportHost,
                  private FileCommandsHost,
                  private GraphDrawHost,
                  private GraphFilesHost,
                  private RunControlHost,
                  private ZoomHost {
    Q_OBJECT

 public:
    explicit CWavoView(QWidget* parent = nullptr);
    ~CWavoView() override;

    /// The first update, once the frame stands: settings, trace level, link to the master, graphs.
    /// `graph_file` is the path of the graph file to open, with the settings that it holds; empty:
    /// the settings file.
    void OnInitialUpdate(const std::string& graph_file = {});

    /// The frame closes: values that come later are ignored.
    void OnClose();

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override;
    void Execute(CommandId id) override;

    /// Where the commands of the recent files find them: the path of the newest for 0, of the one
    /// before for 1; empty when there is none.
    using RecentFileList = std::function<std::string(int index)>;
    void SetRecentFiles(RecentFileList recent_files) { m_recent_files = std::move(recent_files); }

    void ConnectMachineData();

    /// Lets the user edit the settings. With OK they are written to the settings file and shown at
    /// once.
    void EditProperties();
    /// Lets the user edit the text below the graphs. With OK it is shown at once; it goes into the
    /// file with the graphs.
    void EditAdditionalText();

    /// Shows the graph editor above the graphs.
    void ShowGraphEditor();
    [[nodiscard]] bool IsGraphEditorShown() const { return m_editor->isVisibleTo(this); }

    /// Zooms the drawn graph of an index (with the editor's `all graphs` every graph over time) to
    /// a span of its displayed time axis, seconds; in a swept picture to the samples that stand
    /// there. Nothing for a graph that is not over time.
    void ZoomGraph(std::size_t index, double start, double end);
    /// Steps the graph of a number (with `all graphs` every graph over time) back to the zoom
    /// before.
    void ZoomOut(std::uint32_t graph_number) override;

    [[nodiscard]] GraphPrinter& Printer() { return m_printer; }
    [[nodiscard]] const AcquisitionCycle& Acquisition() const { return m_cycle; }
    [[nodiscard]] AxisLimitsSource& Capabilities() { return m_cycle.Capabilities(); }
    [[nodiscard]] GraphBoard& Board() { return m_board; }
    [[nodiscard]] CAxSelect& Editor() { return *m_editor; }
    /// Where the graphs are drawn: below the editor.
    [[nodiscard]] QRect GraphArea() const;
    [[nodiscard]] platform::WindowHandle Window() const { return m_pump.OwnWindow(); }
    [[nodiscard]] const GraphFiles& Files() const { return m_files; }
    [[nodiscard]] const ViewSettings& Settings() const { return m_settings; }
    [[nodiscard]] const QImage& Picture() const { return m_picture.Image(); }

 Q_SIGNALS:
    /// A status bar pane has a new text.
    void PaneTextChanged(wavo::StatusPane pane, const QString& text);
    /// The frame has a new title.
    void FrameTitleChanged(const QString& title);
    /// What can be commanded may have changed.
    void CommandsChanged();
    /// A graph file was opened that belongs into the list of recent files.
    void RecentFileOpened(const QString& path);
    /// A batch was drawn and answered; `total` lines have been received.
    void BatchShown(quint64 total);
    /// The master told the viewer to end.
    void QuitRequested();

 protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

 private:
    // AcquisitionHost
    void ShowError(const std::string& text) override;
    void SetPaneText(StatusPane pane, const std::string& text) override;
    void RebuildGraphs() override;
    void DrawNewValues() override;
    [[nodiscard]] bool IsDrawing() const override { return m_drawing; }
    void ShowRunTitle() override;
    [[nodiscard]] ColorRef BackgroundColor() const override { return m_settings.background; }
    void LinkChanged() override;
    void EndProcess() override;

    // GraphFilesHost
    void AddToRecentFiles(const std::string& path) override;

    // DataExportHost
    [[nodiscard]] ExportSettings& CurrentExportSettings() override {
        return m_settings.export_settings;
    }
    void SaveSettings() override;
    [[nodiscard]] QWidget* ExportWindow() override { return window(); }
    // FileCommandsHost
    [[nodiscard]] ViewSettings& MutableSettings() override { return m_settings; }
    void ShowSettings() override;
    void ShowWriteFault(const std::string& path) override;
    void ShowAxesLeftOut(const std::string& path) override;
    void ShowNoGraphs() override;
    void ShowTitle(const std::string& title) override;
    void CurrentFileChanged() override;
    [[nodiscard]] QWidget* DialogParent() override { return this; }

    // RunControlHost
    void ForgetZooms() override { ClearZoomHistory(); }
    void LeaveZooms() override;
    void Redraw(bool restart) override;
    void ShowRunHint(const std::string& text) override;
    void RunStateChanged() override;

    // ZoomHost
    void SelectInEditor(std::uint32_t graph_number) override;
    [[nodiscard]] std::uint32_t SelectedInEditor() const override {
        return m_editor->SelectedNumber();
    }
    [[nodiscard]] bool IsZoomEnabled() const override { return m_editor->ZoomEnabled(); }
    [[nodiscard]] bool IsBusy() const override { return m_drawing; }
    [[nodiscard]] double TimeStep() const override { return m_cycle.CycleTime(); }
    void ZoomTo(std::uint32_t graph_number, const ZoomSpan& span) override;
    void UpdatePart(const QRect& part) override { update(part); }
    void RepaintPart(const QRect& part) override { repaint(part); }

    // GraphDrawHost
    void RecordingEnded() override;

    /// Path of a command of the recent files; empty when there is none.
    [[nodiscard]] std::string RecentFile(CommandId id) const;
    std::int64_t OnAppMessage(const AppMessageEvent& message);
    /// Puts the editor to the top and the graphs below it.
    void LayOut();
    [[nodiscard]] BandText AdditionalText() const;
    /// The graph area without the band of the additional text.
    [[nodiscard]] QRect AreaAboveText();
    void ShowOrHideGraphEditor(bool show);
    void ClearZoomHistory();
    void TellZoom(const GraphDraw& drawer);
    /// The drawers that a zoom of one of them is for.
    [[nodiscard]] std::vector<GraphDraw*> ZoomedTogether(const GraphDraw& drawer) const;
    /// Makes the window for the messages of a master, unless there is one. False on failure, which
    /// the status bar then shows.
    bool OpenMessageWindow();
    /// Reads the settings from their file, whose path stays empty when there is no data folder.
    void ReadSettings();
    void SetTraceLevel() const;
    /// Tells in the status bar that the settings are not in their file; `path` is empty when there
    /// is no folder for it.
    void ShowSettingsFault(const std::string& path);
    /// Tells in the status bar that reports are lost.
    void ShowLogFault(const std::string& path);
    /// One drawing step, shown at once where the view is visible; ends with the ready message
    /// that is owed.
    void DrawAndShow();

    ViewSettings m_settings;
    std::string m_settings_file;        // where the settings came from and go to
    bool m_settings_unwritten = false;  // a first start could not leave its settings behind
    std::string m_link_text;            // what the first status bar pane says of the master
    RecentFileList m_recent_files;
    std::recursive_mutex m_value_lock;
    std::recursive_mutex m_graph_lock;  // taken inside the value lock
    MessagePump m_pump;
    GraphBoard m_board;
    std::unique_ptr<CAxSelect> m_editor;  // a child; goes before the graphs that it refers to
    AcquisitionCycle m_cycle;
    GraphFiles m_files;
    DataExport m_data_export;
    FileCommands m_file_commands;
    RunControl m_run_control;
    ViewMouse m_mouse;
    ViewKeys m_keys;
    GraphPrinter m_printer;
    GraphPicture m_picture;
    QRect m_laid_out;  ///< where the graphs were placed last
    ZoomHistory m_zoom_history;
    bool m_ready_for_painting = false;  // set by OnInitialUpdate
    bool m_restart = false;             // the next drawing step starts all graphs anew
    bool m_drawing = false;
    bool m_shows_focus = false;  // the keyboard was brought here by keys
};

}  // namespace wavo
