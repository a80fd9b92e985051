// Saving values while a master is there: the recording's own text, a cancelled export, and a master
// that quits in the midst of one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>
#include <algorithm>

#include "master_link_of.h"
#include "slow_files.h"
#include "ui/controls/controls.h"
#include "ui/dialogs/export_progress.h"
#include "ui/dialogs/path_save_data.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::IsEmpty;

const std::vector<std::string> kAxes{"X_cmd", "Y_cmd", "Z_cmd", "A_cmd", "X", "Y", "Z", "A", "F"};

/// The lines of a file (a recording unpacked) up to a number of columns, without line ends.
std::vector<std::string> LinesOf(const QString& path, std::size_t columns) {
    std::vector<std::string> lines;
    gzFile file = gzopen(path.toUtf8().constData(), "rb");
    char text[4096];
    while (file != nullptr && gzgets(file, text, sizeof text) != nullptr) {
        std::string line = text;
        std::size_t end = 0;
        for (std::size_t i = 0; i < columns && end != std::string::npos; ++i) {
            end = line.find(',', end == 0 ? 0 : end + 1);
        }
        line.resize(std::min(end, line.size()));
        lines.push_back(line.substr(0, line.find_last_not_of("\r\n") + 1));
    }
    if (file != nullptr) {
        gzclose(file);
    }
    return lines;
}

class Saving : public Viewer {
 protected:
    /// One graph of all axes.
    void OpenAllAxes() {
        WavoGraph graph;
        for (const std::string& axis : kAxes) {
            WavoGraph one;
            one.InitGraph(1, axis.c_str(), 0, nullptr);
            if (graph.YCoorAxName.empty()) {
                graph = one;
                continue;
            }
            graph.YCoorAxName.push_back(axis);
            graph.YCoorAxColor.push_back(one.YCoorAxColor[0]);
            graph.YCoorAxDerivation.push_back(0);
            graph.Triggers.push_back(one.Triggers[0]);
            graph.YScales.push_back(one.YScales[0]);
        }
        graph.XScale.TimeRange = 60.0;
        OpenWith({graph});
    }
    [[nodiscard]] QString Path() const { return m_folder.filePath(QStringLiteral("values.txt")); }

    /// Presses the button of the editor and takes the path in the dialog that opens.
    void SaveValues() {
        QTimer answer;
        QObject::connect(&answer, &QTimer::timeout, [this, &answer] {
            auto* const dialog = dynamic_cast<PathSaveData*>(QApplication::activeModalWidget());
            if (dialog == nullptr) {
                return;  // not open yet
            }
            answer.stop();
            FindControl<QLineEdit>(*dialog, static_cast<int>(PathSaveDataId::kPath))
                ->setText(Path());
            QTest::mouseClick(
                FindControl<QPushButton>(*dialog, static_cast<int>(PathSaveDataId::kOk)),
                Qt::LeftButton);
        });
        answer.start(1);
        auto* const button =
            FindControl<QPushButton>(View().Editor(), static_cast<int>(EditorControl::kSaveValues));
        ASSERT_TRUE(button->isEnabled());
        QTest::mouseClick(button, Qt::LeftButton);
    }
    /// What is in the file is the beginning of what a whole one would hold: its number of rows.
    std::size_t WholeRows() {
        const std::vector<std::string> lines = LinesOf(Path(), kAxes.size());
        EXPECT_GE(lines.size(), 1U);
        for (const std::string& line : lines) {
            EXPECT_EQ(std::count(line.begin(), line.end(), ','),
                      static_cast<std::ptrdiff_t>(kAxes.size()) - 1);
        }
        return lines.size() - 1;
    }
};

class SavedRecordings : public Saving, public ::testing::WithParamInterface<const char*> {};

TEST_P(SavedRecordings, AreTheRecordingToTheLastDigit) {
    const QString recording = RecordingPath(GetParam());
    const std::vector<std::string> expected = LinesOf(recording, kAxes.size());
    DemoMaster master({"--speed", "full", "--loop", "1", "--stay", "--recording", recording,
                       "--axes", "X_cmd,Y_cmd,Z_cmd,A_cmd,X,Y,Z,A,F"});
    OpenAllAxes();
    ASSERT_TRUE(WaitForLines(expected.size() - 1));
    View().Commands().Execute(CommandId::kStop);
    SaveValues();
    EXPECT_EQ(LinesOf(Path(), kAxes.size()), expected);
    EXPECT_EQ(View().Work().Settings().Current().export_settings.data_file, Path().toStdString());
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, SavedRecordings,
                         ::testing::Values("circle_xy_r50", "rose_small_segments",
                                           "drill_g81_g83_g82", "helix_4axis"));

TEST_F(Saving, ThatIsCancelledKeepsItsRowsAndTheLink) {
    DemoMaster master({"--recording", RecordingPath("helix_4axis"), "--cycle", "0.0001", "--axes",
                       "X_cmd,Y_cmd,Z_cmd,A_cmd,X,Y,Z,A,F", "--fifo-lines", "100000"});
    OpenAllAxes();
    ASSERT_TRUE(WaitForLines(15000));
    View().Commands().Execute(CommandId::kStop);
    const std::uint64_t lines = Cycle().TotalLines();
    std::size_t all_rows = 0;
    {
        SlowFiles files;
        bool was_cancelled = false;
        files.at_write = [&](int) {
            QThread::msleep(was_cancelled ? 0 : 200);
            for (QWidget* const window : QApplication::topLevelWidgets()) {
                auto* const progress = dynamic_cast<ExportProgress*>(window);
                if (progress != nullptr && !was_cancelled) {
                    was_cancelled = true;
                    QMetaObject::invokeMethod(
                        FindControl<QPushButton>(*progress,
                                                 static_cast<int>(ExportProgressId::kCancel)),
                        "click", Qt::QueuedConnection);
                }
            }
        };
        SaveValues();
        EXPECT_TRUE(was_cancelled);
        // The link went on meanwhile.
        EXPECT_GT(Cycle().TotalLines(), lines);
    }
    const std::size_t rows = WholeRows();
    EXPECT_GT(rows, 0U);
    SaveValues();
    all_rows = WholeRows();
    EXPECT_LT(rows, all_rows);
    EXPECT_GE(all_rows, 14999U);
    const std::uint64_t before = Cycle().TotalLines();
    ASSERT_TRUE(WaitForLines(before + 1000));
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->batches_answered, Cycle().Counters().batches_answered);
    EXPECT_EQ(totals->overruns, 0U);
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(Saving, EndsWithTheProgramWhenTheMasterQuits) {
    DemoMaster master({"--recording", RecordingPath("helix_4axis"), "--cycle", "0.0001", "--axes",
                       "X_cmd,Y_cmd,Z_cmd,A_cmd,X,Y,Z,A,F", "--fifo-lines", "100000", "--fault",
                       "quit", "--fault-after", "40000"});
    OpenAllAxes();
    ASSERT_TRUE(WaitForLines(15000));
    View().Commands().Execute(CommandId::kStop);
    QSignalSpy quit(&View().News(), &ViewNews::QuitRequested);
    {
        SlowFiles files;
        files.at_write = [&](int) { QThread::msleep(quit.isEmpty() ? 500 : 0); };
        SaveValues();
    }
    EXPECT_EQ(quit.count(), 1);
    const std::size_t rows = WholeRows();
    EXPECT_GT(rows, 0U);
    EXPECT_LT(rows, 14999U);
    EXPECT_FALSE(testing::MasterLinkOf(View()).IsReaderOpen());
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        EXPECT_EQ(dynamic_cast<ExportProgress*>(window), nullptr);
    }
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

}  // namespace
}  // namespace wavo::testing
