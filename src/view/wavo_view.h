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

#include "ui/dialogs/app_messages.h"
#include "ui/dialogs/graph_editor.h"
#include "ui/dialogs/view_settings.h"
#include "view/acquisition_cycle.h"
#include "view/command_target.h"
#include "view/graph_board.h"
#include "view/graph_files.h"
#include "view/graph_picture.h"
#include "view/message_pump.h"

namespace wavo {

class CWavoView : public QWidget,
                  public CommandTarget,
                  private AcquisitionHost,
                  private GraphDrawHost,
                  private GraphFilesHost {
    Q_OBJECT

 public:
    explicit CWavoView(QWidget* parent = nullptr);
    ~CWavoView() override;

    /// The first update, once the frame stands: settings, trace level, link to the master, graphs.
    /// `graph_file` is the path of the graph file to open; empty: the settings file.
    void OnInitialUpdate(const std::string& graph_file = {});

    /// The frame closes: values that come later are ignored.
    void OnClose();

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override;
    [[nodiscard]] bool IsChecked(CommandId id) const override;
    void Execute(CommandId id) override;

    /// Where the commands of the recent files find them: the path of the newest for 0, of the one
    /// before for 1; empty when there is none.
    using RecentFileList = std::function<std::string(int index)>;
    void SetRecentFiles(RecentFileList recent_files) { m_recent_files = std::move(recent_files); }

    /// Commands of the run control and of the machine data menu.
    void Start();
    void Stop();
    void ConnectMachineData();

    /// Lets the user edit the settings. With OK they are written to the settings file and shown at
    /// once.
    void EditProperties();
    /// Lets the user edit the text below the graphs. With OK it is shown at once; it goes into the
    /// file with the graphs.
    void EditAdditionalText();

    [[nodiscard]] const AcquisitionCycle& Acquisition() const { return m_cycle; }
    [[nodiscard]] AxisLimitsSource& Capabilities() { return m_cycle.Capabilities(); }
    [[nodiscard]] GraphBoard& Board() { return m_board; }
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

    // GraphDrawHost
    void RecordingEnded() override;

    std::int64_t OnAppMessage(AppMessage number);
    /// Makes the window for the messages of a master, unless there is one. False on failure, which
    /// the status bar then shows.
    bool OpenMessageWindow();
    /// Reads the settings from their file, whose path stays empty when there is no data folder.
    void ReadSettings();
    void SetTraceLevel() const;
    /// One drawing step, shown at once where the view is visible; ends with the ready message
    /// that is owed.
    void DrawAndShow();

    ViewSettings m_settings;
    std::string m_settings_file;  // where the settings came from and go to
    std::recursive_mutex m_value_lock;
    std::recursive_mutex m_graph_lock;  // taken inside the value lock
    MessagePump m_pump;
    GraphBoard m_board;
    WindowlessGraphEditor m_editor;
    AcquisitionCycle m_cycle;
    GraphFiles m_files;
    GraphPicture m_picture;
    RecentFileList m_recent_files;
    bool m_ready_for_painting = false;  // set by OnInitialUpdate
    bool m_restart = false;             // the next drawing step starts all graphs anew
    bool m_drawing = false;
};

}  // namespace wavo
