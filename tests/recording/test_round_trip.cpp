// What is written is what is read: lines, derivatives, extremes of any stretch, events.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "sample_recording.h"
#include "support/temporary_folder.h"

namespace wavo::recording {
namespace {

using testing::Append;
using testing::CompareLines;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::MakeHead;
using testing::MakeLines;
using testing::PlainLines;
using testing::RequireNoFault;
using testing::SameBits;
using testing::TemporaryFolder;

class RoundTrip : public ::testing::Test {
 protected:
    void Create(const RecordingHead& head, const std::optional<GraphFile>& graph = std::nullopt) {
        auto writer = RecordingWriter::Create(m_folder.File("a.mcap"), head, graph);
        ASSERT_TRUE(writer) << writer.Why().text;
        m_writer = std::move(*writer);
        m_lines.emplace(head.cycle_time);
    }
    void Add(std::uint64_t first, const std::vector<std::vector<double>>& lines) {
        Append(*m_writer, first, lines);
        m_lines->Add(first, lines);
    }
    void FinishAndOpen() {
        RequireNoFault(m_writer->Finish());
        Open();
    }
    void Open() {
        auto reader = RecordingReader::Open(m_folder.File("a.mcap"));
        ASSERT_TRUE(reader) << reader.Why().text;
        m_reader = std::move(*reader);
    }

    /// Compares stretches of every stream with the plain reference, at every detail.
    void CompareExtents(int stretches, std::uint64_t longest) {
        std::mt19937_64 random(7);
        const std::size_t axes = m_reader->Head().axis_names.size();
        const std::uint64_t end = m_reader->EndLine() + 5;
        for (int i = 0; i < stretches; ++i) {
            const std::uint64_t from = random() % end;
            const std::uint64_t to = from + random() % longest;
            const std::size_t axis = random() % axes;
            for (int order = 0; order < 4; ++order) {
                CompareExtent(axis, order, from, to);
            }
        }
    }
    void CompareExtent(std::size_t axis, int order, std::uint64_t from, std::uint64_t to) {
        SCOPED_TRACE(std::to_string(axis) + "/" + std::to_string(order) + " from " +
                     std::to_string(from) + " to " + std::to_string(to));
        const PlainLines::Extent expected = m_lines->Of(axis, order, from, to);
        const ColumnExtent exact = m_reader->Extent(axis, order, from, to, Detail::kLines);
        EXPECT_EQ(exact.certain, expected.level);
        EXPECT_EQ(exact.possible, expected.level);
        EXPECT_TRUE(SameBits(exact.first, expected.first)) << exact.first << expected.first;
        EXPECT_TRUE(SameBits(exact.last, expected.last)) << exact.last << expected.last;
        for (const Detail detail : {Detail::kBlocks, Detail::kChunks}) {
            const ColumnExtent coarse = m_reader->Extent(axis, order, from, to, detail);
            Level both = expected.level;
            both.Take(coarse.certain);
            EXPECT_EQ(both, expected.level) << "what is certain lies within";
            both.Take(coarse.possible);
            EXPECT_EQ(both, coarse.possible) << "what is possible lies around";
        }
    }

    TemporaryFolder m_folder;
    std::unique_ptr<RecordingWriter> m_writer;
    std::optional<PlainLines> m_lines;
    std::unique_ptr<RecordingReader> m_reader;
};

TEST_F(RoundTrip, EveryLineAndWhatTheRecordingSaysOfItself) {
    RecordingHead head = MakeHead(4);
    head.axis_names[3] = "not text: \xFF, and \"quoted\"";
    head.limits[1].reset();
    const GraphFile graph{"circle.ini", "[GENERAL]\r\nGraphs=1\r\n"};
    Create(head, graph);
    Add(0, MakeLines(4, 5000, 1));
    EXPECT_EQ(m_writer->KeptLines(), 5000U) << "chunks of a second";
    Add(5000, MakeLines(4, 123, 2));
    EXPECT_EQ(m_writer->KeptLines(), 5000U);
    EXPECT_EQ(m_writer->NextLine(), 5123U);
    FinishAndOpen();
    EXPECT_EQ(m_reader->Head(), head);
    EXPECT_EQ(m_reader->ReadGraphFile(), graph);
    EXPECT_TRUE(m_reader->IsComplete());
    EXPECT_EQ(m_reader->CutOffText(), "");
    EXPECT_EQ(m_reader->FirstLine(), 0U);
    EXPECT_EQ(m_reader->EndLine(), 5123U);
    EXPECT_EQ(m_reader->LineCount(), 5123U);
    EXPECT_THAT(m_reader->Gaps(), IsEmpty());
    EXPECT_THAT(m_reader->Events(), IsEmpty());
    EXPECT_EQ(CompareLines(*m_reader, *m_lines), "");
    EXPECT_THAT(m_reader->Notices(), IsEmpty());
}

TEST_F(RoundTrip, ExtremesOfAnyStretchAreThoseOfItsLines) {
    Create(MakeHead(3, 0.01));  // chunks of 100 lines
    Add(0, MakeLines(3, 1777, 1));
    FinishAndOpen();
    CompareExtents(400, 300);
    CompareExtents(60, 2000);
    EXPECT_THAT(m_reader->Notices(), IsEmpty());
}

TEST_F(RoundTrip, SoTheyAreWithGapsAndStrangeValues) {
    Create(MakeHead(2, 0.003));  // chunks of 333 lines
    Add(5, MakeLines(2, 1, 1, true));
    Add(10, MakeLines(2, 2, 2, true));
    Add(12, MakeLines(2, 900, 3, true));
    Add(2000, MakeLines(2, 700, 4, true));
    Add(2701, MakeLines(2, 64, 5, true));
    FinishAndOpen();
    EXPECT_THAT(m_reader->Gaps(),
                ElementsAre(LineSpan{6, 10}, LineSpan{912, 2000}, LineSpan{2700, 2701}));
    EXPECT_EQ(m_reader->LineCount(), 1667U);
    EXPECT_EQ(CompareLines(*m_reader, *m_lines), "");
    CompareExtents(600, 200);
    CompareExtents(100, 2000);
}

TEST_F(RoundTrip, AnEvenAndAnOddNumberOfAxesAndNone) {
    for (const std::size_t axes : {0U, 1U, 2U, 5U}) {
        const TemporaryFolder folder;
        auto writer = RecordingWriter::Create(folder.File("a.mcap"), MakeHead(axes), std::nullopt);
        ASSERT_TRUE(writer);
        const auto lines = MakeLines(axes, 70, 3);
        Append(**writer, 0, lines);
        RequireNoFault((*writer)->Finish());
        auto reader = RecordingReader::Open(folder.File("a.mcap"));
        ASSERT_TRUE(reader) << reader.Why().text;
        PlainLines plain(0.001);
        plain.Add(0, lines);
        EXPECT_EQ(CompareLines(**reader, plain), "");
        EXPECT_EQ((*reader)->LineCount(), 70U);
    }
}

TEST_F(RoundTrip, NoLineAndOneLine) {
    Create(MakeHead(2));
    FinishAndOpen();
    EXPECT_EQ(m_reader->LineCount(), 0U);
    EXPECT_EQ(m_reader->FirstLine(), m_reader->EndLine());
    EXPECT_TRUE(m_reader->Extent(0, 0, 0, 10, Detail::kLines).certain.missing);
    m_reader.reset();
    std::filesystem::remove(m_folder.File("a.mcap"));
    Create(MakeHead(2));
    Add(77, MakeLines(2, 1, 1));
    FinishAndOpen();
    EXPECT_EQ(m_reader->LineCount(), 1U);
    EXPECT_EQ(m_reader->FirstLine(), 77U);
    EXPECT_EQ(CompareLines(*m_reader, *m_lines), "");
    CompareExtent(0, 0, 70, 80);
    CompareExtent(1, 1, 77, 78);
}

TEST_F(RoundTrip, EventsComeInTheOrderOfTheirLines) {
    Create(MakeHead(1));
    const Event first{kEventTrigger, 3, 0, "X > 1"};
    const Event second{kEventOverrun, 1500, 500, "text: \xFF \" \n"};
    const Event last{kEventLinkEnded, 1600, 0, ""};
    m_writer->AddEvent(first);
    Add(0, MakeLines(1, 1000, 1));
    m_writer->AddEvent(second);
    Add(1500, MakeLines(1, 100, 2));
    RequireNoFault(m_writer->Keep());
    m_writer->AddEvent(last);  // alone in its chunk
    FinishAndOpen();
    Event as_text = second;
    as_text.text = "text: \xEF\xBF\xBD \" \n";
    EXPECT_THAT(m_reader->Events(), ElementsAre(first, as_text, last));
    EXPECT_EQ(CompareLines(*m_reader, *m_lines), "");
    EXPECT_THAT(m_reader->Notices(), IsEmpty());
}

TEST_F(RoundTrip, ValuesAreGivenWithWhatStandsForThoseThatAreMissing) {
    Create(MakeHead(1, 0.5));
    Add(10, {{1.0}, {3.0}, {2.0}, {2.0}});
    FinishAndOpen();
    std::vector<double> values(6);
    m_reader->ReadValues(0, 0, 9, -7.0, values);
    EXPECT_THAT(values, ElementsAre(-7.0, 1.0, 3.0, 2.0, 2.0, -7.0));
    m_reader->ReadValues(0, 1, 9, -7.0, values);
    EXPECT_THAT(values, ElementsAre(-7.0, -7.0, 4.0, -2.0, 0.0, -7.0));
    m_reader->ReadValues(0, 2, 9, -7.0, values);
    EXPECT_THAT(values, ElementsAre(-7.0, -7.0, -7.0, -12.0, 4.0, -7.0));
    m_reader->ReadValues(0, 3, 9, -7.0, values);
    EXPECT_THAT(values, ElementsAre(-7.0, -7.0, -7.0, -7.0, (0.0 + 1.0 - 2.0) / 0.125, -7.0));
}

TEST_F(RoundTrip, AColumnRowIsItsColumns) {
    Create(MakeHead(2, 0.01));
    Add(0, MakeLines(2, 1000, 1));
    FinishAndOpen();
    const std::vector<std::uint64_t> bounds{0, 0, 1, 99, 100, 640, 641, 1000, 1200};
    std::vector<ColumnExtent> columns(bounds.size() - 1);
    for (const Detail detail : {Detail::kChunks, Detail::kBlocks, Detail::kLines}) {
        m_reader->Columns(1, 1, bounds, detail, columns);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const ColumnExtent one = m_reader->Extent(1, 1, bounds[i], bounds[i + 1], detail);
            EXPECT_EQ(columns[i].certain, one.certain) << i;
            EXPECT_EQ(columns[i].possible, one.possible) << i;
        }
    }
}

TEST_F(RoundTrip, AFileThatIsThereIsNeverReplaced) {
    Create(MakeHead(1));
    const auto second = RecordingWriter::Create(m_folder.File("a.mcap"), MakeHead(1), std::nullopt);
    ASSERT_FALSE(second);
    EXPECT_EQ(second.Why().code, static_cast<int>(RecordingFault::kExists));
}

TEST_F(RoundTrip, WhatGrowsIsSeenGrowing) {
    Create(MakeHead(2, 0.01));
    Open();
    EXPECT_FALSE(m_reader->IsComplete());
    EXPECT_EQ(m_reader->CutOffText(), "recording was cut off before its first line");
    EXPECT_FALSE(m_reader->Refresh());
    Add(0, MakeLines(2, 250, 1));
    EXPECT_TRUE(m_reader->Refresh());
    EXPECT_EQ(m_reader->EndLine(), 200U) << "what is kept";
    EXPECT_EQ(m_reader->CutOffText(),
              "recording was cut off at 2025-08-01 14:00:02.123 UTC, behind line 199");
    CompareExtent(0, 1, 0, 200);
    Add(250, MakeLines(2, 100, 2));
    EXPECT_TRUE(m_reader->Refresh());
    EXPECT_EQ(m_reader->EndLine(), 300U);
    RequireNoFault(m_writer->Finish());
    EXPECT_TRUE(m_reader->Refresh());
    EXPECT_TRUE(m_reader->IsComplete());
    EXPECT_FALSE(m_reader->Refresh());
    EXPECT_EQ(CompareLines(*m_reader, *m_lines), "");
    CompareExtents(100, 200);
    EXPECT_THAT(m_reader->Notices(), IsEmpty());
    EXPECT_TRUE(m_reader->IsFile(m_reader->path()));
}

}  // namespace
}  // namespace wavo::recording
