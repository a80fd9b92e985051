#include "viewer_fixture.h"

#include <QCoreApplication>
#include <algorithm>
#include <filesystem>

#include "graph/model/graph_ini_data.h"
#include "support/mini_data.h"

namespace wavo::testing {

namespace fs = std::filesystem;

Viewer::Viewer() {
    // Where a test before this one has quit, every dialog would end at once: an event loop that has
    // run to its end takes that back.
    QMetaObject::invokeMethod(
        qApp, [] { QCoreApplication::quit(); }, Qt::QueuedConnection);
    QCoreApplication::exec();
    SetBoxHandler([this](const Box& box) {
        m_boxes.push_back(box.caption + ": " + box.text);
        return BoxAnswer::kOk;
    });
}

Viewer::~Viewer() {
    m_frame.reset();
    SetBoxHandler(nullptr);
}

void Viewer::Open(const std::vector<std::string>& axes, double time_range) {
    std::vector<WavoGraph> graphs;
    for (const std::string& axis : axes) {
        WavoGraph graph;
        graph.InitGraph(static_cast<std::uint32_t>(graphs.size() + 1), axis.c_str(), 0, nullptr);
        graph.XScale.TimeRange = time_range;
        graphs.push_back(graph);
    }
    OpenWith(graphs);
}

void Viewer::OpenWith(const std::vector<WavoGraph>& graphs) {
    m_frame = std::make_unique<CMainFrame>();
    const std::string file = WriteGraphFile(graphs);
    m_frame->show();
    View().OnInitialUpdate(file);
}

std::string Viewer::WriteGraphFile(const std::vector<WavoGraph>& graphs) {
    std::string file = m_folder.filePath(QStringLiteral("graphs.ini")).toStdString();
    MIniData store;
    EXPECT_TRUE(store.Open(file));
    EXPECT_TRUE(GetGraphAsIniData(store, graphs, ""));
    EXPECT_TRUE(store.Save());
    return file;
}

std::vector<double> Viewer::Held(const std::string& axis) {
    std::vector<double> held;
    for (GraphValue& value : View().Board().Registry().Values()) {
        if (value.Name() == axis && value.DerivationOrder() == 0) {
            double start = 0.0;
            value.GetTimeRangeValues(held, 2.0 * value.TimeRange(), start);
        }
    }
    return held;
}

std::vector<std::string> Leftovers() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator("/dev/shm")) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("MachineTools_InfoData") || name.starts_with("MValues_") ||
            name.starts_with("DataModCap")) {
            names.push_back(name);
        }
    }
    const fs::path sockets =
        fs::path(qEnvironmentVariable("XDG_RUNTIME_DIR").toStdString()) / "wavo";
    if (fs::exists(sockets)) {
        for (const auto& entry : fs::directory_iterator(sockets)) {
            names.push_back("socket " + entry.path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace wavo::testing
