// Exports to disks that are full, read-only or gone, at every step.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <utility>

#include "expect_errors.h"
#include "export_fixture.h"
#include "faulty_files.h"
#include "system_facts.h"

namespace wavo {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using testing::ExpectAnyErrorLog;
using testing::ExpectErrorLog;
using testing::Export;
using testing::FaultyFiles;
using ::testing::IsEmpty;

constexpr char kFailed[] = "CView::OnCreate(): m_DataExport.CreateDataFile()";

TEST_F(Export, AFileThatCannotBeMadeIsAnErrorAndItsPathIsSaved) {
    ShowGraph({"X"}, {{1.0, 2.0, 3.0}});
    const std::string path = m_folder.File("no folder/values.txt");
    const ExpectErrorLog expected({kFailed});
    Answer(path);
    EXPECT_EQ(m_export.OnSaveValues(&Graph()), 1);
    EXPECT_EQ(m_settings.data_file, path);
    EXPECT_THAT(m_saved, ElementsAre(path));
    EXPECT_THAT(m_unwritten, ElementsAre(path));
}

TEST_F(Export, AFullDiskIsAnErrorAndLeavesWhatIsWritten) {
    ShowLongGraph(3);
    m_files.full_at = 3;  // the header, a piece, and then no more
    const ExpectErrorLog expected({kFailed});
    Save();
    EXPECT_EQ(RowsInFile(), kRowsOfPiece);
    EXPECT_THAT(m_unwritten, ElementsAre(m_settings.data_file));
    EXPECT_FALSE(m_export.IsUnderWay());
}

/// An export of a long graph over a file that is there.
class FaultyExport : public Export {
 protected:
    static constexpr char kBefore[] = "of yesterday\n";

    FaultyExport() {
        ShowLongGraph(3);
        FaultyFiles files;
        Save();
        m_steps = files.count();
        m_after = Text();
    }
    void PutOldFile() const {
        std::ofstream(m_folder.File("values.txt"), std::ios::binary) << kBefore;
    }

    /// An export that may fail. True when it worked; the error log and the status bar tell the
    /// same.
    bool SaveTells() {
        m_unwritten.clear();
        const ExpectAnyErrorLog expected;
        Save();
        EXPECT_FALSE(m_export.IsUnderWay());
        EXPECT_EQ(expected.Saw(kFailed), !m_unwritten.empty());
        EXPECT_LE(m_unwritten.size(), 1U);
        EXPECT_TRUE(m_unwritten.empty() || m_unwritten.front() == m_folder.File("values.txt"));
        return m_unwritten.empty();
    }
    /// The next export writes all of it, and no other file is there.
    void ExpectTheNextOneToWork() {
        EXPECT_TRUE(SaveTells());
        EXPECT_EQ(Text(), m_after);
        for (const auto& entry : fs::directory_iterator(m_folder.path())) {
            EXPECT_EQ(entry.path().filename().string(), "values.txt");
        }
    }

    int m_steps = 0;      // calls that an export makes
    std::string m_after;  // what it leaves
};

TEST_F(FaultyExport, WhateverStepFailsTheFileIsOldOrABeginOfTheNew) {
    ASSERT_EQ(m_steps, 1 + 1 + 3 + 1 + 1) << "open, header, pieces, close, a last look";
    for (const int error : {ENOSPC, EROFS, EIO}) {
        for (int step = 0; step < m_steps; ++step) {
            SCOPED_TRACE(std::to_string(error) + " at " + std::to_string(step));
            PutOldFile();
            bool is_written = false;
            {
                FaultyFiles files;
                files.FailCall(step, error);
                is_written = SaveTells();
            }
            // A last look that fails cannot tell, and what is closed is written.
            EXPECT_EQ(is_written, step == m_steps - 1);
            if (step == 0) {
                EXPECT_EQ(Text(), kBefore);
            } else {
                EXPECT_TRUE(m_after.starts_with(Text()));
                EXPECT_EQ(Text() == m_after, step >= m_steps - 2);
            }
            ExpectTheNextOneToWork();
        }
    }
}

TEST_F(FaultyExport, OnAFullDiskTheFileHoldsWhatHadRoom) {
    for (const std::size_t room :
         {std::size_t{0}, std::size_t{1}, std::size_t{70'000}, m_after.size() - 1}) {
        SCOPED_TRACE(room);
        PutOldFile();
        {
            FaultyFiles files;
            files.LimitSpace(room, ENOSPC);
            EXPECT_FALSE(SaveTells());
        }
        EXPECT_EQ(Text(), m_after.substr(0, room));
        ExpectTheNextOneToWork();
    }
}

TEST_F(FaultyExport, AFolderThatVanishesAtAnyStepIsAFailure) {
    int vanished = 0;
    for (int step = 0; step < m_steps; ++step) {
        SCOPED_TRACE(step);
        PutOldFile();
        bool is_written = false;
        {
            FaultyFiles files;
            files.BeforeCall(step, [this] {
                std::error_code held;  // Windows keeps a folder while a file in it is open
                fs::remove_all(m_folder.path(), held);
            });
            is_written = SaveTells();
        }
        EXPECT_EQ(is_written, fs::exists(m_folder.File("values.txt")));
        vanished += is_written ? 0 : 1;
        fs::create_directory(m_folder.path());
        ExpectTheNextOneToWork();
    }
    EXPECT_GE(vanished, testing::kOpenFilesHoldTheirFolder ? 3 : m_steps);
}

}  // namespace
}  // namespace wavo
