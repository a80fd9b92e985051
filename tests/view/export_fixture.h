// The export of the values of a graph with its dialog, its settings and its file, without a view.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "real_prompts.h"
#include "settings/view_settings.h"
#include "slow_files.h"
#include "temporary_folder.h"
#include "ui/controls/controls.h"
#include "ui/dialogs/export_progress.h"
#include "ui/dialogs/path_save_data.h"
#include "view/data_export.h"
#include "view/graph_board.h"

namespace wavo::testing {

class Export : public ::testing::Test {
 protected:
    Export() {
        m_settings.end_of_line = "\n";
        m_settings.data_file = m_folder.File("before.txt");
    }

    void SaveSettings() {
        m_saved.push_back(m_settings.data_file);
        m_file_there_when_saved = std::filesystem::exists(m_settings.data_file);
    }

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
        m_graphs.Replace({graph});
        m_board.CreateAllGraphRects({0, 0, 300, 200}, kCycleTime, {"X", "Y", "Z"}, {});
        m_streams.Distribute({lines.empty() ? nullptr : lines.front().data(), lines.size(), 3});
    }
    /// A graph with so many values that its file takes `pieces` writes behind the header.
    void ShowLongGraph(int pieces) {
        const std::size_t rows = kRowsOfPiece * static_cast<std::size_t>(pieces);
        std::vector<std::array<double, 3>> lines(rows, {100'000.5, 0.0, 0.0});
        // Twice the range: a range that the values fill exactly may lose one to rounding.
        ShowGraph({"X"}, lines, 2.0 * static_cast<double>(rows) * kCycleTime);
    }
    [[nodiscard]] const WavoGraph& Graph() const { return m_graphs.Graphs().front(); }

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

    static constexpr double kCycleTime = 0.004;
    /// Rows "100000.500000\n" that fill a piece of the file.
    static constexpr std::size_t kRowsOfPiece = ((1U << 16U) + 13) / 14;

    const TemporaryFolder m_folder;
    ExportSettings m_settings;
    std::vector<std::string> m_saved;
    std::vector<std::string> m_unwritten;  // what the status bar told of
    bool m_file_there_when_saved = false;
    int m_asked = 0;
    SlowFiles m_files;
    GraphList m_graphs;
    ValueStreams m_streams;
    GraphBoard m_board{m_graphs, m_streams, [] {}};
    DataExport m_export{m_board,
                        {m_settings, [this] { SaveSettings(); },
                         [this](const std::string& path) { m_unwritten.push_back(path); },
                         [] { return nullptr; }, RealPrompts()},
                        [this] { return m_files.now; }};
};

}  // namespace wavo::testing
