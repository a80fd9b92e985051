// wavo_record as a program beside demo_master: its ways to end, and what a sudden end leaves.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "master/motions.h"
#include "matches_pattern.h"
#include "recording/file_surgery.h"
#include "recording/json_text.h"
#include "recording/layout.h"
#include "recording/recording_reader.h"
#include "recording/recording_verify.h"
#include "support/temporary_folder.h"
#include "system/started_program.h"

namespace wavo::recorder {
namespace {

using recording::RecordingReader;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::MatchesPattern;
using testing::StartedProgram;
using ::testing::StartsWith;
using testing::TemporaryFolder;

class RecordProgram : public ::testing::Test {
 protected:
    void StartMaster(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--motion", "circle", "--wait-viewer"});
        m_master = std::make_unique<StartedProgram>(WAVO_DEMO_MASTER, arguments);
        ASSERT_TRUE(m_master->WaitForOutput("axes")) << m_master->Errors();
    }
    std::unique_ptr<StartedProgram> StartRecorder(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--out", m_folder.File("a")});
        return std::make_unique<StartedProgram>(WAVO_RECORD, arguments);
    }
    std::string Path() const { return m_folder.File("a.mcap"); }

    /// Waits until there is something in the recording; false after 20 seconds.
    bool WaitForSize(std::uintmax_t size) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        std::error_code error;
        while (std::chrono::steady_clock::now() < end) {
            const std::uintmax_t found = std::filesystem::file_size(Path(), error);
            if (!error && found >= size) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return false;
    }

    /// Opens the recording and compares each line with what the master played.
    std::unique_ptr<RecordingReader> OpenAndCompare() {
        auto opened = RecordingReader::Open(Path());
        EXPECT_TRUE(opened) << (opened ? "" : opened.Why().text);
        if (!opened) {
            return nullptr;
        }
        RecordingReader& reader = **opened;
        std::string error;
        const auto motion = master::MakeMotion(master::MotionKind::kCircle, {}, 0.001, 1, &error);
        std::vector<double> expected(2);
        std::vector<double> line(2);
        for (std::uint64_t i = 0; i < reader.EndLine(); ++i) {
            motion->Line(i, expected);
            EXPECT_TRUE(reader.ReadLine(i, line));
            if (line != expected) {
                ADD_FAILURE() << "line " << i << " differs";
                break;
            }
        }
        EXPECT_THAT(reader.Notices(), IsEmpty());
        return std::move(*opened);
    }

    TemporaryFolder m_folder;
    std::unique_ptr<StartedProgram> m_master;
};

TEST_F(RecordProgram, HelpVersionAndWrongArguments) {
    const auto help = StartRecorder({"--help"});
    EXPECT_EQ(help->Wait(), 0);
    EXPECT_THAT(help->Output(), StartsWith("Usage: wavo_record"));
    const auto version = StartRecorder({"--version"});
    EXPECT_EQ(version->Wait(), 0);
    EXPECT_THAT(version->Output(), MatchesPattern("wavo_record [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    const auto wrong = StartRecorder({"--bogus"});
    EXPECT_EQ(wrong->Wait(), 2);
    EXPECT_EQ(wrong->Errors(),
              "wavo_record: unknown argument \"--bogus\"\nTry wavo_record --help.\n");
    const auto none = StartRecorder({"--wait", "0"});
    EXPECT_EQ(none->Wait(), 1);
    EXPECT_THAT(none->Errors(), HasSubstr("wavo_record: Master process (Dorvane) not present\n"));
}

TEST_F(RecordProgram, RecordsForATimeAndTellsOfItInJson) {
    StartMaster({});
    const auto recorder = StartRecorder({"--for", "1500ms", "--json"});
    EXPECT_EQ(recorder->Wait(), 0) << recorder->Errors();
    const auto json = recording::ReadJson(recorder->Output());
    ASSERT_TRUE(json) << recorder->Output();
    EXPECT_EQ(json->Member("lines")->Unsigned(), 1500U);
    EXPECT_EQ(json->Member("lost")->Unsigned(), 0U);
    const auto reader = OpenAndCompare();
    ASSERT_TRUE(reader);
    EXPECT_EQ(reader->LineCount(), 1500U);
    EXPECT_TRUE(reader->IsComplete());
    const auto verify =
        std::make_unique<StartedProgram>(WAVO_RECORD, std::vector<std::string>{"--verify", Path()});
    EXPECT_EQ(verify->Wait(), 0);
    EXPECT_THAT(verify->Output(), HasSubstr("nothing is wrong"));
}

TEST_F(RecordProgram, ADamagedRecordingFailsTheCheck) {
    StartMaster({});
    EXPECT_EQ(StartRecorder({"--lines", "100", "--quiet"})->Wait(), 0);
    {
        std::fstream file(Path(), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(2000);
        file.put('\xFF');
    }
    const auto verify =
        std::make_unique<StartedProgram>(WAVO_RECORD, std::vector<std::string>{"--verify", Path()});
    EXPECT_EQ(verify->Wait(), 1);
    EXPECT_THAT(verify->Output(), HasSubstr("damaged"));
    const auto json = std::make_unique<StartedProgram>(
        WAVO_RECORD, std::vector<std::string>{"--verify", Path(), "--json"});
    EXPECT_EQ(json->Wait(), 1);
    EXPECT_FALSE(recording::ReadJson(json->Output())->Member("findings")->Items()->empty());
}

TEST_F(RecordProgram, RequestsToEndFinishTheFile) {
    for (const bool is_interrupt : {false, true}) {
        StartMaster({});
        const auto recorder = StartRecorder({});
        ASSERT_TRUE(WaitForSize(2000));
        if (!(is_interrupt ? recorder->Interrupt() : recorder->RequestEnd())) {
            recorder->Kill();
            GTEST_SKIP() << "this system cannot ask a program so";
        }
        EXPECT_EQ(recorder->Wait(), 0) << recorder->Errors();
        EXPECT_THAT(recorder->Errors(), HasSubstr("ended on request: "));
        const auto reader = OpenAndCompare();
        ASSERT_TRUE(reader);
        EXPECT_TRUE(reader->IsComplete());
        std::filesystem::remove(Path());
        m_master->Kill();
        m_master->Wait();
    }
}

TEST_F(RecordProgram, TheMastersQuitEndsItInOrder) {
    StartMaster({"--fault", "quit", "--fault-after", "700"});
    const auto recorder = StartRecorder({});
    EXPECT_EQ(recorder->Wait(), 0) << recorder->Errors();
    EXPECT_THAT(recorder->Errors(), HasSubstr("told to quit"));
    const auto reader = OpenAndCompare();
    ASSERT_TRUE(reader);
    EXPECT_TRUE(reader->IsComplete());
    EXPECT_GT(reader->LineCount(), 600U);
}

TEST_F(RecordProgram, AnOverrunIsAnExitCodeOfItsOwn) {
    StartMaster({"--fault", "overrun", "--fault-after", "300", "--fifo-lines", "200"});
    const auto recorder = StartRecorder({"--for", "2s", "--json"});
    EXPECT_EQ(recorder->Wait(), 3) << recorder->Errors();
    auto reader = RecordingReader::Open(Path());
    ASSERT_TRUE(reader);
    const std::vector<recording::Event>& events = (*reader)->Events();
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events[0].kind, recording::kEventOverrun);
    EXPECT_GT(events[0].lost, 0U);
}

TEST_F(RecordProgram, BesideAnotherRecorderBothHaveEveryLine) {
    StartMaster({});
    const auto first = StartRecorder({"--lines", "1000", "--quiet"});
    const auto second = StartRecorder({"--lines", "1000", "--quiet"});
    EXPECT_EQ(first->Wait(), 0) << first->Errors();
    EXPECT_EQ(second->Wait(), 0) << second->Errors();
    for (const char* name : {"a.mcap", "a-2.mcap"}) {
        const auto report = recording::VerifyRecording(m_folder.File(name), nullptr);
        ASSERT_TRUE(report) << name;
        EXPECT_EQ(report->lines, 1000U);
        EXPECT_THAT(report->findings, IsEmpty());
    }
}

/// Lines of the chunks that stand whole in a file.
std::uint64_t LinesInWholeChunks(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    std::uint64_t lines = 0;
    for (const testing::RecordPlace& record : testing::RecordsOf(content)) {
        if (record.opcode == recording::mcap::Opcode::kChunk) {
            const std::size_t records = record.end - record.content - recording::mcap::kChunkHead;
            lines += records / recording::mcap::LineSize(2);
        }
    }
    return lines;
}

TEST_F(RecordProgram, KilledAtAnyMomentItLeavesWhatWasKept) {
    const char* const wanted = std::getenv("WAVO_RECORDER_KILLS");
    const int kills = wanted != nullptr ? std::atoi(wanted) : 20;
    std::mt19937 random(std::random_device{}());
    std::uint64_t lines = 0;
    for (int i = 0; i < kills; ++i) {
        SCOPED_TRACE(i);
        std::filesystem::remove(Path());
        StartMaster({"--speed", "full"});
        const auto recorder = StartRecorder({"--quiet"});
        ASSERT_TRUE(WaitForSize(1));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 200'000));
        recorder->Kill();
        recorder->Wait();
        m_master->Kill();
        m_master->Wait();
        const std::uint64_t whole = LinesInWholeChunks(Path());
        if (std::filesystem::file_size(Path()) < 1000) {
            continue;  // before it says what it holds
        }
        const auto reader = OpenAndCompare();
        ASSERT_TRUE(reader);
        EXPECT_FALSE(reader->IsComplete());
        EXPECT_THAT(reader->CutOffText(), StartsWith("recording was cut off "));
        EXPECT_EQ(reader->LineCount(), whole);
        lines += reader->LineCount();
    }
    EXPECT_GT(lines, 0U);
    std::cout << kills << " recorders were killed, " << lines << " lines were kept\n";
}

}  // namespace
}  // namespace wavo::recorder
