#include "ui/shell/help_topics.h"

#include <QAction>
#include <QMenu>
#include <QRegularExpression>
#include <QToolButton>
#include <QWidget>
#include <algorithm>
#include <iterator>

#include "ui/bars/commands.h"
#include "ui/bars/customize_dialog.h"
#include "ui/dialogs/add_text.h"
#include "ui/dialogs/choose_several.h"
#include "ui/dialogs/computed_axes_dialog.h"
#include "ui/dialogs/export_part.h"
#include "ui/dialogs/export_progress.h"
#include "ui/dialogs/import_table.h"
#include "ui/dialogs/path_save_data.h"
#include "ui/dialogs/trigger_condition.h"
#include "ui/dialogs/wavo_properties.h"
#include "ui/dialogs/work_in_steps.h"
#include "ui/panes/axis_pane.h"
#include "ui/panes/circle_pane.h"
#include "ui/panes/limits_dialog.h"
#include "ui/panes/measurements_pane.h"
#include "ui/panes/pane_dock.h"
#include "ui/panes/reference_pane.h"
#include "ui/panes/spectrum_pane.h"
#include "ui/recording/recording_pane.h"
#include "ui/shell/about_dlg.h"
#include "ui/shell/count_pane.h"
#include "ui/shell/first_page.h"
#include "ui/shell/main_frame.h"
#include "ui/shell/third_parties.h"
#include "view/navigator.h"
#include "view/wavo_view.h"

namespace wavo {

namespace {

struct CommandTopic {
    CommandId command;
    const char* topic;
};

constexpr CommandTopic kCommandTopics[] = {
    {CommandId::kNew, "reference#graph-files"},
    {CommandId::kOpen, "reference#graph-files"},
    {CommandId::kSave, "reference#graph-files"},
    {CommandId::kSaveAs, "reference#graph-files"},
    {CommandId::kPrint, "graphs#printing"},
    {CommandId::kPrintPreview, "graphs#printing"},
    {CommandId::kPageSetup, "graphs#printing"},
    {CommandId::kProperties, "graphs#properties"},
    {CommandId::kAdditionalText, "graphs#additional-text"},
    {CommandId::kRecentFile, "reference#graph-files"},
    {CommandId::kExit, "window#commands"},
    {CommandId::kToolBars, "window#looks-bars-and-places"},
    {CommandId::kCustomize, "window#looks-bars-and-places"},
    {CommandId::kStatusBar, "window#the-status-bar"},
    {CommandId::kLookClassic, "window#looks-bars-and-places"},
    {CommandId::kLookFlat, "window#looks-bars-and-places"},
    {CommandId::kLookNative, "window#looks-bars-and-places"},
    {CommandId::kLookBlueBars, "window#looks-bars-and-places"},
    {CommandId::kLookStudio, "window#looks-bars-and-places"},
    {CommandId::kLookBlue, "window#looks-bars-and-places"},
    {CommandId::kLookBlack, "window#looks-bars-and-places"},
    {CommandId::kLookSilver, "window#looks-bars-and-places"},
    {CommandId::kLookAqua, "window#looks-bars-and-places"},
    {CommandId::kShowGraphEditor, "graphs#the-graph-editor"},
    {CommandId::kConnect, "window#links-that-come-back"},
    {CommandId::kStart, "window#commands"},
    {CommandId::kStop, "window#commands"},
    {CommandId::kStartAfterTrigger, "graphs#trigger-condition"},
    {CommandId::kRecord, "recording#recording-from-the-viewer"},
    {CommandId::kStopRecording, "recording#recording-from-the-viewer"},
    {CommandId::kOpenRecording, "recordings"},
    {CommandId::kCloseRecording, "recordings"},
    {CommandId::kRecordingGraphs, "recordings"},
    {CommandId::kFollow, "recordings#recordings-that-change"},
    {CommandId::kNextTrigger, "recordings#moving"},
    {CommandId::kPreviousTrigger, "recordings#moving"},
    {CommandId::kNextEvent, "recordings#moving"},
    {CommandId::kPreviousEvent, "recordings#moving"},
    {CommandId::kNextFile, "recordings#recordings-that-change"},
    {CommandId::kPreviousFile, "recordings#recordings-that-change"},
    {CommandId::kExportPart, "recordings#parts-of-recordings"},
    {CommandId::kRecentRecording, "recordings"},
    {CommandId::kMeasurements, "measuring"},
    {CommandId::kHideMeasurements, "measuring#the-pane"},
    {CommandId::kSpectrum, "spectrum"},
    {CommandId::kHideSpectrum, "measuring#the-pane"},
    {CommandId::kComputedAxes, "computed-axes"},
    {CommandId::kCircleTest, "machine-tests#the-circle-test-at-the-machine"},
    {CommandId::kAxisTest, "machine-tests#the-axis-test-at-the-machine"},
    {CommandId::kReference, "machine-tests#comparing-with-a-good-run-at-the-machine"},
    {CommandId::kLineStyles, "window#for-everybody"},
    {CommandId::kDescribeGraph, "window#for-everybody"},
    {CommandId::kAbout, "window#the-about-box"},
    {CommandId::kManual, "README"},
    {CommandId::kNextPane, "window#commands"},
    {CommandId::kPreviousPane, "window#commands"},
};

template <typename Widget>
bool Is(const QWidget& widget) {
    return dynamic_cast<const Widget*>(&widget) != nullptr;
}

/// Of a kind of the toolkit's own.
template <const char* const& kName>
bool IsQt(const QWidget& widget) {
    return widget.inherits(kName);
}

constexpr const char* kFileDialog = "QFileDialog";
constexpr const char* kColorDialog = "QColorDialog";
constexpr const char* kFontDialog = "QFontDialog";
constexpr const char* kMessageBox = "QMessageBox";
constexpr const char* kPrintDialog = "QAbstractPrintDialog";
constexpr const char* kPageDialog = "QPageSetupDialog";
constexpr const char* kPreviewDialog = "QPrintPreviewDialog";
constexpr const char* kToolBar = "QToolBar";
constexpr const char* kMenu = "QMenu";

struct WidgetTopic {
    bool (*is)(const QWidget& widget);
    const char* topic;
};

constexpr WidgetTopic kWidgetTopics[] = {
    {Is<CAboutDlg>, "window#the-about-box"},
    {Is<CAddText>, "graphs#additional-text"},
    {Is<CTriggerCondition>, "graphs#trigger-condition"},
    {Is<CWavoProperties>, "graphs#properties"},
    {Is<ComputedAxesDialog>, "computed-axes"},
    {Is<CustomizeDialog>, "window#looks-bars-and-places"},
    {Is<ExportPart>, "recordings#parts-of-recordings"},
    {Is<ExportProgress>, "graphs#saving-values"},
    {Is<ImportTable>, "recordings#tables"},
    {Is<LimitsDialog>, "machine-tests#limits"},
    {Is<PathSaveData>, "graphs#saving-values"},
    {Is<SeveralDialog>, "recording#recording-from-the-viewer"},
    {Is<ThirdPartiesDialog>, "window#the-about-box"},
    {Is<WorkProgress>, "recordings#tables"},
    {IsQt<kFileDialog>, "reference#files"},
    {IsQt<kColorDialog>, "graphs#properties"},
    {IsQt<kFontDialog>, "graphs#properties"},
    {IsQt<kPrintDialog>, "graphs#printing"},
    {IsQt<kPageDialog>, "graphs#printing"},
    {IsQt<kPreviewDialog>, "graphs#printing"},
    {IsQt<kMessageBox>, "messages#boxes"},
    {Is<AxisPane>, "machine-tests#the-axis-test-at-the-machine"},
    {Is<CirclePane>, "machine-tests#the-circle-test-at-the-machine"},
    {Is<MeasurementsPane>, "measuring"},
    {Is<ReferencePane>, "machine-tests#comparing-with-a-good-run-at-the-machine"},
    {Is<SpectrumPane>, "spectrum"},
    {Is<PaneDock>, "measuring#the-pane"},
    {Is<RecordingPane>, "recording#recording-from-the-viewer"},
    {Is<CountPane>, "window#the-status-bar"},
    {Is<Navigator>, "recordings#moving"},
    {Is<FirstPage>, "first-minutes"},
    {Is<CAxSelect>, "graphs#the-graph-editor"},
    {Is<CWavoView>, "window#reading-a-graph"},
    {IsQt<kMenu>, "window#commands"},
    {IsQt<kToolBar>, "window#looks-bars-and-places"},
    {Is<CMainFrame>, "README"},
};

QString TopicOfItself(const QWidget& widget) {
    if (const auto* const menu = qobject_cast<const QMenu*>(&widget)) {
        const QAction* const marked = menu->activeAction();
        if (const QString topic = marked == nullptr ? QString() : HelpTopic(*marked);
            !topic.isEmpty()) {
            return topic;
        }
    }
    if (const auto* const button = qobject_cast<const QToolButton*>(&widget);
        button != nullptr && button->defaultAction() != nullptr) {
        if (const QString topic = HelpTopic(*button->defaultAction()); !topic.isEmpty()) {
            return topic;
        }
    }
    const auto* const row = std::find_if(std::begin(kWidgetTopics), std::end(kWidgetTopics),
                                         [&](const WidgetTopic& each) { return each.is(widget); });
    return row == std::end(kWidgetTopics) ? QString() : QString::fromLatin1(row->topic);
}

}  // namespace

QString HelpTopic(CommandId command) {
    const auto* const row =
        std::find_if(std::begin(kCommandTopics), std::end(kCommandTopics),
                     [command](const CommandTopic& each) { return each.command == command; });
    return row == std::end(kCommandTopics) ? QString() : QString::fromLatin1(row->topic);
}

QString HelpTopic(const QAction& action) {
    // Items of recent files, of submenus and of the menu of looks have a name behind the command's.
    static const QRegularExpression behind(QStringLiteral("_(\\d+|menu|popup)$"));
    const QString name = action.objectName();
    const QString shortened = QString(name).remove(behind);
    for (const Command& command : Commands()) {
        if (const QLatin1String own(command.object_name); own == name || own == shortened) {
            return HelpTopic(command.id);
        }
    }
    return {};
}

QString HelpTopic(const QWidget& widget) {
    for (const QWidget* each = &widget; each != nullptr; each = each->parentWidget()) {
        if (const QString topic = TopicOfItself(*each); !topic.isEmpty()) {
            return topic;
        }
    }
    return QStringLiteral("README");
}

}  // namespace wavo
