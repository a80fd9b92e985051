// The pictures of the manual that show recordings: the window, and the dialogs for tables and
// parts.
#include <QDir>
#include <QTemporaryDir>
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "fake_shared_memory.h"
#include "golden/scenes_recording.h"
#include "real_prompts.h"
#include "sample_recording.h"
#include "system_facts.h"
#include "tables/table_preview.h"
#include "ui/dialogs/export_part.h"
#include "ui/dialogs/import_table.h"
#include "ui/shell/looks.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo::testing {

namespace {

constexpr std::uint64_t kNightLines = 20'000;
constexpr std::uint64_t kLostFrom = 13'000;
constexpr std::uint64_t kLost = 600;
constexpr std::uint64_t kTrigger = 7'400;

/// Two circles of different feeds, between them a rest; after each quarter a reversal spike.
std::vector<double> LineOfNight(std::uint64_t line) {
    constexpr double kFirstEnd = 8000.0;
    constexpr double kSecondBegin = 9000.0;
    const auto at = static_cast<double>(line);
    const double angle = at < kFirstEnd      ? at / 2000.0
                         : at < kSecondBegin ? kFirstEnd / 2000.0
                                             : 4.0 + (at - kSecondBegin) / 1000.0;
    const double turn = angle * std::numbers::pi;
    const double quarter = std::fmod(angle + 0.25, 0.5);
    const double behind = (quarter - 0.04) / 0.012;
    const double spike = 0.4 * std::exp(-behind * behind);
    const auto rounded = [](double value) { return std::round(value * 1e4) / 1e4; };
    return {rounded((50.0 + spike) * std::cos(turn)), rounded((50.0 + spike) * std::sin(turn))};
}

}  // namespace

void WriteNight(const std::string& path) {
    recording::RecordingHead head = MakeHead(2);
    head.axis_names = {"X", "Y"};
    auto writer = recording::RecordingWriter::Create(path, head, std::nullopt);
    if (!writer) {
        std::abort();
    }
    std::vector<std::vector<double>> lines;
    for (std::uint64_t line = 0; line < kNightLines; ++line) {
        const bool is_lost = line >= kLostFrom && line < kLostFrom + kLost;
        if (!is_lost) {
            lines.push_back(LineOfNight(line));
        }
    }
    const auto append = [&](std::uint64_t first, std::uint64_t end, std::uint64_t lost) {
        const auto begin = lines.begin() - static_cast<std::ptrdiff_t>(lost);
        Append(
            **writer, first,
            {begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(end)});
    };
    append(0, kTrigger, 0);
    (*writer)->AddEvent({recording::kEventTrigger, kTrigger, 0, "X above 45 in graph 1"});
    append(kTrigger, kLostFrom, 0);
    (*writer)->AddEvent(
        {recording::kEventOverrun, kLostFrom + kLost, kLost, "the value fifo ran over"});
    append(kLostFrom + kLost, kNightLines, kLost);
    RequireNoFault((*writer)->Finish());
}

namespace {

WavoGraph GraphOf(std::uint32_t number, const std::vector<std::string>& axes, std::int32_t order) {
    constexpr ColorRef kColors[] = {kYellow, kBlue};
    WavoGraph graph;
    graph.InitGraph(number, axes[0].c_str(), 0, nullptr);
    graph.YCoorAxName = axes;
    graph.YCoorAxColor = {kColors[0], kColors[1]};
    graph.YCoorAxDerivation = {order, order};
    graph.Triggers.resize(2, graph.Triggers.front());
    graph.YScales.resize(2, graph.YScales.front());
    for (ScaleDefinition& scale : graph.YScales) {
        scale.ScaleAx = ScaleAxCode::kAutomatic;
    }
    return graph;
}

QImage Recording() {
    const QTemporaryDir folder;
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
    qputenv(kDataHome, folder.path().toLocal8Bit());
    ResetFakeSharedMemory();
    QImage picture;
    {
        CMainFrame frame(RealPrompts());
        frame.resize(900, 620);
        frame.show();
        frame.View().OnInitialUpdate();
        frame.View().Screen().ShowEditor(false);
        frame.View().Work().Graphs().Replace(
            {GraphOf(1, {"X", "Y"}, 0), GraphOf(2, {"X", "Y"}, 1)});
        frame.View().Work().RebuildGraphs();
        const std::string path = folder.filePath(QStringLiteral("night.mcap")).toStdString();
        WriteNight(path);
        frame.View().Past().Files().Open(path);
        frame.View().Past().Window().Show({5000, 11'000});
        QCoreApplication::processEvents();
        (void)frame.View().Screen().Picture();
        while (!frame.View().Past().Overview().IsExact()) {
            (void)frame.View().Past().Overview().DrawEnvelope();
        }
        picture = frame.grab().toImage();
    }
    qunsetenv(kDataHome);
    return picture;
}

QImage ImportOfATable() {
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
    auto preview = tables::PreviewTable(WAVO_RECORDINGS "/circle_xy_r50.csv.gz");
    if (!preview) {
        std::abort();
    }
    preview->path = "/data/circle_xy_r50.csv.gz";
    ImportTable dialog(*preview, {}, nullptr);
    dialog.resize(620, 400);
    dialog.show();
    QCoreApplication::processEvents();
    return dialog.grab().toImage();
}

QImage ExportOfAPart() {
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
    PartStretches stretches;
    stretches.visible = recording::LineSpan{5000, 11'000};
    stretches.marked = recording::LineSpan{6200, 7400};
    stretches.everything = {0, kNightLines};
    ExportPart dialog(stretches, {"/data/night_part.mcap", tables::PartFormat::kRecording, {}},
                      RealPrompts(), nullptr);
    dialog.show();
    QCoreApplication::processEvents();
    return dialog.grab().toImage();
}

}  // namespace

std::vector<Scene> RecordingScenes() {
    return {
        {"recording", Recording}, {"import_table", ImportOfATable}, {"export_part", ExportOfAPart}};
}

}  // namespace wavo::testing
