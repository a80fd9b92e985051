// The view as a widget: commands, mouse, keys and printing as a user meets them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QFile>
#include <QFontMetrics>
#include <QLineEdit>
#include <QPainter>
#include <QPrinter>
#include <QResizeEvent>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cmath>

#include "edit_graph.h"
#include "fake_shared_memory.h"
#include "graph/model/graph_ini_data.h"
#include "master_window.h"
#include "printed_page.h"
#include "real_prompts.h"
#include "settings/view_settings_file.h"
#include "system_facts.h"
#include "ui/controls/controls.h"
#include "ui/messages.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using testing::EditGraph;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A view with two graphs of X1 over time, connected to a master that sends nothing.
class View : public ::testing::Test {
 protected:
    View() {
        qputenv(testing::kDataHome, m_folder.path().toLocal8Bit());
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box.text);
            return BoxAnswer::kOk;
        };
        testing::ResetFakeSharedMemory();
        m_master.Publish();
        m_view.resize(800, 600);
        m_view.show();
        m_view.OnInitialUpdate(GraphFile());
        QCoreApplication::processEvents();
    }

    std::string GraphFile() {
        std::vector<WavoGraph> graphs(2);
        for (std::uint32_t i = 0; i < 2; ++i) {
            graphs[i].InitGraph(i + 1, "X1", 0, nullptr);
            graphs[i].XScale.TimeRange = 4.0;
        }
        graphs[1].Triggers = {{TriggerTypeCode::kStopAbove, 5.0, "X1"}};
        std::string path = m_folder.filePath(QStringLiteral("graphs.ini")).toStdString();
        MIniData store;
        EXPECT_TRUE(store.Open(path));
        EXPECT_TRUE(GetGraphAsIniData(store, graphs, ""));
        EXPECT_TRUE(store.Save());
        EXPECT_TRUE(WriteProperties(path, DefaultViewSettings()));
        return path;
    }

    /// Gives the graphs so many values and draws them.
    void Feed(int count, double height = 1.0) {
        for (int i = 0; i < count; ++i) {
            for (GraphValue& value : m_view.Work().Streams().Registry().Values()) {
                value.SetValue(height * std::sin(i * 0.05));
            }
        }
        QResizeEvent draw(m_view.size(), m_view.size());
        QCoreApplication::sendEvent(&m_view, &draw);
    }
    /// What stands on the screen, without the graph editor.
    [[nodiscard]] QImage Shown() {
        QImage shown = m_view.grab().toImage();
        QPainter(&shown).fillRect(0, 0, shown.width(), m_view.Screen().GraphArea().top(),
                                  Qt::black);
        return shown;
    }
    void Check(int control, bool checked) {
        FindControl<QCheckBox>(m_view.Editor(), control)->setChecked(checked);
    }
    [[nodiscard]] const GraphDraw& Drawer(std::size_t index) {
        return *m_view.Board().Drawers()[index];
    }
    [[nodiscard]] QPoint PlotPoint(std::size_t index, double part) {
        const QRect plot = Drawer(index).PlotArea();
        return {plot.left() + static_cast<int>(part * plot.width()), plot.center().y()};
    }
    void Drag(std::size_t index, double from, double to) {
        QTest::mousePress(&m_view, Qt::RightButton, Qt::NoModifier, PlotPoint(index, from));
        QTest::mouseMove(&m_view, PlotPoint(index, to));
        QTest::mouseRelease(&m_view, Qt::RightButton, Qt::NoModifier, PlotPoint(index, to));
    }

    QTemporaryDir m_folder;
    testing::MasterWindow m_master;
    std::vector<std::string> m_boxes;
    Prompts m_prompts = testing::RealPrompts();
    CWavoView m_view{m_prompts};
};

/// What is not the white of the paper.
QRect DarkPart(const QImage& page) {
    QRect part;
    for (int y = 0; y < page.height(); ++y) {
        for (int x = 0; x < page.width(); ++x) {
            if (page.pixel(x, y) != qRgb(255, 255, 255)) {
                part |= QRect(x, y, 1, 1);
            }
        }
    }
    return part;
}

constexpr int kZoomEnable = 1072;
constexpr int kAllGraphs = 1030;

TEST_F(View, ADragWithTheRightButtonZoomsAtOnceAndIsSteppedBack) {
    Check(kZoomEnable, true);
    Feed(1000);
    const QImage before = m_view.Screen().Picture().copy();
    Drag(0, 0.25, 0.75);
    EXPECT_TRUE(Drawer(0).Zoom().active);
    EXPECT_NEAR(Drawer(0).Zoom().start, 1.0, 0.02);
    EXPECT_NEAR(Drawer(0).Zoom().end, 3.0, 0.02);
    EXPECT_FALSE(Drawer(1).Zoom().active);
    EXPECT_NE(m_view.Screen().Picture(), before);
    EXPECT_FALSE(FindControl(m_view.Editor(), kAllGraphs)->isEnabled());
    QTest::keyClick(&m_view, Qt::Key_Minus);
    EXPECT_FALSE(Drawer(0).Zoom().active);
    EXPECT_TRUE(FindControl(m_view.Editor(), kAllGraphs)->isEnabled());
}

TEST_F(View, ADragInAWrappedSweepZoomsToTheSamplesUnderIt) {
    Check(kZoomEnable, true);
    EditGraph(m_view.Work().Graphs(), 0,
              [](WavoGraph& graph) { graph.Mode = GraphMode::kClassic; });
    SendAppMessage(&m_view, AppMessage::kGraphChanged, 0, 0);
    Feed(200);  // sin(0.05 i) of line i
    for (int i = 0; i < 40; ++i) {
        Feed(30);  // again from line 0: the sweep wraps
    }
    const LinesDrawAxis& line = *Drawer(0).Lines()[0];
    ASSERT_GT(line.OverTime()->Runs().size(), 1U);
    // Right of the gap stand the oldest samples.
    const CurveRun oldest = line.OverTime()->Runs().front();
    const double first_shown = static_cast<double>(oldest.step) * 0.004;
    ASSERT_LT(first_shown, 2.0);
    std::vector<double> marked;
    for (std::size_t place = 0; place < line.Size(); ++place) {
        const LinePoint point = line.Point(place);
        if (point.x_value >= Drawer(0).PixelToTime(PlotPoint(0, 0.6).x()) &&
            point.x_value < Drawer(0).PixelToTime(PlotPoint(0, 0.9).x())) {
            marked.push_back(point.y_value);
        }
    }
    Drag(0, 0.6, 0.9);
    ASSERT_TRUE(Drawer(0).Zoom().active);
    std::vector<double> shown;
    line.GetYValues(shown);
    ASSERT_GT(shown.size(), 10U);
    ASSERT_NEAR(static_cast<double>(shown.size()), static_cast<double>(marked.size()), 1.0);
    // The mark begins between two samples: one of them is the first that is shown.
    const std::vector<double> inside(marked.begin() + 1, marked.end() - 1);
    EXPECT_NE(std::search(shown.begin(), shown.end(), inside.begin(), inside.end() - 1),
              shown.end());
}

TEST_F(View, GraphsEndAboveTheAdditionalText) {
    const auto edit_text = [this](const QString& text) {
        QMetaObject::invokeMethod(
            qApp,
            [text] {
                auto* const dialog = dynamic_cast<QDialog*>(QApplication::activeModalWidget());
                ASSERT_NE(dialog, nullptr);
                dialog->findChild<QLineEdit*>()->setText(text);
                dialog->accept();
            },
            Qt::QueuedConnection);
        m_view.Commands().Execute(CommandId::kAdditionalText);
    };
    Feed(300);
    const QRect whole = m_view.Screen().GraphArea();
    const auto end = [this] { return Drawer(1).Rectangle().bottom(); };
    EXPECT_GE(end(), whole.bottom() - 1);
    const QImage before = m_view.Screen().Picture().copy();
    edit_text(QStringLiteral("machine 7"));
    const int line = QFontMetrics(MakeFont(m_view.Work().Settings().Current().font)).height();
    EXPECT_LE(end(), whole.bottom() - line);
    EXPECT_GE(end(), whole.bottom() - line - 3);
    EXPECT_EQ(m_view.Screen().GraphArea(), whole) << "the text is printed with the graphs";
    // Nothing but the text stands in its band.
    const QImage& picture = m_view.Screen().Picture();
    const QColor background = ToQColor(m_view.Work().Settings().Current().background);
    const int band = picture.height() - line;
    int text_pixels = 0;
    for (int y = band; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const bool in_middle = std::abs(x - picture.width() / 2) < 100;
            text_pixels += picture.pixelColor(x, y) == background ? 0 : 1;
            ASSERT_TRUE(in_middle || picture.pixelColor(x, y) == background) << x << ", " << y;
        }
    }
    EXPECT_GT(text_pixels, 20);
    edit_text(QString());
    EXPECT_EQ(m_view.Screen().Picture(), before);
}

TEST_F(View, WithoutTheBoxTheMouseDoesNotZoom) {
    Check(kZoomEnable, false);
    Feed(1000);
    Drag(0, 0.25, 0.75);
    EXPECT_FALSE(Drawer(0).Zoom().active);
}

TEST_F(View, WithAllGraphsAZoomAndItsWayBackAreForAll) {
    Check(kZoomEnable, true);
    Check(kAllGraphs, true);
    Feed(1000);
    Drag(1, 0.25, 0.75);
    EXPECT_TRUE(Drawer(0).Zoom().active);
    EXPECT_TRUE(Drawer(1).Zoom().active);
    QTest::keyClick(&m_view, Qt::Key_Backspace);
    EXPECT_FALSE(Drawer(0).Zoom().active);
    EXPECT_FALSE(Drawer(1).Zoom().active);
}

TEST_F(View, TheBandStandsOverThePictureNotInIt) {
    Check(kZoomEnable, true);
    Feed(1000);
    const QImage picture = m_view.Screen().Picture().copy();
    const QImage before = Shown();
    QTest::mousePress(&m_view, Qt::RightButton, Qt::NoModifier, PlotPoint(0, 0.25));
    QTest::mouseMove(&m_view, PlotPoint(0, 0.75));
    const QImage during = Shown();
    EXPECT_EQ(m_view.Screen().Picture(), picture);
    const QPoint inside = PlotPoint(0, 0.6);
    EXPECT_NE(during.pixelColor(inside), before.pixelColor(inside));
    EXPECT_EQ(during.pixelColor(PlotPoint(0, 0.9)), before.pixelColor(PlotPoint(0, 0.9)));
    QTest::keyClick(&m_view, Qt::Key_Escape);
    EXPECT_EQ(Shown(), before);
    QTest::mouseRelease(&m_view, Qt::RightButton, Qt::NoModifier, PlotPoint(0, 0.75));
    EXPECT_FALSE(Drawer(0).Zoom().active);
}

TEST_F(View, ARestartForgetsTheZooms) {
    Check(kZoomEnable, true);
    Feed(1000);
    QTest::keyClick(&m_view, Qt::Key_Plus);
    ASSERT_TRUE(Drawer(0).Zoom().active);
    m_view.Commands().Execute(CommandId::kStop);
    m_view.Commands().Execute(CommandId::kStart);
    EXPECT_FALSE(Drawer(0).Zoom().active);
    EXPECT_TRUE(FindControl(m_view.Editor(), kAllGraphs)->isEnabled());
}

TEST_F(View, StartAfterTriggerLeavesTheZoomOfAnotherGraph) {
    Check(kZoomEnable, true);
    Feed(500);
    QTest::keyClick(&m_view, Qt::Key_Plus);
    ASSERT_TRUE(Drawer(0).Zoom().active);
    Feed(100, 10.0);
    ASSERT_TRUE(m_view.Commands().IsEnabled(CommandId::kStartAfterTrigger));
    m_view.Commands().Execute(CommandId::kStartAfterTrigger);
    EXPECT_FALSE(Drawer(0).Zoom().active);
    EXPECT_FALSE(m_view.Commands().IsEnabled(CommandId::kStartAfterTrigger));
}

TEST_F(View, SaysWhatAGraphNeedsThatIsMadeAnewAfterItsTrigger) {
    QSignalSpy panes(&m_view.News(), &ViewNews::PaneTextChanged);
    Feed(100, 10.0);
    ASSERT_EQ(Drawer(1).State(), RunState::kStoppedAfterStop);
    SendAppMessage(&m_view, AppMessage::kGraphChanged, 0, 1);
    ASSERT_EQ(panes.size(), 1);
    EXPECT_EQ(panes[0][1].toString(),
              "A graph was made anew after its trigger had stopped it: Run control > Stop, then "
              "Start to go on");
    panes.clear();
    m_view.Commands().Execute(CommandId::kStop);
    m_view.Commands().Execute(CommandId::kStart);
    EXPECT_EQ(panes.back()[1].toString(), "Connected to the master process (Dorvane)");
}

TEST_F(View, MakesItsGraphsOnceForChangesThatCameBefore) {
    PostAppMessage(&m_view, AppMessage::kGraphChanged, 0, 1);
    SendAppMessage(&m_view, AppMessage::kGraphChanged, 0, 1);
    Feed(100, 10.0);
    ASSERT_EQ(Drawer(1).State(), RunState::kStoppedAfterStop);
    QCoreApplication::processEvents();
    EXPECT_EQ(Drawer(1).State(), RunState::kStoppedAfterStop);
    PostAppMessage(&m_view, AppMessage::kGraphChanged, 0, 1);
    QCoreApplication::processEvents();
    EXPECT_EQ(Drawer(1).State(), RunState::kWaitingForStop);
}

TEST_F(View, TitlesFollowTheCommands) {
    QSignalSpy titles(&m_view.News(), &ViewNews::FrameTitleChanged);
    m_view.Commands().Execute(CommandId::kStop);
    m_view.Commands().Execute(CommandId::kStart);
    m_view.Commands().Execute(CommandId::kNew);
    m_view.Commands().Execute(CommandId::kStop);
    std::vector<std::string> seen;
    for (const QList<QVariant>& title : titles) {
        seen.push_back(title[0].toString().toStdString());
    }
    EXPECT_THAT(seen, ElementsAre("graphs.ini - stopped", "graphs.ini - running", "new",
                                  "graphs.ini - stopped"));
}

TEST_F(View, OffersWhatMakesSense) {
    EXPECT_FALSE(m_view.Commands().IsEnabled(CommandId::kStart));
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kStop));
    EXPECT_FALSE(m_view.Commands().IsEnabled(CommandId::kStartAfterTrigger));
    EXPECT_FALSE(m_view.Commands().IsEnabled(CommandId::kConnect));
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kNew));
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kOpen));
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kSave));
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kSaveAs));
    EXPECT_FALSE(m_view.Commands().IsEnabled(CommandId::kShowGraphEditor));  // it is shown
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kPrint));
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kPrintPreview));
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kPageSetup));
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kProperties));
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kAdditionalText));
    EXPECT_FALSE(m_view.Commands().IsEnabled(CommandId::kRecentFile));
    EXPECT_FALSE(m_view.Commands().IsEnabled(CommandId::kExit));  // not the view's
    SendAppMessage(&m_view.Editor(), AppMessage::kCloseEditor, 0, 0);
    EXPECT_TRUE(m_view.Commands().IsEnabled(CommandId::kShowGraphEditor));
    m_view.Commands().Execute(CommandId::kShowGraphEditor);
    EXPECT_FALSE(m_view.Commands().IsEnabled(CommandId::kShowGraphEditor));
}

TEST_F(View, ACommandThatIsNotOfferedDoesNothing) {
    QSignalSpy titles(&m_view.News(), &ViewNews::FrameTitleChanged);
    m_view.Commands().Execute(CommandId::kConnect);
    m_view.Commands().Execute(CommandId::kStart);
    m_view.Commands().Execute(CommandId::kRecentFile);
    m_view.Commands().Execute(CommandId::kExit);
    EXPECT_THAT(m_boxes, IsEmpty());
    EXPECT_EQ(titles.size(), 0);
}

TEST_F(View, RecentFilesComeFromTheirList) {
    m_view.Commands().SetRecentFiles([this](int index) {
        return index == 1 ? m_folder.filePath(QStringLiteral("gone.ini")).toStdString()
                          : std::string();
    });
    const auto second = static_cast<CommandId>(static_cast<int>(CommandId::kRecentFile) + 1);
    EXPECT_FALSE(m_view.Commands().IsEnabled(CommandId::kRecentFile));
    ASSERT_TRUE(m_view.Commands().IsEnabled(second));
    m_view.Commands().Execute(second);
    EXPECT_THAT(m_boxes,
                ElementsAre("file " + m_folder.filePath(QStringLiteral("gone.ini")).toStdString() +
                            " not exist !"));
}

TEST_F(View, NewShowsNoGraphs) {
    Feed(100);
    m_view.Commands().Execute(CommandId::kNew);
    EXPECT_THAT(m_view.Board().Drawers(), IsEmpty());
    const QImage& picture = m_view.Screen().Picture();
    for (int y = 0; y < picture.height(); y += 7) {
        for (int x = 0; x < picture.width(); x += 7) {
            ASSERT_EQ(picture.pixelColor(x, y), QColor(Qt::black));
        }
    }
}

TEST_F(View, PrintsWhatItShows) {
    SendAppMessage(&m_view.Editor(), AppMessage::kCloseEditor, 0, 0);
    Feed(1000);
    m_prompts.box = [](QWidget*, const Box&) { return BoxAnswer::kYes; };
    const QString file =
        qEnvironmentVariable("WAVO_KEEP_PAGE", m_folder.filePath(QStringLiteral("page.pdf")));
    m_prompts.print = [&](QWidget* parent, QPrinter& printer) {
        EXPECT_EQ(parent, &m_view);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(file);
        return true;
    };
    m_view.Commands().Execute(CommandId::kPrint);
    ASSERT_TRUE(QFile::exists(file));
    if (!testing::CanReadPages()) {
        GTEST_SKIP() << testing::kNoPageReader;
    }
    const QImage& picture = m_view.Screen().Picture();
    const QImage page = testing::PageOf(file, 500);
    const QRect printed = DarkPart(page);
    const double scale = static_cast<double>(printed.width()) / picture.width();
    ASSERT_GT(scale, 4.0) << "pixels are not told apart";
    EXPECT_NEAR(printed.height() / scale, picture.height(), 1.0);
    int different = 0;
    for (int y = 1; y < picture.height() - 1; ++y) {
        for (int x = 1; x < picture.width() - 1; ++x) {
            const QRgb on_page = page.pixel(printed.left() + static_cast<int>((x + 0.5) * scale),
                                            printed.top() + static_cast<int>((y + 0.5) * scale));
            different += on_page == picture.pixel(x, y) ? 0 : 1;
        }
    }
    EXPECT_EQ(different, 0) << "pixels that are not as on the screen";
}

TEST_F(View, AfterStartAfterTriggerTheEditorShowsTheTimeOfTheRecord) {
    Feed(1000);
    m_view.Zooms().ZoomGraph(0, 1.0, 3.5);
    ASSERT_EQ(m_view.Editor().Fields().Text(EditorControl::kTimeRange), "2.500");
    Feed(1000, 10.0);
    ASSERT_TRUE(m_view.Commands().IsEnabled(CommandId::kStartAfterTrigger));
    m_view.Commands().Execute(CommandId::kStartAfterTrigger);
    EXPECT_FALSE(Drawer(0).Zoom().active);
    EXPECT_EQ(m_view.Editor().Fields().Text(EditorControl::kTimeRange), "4.000");
}

TEST_F(View, AtItsStartTakesTheSettingsOfItsGraphFileAndSaveKeepsThem) {
    const std::string path = GraphFile();
    ViewSettings settings = DefaultViewSettings();
    settings.background = 0x302010;
    settings.scale_lines_x = 8;
    settings.show_graph_editor = false;
    settings.export_settings.separator = ';';
    settings.export_settings.data_file = m_folder.filePath("mine.txt").toStdString();
    ASSERT_TRUE(WriteProperties(path, settings));
    const auto text = [&path] {
        QFile file(QString::fromStdString(path));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().toStdString();
    };
    const std::string before = text();
    CWavoView view(m_prompts);
    view.resize(800, 600);
    view.show();
    EXPECT_TRUE(view.Work().Files().CurrentPath().empty());
    view.OnInitialUpdate(path);
    QCoreApplication::processEvents();
    EXPECT_EQ(view.Work().Settings().Current(), settings);
    EXPECT_FALSE(view.Screen().IsEditorShown());
    EXPECT_EQ(view.Screen().Picture().pixelColor(0, 0), QColor(0x10, 0x20, 0x30));
    EXPECT_EQ(view.Work().Graphs().Graphs().size(), 2U);
    view.Commands().Execute(CommandId::kSave);
    EXPECT_EQ(text(), before);
    EXPECT_THAT(m_boxes, IsEmpty());
}

}  // namespace
}  // namespace wavo
