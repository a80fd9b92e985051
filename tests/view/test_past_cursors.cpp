// The cursors in recordings and in stopped graphs that were moved.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "past_fixture.h"
#include "recording/recording_history.h"
#include "recording/recording_reader.h"
#include "session/curve_reader.h"

namespace wavo {
namespace {

using Towards = measure::Search;
using ::testing::ElementsAre;
using ::testing::SizeIs;

/// The sample recording: lines 100 to 5099, a line per millisecond.
class PastCursors : public testing::PastFixture {
 protected:
    void Open() {
        OpenSample();
        m_view->activateWindow();
        m_view->setFocus();
        m_view->Cursors().Show(true);
    }
    [[nodiscard]] GraphCursors& Pair() { return m_view->Cursors(); }
    [[nodiscard]] std::int64_t Line(CursorName name) {
        Pair().Renew();
        return Pair().LineOf(name).value_or(-99);
    }
    [[nodiscard]] int Column(CursorName name) {
        Pair().Renew();
        const auto place = Pair().PlaceIn(Graph(), name);
        return place ? place->x() : -99;
    }
    [[nodiscard]] double ValueOf(std::int64_t line, std::size_t axis = 0) const {
        return m_lines[static_cast<std::size_t>(line - 100)][axis];
    }
    [[nodiscard]] const MeasuredTable& Table() { return m_view->Measured().Renew(); }
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(m_view.get(), key, modifiers);
    }
};

TEST_F(PastCursors, StandOnLinesOfARecordingAndReadThem) {
    Open();
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kA)), 100.0 + 4999.0 / 3.0, 8.0);
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kB)), 100.0 + 9998.0 / 3.0, 8.0);
    Pair().PutOn(CursorName::kA, 1500);
    Pair().PutOn(CursorName::kB, 2499);
    const MeasuredTable& table = Table();
    EXPECT_TRUE(table.is_whole);
    EXPECT_DOUBLE_EQ(*table.a, 1.4) << "as the axis says: 0 is the begin of the recording";
    EXPECT_DOUBLE_EQ(*table.b, 2.399);
    ASSERT_THAT(table.curves, SizeIs(1));
    const measure::CurveReading& read = table.curves[0].figures;
    EXPECT_EQ(*read.a, ValueOf(1500));
    EXPECT_EQ(*read.b, ValueOf(2499));
    EXPECT_EQ(read.between.count, 1000);
    long double sum = 0.0L;
    double lowest = ValueOf(1500);
    for (std::int64_t line = 1500; line < 2500; ++line) {
        sum += ValueOf(line);
        lowest = std::min(lowest, ValueOf(line));
    }
    EXPECT_NEAR(*read.between.mean, static_cast<double>(sum / 1000.0L), 1e-11);
    EXPECT_EQ(*read.between.minimum, lowest);
}

TEST_F(PastCursors, StayOnTheirLinesWhateverIsSeen) {
    Open();
    Pair().PutOn(CursorName::kA, 1500);
    const int before = Column(CursorName::kA);
    Wheel(Graph().PlotArea().center(), 120);
    EXPECT_EQ(Line(CursorName::kA), 1500);
    EXPECT_NE(Column(CursorName::kA), before);
    m_view->Past().Window().Show({3000, 4000});
    EXPECT_EQ(Line(CursorName::kA), 1500);
    EXPECT_EQ(Column(CursorName::kA), -99) << "not seen, but measured";
    EXPECT_EQ(*Table().curves[0].figures.a, ValueOf(1500));
    m_view->resize(700, 500);
    QCoreApplication::processEvents();
    m_view->Past().Window().Show({100, 5100});
    EXPECT_EQ(Line(CursorName::kA), 1500);
    m_view->Work().RebuildGraphs();
    EXPECT_EQ(Line(CursorName::kA), 1500);
    EXPECT_EQ(*Table().curves[0].figures.a, ValueOf(1500));
}

TEST_F(PastCursors, AreDraggedClickedAndMovedByKeys) {
    Open();
    const QRect plot = Graph().PlotArea();
    const QPoint point(plot.left() + plot.width() / 2, plot.center().y());
    QTest::mouseClick(m_view.get(), Qt::LeftButton, Qt::ControlModifier, point);
    EXPECT_EQ(Column(CursorName::kA), point.x());
    const std::int64_t line = Line(CursorName::kA);
    Key(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(Line(CursorName::kA), line + 1);
    Key(Qt::Key_Left);
    EXPECT_EQ(Column(CursorName::kA), point.x() - 1);
    QTest::mousePress(m_view.get(), Qt::LeftButton, Qt::NoModifier,
                      {Column(CursorName::kA), plot.center().y()});
    QTest::mouseMove(m_view.get(), {plot.left() + 20, plot.center().y()});
    QTest::mouseRelease(m_view.get(), Qt::LeftButton, Qt::NoModifier,
                        {plot.left() + 20, plot.center().y()});
    EXPECT_EQ(Column(CursorName::kA), plot.left() + 20);
}

TEST_F(PastCursors, TakeTheWindowAlongWhenKeysLeadOutOfIt) {
    Open();
    m_view->Past().Window().Show({1000, 2000});
    Pair().PutOn(CursorName::kA, 1995);
    Key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(Line(CursorName::kA), 2095);
    EXPECT_EQ(Seen().Count(), 1000);
    EXPECT_LT(Seen().begin, 2095);
    EXPECT_GT(Seen().end, 2095);
    EXPECT_NE(Column(CursorName::kA), -99);
}

TEST_F(PastCursors, JumpsBringTheirPlaceIntoSight) {
    Open();
    m_view->Past().Window().Show({1000, 1200});
    Pair().PutOn(CursorName::kA, 1100);
    Key(Qt::Key_P);
    const std::int64_t peak = Line(CursorName::kA);
    EXPECT_GT(ValueOf(peak), 49.5);
    EXPECT_GT(peak, 1200);
    EXPECT_TRUE(Seen().begin <= peak && peak < Seen().end);
    EXPECT_NE(Column(CursorName::kA), -99);
    Key(Qt::Key_V);
    EXPECT_LT(ValueOf(Line(CursorName::kA)), -49.5);
    Key(Qt::Key_Z);
    const std::int64_t crossing = Line(CursorName::kA);
    EXPECT_LT(ValueOf(crossing) * ValueOf(crossing - 1), 0.0);
    Key(Qt::Key_P, Qt::ShiftModifier);
    EXPECT_EQ(Line(CursorName::kA), peak);
}

TEST_F(PastCursors, TLeadsToWhereATriggerFires) {
    Give(1.0, 5);
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.Triggers = {{TriggerTypeCode::kStartAbove, 40.0, "X"}};
    m_view->Work().Graphs().Put(graph);
    Open();
    m_view->Past().Window().Show({1000, 1200});
    Key(Qt::Key_T);
    const std::int64_t first = Line(CursorName::kA);
    EXPECT_GT(ValueOf(first), 40.0);
    EXPECT_LE(ValueOf(first - 1), 40.0);
    EXPECT_TRUE(Seen().begin <= first && first < Seen().end);
    Key(Qt::Key_T);
    EXPECT_GT(Line(CursorName::kA), first);
    Key(Qt::Key_T, Qt::ShiftModifier);
    EXPECT_EQ(Line(CursorName::kA), first);
}

TEST_F(PastCursors, StandOnNoLineOfAGap) {
    m_lines = testing::MakeLines(2, 1000, 3);
    const std::string path = PathOf("gap.mcap");
    testing::WriteRecording(path, testing::MakeHead(2), m_lines, 0, 3000);
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    m_view->activateWindow();
    m_view->Cursors().Show(true);
    const QRect plot = Graph().PlotArea();
    QTest::mouseClick(m_view.get(), Qt::LeftButton, Qt::ControlModifier,
                      {plot.left() + plot.width() / 3, plot.center().y()});
    EXPECT_EQ(Line(CursorName::kA), 3500) << "the first behind the gap";
    Key(Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(Line(CursorName::kA), 499);
    Key(Qt::Key_Right, Qt::ControlModifier);
    EXPECT_EQ(Line(CursorName::kA), 3500);
    Pair().PutOn(CursorName::kB, 499);
    EXPECT_EQ(Table().curves[0].figures.between.count, 2);
    EXPECT_EQ(Table().curves[0].figures.between.not_finite, 3000);
}

TEST_F(PastCursors, AreThePointOverAnAxis) {
    WavoGraph graph;
    graph.InitGraph(1, "Y", 0, nullptr);
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "X";
    graph.XScale.ScaleType = ScaleTypeCode::kAxis;
    graph.XScale.ScaleAx = ScaleAxCode::kManual;
    graph.XScale.Minimum = -60.0;
    graph.XScale.Maximum = 60.0;
    graph.YScales[0] = graph.XScale;
    m_view->Work().Graphs().Replace({graph});
    m_view->Work().RebuildGraphs();
    Open();
    m_view->Past().Window().Show({1000, 2001});
    Pair().PutOn(CursorName::kA, 1500);
    const auto place = Pair().PlaceIn(Graph(), CursorName::kA);
    ASSERT_TRUE(place);
    EXPECT_EQ(*Table().curves[0].figures.a, ValueOf(1500, 1));
    EXPECT_EQ(*Table().curves[0].x_at_a, ValueOf(1500, 0));
    Pair().PutOn(CursorName::kA, 1200);
    QTest::mouseClick(m_view.get(), Qt::LeftButton, Qt::ControlModifier, *place);
    EXPECT_NEAR(static_cast<double>(Line(CursorName::kA)), 1500.0, 8.0);
    Pair().JumpTo(CursorName::kA, 4000);
    EXPECT_TRUE(Seen().begin <= 4000 && 4000 < Seen().end);
    EXPECT_TRUE(Pair().PlaceIn(Graph(), CursorName::kA));
}

TEST_F(PastCursors, GoBackToTheLiveValuesWhenTheRecordingIsClosed) {
    Give(1.0, 5);
    Open();
    Pair().PutOn(CursorName::kA, 1500);
    (void)Table();
    m_view->Past().Files().Execute(CommandId::kCloseRecording);
    QCoreApplication::processEvents();
    for (int i = 0; i < 2000; i += 100) {
        Give(i, 100);
    }
    m_view->Commands().Execute(CommandId::kStop);
    const MeasuredTable& table = Table();
    ASSERT_TRUE(table.a);
    EXPECT_LT(*table.a, 0.0) << "0 is the newest sample";
    EXPECT_TRUE(table.curves[0].figures.a);
    const std::string path = PathOf("night.mcap");
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(m_view->Past().Files().Open(path));
        (void)Table();
    }
}

TEST_F(PastCursors, MeasureStoppedGraphsThatWereMoved) {
    for (int i = 0; i < 3000; i += 100) {
        Give(i, 100);
    }
    m_view->Commands().Execute(CommandId::kStop);
    Pair().Show(true);
    const LineRange held = [&] {
        Wheel(Graph().PlotArea().center(), 120);
        return m_view->Past().Window().Window().Held();
    }();
    Pair().PutOn(CursorName::kA, held.begin + 10);
    Pair().PutOn(CursorName::kB, 2900);
    EXPECT_EQ(*Table().curves[0].figures.a, static_cast<double>(held.begin + 10));
    EXPECT_EQ(Table().curves[0].figures.between.count, 2900 - held.begin - 9);
    Key(Qt::Key_Home);
    EXPECT_NE(Column(CursorName::kA), -99);
    EXPECT_EQ(Line(CursorName::kB), 2900);
    Pair().JumpTo(CursorName::kB, 2900);
    EXPECT_NE(Column(CursorName::kB), -99);
    m_view->Commands().Execute(CommandId::kStart);
    Give(3000, 100);
    EXPECT_FALSE(m_view->Past().Window().IsShown());
    EXPECT_TRUE(Table().curves[0].figures.a);
}

TEST_F(PastCursors, OfAStoppedGraphJumpToWhatIsHeldAndNotShown) {
    WavoGraph long_one;
    long_one.InitGraph(1, "X", 0, nullptr);
    long_one.Mode = GraphMode::kContinuity;
    long_one.XScale.TimeRange = 8.0;
    WavoGraph short_one = long_one;
    short_one.GraphNumber = 2;
    short_one.XScale.TimeRange = 1.0;
    m_view->Work().Graphs().Replace({long_one, short_one});
    m_view->Work().RebuildGraphs();
    for (int i = 0; i < 2000; i += 100) {
        Give(i, 100);
    }
    m_view->Commands().Execute(CommandId::kStop);
    Pair().Show(true);
    const QRect plot = Graph(1).PlotArea();
    QTest::mouseClick(m_view.get(), Qt::LeftButton, Qt::ControlModifier, plot.center());
    EXPECT_FALSE(m_view->Past().Window().IsShown());
    Pair().JumpTo(CursorName::kA, Line(CursorName::kA) + 1);
    EXPECT_FALSE(m_view->Past().Window().IsShown()) << "it is seen";
    Pair().JumpTo(CursorName::kA, 600);
    EXPECT_TRUE(m_view->Past().Window().IsShown());
    EXPECT_TRUE(Pair().PlaceIn(Graph(1), CursorName::kA));
    EXPECT_EQ(*Table().curves[0].figures.a, 600.0);
}

/// A recording of one axis that is longer than what one renewal reads.
class LongPast : public PastCursors {
 protected:
    static constexpr std::int64_t kCount = 400'000;

    LongPast() {
        m_values.resize(kCount);
        double value = 0.0;
        std::mt19937_64 random(11);
        for (double& each : m_values) {
            value += static_cast<double>(random() % 2001) / 1000.0 - 1.0;
            each = value;
        }
        std::vector<std::vector<double>> lines;
        lines.reserve(m_values.size());
        for (const double each : m_values) {
            lines.push_back({each});
        }
        testing::WriteRecording(PathOf("long.mcap"), testing::MakeHead(1), lines);
    }

    std::vector<double> m_values;
};

TEST_F(LongPast, IsMeasuredInPartsWithoutAWrongFigure) {
    ASSERT_TRUE(m_view->Past().Files().Open(PathOf("long.mcap")));
    Pair().Show(true);
    Pair().PutOn(CursorName::kA, 7);
    Pair().PutOn(CursorName::kB, kCount - 10);
    const auto begin = m_values.begin() + 7;
    const auto end = m_values.end() - 9;
    int parts = 0;
    while (!Table().is_whole) {
        ++parts;
        ASSERT_LT(parts, 1000);
        const measure::Statistics& between = m_view->Measured().Table().curves[0].figures.between;
        EXPECT_EQ(between.mean.reason, "not complete yet");
        EXPECT_EQ(*between.minimum, *std::min_element(begin, end)) << "known at once";
        EXPECT_EQ(between.minimum_cycle, std::min_element(begin, end) - m_values.begin());
        EXPECT_EQ(*between.maximum, *std::max_element(begin, end));
        EXPECT_EQ(between.maximum_cycle, std::max_element(begin, end) - m_values.begin());
    }
    EXPECT_GT(parts, 2);
    const measure::Statistics& between = m_view->Measured().Table().curves[0].figures.between;
    const long double sum = std::accumulate(begin, end, 0.0L);
    EXPECT_EQ(between.count, end - begin);
    EXPECT_NEAR(*between.mean, static_cast<double>(sum / static_cast<long double>(end - begin)),
                1e-9);
    EXPECT_EQ(*between.minimum, *std::min_element(begin, end));
    Pair().PutOn(CursorName::kB, kCount - 11);
    EXPECT_TRUE(Table().is_whole) << "what was read is not read again";
}

TEST_F(LongPast, IsSearchedAsIfAllOfItWereRead) {
    auto reader = recording::RecordingReader::Open(PathOf("long.mcap"));
    ASSERT_TRUE(reader.HasValue());
    recording::RecordingHistory history(**reader, 0, 0, testing::kNaN);
    CurveReader curve(
        std::make_unique<HistoryValues>(history, [&reader] { return (*reader)->BytesRead(); }),
        0.001, 0);
    const auto next = [&](Landmark landmark, std::int64_t line, Towards search, double prominence) {
        recording::ReadingBudget budget;
        LineFound found;
        for (int turn = 0; turn < 10000; ++turn) {
            budget.Renew(20);
            found = curve.Next(landmark, line, search, prominence, &budget);
            if (found.has_ended) {
                break;
            }
        }
        EXPECT_TRUE(found.has_ended);
        return found.line;
    };
    std::mt19937_64 random(5);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const std::size_t from = random() % m_values.size();
        const auto line = static_cast<std::int64_t>(from);
        const Towards search = round % 2 == 0 ? Towards::kForward : Towards::kBackward;
        const double prominence = std::pow(10.0, static_cast<double>(random() % 4));
        const auto as_line = [](std::optional<std::size_t> place) {
            return place ? std::optional(static_cast<std::int64_t>(*place)) : std::nullopt;
        };
        EXPECT_EQ(next(Landmark::kPeak, line, search, prominence),
                  as_line(measure::NextPeak(m_values, from, search, prominence)));
        EXPECT_EQ(next(Landmark::kValley, line, search, prominence),
                  as_line(measure::NextValley(m_values, from, search, prominence)));
        const auto crossing =
            measure::NextZeroCrossing(m_values, static_cast<double>(from), search);
        const auto behind =
            crossing
                ? std::optional(static_cast<std::int64_t>(
                      search == Towards::kForward ? std::ceil(*crossing) : std::floor(*crossing)))
                : std::nullopt;
        EXPECT_EQ(next(Landmark::kZeroCrossing, line, search, 0.0), behind);
    }
    const std::uint64_t before = (*reader)->BytesRead();
    EXPECT_EQ(curve.Next(Landmark::kPeak, 0, Towards::kForward, 1e9).line, std::nullopt);
    EXPECT_LT((*reader)->BytesRead() - before, 200'000U) << "most is not read at all";
}

TEST_F(LongPast, IsSearchedByKeysInParts) {
    ASSERT_TRUE(m_view->Past().Files().Open(PathOf("long.mcap")));
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.YCoorAxDerivation = {3};  // of which a recording has no levels
    graph.YScales[0].ScaleAx = ScaleAxCode::kManual;
    graph.YScales[0].Minimum = -1e14;
    graph.YScales[0].Maximum = 1e14;
    m_view->Work().Graphs().Put(graph);
    m_view->activateWindow();
    Pair().Show(true);
    Pair().PutOn(CursorName::kA, 10);
    Key(Qt::Key_P);
    EXPECT_EQ(Line(CursorName::kA), 10) << "searched on between events";
    for (int i = 0; i < 2000; ++i) {
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(Line(CursorName::kA), 10) << "there is none";
    Key(Qt::Key_P);
    Key(Qt::Key_Right, Qt::ControlModifier);
    QCoreApplication::processEvents();
    EXPECT_EQ(Line(CursorName::kA), 11) << "another key ends the search";
}

/// Values that may be lost.
class LosingValues final : public LineValues {
 public:
    [[nodiscard]] LineRange Lines() const override { return {0, 20000}; }
    bool Read(std::int64_t, std::span<double> values) override {
        std::ranges::fill(values, value);
        return true;
    }
    [[nodiscard]] std::uint64_t Losses() const override { return losses; }

    double value = 1.0;
    std::uint64_t losses = 0;
};

TEST(CurveOfARecording, ForgetsWhatWasLost) {
    auto owned = std::make_unique<LosingValues>();
    LosingValues& values = *owned;
    CurveReader curve(std::move(owned), 0.001, 0);
    EXPECT_EQ(*curve.Between(0, 19999).between.mean, 1.0);
    values.value = testing::kNaN;
    EXPECT_EQ(*curve.Between(0, 19999).between.mean, 1.0) << "known";
    ++values.losses;
    EXPECT_EQ(curve.Between(0, 19999).between.mean.reason, "no values");
}

}  // namespace
}  // namespace wavo
