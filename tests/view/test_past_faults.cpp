// Recordings that grow, change or are damaged while they are looked at, and what else goes on then.
#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <cmath>

#include "past_fixture.h"
#include "platform/folders.h"

namespace wavo {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class PastFaults : public testing::PastFixture {
 protected:
    PastFaults() { Give(1.0, 5); }

    /// Opens a recording that is still being written.
    void OpenGrowing() {
        const std::string path = PathOf("growing.mcap");
        auto writer = recording::RecordingWriter::Create(path, testing::MakeHead(3), std::nullopt);
        ASSERT_TRUE(writer.HasValue());
        m_writer = std::move(*writer);
        Grow();
        ASSERT_TRUE(m_view->Past().Files().Open(path));
    }
    /// 1000 lines more.
    void Grow() {
        testing::Append(*m_writer, m_writer->NextLine(), testing::MakeLines(3, 1000, 5));
        testing::RequireNoFault(m_writer->Keep());
    }
    void Execute(CommandId id) { m_view->Past().Execute(id); }

    std::unique_ptr<recording::RecordingWriter> m_writer;
};

TEST_F(PastFaults, AFileThatGrowsIsShownAsFarAsItIs) {
    OpenGrowing();
    EXPECT_EQ(Seen(), (LineRange{0, 1000}));
    EXPECT_TRUE(m_view->Past().IsEnabled(CommandId::kFollow));
    Grow();
    m_view->Past().Files().Refresh();
    EXPECT_EQ(Seen(), (LineRange{0, 2000})) << "all of it was seen, and is";
    m_view->Past().Window().Show({500, 701});
    Grow();
    m_view->Past().Files().Refresh();
    EXPECT_EQ(Seen(), (LineRange{500, 701}));
    Execute(CommandId::kFollow);
    EXPECT_TRUE(m_view->Past().IsOn(CommandId::kFollow));
    EXPECT_EQ(Seen(), (LineRange{2799, 3000}));
    Grow();
    m_view->Past().Files().Refresh();
    EXPECT_EQ(Seen(), (LineRange{3799, 4000}));
    testing::RequireNoFault(m_writer->Finish());
    m_view->Past().Files().Refresh();
    EXPECT_FALSE(m_view->Past().IsEnabled(CommandId::kFollow)) << "it has come to its end";
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(PastFaults, WhatASearchSaidStaysWhileNothingChanges) {
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.Triggers = {{TriggerTypeCode::kStopAbove, 1e9, "X"}};
    m_view->Work().Graphs().Put(graph);
    OpenGrowing();
    Execute(CommandId::kNextTrigger);
    const std::string told = "No trigger fires behind this place";
    EXPECT_EQ(m_panes[0], told);
    int notices = 0;
    QObject::connect(
        &m_view->News(), &ViewNews::PaneTextChanged, m_view.get(),
        [&](StatusPane pane, const QString&) { notices += pane == StatusPane::kMessage ? 1 : 0; });
    m_view->Past().Files().Refresh();  // a recorder has told how far it is
    Grow();
    m_view->Past().Files().Refresh();
    EXPECT_EQ(m_panes[0], told);
    EXPECT_EQ(notices, 0);
    m_view->Past().Window().MoveBy(-0.5);
    Grow();
    m_view->Past().Files().Refresh();
    EXPECT_THAT(m_panes[0], ::testing::StartsWith("3000 lines, from "));
    m_view->Past().Files().Refresh();
    EXPECT_EQ(notices, 1) << "told once";
}

TEST_F(PastFaults, WhatWasWrittenIsTakenInWhereNobodyTellsOfIt) {
    OpenGrowing();
    Grow();
    QEvent activated(QEvent::WindowActivate);
    QCoreApplication::sendEvent(m_view.get(), &activated);
    EXPECT_EQ(Seen(), (LineRange{0, 2000}));
    m_view->Past().Window().Show({500, 701});
    Grow();
    QTest::keyClick(m_view.get(), Qt::Key_End);
    EXPECT_EQ(Seen(), (LineRange{2799, 3000}));
    m_view->Past().Window().Show({500, 701});
    Grow();
    QTest::keyClick(&m_view->Past().Overview(), Qt::Key_End);
    EXPECT_EQ(Seen(), (LineRange{3799, 4000}));
    Grow();
    QTest::keyClick(m_view.get(), Qt::Key_Home);
    EXPECT_EQ(m_view->Past().Window().Window().Held(), (LineRange{0, 5000}));
    m_writer->AddEvent({recording::kEventOverrun, m_writer->NextLine() + 10, 10, "it ran over"});
    testing::Append(*m_writer, m_writer->NextLine() + 10, testing::MakeLines(3, 1000, 5));
    testing::RequireNoFault(m_writer->Keep());
    Execute(CommandId::kNextEvent);
    EXPECT_EQ(m_panes[0], "it ran over");
    EXPECT_EQ(m_view->Past().Window().Mark(), 5010);
}

TEST_F(PastFaults, AnotherCycleTimeBeginsTheNextFile) {
    OpenGrowing();
    Execute(CommandId::kFollow);
    EXPECT_FALSE(m_view->Past().IsEnabled(CommandId::kNextFile));
    EXPECT_FALSE(m_view->Past().IsEnabled(CommandId::kPreviousFile));
    testing::RequireNoFault(m_writer->Finish());
    testing::WriteRecording(PathOf("growing-2.mcap"), testing::MakeHead(3, 0.002),
                            testing::MakeLines(3, 300, 1));
    m_view->Past().Files().Refresh();
    EXPECT_THAT(m_panes[0], ::testing::EndsWith("; the next file is growing-2.mcap"));
    ASSERT_TRUE(m_view->Past().IsEnabled(CommandId::kNextFile));
    Execute(CommandId::kNextFile);
    EXPECT_EQ(m_title, "growing-2.mcap - wavo.ini");
    EXPECT_EQ(m_panes[2], "cycl. time=0.00200s");
    EXPECT_EQ(Seen(), (LineRange{0, 300}));
    EXPECT_FALSE(m_view->Past().IsEnabled(CommandId::kNextFile));
    ASSERT_TRUE(m_view->Past().IsEnabled(CommandId::kPreviousFile));
    Execute(CommandId::kPreviousFile);
    EXPECT_EQ(m_title, "growing.mcap - wavo.ini");
    Execute(CommandId::kCloseRecording);
    EXPECT_EQ(m_title, "wavo.ini - running");
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(PastFaults, ARecordingThatWasCutOffSaysSo) {
    OpenGrowing();
    EXPECT_THAT(m_view->Work().Source().StateText(),
                HasSubstr("recording was cut off at 2025-08-01"));
}

TEST_F(PastFaults, AFileThatIsRemovedIsToldAndShownAllTheSame) {
    OpenSample();
    const QImage before = m_view->Screen().Picture().copy();
    const QString path = QString::fromStdString(PathOf("night.mcap"));
    if (!QFile::remove(path) || QFile::exists(path)) {
        GTEST_SKIP() << "this system keeps files that are open";
    }
    m_view->Past().Files().Refresh();
    EXPECT_EQ(m_panes[0], "The file was removed or replaced: this is the one that was opened");
    m_view->Past().Window().MoveToEnd();
    EXPECT_EQ(m_view->Screen().Picture(), before);
}

TEST_F(PastFaults, DrawingEndsWhereThereIsNothingToBeDrawn) {
    // One line has no derivative, and an axis may have no value at all.
    for (const int count : {1, 2, 300}) {
        std::vector<std::vector<double>> lines(static_cast<std::size_t>(count));
        for (int line = 0; line < count; ++line) {
            lines[static_cast<std::size_t>(line)] = {1.0 * line, std::nan("")};
        }
        const std::string path = PathOf(("few" + std::to_string(count) + ".mcap").c_str());
        testing::WriteRecording(path, testing::MakeHead(2), lines);
        for (const int order : {0, 1, 4}) {
            ASSERT_TRUE(m_view->Past().Files().Open(path));
            WavoGraph graph = Graph().Graph();
            const auto names = m_view->Work().Recording()->Reader().Head().axis_names;
            graph.YCoorAxName = names;
            graph.YCoorAxDerivation = {order, order};
            graph.YCoorAxColor.resize(2, 0xFFFFFF);
            graph.Triggers.resize(2, graph.Triggers.front());
            graph.YScales.resize(2, graph.YScales.front());
            for (ScaleDefinition& scale : graph.YScales) {
                scale.ScaleAx = ScaleAxCode::kAutomatic;
            }
            m_view->Work().Graphs().Replace({graph});
            m_view->Work().RebuildGraphs();
            for (int i = 0; i < 500 && !m_view->Board().IsExact(); ++i) {
                QCoreApplication::processEvents();
            }
            EXPECT_TRUE(m_view->Board().IsExact()) << count << " lines, order " << order;
        }
    }
}

TEST_F(PastFaults, AFileThatIsCutShowsWhatIsLeft) {
    const std::string path = PathOf("long.mcap");  // more than the first picture reads
    testing::WriteRecording(path, testing::MakeHead(3), testing::MakeLines(3, 100000, 5));
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.resize(file.size() / 2));
    file.close();
    m_view->Past().Window().Show({80000, 81001});
    EXPECT_FALSE(m_view->Screen().Picture().isNull());
    for (int i = 0; i < 30; ++i) {
        Wheel(Graph().PlotArea().center(), -120);
        EXPECT_FALSE(m_view->Screen().Picture().isNull());
    }
    EXPECT_THAT(m_panes[0], HasSubstr("damaged"));
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(PastFaults, ADamagedChunkIsAGapAndTold) {
    OpenSample();
    m_view->Past().Execute(CommandId::kCloseRecording);
    QFile file(QString::fromStdString(PathOf("night.mcap")));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const qint64 middle = file.size() / 2;
    ASSERT_TRUE(file.seek(middle));
    const QByteArray bytes = file.read(20000);
    ASSERT_TRUE(file.seek(middle));
    ASSERT_EQ(file.write(QByteArray(bytes.size(), 'x')), bytes.size());
    file.close();
    ASSERT_TRUE(m_view->Past().Files().Open(PathOf("night.mcap")));
    for (std::int64_t line = 100; line < 5100; line += 200) {
        m_view->Past().Window().Show({line, line + 201});
        EXPECT_FALSE(m_view->Screen().Picture().isNull());
    }
    EXPECT_THAT(m_panes[0], HasSubstr("are damaged and left out"));
    EXPECT_FALSE(m_view->Work().Recording()->Reader().Gaps().empty());
    const auto gap = m_view->Work().Recording()->Reader().Gaps().front();
    m_view->Past().Window().Show(
        {static_cast<std::int64_t>(gap.first) + 5, static_cast<std::int64_t>(gap.first) + 50});
    EXPECT_FALSE(m_view->Screen().Picture().isNull()) << "a gap longer than the window";
}

/// Overwrites so many bytes of a recording from a value of a line on.
void Damage(const std::string& path, double value, qint64 count) {
    QFile file(QString::fromStdString(path));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    const qint64 place =
        file.readAll().indexOf(QByteArray(reinterpret_cast<const char*>(&value), sizeof value));
    ASSERT_GT(place, 0);
    ASSERT_TRUE(file.seek(place));
    ASSERT_EQ(file.write(QByteArray(count, 'x')), count);
}

/// A recording of X, which is known from far, and Y, which has to be read; a line is damaged.
void WriteDamaged(const std::string& path) {
    std::vector<std::vector<double>> lines(400000);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const double slow = 50.0 * std::sin(static_cast<double>(i) * 0.0001);
        lines[i] = {i % 2 == 0 ? 40.0 : -40.0, slow};
    }
    testing::WriteRecording(path, testing::MakeHead(2), lines);
    Damage(path, lines[200500][1], 100);
}

TEST_F(PastFaults, AChunkThatIsFoundDamagedWhileDrawingIsAGapInAllCurves) {
    const std::string path = PathOf("two.mcap");
    WriteDamaged(path);
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    WavoGraph graph = Graph().Graph();
    graph.YCoorAxName = {"X", "Y"};
    graph.YCoorAxDerivation = {0, 0};
    graph.YCoorAxColor = {0xFFFFFF, 0xFF00};
    graph.Triggers.resize(2, graph.Triggers.front());
    graph.YScales.assign(2, {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -60.0, 60.0});
    m_view->Work().Graphs().Replace({graph});
    m_view->Work().RebuildGraphs();
    const recording::RecordingReader& reader = m_view->Work().Recording()->Reader();
    const QImage shown = m_view->Screen().Picture().copy();  // with one drawing that reads all
    ASSERT_FALSE(reader.Gaps().empty());
    EXPECT_TRUE(m_view->Board().IsExact());
    m_view->Past().Window().Show({0, 1000});
    m_view->Past().Window().Show({0, 400000});
    EXPECT_EQ(shown, m_view->Screen().Picture()) << "as when it is shown anew";
}

TEST_F(PastFaults, WhatSomebodyElseFindsDamagedIsAGapInTheGraphs) {
    const std::string path = PathOf("two.mcap");
    WriteDamaged(path);
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    WavoGraph graph = Graph().Graph();
    graph.YCoorAxName = {"X"};
    graph.YScales.front() = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -60.0, 60.0};
    m_view->Work().Graphs().Replace({graph});
    m_view->Work().RebuildGraphs();
    const QImage before = m_view->Screen().Picture().copy();
    recording::RecordingReader& reader = m_view->Work().Recording()->Reader();
    for (int i = 0; i < 100 && !m_view->Board().IsExact(); ++i) {
        QCoreApplication::processEvents();
    }
    ASSERT_TRUE(reader.Gaps().empty());
    EXPECT_TRUE(m_view->Board().IsExact());
    std::vector<double> line(2);
    EXPECT_FALSE(reader.ReadLine(200500, line));
    for (int i = 0; i < 10; ++i) {
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(m_view->Board().IsExact());
    EXPECT_THAT(m_panes[0], HasSubstr("damaged"));
    EXPECT_NE(m_view->Screen().Picture(), before);
}

TEST_F(PastFaults, AGraphThatIsTooSmallToShowAnythingIsExact) {
    const std::string path = PathOf("slow.mcap");
    std::vector<std::vector<double>> lines(100000);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        lines[i] = {50.0 * std::sin(static_cast<double>(i) * 0.0005)};
    }
    testing::WriteRecording(path, testing::MakeHead(1), lines);
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    ASSERT_FALSE(m_view->Board().IsExact());
    m_view->resize(900, 60);
    ASSERT_TRUE(Graph().PlotArea().isEmpty());
    EXPECT_TRUE(m_view->Board().IsExact());
}

TEST_F(PastFaults, ATailThatIsLostIsNotThereAnyMore) {
    const std::string path = PathOf("tail.mcap");
    const auto lines = testing::MakeLines(3, 20000, 5);
    testing::WriteRecording(path, testing::MakeHead(3), lines);
    Damage(path, lines[19950][0], 100);
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    OpenRecording& recording = *m_view->Work().Recording();
    const LineRange before = m_view->Past().Window().Window().Held();
    for (std::int64_t line = 19900; line > 16000; line -= 100) {
        m_view->Past().Window().Show({line, line + 100});
        QCoreApplication::processEvents();
    }
    ASSERT_LT(recording.Lines().Count(), before.Count()) << "the last chunk is gone";
    for (int i = 0; i < 50; ++i) {
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(m_view->Past().Window().Window().Held(), recording.Lines());
    m_view->Past().Window().MoveToEnd();
    EXPECT_EQ(Seen().end, recording.Lines().end);
    EXPECT_TRUE(m_view->Board().IsExact());
}

TEST_F(PastFaults, APrintLeavesTheNextDrawingNoMoreThanOthersHave) {
    OpenSample();
    m_view->Past().Window().Show({500, 4000});
    m_view->Work().Recording()->Budget().Renew(0);
    m_view->Past().Window().Show({501, 4001});
    EXPECT_FALSE(m_view->Screen().Picture().isNull());
    recording::ReadingBudget& budget = m_view->Work().Recording()->Budget();
    for (int i = 0; i < 1000; ++i) {
        budget.Spend(0);
    }
    EXPECT_TRUE(budget.IsSpent());
}

TEST_F(PastFaults, ABoxThatStandsOpenIsNoHindrance) {
    int boxes = 0;
    m_prompts.box = [&](QWidget*, const Box&) {
        ++boxes;
        OpenSample();  // from a menu of another window, or a file that is dropped
        return BoxAnswer::kOk;
    };
    m_source->events->ShowFault("overrun value fifo (main -> wavo.) from master proc. detected");
    EXPECT_EQ(boxes, 1);
    EXPECT_EQ(m_title, "night.mcap - wavo.ini");
    m_view->Past().Execute(CommandId::kCloseRecording);
    Give(4.0, 2);
    EXPECT_EQ(m_title, "wavo.ini - running");
}

TEST_F(PastFaults, AMasterThatGoesMeanwhileIsMissedAfterwards) {
    OpenSample();
    m_source->is_present = false;
    m_source->events->Ended();
    m_source->events->StateChanged();
    EXPECT_TRUE(IsEnabled(CommandId::kOpen));
    m_view->Past().Execute(CommandId::kCloseRecording);
    EXPECT_FALSE(IsEnabled(CommandId::kOpen));
    EXPECT_TRUE(IsEnabled(CommandId::kConnect));
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(PastFaults, AnImporterOpensFilesOfItsKind) {
    testing::WriteRecording(PathOf("made.mcap"), testing::MakeHead(1),
                            testing::MakeLines(1, 50, 1));
    std::string asked;
    OpenedFrom asked_from = OpenedFrom::kDialog;
    // Goes when the recording is closed, and can then remove its file on any system.
    bool could_remove = false;
    std::shared_ptr<const void> keeper(this, [&](const void*) {
        could_remove = QFile::remove(QString::fromStdString(PathOf("made.mcap")));
    });
    m_view->Past().Files().AddImporter(
        {"Tables|*.csv|", [](const std::string& path) { return path.ends_with(".csv"); },
         [&](const std::string& path, OpenedFrom from) -> std::optional<RecordingToOpen> {
             asked = path;
             asked_from = from;
             if (asked.ends_with("no.csv")) {
                 return std::nullopt;
             }
             return RecordingToOpen{PathOf("made.mcap"),
                                    path,
                                    {"line 3 is odd", "line 4 is, too"},
                                    std::exchange(keeper, nullptr)};
         }});
    EXPECT_TRUE(m_view->Past().Files().IsRecording("a.csv"));
    EXPECT_TRUE(m_view->Past().Files().IsRecording("A.MCAP"));
    EXPECT_FALSE(m_view->Past().Files().IsRecording("a.ini"));
    EXPECT_FALSE(m_view->Past().Files().Open(PathOf("no.csv")));
    EXPECT_TRUE(m_view->Past().Files().Open(PathOf("table.csv")));
    EXPECT_EQ(asked,
              QDir::toNativeSeparators(QString::fromStdString(PathOf("table.csv"))).toStdString());
    EXPECT_EQ(asked_from, OpenedFrom::kElsewhere);
    EXPECT_THAT(m_panes[0], ::testing::EndsWith("line 3 is odd; line 4 is, too"));
    EXPECT_EQ(m_title, "table.csv - wavo.ini");
    EXPECT_EQ(Seen(), (LineRange{0, 50}));
    FileQuestion question;
    m_prompts.open_file = [&](QWidget*, const FileQuestion& put) {
        question = put;
        return std::optional(QString::fromStdString(PathOf("no.csv")));
    };
    m_view->Past().Execute(CommandId::kOpenRecording);
    EXPECT_EQ(asked_from, OpenedFrom::kDialog);
    EXPECT_EQ(question.initial_path.toStdString(), platform::NativePath(PathOf("table.csv")));
    EXPECT_EQ(question.caption, "Open Recording");
    EXPECT_EQ(question.filters, "Recordings|*.mcap|Tables|*.csv|All Files|*.*|");
    EXPECT_FALSE(could_remove);
    m_view->Past().Execute(CommandId::kCloseRecording);
    EXPECT_TRUE(could_remove);
}

}  // namespace
}  // namespace wavo
