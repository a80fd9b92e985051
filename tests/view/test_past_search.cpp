// Going to where triggers fire, and from event to event.
#include <gmock/gmock.h>

#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <functional>
#include <map>
#include <random>

#include "graph/values/condition_search.h"
#include "past_fixture.h"
#include "recording/recording_history.h"
#include "ui/controls/controls.h"
#include "ui/dialogs/export_progress.h"
#include "view/past_search.h"

namespace wavo {
namespace {

/// A history in memory that answers like a recording.
class ListedHistory final : public History {
 public:
    ListedHistory(std::vector<double> values, std::int64_t first)
        : m_values(std::move(values)), m_first(first) {}

    [[nodiscard]] LineRange Lines() const override {
        return {m_first, m_first + static_cast<std::int64_t>(m_values.size())};
    }
    HistoryAnswer Columns(std::span<const std::int64_t> bounds, ColumnRow& row) override {
        row.Reset(bounds.size() - 1);
        for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
            std::uint8_t missing = 0;
            for (std::int64_t line = bounds[i]; line < bounds[i + 1]; ++line) {
                const double value = At(line);
                if (std::isnan(value)) {
                    missing = 1;
                    continue;
                }
                row.minimum[i] = std::min(row.minimum[i], value);
                row.maximum[i] = std::max(row.maximum[i], value);
            }
            row.missing[i] = missing;
        }
        return HistoryAnswer::kAll;
    }
    HistoryAnswer Values(std::int64_t first, std::span<double> values) override {
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = At(first + static_cast<std::int64_t>(i));
        }
        return HistoryAnswer::kAll;
    }
    HistoryAnswer Sums(const LineRange&, HistorySums&) override { return HistoryAnswer::kAll; }

    [[nodiscard]] double At(std::int64_t line) const {
        const LineRange lines = Lines();
        return line >= lines.begin && line < lines.end
                   ? m_values[static_cast<std::size_t>(line - m_first)]
                   : testing::kNaN;
    }

 private:
    const std::vector<double> m_values;
    const std::int64_t m_first;
};

TEST(ConditionSearch, FindsWhatALookAtEveryLineFinds) {
    std::mt19937_64 random(21);
    for (const unsigned rarity : {2U, 40U, 3000U}) {
        for (const std::int64_t piece : {300, 5000, 1 << 22}) {
            std::vector<double> above(20000);
            std::vector<double> below(20000);
            double level = 0.0;
            for (std::size_t i = 0; i < above.size(); ++i) {
                level = random() % rarity == 0 ? static_cast<double>(random() % 21) - 10.0 : level;
                above[i] = random() % 500 == 0 ? testing::kNaN : level;
                below[i] = random() % rarity == 0 ? -9.0 : 0.0;
            }
            ListedHistory first(above, 1000);
            ListedHistory second(below, 1000);
            const auto is_true = [&](std::int64_t line) {
                return first.At(line) > 8.5 || second.At(line) < -8.0;
            };
            std::vector<std::int64_t> places;
            for (std::int64_t line = 1000; line < 21000; ++line) {
                if (is_true(line) && (line == 1000 || !is_true(line - 1))) {
                    places.push_back(line);
                }
            }
            ConditionSearch search(
                {{&first, TriggerSide::kAbove, 8.5}, {&second, TriggerSide::kBelow, -8.0}},
                first.Lines(), piece, [](std::int64_t) { return true; });
            for (int i = 0; i < 300; ++i) {
                const auto from = static_cast<std::int64_t>(900 + random() % 20200);
                const auto next = std::ranges::lower_bound(places, from);
                ASSERT_EQ(search.Next(from),
                          next == places.end() ? std::nullopt : std::optional(*next))
                    << from;
                ASSERT_EQ(search.Previous(from),
                          next == places.begin() ? std::nullopt : std::optional(*std::prev(next)))
                    << from;
            }
        }
    }
}

TEST(ConditionSearch, IsEndedWhereItIsTold) {
    ListedHistory history(std::vector<double>(100000, 0.0), 0);
    int questions = 0;
    ConditionSearch search({{&history, TriggerSide::kAbove, 1.0}}, history.Lines(), 1000,
                           [&questions](std::int64_t) { return ++questions < 5; });
    EXPECT_EQ(search.Next(0), std::nullopt);
    EXPECT_TRUE(search.WasEnded());
    EXPECT_EQ(questions, 5);
}

class Search : public testing::PastFixture {
 protected:
    /// A recording whose X is 5 in lines 3000 to 3009 and 7000 to 7009, else 0; lines 5000 to 5999
    /// are missing.
    void OpenPulses(std::int32_t order = 0) {
        Give(1.0, 5);
        std::vector<std::vector<double>> lines;
        for (std::int64_t line = 0; line < 10000; ++line) {
            const std::int64_t number = line < 5000 ? line : line + 1000;
            const bool is_pulse = number % 4000 >= 3000 && number % 4000 < 3010;
            lines.push_back({is_pulse ? 5.0 : 0.0, 1.0});
        }
        const std::string path = PathOf("pulses.mcap");
        QFile::remove(QString::fromStdString(path));  // of the time before
        testing::WriteRecording(path, testing::MakeHead(2), lines, 0, 1000);
        ASSERT_TRUE(m_view->Past().Files().Open(path));
        WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
        graph.YCoorAxName = {"X"};
        graph.YCoorAxDerivation = {order};
        graph.Triggers = {{TriggerTypeCode::kStopAbove, 2.5, "X"}};
        m_view->Work().Graphs().Put(graph);
        m_view->Past().Window().Show({1000, 1501});
    }
    void Go(CommandId id) { m_view->Past().Execute(id); }
    [[nodiscard]] std::optional<std::int64_t> Mark() { return m_view->Past().Window().Mark(); }
};

TEST_F(Search, GoesFromTriggerToTrigger) {
    OpenPulses();
    Go(CommandId::kNextTrigger);
    EXPECT_EQ(Mark(), 3000);
    EXPECT_EQ(Seen(), (LineRange{2750, 3251})) << "in the middle, as much as before";
    Go(CommandId::kNextTrigger);
    EXPECT_EQ(Mark(), 7000) << "it must have been false between";
    Go(CommandId::kNextTrigger);
    EXPECT_EQ(Mark(), 7000);
    EXPECT_EQ(m_panes[0], "No trigger fires behind this place");
    Go(CommandId::kPreviousTrigger);
    EXPECT_EQ(Mark(), 3000);
    Go(CommandId::kPreviousTrigger);
    EXPECT_EQ(Mark(), 3000);
    EXPECT_EQ(m_panes[0], "No trigger fires before this place");
    m_view->Past().Window().MoveToEnd();
    Go(CommandId::kPreviousTrigger);
    EXPECT_EQ(Mark(), 7000) << "from the border of what is seen";
    EXPECT_EQ(Graph().State(), RunState::kRunning);
}

TEST_F(Search, OfDerivativesWithoutLevelsToo) {
    OpenPulses(3);
    Go(CommandId::kNextTrigger);
    EXPECT_EQ(Mark(), 3000);
    Go(CommandId::kNextTrigger);
    // h3 - 2 h2 + h0 is negative where X rises, and positive two lines later.
    ASSERT_TRUE(Mark().has_value());
    EXPECT_GT(*Mark(), 3000);
    EXPECT_LT(*Mark(), 3020);
}

TEST_F(Search, NeedsATriggerOfTheSelectedGraphAndARecording) {
    EXPECT_FALSE(m_view->Past().IsEnabled(CommandId::kNextTrigger));
    EXPECT_FALSE(m_view->Past().IsEnabled(CommandId::kNextEvent));
    OpenSample();
    EXPECT_FALSE(m_view->Past().IsEnabled(CommandId::kNextTrigger)) << "it has no trigger";
    EXPECT_TRUE(m_view->Past().IsEnabled(CommandId::kNextEvent));
}

TEST_F(Search, EndsWithTheRecordingThatAnEventCloses) {
    for (const bool opens_another : {false, true}) {
        OpenPulses();
        std::chrono::milliseconds now{};
        PastSearch search(
            m_view->Work(), m_view->Past().Window(),
            [this] { return m_view->Editor().SelectedNumber(); }, *m_view,
            [&now] { return now += std::chrono::milliseconds(30); });
        QMetaObject::invokeMethod(
            m_view.get(),
            [&] {
                Go(CommandId::kCloseRecording);
                if (opens_another) {
                    QFile::remove(QString::fromStdString(PathOf("night.mcap")));
                    OpenSample();
                }
            },
            Qt::QueuedConnection);
        search.Execute(CommandId::kNextTrigger);
        EXPECT_EQ(m_view->Work().Recording() != nullptr, opens_another);
        EXPECT_EQ(Mark(), std::nullopt);
    }
}

TEST_F(Search, EndsWhenTheMasterEndsTheProgram) {
    OpenPulses();
    std::chrono::milliseconds now{};
    m_view->Past().Search().SetClock([&now] { return now += std::chrono::milliseconds(30); });
    bool is_quit = false;
    QObject::connect(&m_view->News(), &ViewNews::QuitRequested, m_view.get(),
                     [&is_quit] { is_quit = true; });
    QMetaObject::invokeMethod(
        m_view.get(), [this] { m_source->events->Quit(); }, Qt::QueuedConnection);
    Go(CommandId::kNextTrigger);
    EXPECT_TRUE(is_quit);
    EXPECT_EQ(Mark(), std::nullopt);
    Go(CommandId::kNextTrigger);
    EXPECT_EQ(Mark(), 3000) << "the next one goes on";
}

TEST_F(Search, TheProgressIsShownAndCancelEndsTheSearch) {
    OpenPulses();
    std::chrono::milliseconds now{};
    m_view->Past().Search().SetClock([&now] { return now += std::chrono::milliseconds(300); });
    const LineRange before = Seen();
    int shown = 0;
    const std::function<void()> look = [&] {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (auto* const progress = dynamic_cast<ExportProgress*>(widget);
                progress != nullptr && progress->isVisible()) {
                ++shown;
                EXPECT_EQ(progress->windowTitle(), "Search");
                QTest::mouseClick(FindControl<QPushButton>(
                                      *progress, static_cast<int>(ExportProgressId::kCancel)),
                                  Qt::LeftButton);
                return;
            }
        }
        QMetaObject::invokeMethod(m_view.get(), look, Qt::QueuedConnection);
    };
    QMetaObject::invokeMethod(m_view.get(), look, Qt::QueuedConnection);
    m_view->Past().Execute(CommandId::kNextTrigger);
    EXPECT_EQ(shown, 1);
    EXPECT_EQ(Mark(), std::nullopt);
    EXPECT_EQ(Seen(), before);
}

TEST_F(Search, ReachesWhatStandsBehindTheLastLine) {
    const std::string path = PathOf("ended.mcap");
    {
        auto writer = recording::RecordingWriter::Create(path, testing::MakeHead(2), std::nullopt);
        ASSERT_TRUE(writer.HasValue());
        testing::Append(**writer, 0, testing::MakeLines(2, 1000, 3));
        (*writer)->AddEvent({recording::kEventOverrun, 1000, 0, "the FIFO ran over"});
        (*writer)->AddEvent({recording::kEventOverrun, 1000, 0, "the master has gone"});
        testing::RequireNoFault((*writer)->Finish());
    }
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    Go(CommandId::kPreviousEvent);
    EXPECT_EQ(Mark(), 1000) << "from the end";
    EXPECT_EQ(m_panes[0], "the FIFO ran over; the master has gone");
    Go(CommandId::kNextEvent);
    EXPECT_EQ(m_panes[0], "No event behind this place");
    Go(CommandId::kPreviousEvent);
    EXPECT_EQ(m_panes[0], "No event before this place");
    EXPECT_EQ(Mark(), 1000);
}

TEST_F(Search, OfManyEventsOfALineTheFirstAreToldAndHowManyMore) {
    const std::string path = PathOf("many.mcap");
    {
        auto writer = recording::RecordingWriter::Create(path, testing::MakeHead(2), std::nullopt);
        ASSERT_TRUE(writer.HasValue());
        testing::Append(**writer, 0, testing::MakeLines(2, 1000, 3));
        for (int i = 1; i <= 5 + 6; ++i) {
            const std::uint64_t line = i <= 5 ? 400 : 500;
            (*writer)->AddEvent({recording::kEventOverrun, line, 0, "e" + std::to_string(i)});
        }
        for (int i = 0; i < 11; ++i) {
            (*writer)->AddEvent({recording::kEventOverrun, 500, 0, "further"});
        }
        testing::RequireNoFault((*writer)->Finish());
    }
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    Go(CommandId::kNextEvent);
    EXPECT_EQ(m_panes[0], "e1; e2; e3; e4; e5");
    Go(CommandId::kNextEvent);
    EXPECT_EQ(m_panes[0], "e6; e7; e8; e9; e10 and 12 more");
}

TEST_F(Search, StepsThroughEventsAndGaps) {
    OpenPulses();
    Go(CommandId::kNextEvent);
    EXPECT_EQ(Mark(), 6000);
    EXPECT_EQ(m_panes[0], "the FIFO ran over");
    Go(CommandId::kNextEvent);
    EXPECT_EQ(m_panes[0], "No event behind this place");
    m_view->Past().Window().MoveToEnd();
    Go(CommandId::kPreviousEvent);
    EXPECT_EQ(Mark(), 6000);
    Go(CommandId::kPreviousEvent);
    EXPECT_EQ(m_panes[0], "No event before this place");
}

}  // namespace
}  // namespace wavo
