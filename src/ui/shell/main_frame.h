// The main window: menus, tool bars and status bar around the view.
//
// Invariants:
// 1. What can be commanded is asked from the view whenever it may have changed, without waiting
//    for the event loop: when the view says so, and when a graph tells that its recording ended.
// 2. What the user arranged (look, place of the window, bars, recent files) is in the settings
//    when the window has closed.
#pragma once

#include <QMainWindow>
#include <memory>

#include "session/session_observer.h"
#include "ui/bars/bar_setup.h"
#include "ui/bars/command_actions.h"
#include "ui/bars/frame_menus.h"
#include "ui/bars/menu_dock.h"
#include "ui/bars/recent_files.h"
#include "ui/panes/axis_control.h"
#include "ui/panes/circle_control.h"
#include "ui/panes/measure_control.h"
#include "ui/panes/reference_control.h"
#include "ui/recording/recording_control.h"
#include "ui/shell/table_control.h"
#include "view/command_ids.h"
#include "view/value_sources.h"

class QLabel;
class QMenuBar;
class QSettings;
class QAction;

namespace wavo {

class ContextHelp;
class CWavoView;
struct Prompts;

class CMainFrame : public QMainWindow {
    Q_OBJECT

 public:
    /// `prompts` and `settings` are not owned and outlive the frame. Without settings nothing is
    /// remembered. `source` gives the values.
    explicit CMainFrame(const Prompts& prompts, QSettings* settings = nullptr,
                        std::unique_ptr<ValueSource> source = MakeSource(kMasterSource));
    ~CMainFrame() override;

    [[nodiscard]] CWavoView& View() { return *m_view; }

    /// The action of a command; null for one that has none.
    [[nodiscard]] QAction* Action(CommandId id) const { return m_actions.Find(id); }

    /// Looks for recorders that run, and shows them from now on.
    void ShowRecorders() { m_recording->Open(); }
    [[nodiscard]] TableControl& Tables() { return m_tables; }
    [[nodiscard]] RecordingControl& Recording() { return *m_recording; }
    [[nodiscard]] MeasureControl& Measure() { return *m_measure; }
    [[nodiscard]] CircleControl& Circle() { return *m_circle; }
    [[nodiscard]] AxisControl& Axis() { return *m_axis; }
    [[nodiscard]] ContextHelp& Help() { return *m_help; }
    [[nodiscard]] ReferenceControl& Reference() { return *m_reference; }

    /// Text of a status bar pane.
    [[nodiscard]] QString PaneText(StatusPane pane) const;

    /// What the tool bars and menus show now.
    [[nodiscard]] const BarSetup& Bars() const { return m_bars; }
    /// Shows and stores another arrangement.
    void SetBars(const BarSetup& bars);

    /// The menu bar. (The one of the base is another: it could not be dragged.)
    [[nodiscard]] QMenuBar* menuBar() const { return &m_menu_dock->Bar(); }

    /// Whether the window stands where the user left it at the last end.
    [[nodiscard]] bool HasStoredPlace() const { return m_has_stored_place; }

    /// The menu of looks that pops up over the status bar.
    [[nodiscard]] QMenu& LookMenu() { return m_menus.LookMenu(); }

    /// What a right click on a bar shows; owned by the caller.
    QMenu* createPopupMenu() override;

 protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    void ConnectView();
    void CreateStatusBar();
    void CreateRecording(const Prompts& prompts);
    void CreateMeasure(const Prompts& prompts);
    void ShowInPane(StatusPane pane, const QString& text);
    void RebuildToolBars();
    void RestoreLayout();
    void StoreLayout();
    void UpdateCommands();
    void ShowRecentFiles(CommandId command, const RecentFiles& files);
    void OnCommand(CommandId id);
    void ExecuteOwn(CommandId id);
    void SetLook(CommandId id);
    void Customize();
    void ShowAbout();

    QSettings* const m_settings;
    CWavoView* m_view;  // child
    BarSetup m_bars;
    std::vector<QIcon> m_user_images;
    CommandActions m_actions;
    MenuDock* const m_menu_dock;  // child
    FrameMenus m_menus;
    RecentFiles m_recent_files;
    RecentFiles m_recent_recordings;
    CommandId m_look;
    QLabel* m_panes[3] = {};
    std::unique_ptr<RecordingControl> m_recording;
    std::unique_ptr<MeasureControl> m_measure;
    std::unique_ptr<CircleControl> m_circle;
    std::unique_ptr<AxisControl> m_axis;
    std::unique_ptr<ReferenceControl> m_reference;
    TableControl m_tables;
    ContextHelp* const m_help;  // child
    bool m_has_stored_place = false;
    QAction* m_customize_item = nullptr;  // child; stands at the end of "Standard"
};

}  // namespace wavo
