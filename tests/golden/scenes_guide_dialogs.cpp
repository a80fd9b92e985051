// The pictures of the manual that show the whole window, its graph editor and the dialogs that no
// other scene shows.
#include <QApplication>
#include <QTemporaryDir>

#include "fake_shared_memory.h"
#include "golden/scenes_recording.h"
#include "real_prompts.h"
#include "system_facts.h"
#include "ui/bars/customize_dialog.h"
#include "ui/dialogs/add_text.h"
#include "ui/dialogs/choose_several.h"
#include "ui/dialogs/export_progress.h"
#include "ui/dialogs/message_boxes.h"
#include "ui/dialogs/path_save_data.h"
#include "ui/dialogs/trigger_condition.h"
#include "ui/dialogs/wavo_properties.h"
#include "ui/dialogs/work_in_steps.h"
#include "ui/panes/limits_dialog.h"
#include "ui/shell/about_dlg.h"
#include "ui/shell/looks.h"
#include "ui/shell/main_frame.h"
#include "ui/shell/version_data.h"
#include "view/view_access.h"
#include "view/wavo_view.h"

namespace wavo::testing {

namespace {

/// A window as it stands there, its cursor, where it has one, without blinking.
QImage Shown(QWidget& window) {
    const int flash_time = QApplication::cursorFlashTime();
    QApplication::setCursorFlashTime(0);
    window.show();
    QCoreApplication::processEvents();
    QImage picture = window.grab().toImage();
    QApplication::setCursorFlashTime(flash_time);
    return picture;
}

void ApplyDefaultLook() {
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
}

WavoGraph XOverY() {
    WavoGraph graph;
    graph.InitGraph(2, "Y", 0, nullptr);
    graph.YCoorAxColor = {kGreen};
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "X";
    graph.XScale.ScaleType = ScaleTypeCode::kAxis;
    graph.XScale.ScaleAx = ScaleAxCode::kManual;
    graph.XScale.Minimum = -60.0;
    graph.XScale.Maximum = 60.0;
    graph.YScales.front() = graph.XScale;
    graph.AutoCircle = true;
    graph.InnerGuidingCircleDX = 45.0;
    graph.OuterGuidingCircleDX = 55.0;
    graph.UpdateGuidingCircles();
    graph.FadeOutTime = 20.0;
    return graph;
}

/// The whole window with the graph editor, on two axes of a recording.
class WholeWindow {
 public:
    WholeWindow() {
        ApplyDefaultLook();
        qputenv(kDataHome, m_folder.path().toLocal8Bit());
        ResetFakeSharedMemory();
        m_frame = std::make_unique<CMainFrame>(RealPrompts());
        m_frame->resize(1366, 768);
        m_frame->show();
        CWavoView& view = m_frame->View();
        view.OnInitialUpdate();
        WavoGraph over_time;
        over_time.InitGraph(1, "X", 0, nullptr);
        over_time.YCoorAxName = {"X", "Y"};
        over_time.YCoorAxColor = {kYellow, kBlue};
        over_time.YCoorAxDerivation = {0, 0};
        over_time.Triggers.resize(2, over_time.Triggers.front());
        over_time.YScales.resize(2, over_time.YScales.front());
        for (ScaleDefinition& scale : over_time.YScales) {
            scale.ScaleAx = ScaleAxCode::kAutomatic;
        }
        view.Work().Graphs().Replace({over_time, XOverY()});
        view.Work().RebuildGraphs();
        const std::string path = m_folder.filePath(QStringLiteral("circle.mcap")).toStdString();
        WriteNight(path);
        view.Past().Files().Open(path);
        view.Past().Window().Show({1000, 6000});
        QCoreApplication::processEvents();
        (void)view.Screen().Picture();
        while (!view.Past().Overview().IsExact()) {
            (void)view.Past().Overview().DrawEnvelope();
        }
    }
    ~WholeWindow() {
        m_frame.reset();
        qunsetenv(kDataHome);
    }
    WholeWindow(const WholeWindow&) = delete;
    WholeWindow& operator=(const WholeWindow&) = delete;

    [[nodiscard]] CMainFrame& Frame() { return *m_frame; }

 private:
    const QTemporaryDir m_folder;
    std::unique_ptr<CMainFrame> m_frame;
};

QImage Window() {
    WholeWindow window;
    return window.Frame().grab().toImage();
}

QImage GraphEditor() {
    WholeWindow window;
    return window.Frame().View().Editor().grab().toImage();
}

QImage Properties() {
    ApplyDefaultLook();
    ViewSettings settings = DefaultViewSettings();
    settings.export_settings.data_file = "/data/wavo_values.txt";
    CWavoProperties dialog(settings, RealPrompts());
    return Shown(dialog);
}

QImage Trigger() {
    ApplyDefaultLook();
    TriggerEntry trigger{TriggerTypeCode::kStartAbove, 45.0, "X"};
    CTriggerCondition dialog(trigger);
    return Shown(dialog);
}

QImage AdditionalText() {
    ApplyDefaultLook();
    std::string text = "mill 4, after the new ball screw of X";
    CAddText dialog(text);
    return Shown(dialog);
}

QImage SaveValues() {
    ApplyDefaultLook();
    PathSaveData dialog("/data/circle.txt", {"X", "Y"}, RealPrompts(), nullptr);
    return Shown(dialog);
}

QImage SavingValues() {
    ApplyDefaultLook();
    ExportProgress dialog("/data/circle.txt", nullptr);
    dialog.SetRows(420'000, 1'000'000);
    return Shown(dialog);
}

QImage ReadingATable() {
    ApplyDefaultLook();
    WorkProgress dialog(QStringLiteral("Import Table"), QStringLiteral("/data/circle.csv.gz"),
                        nullptr);
    dialog.SetPart(0.42);
    return Shown(dialog);
}

QImage Customize() {
    ApplyDefaultLook();
    CustomizeDialog dialog(DefaultBarSetup(), {});
    return Shown(dialog);
}

QImage About() {
    ApplyDefaultLook();
    CAboutDlg dialog(AboutText(OwnVersion(), {}));
    return Shown(dialog);
}

QImage StopRecording() {
    ApplyDefaultLook();
    SeveralDialog dialog({QStringLiteral("Stop Recording"),
                          QStringLiteral("Which recordings are to end?"),
                          QStringLiteral("&Stop"),
                          {QStringLiteral("/data/night.mcap   3:12:07  1.4 GB"),
                           QStringLiteral("/data/spindle.mcap   0:00:41  5.2 MB")}},
                         nullptr);
    return Shown(dialog);
}

QImage Limits() {
    ApplyDefaultLook();
    const std::vector<measure::NamedFigure> figures{
        {"G_ccw", "G_XY ccw", "circular error G, ccw", "um", 2, {}, 0.0},
        {"F_max_ccw", "F_max_XY ccw", "radial error F max, ccw", "um", 2, {}, 0.0},
        {"Bx", "Bx", "backlash X", "um", 2, {}, 0.0}};
    const auto limits = measure::ParseLimits("[Limits]\nG_ccw = 15\nF_max_ccw = -5..20\n");
    LimitsDialog dialog(figures, *limits, RealPrompts(), QString(), nullptr);
    dialog.resize(560, 260);
    return Shown(dialog);
}

QImage MessageBox() {
    ApplyDefaultLook();
    QImage picture;
    QMetaObject::invokeMethod(
        qApp,
        [&picture] {
            QWidget* const box = QApplication::activeModalWidget();
            picture = Shown(*box);
            box->close();
        },
        Qt::QueuedConnection);
    (void)ShowBox(nullptr, {"Master process (Dorvane) not present.", "ERROR", BoxIcon::kExclamation,
                            BoxButtons::kOk});
    return picture;
}

}  // namespace

std::vector<Scene> DialogScenes() {
    return {{"window", Window},
            {"graph_editor", GraphEditor},
            {"properties", Properties},
            {"trigger_condition", Trigger},
            {"additional_text", AdditionalText},
            {"save_values", SaveValues},
            {"saving_values", SavingValues},
            {"reading_a_table", ReadingATable},
            {"customize", Customize},
            {"about", About},
            {"stop_recording", StopRecording},
            {"limits", Limits},
            {"message_box", MessageBox}};
}

}  // namespace wavo::testing
