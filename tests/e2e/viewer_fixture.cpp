#include "viewer_fixture.h"

#include <QApplication>
#include <QTimer>

#include "graph/model/graph_ini_data.h"
#include "settings/view_settings_file.h"
#include "support/mini_data.h"

namespace wavo::testing {

Viewer::Viewer() {
    // After an end that the test before asked for, windows would not wait for their user any more.
    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
    QCoreApplication::exec();
    m_prompts.box = [this](QWidget*, const Box& box) {
        m_boxes.push_back(box.caption + ": " + box.text);
        return BoxAnswer::kOk;
    };
}

Viewer::~Viewer() {
    m_frame.reset();
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
    m_frame = std::make_unique<CMainFrame>(m_prompts);
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
    EXPECT_TRUE(WriteProperties(file, DefaultViewSettings()));
    return file;
}

std::vector<double> Viewer::Held(const std::string& axis) {
    std::vector<double> held;
    for (GraphValue& value : View().Work().Streams().Registry().Values()) {
        if (value.Name() == axis && value.DerivationOrder() == 0) {
            double start = 0.0;
            value.GetTimeRangeValues(held, 2.0 * value.TimeRange(), start);
        }
    }
    return held;
}

}  // namespace wavo::testing
