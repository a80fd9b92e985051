// The disk's thread: names, limits, full disks, and a queue that never makes anybody wait.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <vector>

#include "recorder/disk_writer.h"
#include "recording/faulty_data_files.h"
#include "recording/recording_reader.h"
#include "support/temporary_folder.h"

namespace wavo::recorder {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using testing::FaultyDataFiles;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::TemporaryFolder;

recording::RecordingHead Head() {
    recording::RecordingHead head;
    head.axis_names = {"X", "Y"};
    head.cycle_time = 0.01;
    head.start_time = 1754056800000000000U;
    head.program = "test";
    return head;
}

LineBlock Lines(std::uint64_t first, std::size_t count) {
    LineBlock block{first, count, {}};
    for (std::size_t i = 0; i < count; ++i) {
        block.values.push_back(static_cast<double>(first + i));
        block.values.push_back(-static_cast<double>(first + i));
    }
    return block;
}

std::vector<std::string> Names(const TemporaryFolder& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path())) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// The lines of a recording, each checked against its number.
std::uint64_t CountLines(const std::string& path) {
    auto reader = recording::RecordingReader::Open(path);
    EXPECT_TRUE(reader) << path;
    if (!reader) {
        return 0;
    }
    std::vector<double> line(2);
    for (std::uint64_t i = (*reader)->FirstLine(); i < (*reader)->EndLine(); ++i) {
        EXPECT_TRUE((*reader)->ReadLine(i, line));
        EXPECT_THAT(line, ElementsAre(static_cast<double>(i), -static_cast<double>(i)));
    }
    return (*reader)->LineCount();
}

TEST(DiskWriting, TakesTheNextFreeName) {
    const TemporaryFolder folder;
    std::ofstream(folder.File("a.mcap")) << "another's";
    std::ofstream(folder.File("a-7.mcap")) << "another's";
    std::ofstream(folder.File("a-09.mcap")) << "of another name";
    DiskWriter disk({folder.File("a"), 0, 0});
    disk.SetHead(Head(), std::nullopt);
    for (std::uint64_t first : {0U, 250U}) {
        disk.BeginFile();
        EXPECT_TRUE(disk.TakeLines(Lines(first, 250), false));
        disk.EndFile();
    }
    disk.Stop();
    EXPECT_THAT(disk.Status().files, ElementsAre(folder.File("a-8.mcap"), folder.File("a-9.mcap")));
    EXPECT_EQ(disk.Status().lines, 500U);
    EXPECT_EQ(disk.Status().queued, 0U);
    EXPECT_EQ(disk.Status().bytes,
              fs::file_size(folder.File("a-8.mcap")) + fs::file_size(folder.File("a-9.mcap")));
    EXPECT_EQ(folder.Read("a.mcap"), "another's");
    EXPECT_EQ(CountLines(folder.File("a-8.mcap")) + CountLines(folder.File("a-9.mcap")), 500U);
}

TEST(DiskWriting, TheLimitRemovesTheOldestOfItsOwnName) {
    const TemporaryFolder folder;
    std::ofstream(folder.File("a-other.mcap")) << std::string(100000, 'x');
    std::ofstream(folder.File("ab.mcap")) << std::string(100000, 'x');
    DiskWriter disk({folder.File("a.mcap"), 45000, 0});
    disk.SetHead(Head(), std::nullopt);
    for (std::uint64_t file = 0; file < 6; ++file) {  // some 20 kB each
        disk.BeginFile();
        disk.TakeLines(Lines(file * 250, 250), false);
        disk.EndFile();
    }
    disk.Stop();
    EXPECT_THAT(Names(folder), ElementsAre("a-5.mcap", "a-6.mcap", "a-other.mcap", "ab.mcap"));
    EXPECT_THAT(disk.Status().removed,
                ElementsAre(folder.File("a.mcap"), folder.File("a-2.mcap"), folder.File("a-3.mcap"),
                            folder.File("a-4.mcap")));
    EXPECT_EQ(disk.Status().fault, std::nullopt);
}

TEST(DiskWriting, OneFileIsSplitWhereOnlyALimitIsGiven) {
    const TemporaryFolder folder;
    DiskWriter disk({folder.File("a"), 80000, 10000});
    disk.SetHead(Head(), std::nullopt);
    disk.BeginFile();
    for (std::uint64_t first = 0; first < 3000; first += 50) {
        disk.TakeLines(Lines(first, 50), false);
    }
    disk.EndFile();
    disk.Stop();
    std::uint64_t size = 0;
    std::uint64_t lines = 0;
    for (const std::string& name : Names(folder)) {
        size += fs::file_size(folder.File(name));
        lines += CountLines(folder.File(name));
    }
    EXPECT_LE(size, 80000U);
    EXPECT_GT(size, 40000U);
    EXPECT_GT(lines, 400U);
    EXPECT_EQ(disk.Status().lines, 3000U);
}

TEST(DiskWriting, AFullDiskEndsItWithWhatWasKept) {
    const TemporaryFolder folder;
    FaultyDataFiles files;
    files.FailFrom(7, ENOSPC);
    DiskWriter disk({folder.File("a"), 0, 0});
    disk.SetHead(Head(), std::nullopt);
    disk.BeginFile();
    for (std::uint64_t first = 0; first < 1000; first += 50) {
        disk.TakeLines(Lines(first, 50), false);
    }
    disk.EndFile();
    disk.Stop();
    ASSERT_TRUE(disk.Status().fault);
    EXPECT_THAT(disk.Status().fault->text, HasSubstr("cannot write \"" + folder.File("a.mcap")));
    EXPECT_EQ(disk.Status().queued, 0U);
    EXPECT_FALSE(disk.TakeLines(Lines(0, 1), false));
    EXPECT_EQ(CountLines(folder.File("a.mcap")), disk.Status().lines);
    EXPECT_EQ(disk.Status().lines, 200U);
}

TEST(DiskWriting, OlderFilesGiveWayOnAFullDisk) {
    const TemporaryFolder folder;
    std::uint64_t written = 0;
    {
        DiskWriter disk({folder.File("a"), 0, 0});
        disk.SetHead(Head(), std::nullopt);
        for (std::uint64_t file = 0; file < 3; ++file) {
            disk.BeginFile();
            disk.TakeLines(Lines(0, 250), false);
            disk.EndFile();
        }
        disk.Stop();
    }
    FaultyDataFiles files;
    files.SetFreeSpace(1000);
    files.FailOnce(9, ENOSPC);
    DiskWriter disk({folder.File("a"), 1'000'000, 0});
    disk.SetHead(Head(), std::nullopt);
    disk.BeginFile();
    for (std::uint64_t first = 0; first < 1000; first += 50) {
        disk.TakeLines(Lines(first, 50), false);
    }
    disk.EndFile();
    disk.Stop();
    EXPECT_EQ(disk.Status().fault, std::nullopt);
    EXPECT_THAT(disk.Status().removed, ElementsAre(folder.File("a.mcap")));
    EXPECT_THAT(disk.Status().files, ElementsAre(folder.File("a-4.mcap"), folder.File("a-5.mcap")));
    for (const std::string& path : disk.Status().files) {
        written += CountLines(path);
    }
    EXPECT_EQ(written, 1000U) << "nothing is lost, nothing is there twice";
    EXPECT_EQ(disk.Status().lines, 1000U);
}

TEST(DiskWriting, WithoutItsFolderItFails) {
    const TemporaryFolder folder;
    DiskWriter disk({folder.File("none") + "/a", 0, 0});
    disk.SetHead(Head(), std::nullopt);
    disk.BeginFile();
    disk.EndFile();
    disk.Stop();
    ASSERT_TRUE(disk.Status().fault);
    EXPECT_THAT(disk.Status().fault->text, HasSubstr("cannot make"));
    EXPECT_THAT(disk.Status().files, IsEmpty());
}

/// A disk that stands still until it is let go.
class StandingDisk {
 public:
    StandingDisk() {
        m_files.SetBeforeChange([this] {
            std::unique_lock guard(m_lock);
            m_wake.wait(guard, [this] { return m_goes; });
        });
    }
    void LetGo() {
        const std::lock_guard guard(m_lock);
        m_goes = true;
        m_wake.notify_all();
    }

 private:
    FaultyDataFiles m_files;
    std::mutex m_lock;
    std::condition_variable m_wake;
    bool m_goes = false;
};

TEST(DiskWriting, ASlowDiskMakesNobodyWaitAndTheQueueHasALimit) {
    const TemporaryFolder folder;
    StandingDisk standing;
    DiskWriter disk({folder.File("a"), 0, 0, 16000});
    disk.SetHead(Head(), std::nullopt);
    disk.BeginFile();
    std::uint64_t taken = 0;
    for (std::uint64_t first = 0; first < 5000; first += 100) {
        taken += disk.TakeLines(Lines(first, 100), false) ? 100 : 0;
    }
    EXPECT_EQ(taken, 1000U) << "16 bytes each";
    EXPECT_EQ(disk.Status().queued, 16000U);
    EXPECT_EQ(disk.Status().lines, 0U);
    EXPECT_TRUE(disk.TakeLines(Lines(5000, 100), true)) << "history has room of its own";
    standing.LetGo();
    disk.Stop();
    EXPECT_EQ(disk.Status().lines, 1100U);
    EXPECT_EQ(disk.Status().queued, 0U);
}

TEST(DiskWriting, WhatWaitsIsWrittenSoon) {
    const TemporaryFolder folder;
    DiskWriter disk({folder.File("a"), 0, 0});
    disk.SetHead(Head(), std::nullopt);
    disk.BeginFile();
    disk.TakeLines(Lines(0, 5), false);  // less than a chunk
    while (disk.Status().lines < 5) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    auto reader = recording::RecordingReader::Open(folder.File("a.mcap"));
    ASSERT_TRUE(reader);
    EXPECT_EQ((*reader)->LineCount(), 5U);
    EXPECT_FALSE((*reader)->IsComplete());
}

}  // namespace
}  // namespace wavo::recorder
