#include "view/data_export.h"

#include <QCoreApplication>
#include <QDialog>
#include <algorithm>
#include <utility>

#include "graph/draw/graph_draw.h"
#include "support/diagnostics.h"
#include "ui/dialogs/export_progress.h"
#include "ui/dialogs/path_save_data.h"
#include "view/graph_board.h"
#include "view/report_texts.h"

namespace wavo {

DataExport::DataExport(const GraphBoard& board, Surroundings surroundings, Clock clock)
    : m_board(board), m_surroundings(std::move(surroundings)), m_clock(std::move(clock)) {}

DataExport::~DataExport() = default;

std::chrono::milliseconds DataExport::SteadyClock() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

std::vector<std::string> ExportedAxisNames(const WavoGraph& graph) {
    std::vector<std::string> names;
    const auto add = [&names](const std::string& name) {
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            names.push_back(name);
        }
    };
    for (const std::string& name : graph.YCoorAxName) {
        add(name);
    }
    if (!graph.XCoorAxName.empty()) {
        add(graph.XCoorAxName);
    }
    return names;
}

std::int64_t DataExport::OnSaveValues(const WavoGraph* graph) {
    if (graph != nullptr && !m_is_under_way) {
        m_is_under_way = true;
        m_is_cancelled = false;
        Export(*graph);
        m_DataExport.Clear();
        m_is_under_way = false;
    }
    return 1;
}

void DataExport::Export(const WavoGraph& graph) {
    if (m_board.FindDrawerWithValues(graph.GraphNumber) == nullptr) {
        MERRLOG(view_texts::kNothingToSave);
        return;
    }
    const std::vector<std::string> axis_names = ExportedAxisNames(graph);
    CollectColumns(graph, axis_names);
    if (!AskForPath(axis_names, m_path)) {
        return;
    }
    ExportSettings& settings = m_surroundings.settings;
    settings.data_file = m_path;
    m_DataExport.SetSettings(settings);
    m_surroundings.save_settings();
    WriteFile();
}

void DataExport::CollectColumns(const WavoGraph& graph,
                                const std::vector<std::string>& axis_names) {
    const GraphDraw& drawer = *m_board.FindDrawerWithValues(graph.GraphNumber);
    m_DataExport.Clear();
    std::vector<std::vector<double>> columns;
    drawer.GetAxRows(axis_names, columns);
    for (std::size_t i = 0; i < axis_names.size(); ++i) {
        m_DataExport.FindOrAddColumn(axis_names[i]) = std::move(columns[i]);
    }
}

bool DataExport::AskForPath(const std::vector<std::string>& axis_names, std::string& path) {
    PathSaveData dialog(m_surroundings.settings.data_file, axis_names, m_surroundings.prompts,
                        m_surroundings.window());
    m_path_dialog = &dialog;
    const bool is_accepted = dialog.exec() == QDialog::Accepted;
    m_path_dialog = nullptr;
    path = dialog.Path();
    return is_accepted && !m_is_cancelled;
}

void DataExport::WriteFile() {
    m_begin = m_clock();
    m_events_handled = m_begin;
    const Expected<SaveValues::Ending> ending = m_DataExport.CreateDataFile(
        [this](std::uint64_t written, std::uint64_t total) { return GoOn(written, total); });
    m_progress.reset();
    if (!ending) {
        MERRLOG(view_texts::kDataFileNotWritten);
        m_surroundings.unwritten(m_path);
    }
}

bool DataExport::GoOn(std::uint64_t written, std::uint64_t total) {
    const std::chrono::milliseconds now = m_clock();
    if (now - m_events_handled < kEventPause) {
        return true;
    }
    if (m_progress == nullptr && now - m_begin > kPatience) {
        m_progress = std::make_unique<ExportProgress>(m_path, m_surroundings.window());
        m_progress->show();
    }
    if (m_progress != nullptr) {
        m_progress->SetRows(written, total);
    }
    QCoreApplication::processEvents();
    m_events_handled = m_clock();
    return !m_is_cancelled && (m_progress == nullptr || !m_progress->WasCancelled());
}

void DataExport::Cancel() {
    m_is_cancelled = true;
    if (m_path_dialog != nullptr) {
        m_path_dialog->reject();
    }
}

}  // namespace wavo
