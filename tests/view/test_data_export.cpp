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
#include <string>
#include <vector>

#include "expect_errors.h"
#include "export_fixture.h"

namespace wavo {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::Export;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kNotFound[] = "CWavoView::OnMessageFromAxSelectSaveValues: Graph not found";

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
    m_streams.Distribute({line.data(), 1, 3});
    EXPECT_EQ(m_export.OnSaveValues(&other), 1);
    m_streams.Drop();
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
    WavoGraph graph = m_graphs.Graphs().front();
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "X";
    graph.XScale.ScaleType = ScaleTypeCode::kAxis;
    graph.XScale.ScaleAx = ScaleAxCode::kAutomatic;
    graph.FadeOutTime = 3.0;
    m_graphs.Put(graph);
    m_board.CreateAllGraphRects({0, 0, 300, 200}, kCycleTime, {"X", "Y", "Z"}, {});
    const std::array<double, 6> lines{1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
    m_streams.Distribute({lines.data(), 2, 3});
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

TEST_F(Export, ValuesThatArriveWhileTheDialogIsOpenAreNotInTheFile) {
    ShowGraph({"X"}, {{1.0, 2.0, 3.0}});
    WhenAsked([this](PathSaveData& dialog) {
        const std::array<double, 3> line{9.0, 9.0, 9.0};
        m_streams.Distribute({line.data(), 1, 3});
        m_streams.Drop();
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
