// The table of measurements beside the real view.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <limits>
#include <memory>
#include <random>

#include "lines_from_memory.h"
#include "real_prompts.h"
#include "sample_recording.h"
#include "system_facts.h"
#include "ui/panes/measure_control.h"
#include "ui/panes/measure_model.h"
#include "ui/panes/measurements_pane.h"
#include "ui/panes/pane_dock.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::LinesFromMemory;

/// A window with the view and the pane; the master sends whole numbers: X = line, Y = -2 line.
class Measured : public ::testing::Test {
 protected:
    Measured() {
        qputenv(testing::kDataHome, m_folder.path().toLocal8Bit());
        m_prompts.save_file = [this](QWidget*, const FileQuestion& question) {
            m_asked = question;
            return m_chosen;
        };
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box.caption + ": " + box.text);
            return m_answer;
        };
        auto source = std::make_unique<LinesFromMemory>();
        m_source = source.get();
        m_frame = std::make_unique<QMainWindow>();
        m_view = new CWavoView(m_prompts, m_frame.get(), std::move(source));
        m_frame->setCentralWidget(m_view);
        m_frame->resize(1200, 800);
        m_control = std::make_unique<MeasureControl>(*m_frame, *m_view, m_prompts, &m_settings);
        m_control->SetClock([this] { return m_now; });
        m_frame->show();
        m_view->OnInitialUpdate();
        QCoreApplication::processEvents();
        Show({GraphOf(1, "X"), GraphOf(2, "Y")});
    }
    ~Measured() override {
        m_control.reset();
        m_frame.reset();
        qunsetenv(testing::kDataHome);
    }

    static WavoGraph GraphOf(std::uint32_t number, const char* axis) {
        WavoGraph graph;
        graph.InitGraph(number, axis, 0, nullptr);
        graph.Mode = GraphMode::kContinuity;
        graph.XScale.TimeRange = 4.0;
        return graph;
    }
    void Show(const std::vector<WavoGraph>& graphs) {
        m_view->Work().Graphs().Replace(graphs);
        m_view->Work().RebuildGraphs();
        QCoreApplication::processEvents();
    }
    void Give(int count) {
        m_source->values.clear();
        for (int i = 0; i < count; ++i) {
            const auto line = static_cast<double>(m_given++);
            m_source->values.insert(m_source->values.end(), {line, -2.0 * line});
        }
        EXPECT_TRUE(m_source->events->BatchReady());
    }
    /// 1000 lines, stopped, the pane open, A on line 100, B on line 200.
    void Open() {
        Give(1000);
        m_view->Commands().Execute(CommandId::kStop);
        m_control->Execute(CommandId::kMeasurements);
        QCoreApplication::processEvents();
        m_view->Cursors().PutOn(CursorName::kA, 100);
        m_view->Cursors().PutOn(CursorName::kB, 200);
    }

    [[nodiscard]] MeasurementsPane& Pane() { return m_control->Pane(); }
    [[nodiscard]] QTableView& Table() {
        return *Pane().findChild<QTableView*>(QStringLiteral("measurements_table"));
    }
    [[nodiscard]] std::string Cell(int row, MeasureColumn column) {
        return Table()
            .model()
            ->index(row, static_cast<int>(column))
            .data()
            .toString()
            .toStdString();
    }
    [[nodiscard]] std::string Time(int place) {
        return Pane()
            .findChild<QLabel*>(QStringLiteral("measure_time_%1").arg(place))
            ->text()
            .toStdString();
    }
    void ClickCell(int row, MeasureColumn column) {
        const QModelIndex cell = Table().model()->index(row, static_cast<int>(column));
        QTest::mouseClick(Table().viewport(), Qt::LeftButton, Qt::NoModifier,
                          Table().visualRect(cell).center());
    }
    template <typename Widget>
    Widget& Child(const char* name) {
        auto* const child = Pane().findChild<Widget*>(QLatin1String(name));
        EXPECT_NE(child, nullptr) << name;
        return *child;
    }

    Prompts m_prompts = testing::RealPrompts();
    QTemporaryDir m_folder;
    QSettings m_settings{m_folder.filePath(QStringLiteral("app.ini")), QSettings::IniFormat};
    std::optional<QString> m_chosen;
    FileQuestion m_asked;
    std::vector<std::string> m_boxes;
    BoxAnswer m_answer = BoxAnswer::kCancel;
    LinesFromMemory* m_source = nullptr;
    std::unique_ptr<QMainWindow> m_frame;
    CWavoView* m_view = nullptr;  // a child of the frame
    std::unique_ptr<MeasureControl> m_control;
    MeasureControl::Clock::time_point m_now{};
    int m_given = 0;
};

TEST_F(Measured, IsClosedAtFirstAndShowsCursorsWhileItIsOpen) {
    EXPECT_FALSE(m_control->Dock().IsOpen());
    EXPECT_FALSE(m_view->Cursors().IsShown());
    EXPECT_FALSE(m_control->IsEnabled(CommandId::kHideMeasurements));
    m_control->Execute(CommandId::kMeasurements);
    EXPECT_TRUE(m_control->IsChecked(CommandId::kMeasurements));
    EXPECT_TRUE(m_view->Cursors().IsShown());
    m_control->Dock().close();
    EXPECT_FALSE(m_view->Cursors().IsShown());
    EXPECT_FALSE(m_control->IsChecked(CommandId::kMeasurements));
}

TEST_F(Measured, TellsTimesAndFigures) {
    Open();
    EXPECT_EQ(Time(0), "A  -3.596 s");
    EXPECT_EQ(Time(1), "B  -3.196 s");
    EXPECT_EQ(Time(2), "Δt  0.400 s");
    EXPECT_EQ(Time(3), "1/Δt  2.50000 Hz");
    ASSERT_EQ(Table().model()->rowCount(), 1) << "of the graph that is selected";
    EXPECT_EQ(Cell(0, MeasureColumn::kCurve), "1: X");
    EXPECT_EQ(Cell(0, MeasureColumn::kAtA), "100");
    EXPECT_EQ(Cell(0, MeasureColumn::kAtB), "200");
    EXPECT_EQ(Cell(0, MeasureColumn::kDifference), "100");
    EXPECT_EQ(Cell(0, MeasureColumn::kPerSecond), "250");
    EXPECT_EQ(Cell(0, MeasureColumn::kMinimum), "100");
    EXPECT_EQ(Cell(0, MeasureColumn::kMaximum), "200");
    EXPECT_EQ(Cell(0, MeasureColumn::kMean), "150.000");
    EXPECT_EQ(Cell(0, MeasureColumn::kRms), "152.807");
    EXPECT_EQ(Cell(0, MeasureColumn::kDeviation), "29.300");
    EXPECT_EQ(Cell(0, MeasureColumn::kPeakToPeak), "100");
    EXPECT_EQ(Cell(0, MeasureColumn::kSlope), "250");
    EXPECT_EQ(Cell(0, MeasureColumn::kTimeOfMinimum), "-3.596");
    EXPECT_EQ(Cell(0, MeasureColumn::kTimeOfMaximum), "-3.196");
    EXPECT_EQ(Cell(0, MeasureColumn::kValues), "101");
    EXPECT_EQ(Cell(0, MeasureColumn::kLeftOut), "0");
}

TEST_F(Measured, SaysWhatIsMissing) {
    Open();
    Show({});
    EXPECT_EQ(Table().model()->rowCount(), 0);
    EXPECT_EQ(Time(0), "A  not on the data");
    EXPECT_EQ(Time(2), "Δt  a cursor is not on the data");
    Show({GraphOf(1, "nobody")});
    EXPECT_EQ(Cell(0, MeasureColumn::kAtA), "the cursor is not on the data");
    EXPECT_EQ(Cell(0, MeasureColumn::kMean), "no values");
}

TEST_F(Measured, IsOfAllGraphsWhereTheUserWantsSo) {
    Open();
    QTest::mouseClick(&Child<QCheckBox>("measure_all_graphs"), Qt::LeftButton, Qt::NoModifier,
                      {8, Child<QCheckBox>("measure_all_graphs").height() / 2});
    ASSERT_EQ(Table().model()->rowCount(), 2);
    EXPECT_EQ(Cell(1, MeasureColumn::kCurve), "2: Y");
    EXPECT_EQ(Cell(1, MeasureColumn::kAtA), "-200");
    const MeasurementsPane again(*m_view, m_prompts, &m_settings, nullptr);
    EXPECT_TRUE(m_view->Measured().IsOfAllGraphs()) << "kept";
}

TEST_F(Measured, FollowsTheGraphThatIsSelected) {
    Open();
    const QRect second = m_view->Board().Drawers()[1]->PlotArea();
    QTest::mouseClick(m_view, Qt::LeftButton, Qt::NoModifier, second.topLeft() + QPoint(40, 40));
    EXPECT_EQ(Cell(0, MeasureColumn::kCurve), "2: Y");
}

TEST_F(Measured, ARowSelectsItsCurve) {
    Child<QCheckBox>("measure_all_graphs").setChecked(true);
    Open();
    EXPECT_EQ(m_view->Measured().SelectedCurve(), (CurveId{1, 0}));
    EXPECT_EQ(Table().currentIndex().row(), 0);
    ClickCell(1, MeasureColumn::kAtA);
    EXPECT_EQ(m_view->Measured().SelectedCurve(), (CurveId{2, 0}));
    EXPECT_EQ(m_view->Editor().SelectedNumber(), 2U);
    QTest::keyClick(&Table(), Qt::Key_Up);
    EXPECT_EQ(m_view->Editor().SelectedNumber(), 1U);
}

TEST_F(Measured, AClickOnTheTimeOfAnExtremeJumpsThere) {
    Open();
    Pane().ShowColumn(MeasureColumn::kTimeOfMaximum, true);
    m_view->Cursors().Activate(CursorName::kA);
    ClickCell(0, MeasureColumn::kTimeOfMaximum);
    EXPECT_EQ(m_view->Cursors().LineOf(CursorName::kA), 200);
    ClickCell(0, MeasureColumn::kMaximum);
    m_view->Cursors().Activate(std::nullopt);
    m_view->Cursors().PutOn(CursorName::kB, 300);
    ClickCell(0, MeasureColumn::kTimeOfMaximum);
    EXPECT_EQ(m_view->Cursors().LineOf(CursorName::kA), 300) << "A where none is active";
}

TEST_F(Measured, ColumnsAreChosenAndKept) {
    Open();
    EXPECT_TRUE(Pane().IsColumnShown(MeasureColumn::kMean));
    EXPECT_FALSE(Pane().IsColumnShown(MeasureColumn::kSlope));
    auto& menu = Child<QMenu>("measure_column_menu");
    menu.popup(QPoint(0, 0));
    for (const char* const name : {"Mean", "Slope"}) {
        auto* const action = menu.findChild<QAction*>(QLatin1String(name));
        ASSERT_NE(action, nullptr);
        QTest::mouseClick(&menu, Qt::LeftButton, Qt::NoModifier,
                          menu.actionGeometry(action).center());
        menu.popup(QPoint(0, 0));
    }
    menu.close();
    const MeasurementsPane again(*m_view, m_prompts, &m_settings, nullptr);
    for (const MeasurementsPane* const pane :
         std::initializer_list<const MeasurementsPane*>{&Pane(), &again}) {
        EXPECT_FALSE(pane->IsColumnShown(MeasureColumn::kMean));
        EXPECT_TRUE(pane->IsColumnShown(MeasureColumn::kSlope));
        EXPECT_TRUE(pane->IsColumnShown(MeasureColumn::kCurve));
    }
}

TEST_F(Measured, WidthsOfColumnsAreKept) {
    Open();
    const int mean = static_cast<int>(MeasureColumn::kMean);
    const int at_a = static_cast<int>(MeasureColumn::kAtA);
    auto& header = *Table().horizontalHeader();
    const int border = header.sectionViewportPosition(mean) + header.sectionSize(mean) - 1;
    const int before = header.sectionSize(mean);
    const QPoint from(border, header.height() / 2);
    QTest::mousePress(header.viewport(), Qt::LeftButton, Qt::NoModifier, from);
    QTest::mouseMove(header.viewport(), from + QPoint(20, 0));
    QTest::mouseMove(header.viewport(), from + QPoint(57, 0));
    QTest::mouseRelease(header.viewport(), Qt::LeftButton, Qt::NoModifier, from + QPoint(57, 0));
    const int chosen = header.sectionSize(mean);
    EXPECT_NEAR(chosen, before + 57, 3);
    Pane().ShowColumn(MeasureColumn::kSlope, true);
    Show({GraphOf(2, "Y")});
    EXPECT_EQ(header.sectionSize(mean), chosen) << "whatever else is fitted";
    MeasurementsPane again(*m_view, m_prompts, &m_settings, nullptr);
    again.show();
    auto& other = *again.findChild<QTableView*>(QStringLiteral("measurements_table"));
    EXPECT_EQ(other.columnWidth(mean), chosen);
    EXPECT_EQ(other.columnWidth(at_a), Table().columnWidth(at_a)) << "fitted";
}

TEST_F(Measured, GoesOnByItselfUntilAllIsMeasured) {
    constexpr std::int64_t kLines = 300'000;
    const std::string path = m_folder.filePath(QStringLiteral("long.mcap")).toStdString();
    {
        auto writer = recording::RecordingWriter::Create(path, testing::MakeHead(1), {});
        ASSERT_TRUE(writer.HasValue());
        std::vector<std::vector<double>> lines(kLines);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            lines[i] = {static_cast<double>(i)};
        }
        testing::Append(**writer, 0, lines);
        testing::RequireNoFault((*writer)->Finish());
    }
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    m_control->Execute(CommandId::kMeasurements);
    m_view->Cursors().PutOn(CursorName::kA, 10);
    m_view->Cursors().PutOn(CursorName::kB, kLines - 10);
    EXPECT_EQ(Cell(0, MeasureColumn::kMean), "not complete yet");
    EXPECT_EQ(Cell(0, MeasureColumn::kValues), "not complete yet");
    EXPECT_EQ(Cell(0, MeasureColumn::kAtB), "299990");
    EXPECT_EQ(Cell(0, MeasureColumn::kMaximum), "299990") << "known at once";
    for (int i = 0; i < 1000 && !m_view->Measured().Table().is_whole; ++i) {
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(Cell(0, MeasureColumn::kMean), "150000.000");
    EXPECT_EQ(Cell(0, MeasureColumn::kValues), "299981");
}

TEST_F(Measured, IsCopiedAsTextWithTabs) {
    Open();
    QTest::mouseClick(&Child<QPushButton>("measure_copy"), Qt::LeftButton);
    const QString expected = QStringLiteral(
        "A\t-3.596 s\nB\t-3.196 s\nΔt\t0.400 s\n1/Δt\t2.50000 Hz\n"
        "Curve\tA\tB\tB - A\tMinimum\tMaximum\tMean\tPeak-peak\n"
        "1: X\t100\t200\t100\t100\t200\t150.000\t100\n");
    EXPECT_EQ(QApplication::clipboard()->text(), expected);
    QApplication::clipboard()->clear();
    Table().setFocus();
    QTest::keyClick(&Table(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), expected);
}

TEST_F(Measured, IsSavedAsCommaSeparatedValues) {
    Child<QCheckBox>("measure_all_graphs").setChecked(true);
    Open();
    const QString path = m_folder.filePath(QStringLiteral("table.csv"));
    const auto save = [&] {
        QTest::mouseClick(&Child<QPushButton>("measure_save"), Qt::LeftButton);
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string("none");
    };
    EXPECT_EQ(save(), "none") << "cancelled";
    EXPECT_EQ(m_asked.filters, "CSV Files|*.csv|All Files|*.*|");
    m_chosen = path;
    const std::string expected =
        "Curve,A,B,B - A,Minimum,Maximum,Mean,Peak-peak,t of A,t of B\r\n"
        "1: X,100,200,100,100,200,150,100,-3.596,-3.196\r\n"
        "2: Y,-200,-400,-200,-400,-200,-300,200,-3.596,-3.196\r\n";
    EXPECT_EQ(save(), expected);
    EXPECT_THAT(m_boxes, IsEmpty());
    QFile(path).resize(3);
    EXPECT_EQ(save(), "Cur") << "may not be replaced";
    EXPECT_THAT(m_boxes,
                ElementsAre("file exist: file " + QDir::toNativeSeparators(path).toStdString() +
                            " already exist, override ?"));
    m_answer = BoxAnswer::kOk;
    EXPECT_EQ(save(), expected);
}

TEST_F(Measured, IsRenewedByBatchesAtMostTwentyTimesASecond) {
    Give(900);
    Give(200);
    m_control->Execute(CommandId::kMeasurements);
    QCoreApplication::processEvents();
    const auto at_a = [this] { return Cell(0, MeasureColumn::kAtA); };
    m_now += std::chrono::milliseconds(1000);
    Give(10);
    const std::string first = at_a();
    m_now += std::chrono::milliseconds(49);
    Give(10);
    EXPECT_EQ(at_a(), first);
    m_now += std::chrono::milliseconds(1);
    Give(10);
    EXPECT_EQ(std::stod(at_a()), std::stod(first) + 20.0);
    Give(10);
    m_view->Commands().Execute(CommandId::kStop);
    EXPECT_EQ(std::stod(at_a()), std::stod(first) + 30.0) << "once more";
}

/// The values say which line they are of: so does what is read, whatever the user does.
TEST_F(Measured, ReadsTheSamplesThatItStandsOnWhateverHappens) {
    std::mt19937_64 random(7);
    const auto below = [&random](int end) { return static_cast<int>(random() % end); };
    WavoGraph short_one = GraphOf(2, "Y");
    short_one.Mode = GraphMode::kClassic;
    short_one.XScale.TimeRange = 1.0;
    WavoGraph over_axis = GraphOf(3, "Y");
    over_axis.XCoorType = CoorType::kAxis;
    over_axis.XCoorAxName = "X";
    over_axis.XScale.ScaleType = ScaleTypeCode::kAxis;
    over_axis.XScale.ScaleAx = ScaleAxCode::kAutomatic;
    over_axis.FadeOutTime = 2.0;
    const std::vector<WavoGraph> graphs{GraphOf(1, "X"), short_one, over_axis};
    Show(graphs);
    Child<QCheckBox>("measure_all_graphs").setChecked(true);
    m_control->Execute(CommandId::kMeasurements);
    const auto point = [&] { return QPoint(below(m_view->width()), below(m_view->height())); };
    const Qt::Key keys[] = {Qt::Key_Left, Qt::Key_Right, Qt::Key_Tab, Qt::Key_P,      Qt::Key_V,
                            Qt::Key_0,    Qt::Key_T,     Qt::Key_B,   Qt::Key_Escape, Qt::Key_A};
    const Qt::KeyboardModifiers modifiers[] = {Qt::NoModifier, Qt::ControlModifier,
                                               Qt::ShiftModifier};
    m_view->setFocus();
    int read = 0;
    for (int action = 0; action < 1500; ++action) {
        switch (below(12)) {
            case 0:
                m_view->Commands().Execute(below(4) == 0 ? CommandId::kStop : CommandId::kStart);
                break;
            case 1:
                if (!m_view->Board().Drawers().empty()) {
                    m_view->Zooms().ZoomGraph(static_cast<std::size_t>(below(static_cast<int>(
                                                  m_view->Board().Drawers().size()))),
                                              0.2 + below(5) * 0.05, 0.5 + below(5) * 0.1);
                }
                break;
            case 2:
                m_view->Zooms().ZoomOut(static_cast<std::uint32_t>(1 + below(3)));
                break;
            case 3:
                m_frame->resize(500 + below(700), 400 + below(400));
                break;
            case 4:
                m_view->Work().RebuildGraphs();
                break;
            case 5:
                QTest::mouseClick(
                    m_view, Qt::LeftButton,
                    below(2) == 0 ? Qt::ControlModifier : Qt::ControlModifier | Qt::ShiftModifier,
                    point());
                break;
            case 6:
                QTest::mousePress(m_view, Qt::LeftButton, Qt::NoModifier, point());
                QTest::mouseMove(m_view, point());
                QTest::mouseRelease(m_view, Qt::LeftButton, Qt::NoModifier, point());
                break;
            case 7:
            case 8:
                QTest::keyClick(m_view, keys[below(10)], modifiers[below(3)]);
                break;
            case 9:
                Show(below(10) == 0 ? std::vector<WavoGraph>() : graphs);
                break;
            default:
                if (m_view->Work().Values().IsRunning()) {
                    Give(1 + below(200));
                }
        }
        SCOPED_TRACE(action);
        const MeasuredTable& table = m_view->Measured().Renew();
        const auto a = m_view->Cursors().LineOf(CursorName::kA);
        const auto b = m_view->Cursors().LineOf(CursorName::kB);
        for (const MeasuredCurve& curve : table.curves) {
            const double per_line = curve.id.graph == 1 ? 1.0 : -2.0;
            if (a && curve.figures.a) {
                ASSERT_EQ(*curve.figures.a, per_line * static_cast<double>(*a));
                ++read;
            }
            if (a && b && curve.figures.a && curve.figures.b) {
                ASSERT_EQ(curve.figures.between.count, std::abs(*b - *a) + 1);
                ASSERT_NEAR(*curve.figures.between.mean,
                            per_line * static_cast<double>(*a + *b) / 2.0, 1e-6);
            }
        }
    }
    EXPECT_GT(read, 1000) << "most of the time there is something to read";
}

TEST(MeasuredNumbers, HaveTheDigitsThatThereAre) {
    const auto text = [](double value, int decimals) {
        return NumberText(value, decimals).toStdString();
    };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(text(1.25, 2), "1.25");
    EXPECT_EQ(text(1.0, 3), "1.000");
    EXPECT_EQ(text(-0.0001, 2), "0.00");
    EXPECT_EQ(text(100000000.000001, 9), "100000000.0000010");
    EXPECT_EQ(text(1e300, 3), "1e+300");
    EXPECT_EQ(text(-kInfinity, 3), "-inf");
    EXPECT_EQ(text(kInfinity, 3), "inf");
}

}  // namespace
}  // namespace wavo
