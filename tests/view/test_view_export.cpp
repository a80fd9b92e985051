// The view's side of saving values: the message of the graph editor, and the settings.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "real_prompts.h"
#include "settings/view_settings_file.h"
#include "system_facts.h"
#include "temporary_folder.h"
#include "ui/controls/controls.h"
#include "ui/dialogs/path_save_data.h"
#include "ui/messages.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using testing::ExpectErrorLog;

class ViewExport : public ::testing::Test {
 protected:
    ViewExport() { testing::SetVariable(testing::kDataHome, m_folder.path()); }
    ~ViewExport() override { testing::UnsetVariable(testing::kDataHome); }

    void ShowGraphWithValues() {
        WavoGraph graph;
        graph.InitGraph(1, "X", 0, nullptr);
        m_view.Work().Graphs().Replace({graph}, GraphList::Telling::kSilent);
        m_view.Board().CreateAllGraphRects({0, 0, 300, 200}, 0.004, {"X"},
                                           m_view.Work().Settings().Current());
        const double values[] = {1.25, -2.0};
        m_view.Work().Streams().Distribute({values, 2, 1});
    }
    std::int64_t Send(const WavoGraph* graph) {
        return SendAppMessage(&m_view, AppMessage::kSaveValues, 0,
                              reinterpret_cast<std::int64_t>(graph));
    }
    void WhenAsked(const std::function<void(PathSaveData&)>& action) {
        QMetaObject::invokeMethod(
            qApp,
            [this, action] {
                ++m_asked;
                action(dynamic_cast<PathSaveData&>(*QApplication::activeModalWidget()));
            },
            Qt::QueuedConnection);
    }

    const testing::TemporaryFolder m_folder;
    CWavoView m_view{testing::RealPrompts()};
    int m_asked = 0;
};

TEST_F(ViewExport, TheMessageOfTheEditorSavesTheValuesOfItsGraph) {
    ShowGraphWithValues();
    const std::string path = m_folder.File("chosen.txt");
    WhenAsked([&](PathSaveData& dialog) {
        FindControl<QLineEdit>(dialog, static_cast<int>(PathSaveDataId::kPath))
            ->setText(QString::fromStdString(path));
        dialog.accept();
    });
    EXPECT_EQ(Send(&m_view.Work().Graphs().Graphs().front()), 1);
    EXPECT_EQ(m_folder.Read("chosen.txt"), "X\r\n1.250000\r\n-2.000000\r\n");
    EXPECT_EQ(m_view.Work().Settings().Current().export_settings.data_file, path);
    ViewSettings stored;
    ReadProperties(m_folder.File("Velk/wavo.ini"), stored);
    EXPECT_EQ(stored.export_settings.data_file, path);
}

TEST_F(ViewExport, AnExportThatFailsIsToldInTheStatusBar) {
    ShowGraphWithValues();
    std::vector<std::string> told;
    QObject::connect(&m_view.News(), &ViewNews::PaneTextChanged,
                     [&](StatusPane pane, const QString& text) {
                         EXPECT_EQ(pane, StatusPane::kMessage);
                         told.push_back(text.toStdString());
                     });
    const std::string path = m_folder.File("no folder/values.txt");
    WhenAsked([&](PathSaveData& dialog) {
        FindControl<QLineEdit>(dialog, static_cast<int>(PathSaveDataId::kPath))
            ->setText(QString::fromStdString(path));
        dialog.accept();
    });
    const ExpectErrorLog expected({"CView::OnCreate(): m_DataExport.CreateDataFile()"});
    EXPECT_EQ(Send(&m_view.Work().Graphs().Graphs().front()), 1);
    EXPECT_THAT(told, ElementsAre("Cannot write " + path + ", see the error log"));
}

TEST_F(ViewExport, AMessageWithoutAGraphDoesNothing) {
    EXPECT_EQ(Send(nullptr), 1);
}

TEST_F(ViewExport, AMessageWithAGraphThatIsNotDrawnIsAnError) {
    WavoGraph graph;
    graph.InitGraph(9, "X", 0, nullptr);
    const ExpectErrorLog expected({"CWavoView::OnMessageFromAxSelectSaveValues: Graph not found"});
    EXPECT_EQ(Send(&graph), 1);
}

TEST_F(ViewExport, ClosingTheWindowLeavesTheDialog) {
    ShowGraphWithValues();
    WhenAsked([this](PathSaveData& dialog) {
        m_view.OnClose();
        EXPECT_FALSE(dialog.isVisible());
    });
    EXPECT_EQ(Send(&m_view.Work().Graphs().Graphs().front()), 1);
    EXPECT_EQ(m_asked, 1);
}

}  // namespace
}  // namespace wavo
