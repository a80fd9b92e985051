// The values of a recording go through buffers and graph into the file, to the last digit.

#include <gtest/gtest.h>
#include <zlib.h>

#include <QApplication>
#include <QImage>
#include <memory>
#include <string>
#include <vector>

#include "graph/draw/graph_draw.h"
#include "master/recording.h"
#include "real_prompts.h"
#include "settings/view_settings.h"
#include "temporary_folder.h"
#include "ui/dialogs/path_save_data.h"
#include "view/data_export.h"
#include "view/graph_board.h"

namespace wavo {
namespace {

constexpr double kCycleTime = 0.001;
/// The axes of a recording: its first columns.
const std::vector<std::string> kAxes{"X_cmd", "Y_cmd", "Z_cmd", "A_cmd", "X", "Y", "Z", "A"};

/// The rows of a recording as text, cut behind the axes.
std::vector<std::string> RecordedRows(const std::string& path) {
    std::vector<std::string> rows;
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(::gzopen(path.c_str(), "rb"), ::gzclose);
    EXPECT_NE(file, nullptr);
    char line[512];
    while (file != nullptr && ::gzgets(file.get(), line, sizeof line) != nullptr) {
        const std::string row = line;
        std::size_t end = 0;
        for (std::size_t i = 0; i < kAxes.size(); ++i) {
            end = row.find(',', end + 1);
        }
        rows.push_back(row.substr(0, end));
    }
    return rows;
}

class ExportedRecording : public ::testing::TestWithParam<const char*> {
 protected:
    ExportedRecording() {
        m_settings.end_of_line = "\n";
        m_settings.data_file = m_folder.File("values.txt");
    }

    /// A graph of all axes that holds a recording of this many rows.
    void MakeGraph(std::size_t rows) {
        WavoGraph graph;
        for (const std::string& axis : kAxes) {
            WavoGraph one;
            one.InitGraph(3, axis.c_str(), 0, nullptr);
            if (graph.YCoorAxName.empty()) {
                graph = one;
                continue;
            }
            graph.YCoorAxName.push_back(axis);
            graph.YCoorAxColor.push_back(0);
            graph.YCoorAxDerivation.push_back(0);
            graph.Triggers.push_back(one.Triggers.front());
            graph.YScales.push_back(one.YScales.front());
        }
        graph.XScale.TimeRange = 2.0 * static_cast<double>(rows) * kCycleTime;
        m_graphs.Replace({graph});
        m_board.CreateAllGraphRects({0, 0, 300, 200}, kCycleTime, kAxes, {});
    }

    /// Plays the recording as the viewer gets it: batches, each followed by a drawing step.
    void Play(const master::Recording& recording) {
        QImage picture(300, 200, QImage::Format_RGB32);
        std::vector<double> batch;
        std::vector<double> line(kAxes.size());
        for (std::uint64_t i = 0; i < recording.LinesPerRound(); ++i) {
            recording.Line(i, line);
            batch.insert(batch.end(), line.begin(), line.end());
            if (batch.size() == 300 * line.size() || i + 1 == recording.LinesPerRound()) {
                m_streams.Distribute({batch.data(), batch.size() / line.size(), line.size()});
                m_board.DrawAll(picture, false);
                batch.clear();
            }
        }
    }

    const testing::TemporaryFolder m_folder;
    ExportSettings m_settings;
    GraphList m_graphs;
    ValueStreams m_streams;
    GraphBoard m_board{m_graphs, m_streams, [] {}};
    DataExport m_export{m_board,
                        {m_settings, [] {}, [](const std::string& path) { ADD_FAILURE() << path; },
                         [] { return nullptr; }, testing::RealPrompts()}};
};

TEST_P(ExportedRecording, HasTheRecordingsOwnText) {
    const std::string path = std::string(WAVO_RECORDINGS) + "/" + GetParam();
    std::vector<std::string> recorded = RecordedRows(path);
    std::string error;
    const auto recording = master::Recording::Read(path, kAxes, &error);
    ASSERT_NE(recording, nullptr) << error;
    ASSERT_GT(recorded.size(), 19'000U);
    MakeGraph(recorded.size());
    Play(*recording);
    QMetaObject::invokeMethod(
        qApp, [] { dynamic_cast<PathSaveData&>(*QApplication::activeModalWidget()).accept(); },
        Qt::QueuedConnection);
    m_export.OnSaveValues(&m_graphs.Graphs().front());
    const std::vector<std::string> exported = m_folder.Lines("values.txt");
    // The span that a graph shows, whole seconds over cycle time, may be rounded down by one row.
    ASSERT_GE(exported.size() + 1, recorded.size());
    recorded.erase(
        recorded.begin() + 1,
        recorded.begin() + 1 + static_cast<std::ptrdiff_t>(recorded.size() - exported.size()));
    EXPECT_EQ(exported, recorded);
}

INSTANTIATE_TEST_SUITE_P(Recordings, ExportedRecording,
                         ::testing::Values("circle_xy_r50.csv.gz", "drill_g81_g83_g82.csv.gz",
                                           "helix_4axis.csv.gz", "rose_small_segments.csv.gz"),
                         [](const auto& info) {
                             const std::string name = info.param;
                             return name.substr(0, name.find('.'));
                         });

}  // namespace
}  // namespace wavo
