#include "all_windows.h"

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <iterator>

#include "real_prompts.h"
#include "sample_recording.h"
#include "system_facts.h"
#include "ui/bars/customize_dialog.h"
#include "ui/dialogs/add_text.h"
#include "ui/dialogs/choose_several.h"
#include "ui/dialogs/computed_axes_dialog.h"
#include "ui/dialogs/export_progress.h"
#include "ui/dialogs/import_table.h"
#include "ui/dialogs/path_save_data.h"
#include "ui/dialogs/trigger_condition.h"
#include "ui/dialogs/wavo_properties.h"
#include "ui/dialogs/work_in_steps.h"
#include "ui/panes/limits_dialog.h"
#include "ui/shell/about_dlg.h"
#include "view/wavo_view.h"

namespace wavo::testing {

namespace {

constexpr const char* kFolderNames[] = {kDataHome, "XDG_RUNTIME_DIR"};

WavoGraph GraphOverTime() {
    WavoGraph graph;
    graph.InitGraph(1, "X", 0, nullptr);
    graph.Triggers[0] = {TriggerTypeCode::kStopAbove, 1e6, "X"};
    return graph;
}

WavoGraph GraphOverAxis() {
    WavoGraph graph;
    graph.InitGraph(2, "Y", 0, nullptr);
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "X";
    graph.XScale = {ScaleTypeCode::kAxis, 10.0, ScaleAxCode::kManual, -10.0, 10.0};
    graph.YScales[0] = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -10.0, 10.0};
    return graph;
}

tables::TablePreview PreviewOfTable() {
    tables::TablePreview preview;
    preview.path = "/data/run.csv";
    preview.names = {"X", "state", "time [ms]"};
    preview.is_text = {false, true, false};
    preview.rows = {{"1.5", "on", "0"}, {"2.5", "off", "4"}};
    return preview;
}

// What dialogs refer to, for as long as the process lives.
ViewSettings& EditedSettings() {
    static ViewSettings settings = DefaultViewSettings();
    return settings;
}
TriggerEntry& EditedTrigger() {
    static TriggerEntry trigger{TriggerTypeCode::kStartAbove, 5.0, "X"};
    return trigger;
}
std::string& EditedText() {
    static std::string text = "text";
    return text;
}

std::unique_ptr<QDialog> MakeExportPart() {
    PartStretches stretches;
    stretches.visible = recording::LineSpan{1000, 3500};
    stretches.marked = recording::LineSpan{2000, 2001};
    stretches.everything = {0, 100'000};
    tables::PartFile file;
    file.path = "/data/part.mcap";
    return std::make_unique<ExportPart>(stretches, file, RealPrompts(), nullptr);
}

std::unique_ptr<QDialog> MakeLimits() {
    static const std::vector<measure::NamedFigure> figures = {
        {"G_ccw", "G_XY ccw", "circular deviation", "um", 1, 12.5, 0.2},
        {"B_x", "B_X", "reversal value", "um", 1, 3.25, 0.1}};
    return std::make_unique<LimitsDialog>(figures, measure::Limits(), RealPrompts(), QString(),
                                          nullptr);
}

}  // namespace

FoldersOfTest::FoldersOfTest() {
    for (const char* const name : kFolderNames) {
        m_before.push_back(qgetenv(name));
        qputenv(name, m_folder.path().toUtf8());
    }
}

FoldersOfTest::~FoldersOfTest() {
    for (std::size_t i = 0; i < std::size(kFolderNames); ++i) {
        m_before[i].isNull() ? qunsetenv(kFolderNames[i]) : qputenv(kFolderNames[i], m_before[i]);
    }
}

WholeFrame::WholeFrame()
    : m_settings(m_folders.File("app.ini"), QSettings::IniFormat),
      m_frame(std::make_unique<CMainFrame>(RealPrompts(), &m_settings)) {
    m_frame->resize(1366, 768);
    m_frame->show();
    CWavoView& view = m_frame->View();
    view.OnInitialUpdate();
    GraphList& list = view.Work().Graphs();
    list.Replace({GraphOverTime(), GraphOverAxis()}, GraphList::Telling::kSilent);
    view.Editor().Init(list, {"X", "Y"});
    view.Commands().ShowGraphEditor();
    QApplication::processEvents();
}

std::vector<CommandId> WholeFrame::Panes() {
    return {CommandId::kMeasurements, CommandId::kSpectrum, CommandId::kCircleTest,
            CommandId::kAxisTest};
}

void WholeFrame::ShowPane(CommandId command) {
    for (const CommandId pane : Panes()) {
        QAction& action = *m_frame->Action(pane);
        if (action.isChecked() != (pane == command)) {
            action.trigger();
        }
    }
    QApplication::processEvents();
}

void WholeFrame::OpenRecording() {
    const std::string path = m_folders.File("some.mcap").toStdString();
    auto writer = recording::RecordingWriter::Create(path, MakeHead(2), std::nullopt);
    std::vector<std::vector<double>> lines(500, std::vector<double>{1.0, 2.0});
    Append(**writer, 0, lines);
    (void)(*writer)->Finish();
    m_frame->View().Past().Files().Open(path);
    QApplication::processEvents();
}

const std::vector<NamedDialog>& AllDialogs() {
    static const std::vector<NamedDialog> dialogs = {
        {"Additional", [] { return std::make_unique<CAddText>(EditedText()); }},
        {"TriggerCondition", [] { return std::make_unique<CTriggerCondition>(EditedTrigger()); }},
        {"Properties",
         [] { return std::make_unique<CWavoProperties>(EditedSettings(), RealPrompts()); }},
        {"PathSaveData",
         [] {
             return std::make_unique<PathSaveData>("values.txt", std::vector<std::string>{"X"},
                                                   RealPrompts(), nullptr);
         }},
        {"ExportProgress",
         [] {
             auto progress = std::make_unique<ExportProgress>("values.txt", nullptr);
             progress->SetRows(1, 2);
             return progress;
         }},
        {"Customize",
         [] { return std::make_unique<CustomizeDialog>(DefaultBarSetup(), std::vector<QIcon>()); }},
        {"About", [] { return std::make_unique<CAboutDlg>("Wavo\n1.0\nall rights"); }},
        {"SeveralFiles",
         [] {
             return std::make_unique<SeveralDialog>(
                 SeveralQuestion{QStringLiteral("Stop Recording"),
                                 QStringLiteral("Several recordings run. Which are to end?"),
                                 QStringLiteral("&Stop"),
                                 {QStringLiteral("a.mcap"), QStringLiteral("b.mcap")}},
                 nullptr);
         }},
        {"ComputedAxes",
         [] {
             return std::make_unique<ComputedAxesDialog>(
                 std::vector<computed::ComputedAxis>{{"R", "sqrt(X^2 + Y^2)", "mm"}},
                 std::vector<std::string>{"X", "Y"}, nullptr);
         }},
        {"WorkProgress",
         [] {
             return std::make_unique<WorkProgress>(QStringLiteral("Opening"),
                                                   QStringLiteral("/data/run.csv"), nullptr);
         }},
        {"ImportTable",
         [] {
             return std::make_unique<ImportTable>(PreviewOfTable(), tables::TimeChoice(), nullptr);
         }},
        {"ExportPart", MakeExportPart},
        {"Limits", MakeLimits},
    };
    return dialogs;
}

std::string NameOfWidget(const QWidget& widget) {
    return widget.metaObject()->className() + (" " + widget.objectName().toStdString());
}

}  // namespace wavo::testing
