// The pane "Spectrum" beside the real view.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QMainWindow>
#include <QPrinter>
#include <QPushButton>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>

#include "lines_from_memory.h"
#include "real_prompts.h"
#include "sample_recording.h"
#include "system_facts.h"
#include "ui/panes/measure_control.h"
#include "ui/panes/pane_dock.h"
#include "ui/panes/spectrum_pane.h"
#include "ui/panes/spectrum_plot.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::LinesFromMemory;
using ::testing::SizeIs;

constexpr double kNyquist = 125.0;  // of 250 lines a second

/// A window with the view and the pane. X: tones of 12.5 and 40 Hz, amplitudes 3 and 1; Y: 0.
class SpectrumSeen : public ::testing::Test {
 protected:
    SpectrumSeen() {
        qputenv(testing::kDataHome, m_folder.path().toLocal8Bit());
        m_prompts.save_file = [this](QWidget*, const FileQuestion& question) {
            m_asked = question;
            return m_chosen;
        };
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box.text);
            return BoxAnswer::kYes;
        };
        m_prompts.print = [this](QWidget*, QPrinter& printer) {
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(m_folder.filePath(QStringLiteral("page.pdf")));
            return true;
        };
        auto source = std::make_unique<LinesFromMemory>();
        m_source = source.get();
        m_frame = std::make_unique<QMainWindow>();
        m_view = new CWavoView(m_prompts, m_frame.get(), std::move(source));
        m_frame->setCentralWidget(m_view);
        m_frame->resize(1200, 800);
        m_control = std::make_unique<MeasureControl>(*m_frame, *m_view, m_prompts, &m_settings);
        Run().SetClock([this] { return m_now; });
        m_frame->show();
        m_frame->activateWindow();
        m_view->OnInitialUpdate();
        QCoreApplication::processEvents();
        Show({GraphOf(1, "X"), GraphOf(2, "Y")});
    }
    ~SpectrumSeen() override {
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
    static double ValueAt(std::int64_t line) {
        const double turn = 2.0 * std::numbers::pi * 0.004 * static_cast<double>(line);
        return 3.0 * std::sin(12.5 * turn) + std::cos(40.0 * turn);
    }
    void Give(int count) {
        m_source->values.clear();
        for (int i = 0; i < count; ++i) {
            m_source->values.insert(m_source->values.end(), {ValueAt(m_given++) * m_factor, 0.0});
        }
        EXPECT_TRUE(m_source->events->BatchReady());
    }
    void Finish() {
        for (int i = 0; i < 100000 && Run().IsUnderWay(); ++i) {
            QCoreApplication::processEvents();
        }
        EXPECT_FALSE(Run().IsUnderWay());
    }
    /// 1000 lines shown, stopped, the pane open, the spectrum made.
    void Open() {
        Give(600);
        Give(600);
        m_view->Commands().Execute(CommandId::kStop);
        m_control->Execute(CommandId::kSpectrum);
        QCoreApplication::processEvents();
        Finish();
    }

    [[nodiscard]] SpectrumPane& Pane() { return m_control->Spectrum().Pane(); }
    [[nodiscard]] SpectrumRun& Run() { return Pane().Run(); }
    [[nodiscard]] SpectrumPlot& Plot() { return Pane().Plot(); }
    [[nodiscard]] const measure::Spectrum& Shown() { return *Plot().Scene().spectrum; }
    template <typename Widget>
    Widget& Child(const char* name) {
        auto* const child = Pane().findChild<Widget*>(QLatin1String(name));
        EXPECT_NE(child, nullptr) << name;
        return *child;
    }
    void Choose(const char* name, int index) {
        auto& choice = Child<QComboBox>(name);
        choice.setFocus();
        QTest::keyClick(&choice, Qt::Key_Home);
        for (int i = 0; i < index; ++i) {
            QTest::keyClick(&choice, Qt::Key_Down);
        }
        ASSERT_EQ(choice.currentIndex(), index);
        Finish();
    }
    void Click(const char* name) {
        QTest::mouseClick(&Child<QPushButton>(name), Qt::LeftButton);
        Finish();
    }
    void Check(const char* name) {
        auto& check = Child<QCheckBox>(name);
        QTest::mouseClick(&check, Qt::LeftButton, Qt::NoModifier, {8, check.height() / 2});
        Finish();
    }
    [[nodiscard]] std::string Text(const char* label) {
        return Child<QLabel>(label).text().toStdString();
    }
    [[nodiscard]] std::string Peak(int row, int column) {
        const auto* const item = Child<QTableWidget>("spectrum_peaks").item(row, column);
        return item == nullptr ? "none" : item->text().toStdString();
    }
    [[nodiscard]] std::string Saved(const QString& path) const {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "none";
    }
    /// A point of the plot at a frequency.
    [[nodiscard]] QPoint At(double frequency) {
        const SpectrumPlaces places = Plot().Places();
        return {static_cast<int>(std::lround(places.XOf(frequency))), places.Plot().center().y()};
    }
    void DragRight(double from, double to) {
        QTest::mousePress(&Plot(), Qt::RightButton, Qt::NoModifier, At(from));
        QTest::mouseMove(&Plot(), At(to));
        QTest::mouseRelease(&Plot(), Qt::RightButton, Qt::NoModifier, At(to));
    }
    void Wheel(double at, int angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWheelEvent event(At(at), Plot().mapToGlobal(At(at)), QPoint(), QPoint(0, angle),
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&Plot(), &event);
    }
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(&Plot(), key, modifiers);
    }

    Prompts m_prompts = testing::RealPrompts();
    QTemporaryDir m_folder;
    QSettings m_settings{m_folder.filePath(QStringLiteral("app.ini")), QSettings::IniFormat};
    std::optional<QString> m_chosen;
    FileQuestion m_asked;
    std::vector<std::string> m_boxes;
    LinesFromMemory* m_source = nullptr;
    std::unique_ptr<QMainWindow> m_frame;
    CWavoView* m_view = nullptr;  // a child of the frame
    std::unique_ptr<MeasureControl> m_control;
    SpectrumRun::Clock::time_point m_now{std::chrono::hours(1)};
    std::int64_t m_given = 0;
    double m_factor = 1.0;
};

TEST_F(SpectrumSeen, IsClosedAtFirstAndMadeOnlyWhileItIsSeen) {
    EXPECT_FALSE(m_control->IsChecked(CommandId::kSpectrum));
    EXPECT_FALSE(m_control->IsEnabled(CommandId::kHideSpectrum));
    Give(1000);
    QCoreApplication::processEvents();
    EXPECT_FALSE(Run().IsUnderWay());
    EXPECT_FALSE(Run().Last().spectrum);
    m_control->Execute(CommandId::kSpectrum);
    QCoreApplication::processEvents();
    Finish();
    EXPECT_TRUE(Run().Last().spectrum);
    EXPECT_TRUE(m_control->IsChecked(CommandId::kSpectrum));
    EXPECT_FALSE(m_view->Cursors().IsShown());
    m_control->Execute(CommandId::kHideSpectrum);
    EXPECT_TRUE(m_control->Spectrum().Dock().HidesAtEdge());
    m_control->Spectrum().Dock().close();
    EXPECT_FALSE(m_control->IsChecked(CommandId::kSpectrum));
}

TEST_F(SpectrumSeen, ShowsTheTonesOfTheSelectedCurve) {
    Open();
    EXPECT_EQ(Text("spectrum_curve"), "1: X");
    EXPECT_EQ(Shown().length, 1000U);
    EXPECT_DOUBLE_EQ(Shown().nyquist, kNyquist);
    ASSERT_THAT(Plot().Scene().peaks, SizeIs(2));
    EXPECT_EQ(Peak(0, 0), "12.500");
    EXPECT_NEAR(std::stod(Peak(0, 1)), 3.0, 1e-4);
    EXPECT_EQ(Peak(1, 0), "40.000");
    EXPECT_NEAR(std::stod(Peak(1, 1)), 1.0, 1e-4);
    EXPECT_EQ(Text("spectrum_description"),
              "1000 of 1000 values, from -3.996 s to 0.000 s; Hann window, peak; 0.25 Hz per line");
    EXPECT_EQ(Plot().accessibleName().toStdString(), "Spectrum of 1: X");
    EXPECT_THAT(Plot().accessibleDescription().toStdString(), HasSubstr("12.500"));
}

TEST_F(SpectrumSeen, OfADerivationIsThatOfTheDerivation) {
    WavoGraph graph = GraphOf(1, "X");
    graph.YCoorAxDerivation = {1};
    Show({graph});
    Open();
    EXPECT_EQ(Text("spectrum_curve"), "1: X'");
    // A difference over a cycle: |2 sin(pi f T)| / T.
    EXPECT_EQ(Peak(0, 0), "40.000");
    EXPECT_NEAR(std::stod(Peak(0, 1)) * 0.004, 2.0 * std::sin(std::numbers::pi * 0.16), 1e-3);
    EXPECT_NEAR(std::stod(Peak(1, 1)) * 0.004, 6.0 * std::sin(std::numbers::pi * 0.05), 1e-3);
}

TEST_F(SpectrumSeen, FollowsTheSelection) {
    Open();
    m_view->Zooms().Select(2);
    QCoreApplication::processEvents();
    Finish();
    EXPECT_EQ(Text("spectrum_curve"), "2: Y");
    EXPECT_THAT(Plot().Scene().peaks, IsEmpty());
    Show({});
    Finish();
    EXPECT_EQ(Text("spectrum_curve"), "no curve");
    EXPECT_EQ(Plot().Scene().reason, QStringLiteral("no curve"));
}

TEST_F(SpectrumSeen, ChoicesActAtOnceAndAreKept) {
    Open();
    Choose("spectrum_scale", 1);
    EXPECT_NEAR(std::stod(Peak(0, 1)), 3.0 / std::numbers::sqrt2, 1e-4);
    Choose("spectrum_unit", 1);
    EXPECT_EQ(Peak(0, 1), "6.53 dB");
    Choose("spectrum_window", 1);
    EXPECT_EQ(Shown().window, measure::Window::kFlatTop);
    Choose("spectrum_window", 2);
    EXPECT_EQ(Shown().window, measure::Window::kRectangular);
    Choose("spectrum_segment", 1);
    EXPECT_EQ(Shown().length, 256U);
    EXPECT_EQ(Shown().averages, 6U);
    EXPECT_THAT(Text("spectrum_description"), HasSubstr("; 6 pieces of 256 averaged"));
    Check("spectrum_hold");
    const SpectrumPane again(*m_view, m_prompts, &m_settings, nullptr);
    for (const auto& [name, index] : {std::pair{"spectrum_scale", 1},
                                      {"spectrum_unit", 1},
                                      {"spectrum_window", 2},
                                      {"spectrum_segment", 1},
                                      {"spectrum_range", 0}}) {
        EXPECT_EQ(again.findChild<QComboBox*>(QLatin1String(name))->currentIndex(), index) << name;
    }
    EXPECT_TRUE(again.findChild<QCheckBox*>(QStringLiteral("spectrum_hold"))->isChecked());
    EXPECT_FALSE(again.findChild<QCheckBox*>(QStringLiteral("spectrum_average"))->isChecked());
}

TEST_F(SpectrumSeen, IsOfWhatIsZoomedTo) {
    Open();
    m_view->Zooms().ZoomGraph(0, 1.0, 2.0);
    QCoreApplication::processEvents();
    Run().SetChoice(Run().Choice());
    Finish();
    EXPECT_NEAR(static_cast<double>(Run().Last().lines.Count()), 250.0, 1.0);
}

TEST_F(SpectrumSeen, IsOfWhatLiesBetweenTheCursors) {
    Open();
    Choose("spectrum_range", 1);
    EXPECT_TRUE(m_view->Cursors().IsShown()) << "who needs them sees them";
    m_view->Cursors().PutOn(CursorName::kA, 900);
    m_view->Cursors().PutOn(CursorName::kB, 501);
    Finish();
    EXPECT_EQ(Run().Last().lines, (LineRange{501, 901}));
    EXPECT_EQ(Shown().length, 400U);
    m_view->Cursors().PutOn(CursorName::kB, 899);
    Finish();
    EXPECT_EQ(Plot().Scene().reason, QStringLiteral("too few values without a gap"));
    Choose("spectrum_range", 0);
    EXPECT_FALSE(m_view->Cursors().IsShown());
    m_control->Execute(CommandId::kMeasurements);
    Choose("spectrum_range", 1);
    m_control->Execute(CommandId::kMeasurements);
    EXPECT_TRUE(m_view->Cursors().IsShown());
    m_control->Execute(CommandId::kSpectrum);
    EXPECT_FALSE(m_view->Cursors().IsShown());
}

TEST_F(SpectrumSeen, OfAStreamWithAGapIsThatOfItsLongestPiece) {
    Give(300);
    m_factor = std::numeric_limits<double>::quiet_NaN();
    Give(3);
    m_factor = 1.0;
    Give(690);
    m_view->Commands().Execute(CommandId::kStop);
    m_control->Execute(CommandId::kSpectrum);
    QCoreApplication::processEvents();
    Finish();
    EXPECT_EQ(Shown().length, 675U);
    EXPECT_EQ(Text("spectrum_description"),
              "675 of 993 values, from -2.696 s to 0.000 s; Hann window, peak; 0.37037 Hz per "
              "line; the longest of 2 pieces without a gap");
}

TEST_F(SpectrumSeen, IsRenewedByBatchesAtMostTwentyTimesASecond) {
    Give(600);
    Give(600);
    m_control->Execute(CommandId::kSpectrum);
    QCoreApplication::processEvents();
    Finish();
    const LineRange first = Run().Last().lines;
    m_now += std::chrono::milliseconds(49);
    Give(10);
    QCoreApplication::processEvents();
    EXPECT_EQ(Run().Last().lines, first);
    m_now += std::chrono::milliseconds(1);
    Give(10);
    Finish();
    EXPECT_EQ(Run().Last().lines.end, first.end + 20);
    Give(10);
    m_view->Commands().Execute(CommandId::kStop);
    QCoreApplication::processEvents();
    Finish();
    EXPECT_EQ(Run().Last().lines.end, first.end + 30) << "once more";
}

TEST_F(SpectrumSeen, IsMadeInTurnsBetweenEvents) {
    Give(600);
    Give(600);
    m_control->Execute(CommandId::kSpectrum);
    // Each look at the clock takes a millisecond: a turn is two steps.
    Run().SetClock([this] { return m_now += std::chrono::milliseconds(1); });
    int turns = 0;
    while (!Run().Last().spectrum && turns < 1000) {
        ++turns;
        Give(1);  // batches have their turn
        QCoreApplication::processEvents();
    }
    EXPECT_GT(turns, 2);
    EXPECT_TRUE(Run().Last().spectrum);
}

TEST_F(SpectrumSeen, HoldsTheMaximumAndAveragesPowers) {
    Open();
    Check("spectrum_average");
    Check("spectrum_hold");
    EXPECT_THAT(Text("spectrum_description"), HasSubstr("; 1 spectra since Restart"));
    // Spectra that are made otherwise are not mixed.
    Choose("spectrum_window", 1);
    Finish();
    EXPECT_EQ(Plot().Scene().maximum->values, Plot().Scene().spectrum->values);
    Choose("spectrum_window", 0);
    Finish();
    EXPECT_THAT(Text("spectrum_description"), HasSubstr("; 1 spectra since Restart"));
    m_view->Commands().Execute(CommandId::kStart);
    Finish();
    m_factor = 2.0;
    Give(600);
    m_now += std::chrono::seconds(1);
    Give(600);
    Finish();
    EXPECT_THAT(Text("spectrum_description"), HasSubstr("; 2 spectra since Restart"));
    ASSERT_TRUE(Plot().Scene().maximum);
    EXPECT_NEAR(Plot().Scene().maximum->values[50], 6.0, 1e-3);
    EXPECT_NEAR(Shown().values[50], 3.0 * std::sqrt(2.5), 1e-3) << "of powers, not of amplitudes";
    Click("spectrum_restart");
    EXPECT_NEAR(Shown().values[50], 6.0, 1e-3);
    EXPECT_THAT(Text("spectrum_description"), HasSubstr("; 1 spectra since Restart"));
    Check("spectrum_average");
    Check("spectrum_hold");
    EXPECT_FALSE(Plot().Scene().maximum);
    EXPECT_FALSE(Child<QPushButton>("spectrum_restart").isEnabled());
}

TEST_F(SpectrumSeen, IsZoomedByMouseAndKeys) {
    Open();
    EXPECT_EQ(Plot().Scene().band, (FrequencyBand{0.0, kNyquist}));
    DragRight(10.0, 50.0);
    const FrequencyBand once = Plot().Scene().band;
    EXPECT_NEAR(once.low, 10.0, 0.3);
    EXPECT_NEAR(once.high, 50.0, 0.3);
    DragRight(20.0, 30.0);
    EXPECT_NEAR(Plot().Scene().band.Width(), 10.0, 0.3);
    Key(Qt::Key_Minus);
    EXPECT_EQ(Plot().Scene().band, once);
    DragRight(40.0, 20.0);
    EXPECT_EQ(Plot().Scene().band, (FrequencyBand{0.0, kNyquist})) << "to the left steps back";
    Key(Qt::Key_Plus);
    EXPECT_NEAR(Plot().Scene().band.Width(), kNyquist / 2.0, 1e-9);
    Key(Qt::Key_End);
    EXPECT_DOUBLE_EQ(Plot().Scene().band.high, kNyquist);
    Key(Qt::Key_PageUp);
    EXPECT_NEAR(Plot().Scene().band.low, 62.5 - 56.25, 1e-9);
    Key(Qt::Key_Home);
    EXPECT_DOUBLE_EQ(Plot().Scene().band.low, 0.0);
    Key(Qt::Key_Backspace);
    Wheel(60.0, 120);
    EXPECT_NEAR(Plot().Scene().band.Width(), 100.0, 1e-9);
    EXPECT_NEAR(Plot().Places().FrequencyAt(At(60.0).x()), 60.0, 0.3);
    Wheel(60.0, -120, Qt::ShiftModifier);
    EXPECT_GT(Plot().Scene().band.low, 20.0);
    for (int i = 0; i < 100; ++i) {
        Wheel(Plot().Scene().band.low + 1e-3, 120);
    }
    EXPECT_NEAR(Plot().Scene().band.Width(), 1.0, 1e-9) << "four lines at least";
    const FrequencyBand narrow = Plot().Scene().band;
    m_view->Commands().Execute(CommandId::kStart);
    Finish();
    Give(600);
    m_now += std::chrono::seconds(1);
    Give(600);
    Finish();
    EXPECT_EQ(Plot().Scene().band, narrow) << "values leave it alone";
}

TEST_F(SpectrumSeen, CursorsReadItsLines) {
    Open();
    EXPECT_EQ(Text("spectrum_cursors"), "");
    QTest::mouseClick(&Plot(), Qt::LeftButton, Qt::ControlModifier, At(12.5));
    QTest::mouseClick(&Plot(), Qt::LeftButton, Qt::ControlModifier | Qt::ShiftModifier, At(80.0));
    EXPECT_NEAR(*Plot().Cursor(CursorName::kA), 12.5, 0.26);
    EXPECT_EQ(Plot().Active(), CursorName::kB);
    QTest::mousePress(&Plot(), Qt::LeftButton, Qt::NoModifier, At(*Plot().Cursor(CursorName::kB)));
    QTest::mouseMove(&Plot(), At(60.0));
    QTest::mouseRelease(&Plot(), Qt::LeftButton, Qt::NoModifier, At(60.0));
    EXPECT_NEAR(*Plot().Cursor(CursorName::kB), 60.0, 0.26);
    Key(Qt::Key_P, Qt::ShiftModifier);
    EXPECT_DOUBLE_EQ(*Plot().Cursor(CursorName::kB), 40.0);
    Key(Qt::Key_P, Qt::ShiftModifier);
    EXPECT_DOUBLE_EQ(*Plot().Cursor(CursorName::kB), 12.5);
    Key(Qt::Key_P);
    Key(Qt::Key_Tab);
    EXPECT_EQ(Plot().Active(), CursorName::kA);
    Plot().PutCursor(CursorName::kA, 12.5);
    EXPECT_EQ(Text("spectrum_cursors"),
              QStringLiteral("A  12.500 Hz  3     B  40.000 Hz  1     Δf  27.500 Hz     B - A  -2")
                  .toStdString());
    Key(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_DOUBLE_EQ(*Plot().Cursor(CursorName::kA), 12.75);
    Key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_DOUBLE_EQ(*Plot().Cursor(CursorName::kA), 25.25);
    const auto before = *Plot().Cursor(CursorName::kA);
    Key(Qt::Key_Left);
    EXPECT_LT(*Plot().Cursor(CursorName::kA), before);
    Key(Qt::Key_Escape);
    EXPECT_EQ(Plot().Active(), std::nullopt);
    Key(Qt::Key_B);
    Key(Qt::Key_Delete);
    EXPECT_EQ(Plot().Cursor(CursorName::kB), std::nullopt);
    Plot().ZoomTo({100.0, 110.0});
    auto& table = Child<QTableWidget>("spectrum_peaks");
    QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::NoModifier,
                      table.visualItemRect(table.item(1, 0)).center());
    EXPECT_DOUBLE_EQ(*Plot().Cursor(CursorName::kA), 40.0);
    EXPECT_TRUE(Plot().Scene().band.low < 40.0 && 40.0 < Plot().Scene().band.high);
}

TEST_F(SpectrumSeen, IsSavedCopiedAndPrinted) {
    Open();
    m_chosen = m_folder.filePath(QStringLiteral("spectrum.csv"));
    Click("spectrum_save");
    EXPECT_EQ(m_asked.filters, "CSV Files|*.csv|All Files|*.*|");
    const std::string csv = Saved(*m_chosen);
    EXPECT_THAT(csv, HasSubstr("Frequency (Hz),Amplitude (peak)\r\n0,"));
    EXPECT_THAT(csv, HasSubstr("\r\n125,"));
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 502);
    auto& table = Child<QTableWidget>("spectrum_peaks");
    table.setFocus();
    QTest::keyClick(&table, Qt::Key_C, Qt::ControlModifier);
    EXPECT_THAT(QApplication::clipboard()->text().toStdString(),
                HasSubstr("Frequency (Hz)\tAmplitude\n12.500\t3"));
    m_chosen = m_folder.filePath(QStringLiteral("spectrum.png"));
    Click("spectrum_save_picture");
    EXPECT_EQ(m_asked.filters, "PNG Files|*.png|All Files|*.*|");
    EXPECT_EQ(QImage(*m_chosen),
              Pane().PictureOf({900, 560}, 2.0).convertToFormat(QImage(*m_chosen).format()));
    m_chosen = m_folder.filePath(QStringLiteral("no/such/folder.png"));
    m_boxes.clear();
    Click("spectrum_save_picture");
    ASSERT_THAT(m_boxes, SizeIs(1));
    EXPECT_THAT(m_boxes[0], HasSubstr("Can not write "));
    Click("spectrum_print");
    EXPECT_THAT(Saved(m_folder.filePath(QStringLiteral("page.pdf"))), HasSubstr("%PDF"));
}

TEST_F(SpectrumSeen, IsThatOfAnOpenRecording) {
    const std::string path = m_folder.filePath(QStringLiteral("tones.mcap")).toStdString();
    {
        auto writer = recording::RecordingWriter::Create(path, testing::MakeHead(1, 0.001), {});
        ASSERT_TRUE(writer.HasValue());
        std::vector<std::vector<double>> lines(5000);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            lines[i] = {std::sin(2.0 * std::numbers::pi * 0.1 * static_cast<double>(i))};
        }
        testing::Append(**writer, 100, lines);
        testing::RequireNoFault((*writer)->Finish());
    }
    Open();
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    QCoreApplication::processEvents();
    Finish();
    EXPECT_EQ(Peak(0, 0), "100.000");
    EXPECT_EQ(Shown().length, 5000U);
    EXPECT_THAT(Text("spectrum_description"), HasSubstr("from 0.000 s to 4.999 s"));
    m_view->Past().Window().Show({1000, 2000});
    QCoreApplication::processEvents();
    Finish();
    EXPECT_EQ(Run().Last().lines, (LineRange{1000, 2000}));
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    QCoreApplication::processEvents();
    Finish();
    EXPECT_EQ(Peak(0, 0), "12.500") << "what the graph held before";
}

TEST(SpectrumTicks, AreRoundNumbersThatFit) {
    for (const auto& [low, high] : {std::pair{0.0, 125.0},
                                    {0.0, 500.0},
                                    {-100.0, 0.0},
                                    {12.3, 12.9},
                                    {0.0, 3e-7},
                                    {1e5, 1e6}}) {
        for (const int most : {2, 5, 12}) {
            const AxisTicks ticks = TicksBetween(low, high, most);
            EXPECT_LE(static_cast<int>(ticks.values.size()), most + 1);
            EXPECT_GE(ticks.values.size(), most > 2 ? 2U : 0U) << low << " " << high;
            for (const double value : ticks.values) {
                EXPECT_GE(value, low - 1e-9 * (high - low));
                EXPECT_LE(value, high + 1e-9 * (high - low));
                EXPECT_NEAR(QString::number(value, 'f', ticks.decimals).toDouble(), value,
                            1e-6 * (high - low))
                    << "told apart";
            }
        }
    }
}

}  // namespace
}  // namespace wavo
