// Saving the values of a graph: request, dialog, settings, file, progress.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "slow_files.h"
#include "temporary_folder.h"
#include "ui/dialogs/controls.h"
#include "ui/dialogs/export_progress.h"
#include "ui/dialogs/path_save_data.h"
#include "ui/dialogs/view_settings.h"
#include "view/data_export.h"
#include "view/graph_board.h"

namespace wavo {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing::SlowFiles;

constexpr char kFailed[] = "CView::OnCreate(): m_DataExport.CreateDataFile()";
constexpr char kNotFound[] = "CWavoView::OnMessageFromAxSelectSaveValues: Graph not found";
constexpr double kCycleTime = 0.004;

class Export : public ::testing::Test, public DataExportHost, public GraphDrawHost {
 protected:
    Export() {
        m_settings.end_of_line = "\n";
        m_settings.data_file = m_folder.File("before.txt");
    }

    // DataExportHost
    [[nodiscard]] ExportSettings& CurrentExportSettings() override { return m_settings; }
    void SaveSettings() override {
        m_saved.push_back(m_settings.data_file);
        m_file_there_when_saved = std::filesystem::exists(m_settings.data_file);
    }
    void ShowWriteFault(const std::string& path) override { m_unwritten.push_back(path); }
    [[nodiscard]] QWidget* ExportWindow() override { return nullptr; }
    // GraphDrawHost
    void RecordingEnded() override {}

    /// Shows a graph of these axes over time and gives it lines with a value per axis X, Y, Z.
    void ShowGraph(const std::vector<std::string>& axes,
                   const std::vector<std::array<double, 3>>& lines, double time_range = 10.0) {
        WavoGraph graph;
        graph.InitGraph(7, axes.front().c_str(), 0, nullptr);
        for (std::size_t i = 1; i < axes.size(); ++i) {
            WavoGraph other;
            other.InitGraph(7, axes[i].c_str(), 0, nullptr);
            graph.YCoorAxName.push_back(axes[i]);
            graph.YCoorAxColor.push_back(0);
            graph.YCoorAxDerivation.push_back(0);
            graph.Triggers.push_back(other.Triggers.front());
            graph.YScales.push_back(other.YScales.front());
        }
        graph.XScale.TimeRange = time_range;
        m_board.Graphs() = {graph};
        m_board.CreateAllGraphRects({0, 0, 300, 200}, kCycleTime, {"X", "Y", "Z"}, {});
        m_board.Distribute(lines.empty() ? nullptr : lines.front().data(), lines.size(), 3);
    }
    /// A graph with so many values that its file takes `pieces` writes behind the header.
    void ShowLongGraph(int pieces) {
        const std::size_t rows = kRowsOfPiece * static_cast<std::size_t>(pieces);
        std::vector<std::array<double, 3>> lines(rows, {100'000.5, 0.0, 0.0});
        // Twice the range: a range that the values fill exactly may lose one to rounding.
        ShowGraph({"X"}, lines, 2.0 * static_cast<double>(rows) * kCycleTime);
    }
    [[nodiscard]] const WavoGraph& Graph() const { return m_board.Graphs().front(); }

    /// Does something with the dialog that opens next.
    void WhenAsked(const std::function<void(PathSaveData&)>& action) {
        QMetaObject::invokeMethod(
            qApp,
            [this, action] {
                auto* const dialog = dynamic_cast<PathSaveData*>(QApplication::activeModalWidget());
                ASSERT_NE(dialog, nullptr);
                ++m_asked;
                action(*dialog);
            },
            Qt::QueuedConnection);
    }
    void Answer(const std::string& path) {
        WhenAsked([path](PathSaveData& dialog) {
            FindControl<QLineEdit>(dialog, static_cast<int>(PathSaveDataId::kPath))
                ->setText(QString::fromStdString(path));
            QTest::mouseClick(
                FindControl<QPushButton>(dialog, static_cast<int>(PathSaveDataId::kOk)),
                Qt::LeftButton);
        });
    }
    /// Requests the values of the graph and answers the dialog with the file "values.txt".
    void Save() {
        Answer(m_folder.File("values.txt"));
        EXPECT_EQ(m_export.OnSaveValues(&Graph()), 1);
    }
    [[nodiscard]] std::string Text() const { return m_folder.Read("values.txt"); }
    [[nodiscard]] std::size_t RowsInFile() const {
        const std::string text = Text();
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) - 1;
    }
    /// The progress that shows; null when none does.
    static ExportProgress* Progress() {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            auto* const progress = dynamic_cast<ExportProgress*>(widget);
            if (progress != nullptr && progress->isVisible()) {
                return progress;
            }
        }
        return nullptr;
    }
    static std::string RowsShown() {
        return Progress() == nullptr
                   ? "nothing"
                   : FindControl<QLabel>(*Progress(), static_cast<int>(ExportProgressId::kRows))
                         ->text()
                         .toStdString();
    }

    /// Rows "100000.500000\n" that fill a piece of the file.
    static constexpr std::size_t kRowsOfPiece = ((1U << 16U) + 13) / 14;

    const testing::TemporaryFolder m_folder;
    ExportSettings m_settings;
    std::vector<std::string> m_saved;
    std::vector<std::string> m_unwritten;  // what the status bar told of
    bool m_file_there_when_saved = false;
    int m_asked = 0;
    SlowFiles m_files;
    GraphBoard m_board{*this, [](const std::string&) {}};
    DataExport m_export{m_board, *this, [this] { return m_files.now; }};
};

TEST_F(Export, WritesTheAxesOfAGraphAsColumns) {
    ShowGraph({"Y", "X"}, {{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}});
    Save();
    EXPECT_EQ(Text(), "Y,X\n2.000000,1.000000\n5.000000,4.000000\n");
}

TEST_F(Export, WithoutAGraphDoesNothing) {
    EXPECT_EQ(m_export.OnSaveValues(nullptr), 1);
    EXPECT_THAT(m_saved, IsEmpty());
}

TEST_F(Export, OfAGraphThatIsNotDrawnOrHoldsNoValuesIsAnError) {
    ShowGraph({"X"}, {});
    const ExpectErrorLog expected({kNotFound, kNotFound, kNotFound});
    EXPECT_EQ(m_export.OnSaveValues(&Graph()), 1);  // without values
    WavoGraph other = Graph();
    other.GraphNumber = 8;
    const std::array<double, 3> line{1.0, 2.0, 3.0};
    m_board.Distribute(line.data(), 1, 3);
    EXPECT_EQ(m_export.OnSaveValues(&other), 1);
    m_board.DropBuffers();
    EXPECT_EQ(m_export.OnSaveValues(&Graph()), 1);
    EXPECT_THAT(m_saved, IsEmpty());
}

TEST_F(Export, NamesEachAxisOnceAndTheXAxisLast) {
    WavoGraph graph;
    graph.YCoorAxName = {"Y", "X", "Y", "y"};
    graph.XCoorAxName = "Z";
    EXPECT_THAT(ExportedAxisNames(graph), ElementsAre("Y", "X", "y", "Z"));
    graph.XCoorAxName = "X";
    EXPECT_THAT(ExportedAxisNames(graph), ElementsAre("Y", "X", "y"));
    graph.XCoorAxName.clear();
    EXPECT_THAT(ExportedAxisNames(graph), ElementsAre("Y", "X", "y"));
}

TEST_F(Export, OfAnAxisOverAnAxisHasBoth) {
    ShowGraph({"Y"}, {});
    WavoGraph& graph = m_board.Graphs().front();
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "X";
    graph.XScale.ScaleType = ScaleTypeCode::kAxis;
    graph.XScale.ScaleAx = ScaleAxCode::kAutomatic;
    graph.FadeOutTime = 3.0;
    m_board.CreateAllGraphRects({0, 0, 300, 200}, kCycleTime, {"X", "Y", "Z"}, {});
    const std::array<double, 6> lines{1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
    m_board.Distribute(lines.data(), 2, 3);
    Save();
    EXPECT_EQ(Text(), "Y,X\n2.000000,1.000000\n5.000000,4.000000\n");
}

TEST_F(Export, AnAxisThatTheDrawingDoesNotKnowLeavesNoRows) {
    ShowGraph({"X"}, {{1.0, 2.0, 3.0}});
    WavoGraph changed = Graph();
    changed.YCoorAxName.emplace_back("Q");
    const ExpectErrorLog expected({"GraphDraw::GetAxValues(): unknown axis: Q"});
    Answer(m_folder.File("values.txt"));
    m_export.OnSaveValues(&changed);
    EXPECT_EQ(Text(), "X,Q\n");
}

TEST_F(Export, ASecondExportHoldsNothingOfTheFirst) {
    ShowGraph({"X", "Y"}, {{1.0, 2.0, 3.0}});
    Save();
    ShowGraph({"Z"}, {{1.0, 2.0, 3.0}});
    Save();
    EXPECT_EQ(Text(), "Z\n3.000000\n");
}

TEST_F(Export, TheDialogShowsTheFileOfTheSettingsAndTheAxes) {
    ShowGraph({"Y", "X"}, {{1.0, 2.0, 3.0}});
    WhenAsked([this](PathSaveData& dialog) {
        EXPECT_EQ(dialog.Path(), m_folder.File("before.txt"));
        EXPECT_EQ(FindControl<QLabel>(dialog, static_cast<int>(PathSaveDataId::kAxes))->text(),
                  QStringLiteral("Y,X"));
        dialog.reject();
    });
    m_export.OnSaveValues(&Graph());
    EXPECT_EQ(m_asked, 1);
}

TEST_F(Export, CancelChangesNothing) {
    ShowGraph({"X"}, {{1.0, 2.0, 3.0}});
    WhenAsked([](PathSaveData& dialog) { dialog.reject(); });
    EXPECT_EQ(m_export.OnSaveValues(&Graph()), 1);
    EXPECT_EQ(m_asked, 1);
    EXPECT_EQ(m_settings.data_file, m_folder.File("before.txt"));
    EXPECT_THAT(m_saved, IsEmpty());
    EXPECT_EQ(m_files.writes, 0);
}

TEST_F(Export, ThePathIsSavedWithTheSettingsBeforeTheFileIsWritten) {
    ShowGraph({"X"}, {{1.0, 2.0, 3.0}});
    Save();
    EXPECT_THAT(m_saved, ElementsAre(m_folder.File("values.txt")));
    EXPECT_FALSE(m_file_there_when_saved);
    EXPECT_EQ(Text(), "X\n1.000000\n");
}

TEST_F(Export, AFileThatCannotBeMadeIsAnErrorAndItsPathIsSaved) {
    ShowGraph({"X"}, {{1.0, 2.0, 3.0}});
    const std::string path = m_folder.File("no folder/values.txt");
    const ExpectErrorLog expected({kFailed});
    Answer(path);
    EXPECT_EQ(m_export.OnSaveValues(&Graph()), 1);
    EXPECT_EQ(m_settings.data_file, path);
    EXPECT_THAT(m_saved, ElementsAre(path));
    EXPECT_THAT(m_unwritten, ElementsAre(path));
}

TEST_F(Export, AFullDiskIsAnErrorAndLeavesWhatIsWritten) {
    ShowLongGraph(3);
    m_files.full_at = 3;  // the header, a piece, and then no more
    const ExpectErrorLog expected({kFailed});
    Save();
    EXPECT_EQ(RowsInFile(), kRowsOfPiece);
    EXPECT_THAT(m_unwritten, ElementsAre(m_settings.data_file));
    EXPECT_FALSE(m_export.IsUnderWay());
}

TEST_F(Export, ValuesThatArriveWhileTheDialogIsOpenAreNotInTheFile) {
    ShowGraph({"X"}, {{1.0, 2.0, 3.0}});
    WhenAsked([this](PathSaveData& dialog) {
        const std::array<double, 3> line{9.0, 9.0, 9.0};
        m_board.Distribute(line.data(), 1, 3);
        m_board.DropBuffers();
        FindControl<QLineEdit>(dialog, static_cast<int>(PathSaveDataId::kPath))
            ->setText(QString::fromStdString(m_folder.File("values.txt")));
        dialog.accept();
    });
    m_export.OnSaveValues(&Graph());
    EXPECT_EQ(Text(), "X\n1.000000\n");
}

TEST_F(Export, SettingsThatChangeWhileTheDialogIsOpenCount) {
    ShowGraph({"X", "Y"}, {{1.0, 2.0, 3.0}});
    WhenAsked([this](PathSaveData& dialog) {
        m_settings.separator = ';';
        FindControl<QLineEdit>(dialog, static_cast<int>(PathSaveDataId::kPath))
            ->setText(QString::fromStdString(m_folder.File("values.txt")));
        dialog.accept();
    });
    m_export.OnSaveValues(&Graph());
    EXPECT_EQ(Text(), "X;Y\n1.000000;2.000000\n");
}

// Events, progress and cancel. A write takes as long as the test says.

TEST_F(Export, OfHalfASecondShowsNoProgress) {
    ShowLongGraph(5);
    m_files.per_write = milliseconds(100);
    m_files.at_write = [](int) { EXPECT_EQ(RowsShown(), "nothing"); };
    Save();
    EXPECT_EQ(m_files.writes, 6);
    EXPECT_EQ(RowsInFile(), 5 * kRowsOfPiece);
}

TEST_F(Export, OfMoreThanHalfASecondShowsHowFarItIs) {
    ShowLongGraph(8);
    m_files.per_write = milliseconds(100);
    std::vector<std::string> shown;
    m_files.at_write = [&shown](int) { shown.push_back(RowsShown()); };
    Save();
    const std::string of_all = " of " + std::to_string(8 * kRowsOfPiece) + " rows";
    EXPECT_THAT(shown, ElementsAre("nothing", "nothing", "nothing", "nothing", "nothing", "nothing",
                                   std::to_string(5 * kRowsOfPiece) + of_all,
                                   std::to_string(6 * kRowsOfPiece) + of_all,
                                   std::to_string(7 * kRowsOfPiece) + of_all));
    EXPECT_EQ(Progress(), nullptr);
    EXPECT_EQ(RowsInFile(), 8 * kRowsOfPiece);
}

TEST_F(Export, HandlesEventsBetweenWrites) {
    ShowLongGraph(4);
    m_files.per_write = milliseconds(20);
    int handled = 0;
    m_files.at_write = [&handled](int write) {
        // The header and the first piece come with one pause.
        EXPECT_EQ(handled, std::max(0, write - 2));
        if (write > 1) {
            QMetaObject::invokeMethod(
                qApp, [&handled] { ++handled; }, Qt::QueuedConnection);
        }
    };
    Save();
    EXPECT_EQ(m_files.writes, 5);
    QCoreApplication::processEvents();
    EXPECT_EQ(handled, 4);
}

TEST_F(Export, OnAQuickDiskDoesNotStopForEvents) {
    ShowLongGraph(4);
    m_files.per_write = milliseconds(3);
    int handled = 0;
    m_files.at_write = [&handled](int) {
        QMetaObject::invokeMethod(
            qApp, [&handled] { ++handled; }, Qt::QueuedConnection);
    };
    Save();
    EXPECT_EQ(handled, 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(handled, 5);
}

TEST_F(Export, ThatIsCancelledLeavesTheRowsWrittenAndNoError) {
    ShowLongGraph(20);
    m_files.per_write = milliseconds(200);
    m_files.at_write = [this](int) {
        if (Progress() != nullptr && m_files.writes == 8) {
            QTest::mouseClick(
                FindControl<QPushButton>(*Progress(), static_cast<int>(ExportProgressId::kCancel)),
                Qt::LeftButton);
        }
    };
    Save();
    EXPECT_EQ(m_files.writes, 8);
    EXPECT_EQ(RowsInFile(), 7 * kRowsOfPiece);
    EXPECT_EQ(Progress(), nullptr);
    EXPECT_FALSE(m_export.IsUnderWay());
}

TEST_F(Export, ThatIsUnderWayLetsNoOtherBegin) {
    ShowLongGraph(4);
    m_files.per_write = milliseconds(100);
    int requests = 0;
    m_files.at_write = [&](int write) {
        if (write == 2) {
            QMetaObject::invokeMethod(
                qApp,
                [&] {
                    ++requests;
                    EXPECT_TRUE(m_export.IsUnderWay());
                    EXPECT_EQ(m_export.OnSaveValues(&Graph()), 1);
                },
                Qt::QueuedConnection);
        }
    };
    Save();
    EXPECT_EQ(requests, 1);
    EXPECT_EQ(m_asked, 1);
    EXPECT_THAT(m_saved, SizeIs(1));
    EXPECT_EQ(RowsInFile(), 4 * kRowsOfPiece);
    Save();  // afterwards one can
    EXPECT_THAT(m_saved, SizeIs(2));
}

TEST_F(Export, WithItsDialogOpenLetsNoOtherBegin) {
    ShowGraph({"X"}, {{1.0, 2.0, 3.0}});
    WhenAsked([this](PathSaveData& dialog) {
        EXPECT_EQ(m_export.OnSaveValues(&Graph()), 1);
        EXPECT_EQ(QApplication::activeModalWidget(), &dialog);
        dialog.reject();
    });
    m_export.OnSaveValues(&Graph());
    EXPECT_EQ(m_asked, 1);
}

TEST_F(Export, EndsWithTheWindow) {
    ShowLongGraph(10);
    m_files.per_write = milliseconds(100);
    m_files.at_write = [this](int write) {
        if (write == 4) {
            QMetaObject::invokeMethod(
                qApp, [this] { m_export.Cancel(); }, Qt::QueuedConnection);
        }
    };
    Save();
    EXPECT_EQ(m_files.writes, 4);
    EXPECT_EQ(RowsInFile(), 3 * kRowsOfPiece);
}

TEST_F(Export, WhoseDialogIsOpenEndsWithTheWindowToo) {
    ShowGraph({"X"}, {{1.0, 2.0, 3.0}});
    WhenAsked([this](PathSaveData&) { m_export.Cancel(); });
    m_export.OnSaveValues(&Graph());
    EXPECT_EQ(m_asked, 1);
    EXPECT_THAT(m_saved, IsEmpty());
    EXPECT_EQ(m_files.writes, 0);
    Save();  // an end is no end of the next one
    EXPECT_EQ(Text(), "X\n1.000000\n");
}

TEST_F(Export, WritesAMillionRows) {
    constexpr std::size_t kRows = 1'000'000;
    std::vector<std::array<double, 3>> lines(kRows);
    for (std::size_t i = 0; i < kRows; ++i) {
        lines[i] = {static_cast<double>(i), 0.5, 0.0};
    }
    ShowGraph({"X", "Y"}, lines, 2.0 * kRows * kCycleTime);
    Save();
    EXPECT_EQ(RowsInFile(), kRows);
    EXPECT_TRUE(Text().ends_with("\n999999.000000,0.500000\n"));
}

}  // namespace
}  // namespace wavo
