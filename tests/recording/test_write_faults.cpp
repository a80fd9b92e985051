// A disk that fails at any moment costs what was not kept yet, and nothing else.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "faulty_data_files.h"
#include "sample_recording.h"
#include "support/temporary_folder.h"
#include "system_facts.h"

namespace wavo::recording {
namespace {

namespace fs = std::filesystem;
using testing::CompareLines;
using testing::FaultyDataFiles;
using ::testing::HasSubstr;
using testing::MakeHead;
using testing::MakeLines;
using testing::PlainLines;
using testing::TemporaryFolder;

constexpr std::size_t kTwoAxes = 2;

std::vector<double> Flat(const std::vector<std::vector<double>>& lines) {
    std::vector<double> values;
    for (const std::vector<double>& line : lines) {
        values.insert(values.end(), line.begin(), line.end());
    }
    return values;
}

/// Writes a recording until something fails. Returns the fault, if any, and the lines kept.
MaybeFault WriteUntilFault(const std::string& path, std::uint64_t& kept) {
    auto writer = RecordingWriter::Create(path, MakeHead(kTwoAxes, 0.01), std::nullopt);
    if (!writer) {
        return writer.Why();
    }
    MaybeFault fault;
    for (std::uint64_t first = 0; first < 450 && !fault; first += 50) {
        fault = (*writer)->Append(first, Flat(MakeLines(kTwoAxes, 50, 1)), 50);
        (*writer)->AddEvent({kEventTrigger, first, 0, ""});
    }
    if (!fault) {
        fault = (*writer)->Finish();
    }
    kept = (*writer)->KeptLines();
    if (fault) {
        EXPECT_EQ((*writer)->Keep(), fault) << "nothing more is written";
        EXPECT_EQ((*writer)->Finish(), fault);
    }
    return fault;
}

TEST(RecordingDisk, FailingAtAnyCallCostsWhatWasNotKept) {
    PlainLines written(0.01);
    for (std::uint64_t first = 0; first < 450; first += 50) {
        written.Add(first, MakeLines(kTwoAxes, 50, 1));
    }
    std::uint64_t kept = 0;
    int calls = 0;
    {
        const TemporaryFolder folder;
        FaultyDataFiles files;
        ASSERT_EQ(WriteUntilFault(folder.File("a.mcap"), kept), std::nullopt);
        calls = files.changes();
    }
    ASSERT_GT(calls, 12);
    for (const int error : {ENOSPC, EIO, EACCES}) {
        for (int call = 0; call < calls; ++call) {
            SCOPED_TRACE(call);
            const TemporaryFolder folder;
            const std::string path = folder.File("a.mcap");
            kept = 0;
            {
                FaultyDataFiles files;
                files.FailFrom(call, error);
                const MaybeFault fault = WriteUntilFault(path, kept);
                ASSERT_TRUE(fault);
                EXPECT_THAT(fault->text, HasSubstr(path));
                EXPECT_EQ(fault->code, static_cast<int>(RecordingFault::kCannotWrite));
            }
            auto reader = RecordingReader::Open(path);
            if (!reader) {
                EXPECT_EQ(kept, 0U);
                continue;
            }
            EXPECT_GE((*reader)->LineCount(), kept);
            PlainLines expected = written;
            expected.Remove((*reader)->LineCount(), 1000);
            EXPECT_EQ(CompareLines(**reader, expected), "");
        }
    }
}

TEST(RecordingDisk, FaultsAreToldWithTheFileAndTheReason) {
    const TemporaryFolder folder;
    const std::string path = folder.File("a.mcap");
    std::uint64_t kept = 0;
    FaultyDataFiles files;
    files.FailFrom(3, ENOSPC);
    const MaybeFault fault = WriteUntilFault(path, kept);
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->text, "cannot write \"" + path + "\": " + platform::ErrorText(ENOSPC));
}

TEST(RecordingDisk, WithoutItsFolderNothingIsMade) {
    const TemporaryFolder folder;
    const std::string path = folder.File("none") + "/a.mcap";
    const auto writer = RecordingWriter::Create(path, MakeHead(1), std::nullopt);
    ASSERT_FALSE(writer);
    EXPECT_THAT(writer.Why().text, HasSubstr("cannot make \"" + path + "\": "));
}

TEST(RecordingDisk, AFolderThatVanishesTakesTheRecordingAlong) {
    const TemporaryFolder folder;
    ASSERT_TRUE(fs::create_directory(folder.File("sub")));
    auto writer = RecordingWriter::Create((fs::path(folder.File("sub")) / "a.mcap").string(),
                                          MakeHead(kTwoAxes, 0.01), std::nullopt);
    ASSERT_TRUE(writer);
    std::error_code error;
    fs::remove_all(folder.File("sub"), error);
    EXPECT_EQ((*writer)->Append(0, Flat(MakeLines(kTwoAxes, 300, 1)), 300), std::nullopt);
    EXPECT_EQ((*writer)->Finish(), std::nullopt);
}

TEST(RecordingDisk, ReadingThatFailsIsAGapOrAFault) {
    const TemporaryFolder folder;
    const std::string path = folder.File("a.mcap");
    std::uint64_t kept = 0;
    ASSERT_EQ(WriteUntilFault(path, kept), std::nullopt);
    for (int call = 0; call < 60; ++call) {
        FaultyDataFiles files;
        files.FailReadsFrom(call, EIO);
        auto reader = RecordingReader::Open(path);
        if (!reader) {
            EXPECT_THAT(reader.Why().text, HasSubstr(path));
            continue;
        }
        std::vector<double> line(kTwoAxes);
        for (std::uint64_t number = 0; number < 450; number += 30) {
            if ((*reader)->ReadLine(number, line)) {
                EXPECT_EQ(line, MakeLines(kTwoAxes, 50, 1)[number % 50]);
            }
        }
        (*reader)->Extent(0, 1, 20, 430, Detail::kLines);
        (*reader)->Events();
    }
}

TEST(RecordingDisk, CyclesThatNoTimeHasAreRefused) {
    const TemporaryFolder folder;
    for (const double cycle : {0.0, -1.0, 1e-10, 1e300, testing::kNaN}) {
        const auto writer =
            RecordingWriter::Create(folder.File("a.mcap"), MakeHead(1, cycle), std::nullopt);
        ASSERT_FALSE(writer);
        EXPECT_EQ(writer.Why().text,
                  "cannot record lines with a cycle time below 1 ns or above 1e6 s");
    }
    EXPECT_FALSE(fs::exists(folder.File("a.mcap")));
}

}  // namespace
}  // namespace wavo::recording
