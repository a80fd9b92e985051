// The view's settings file where it cannot be parsed, kept or saved: nothing is lost.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "expect_errors.h"
#include "faulty_files.h"
#include "settings/view_settings_file.h"
#include "system_facts.h"
#include "view_settings_fixture.h"

namespace wavo {
namespace {

namespace fs = std::filesystem;
using testing::Call;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::FailedToOpen;
using testing::FailedToSave;
using testing::FaultyFiles;
using ::testing::IsEmpty;
using testing::kBadColor;
using testing::kBadFont;
using testing::kOtherText;
using testing::OtherSettings;
using testing::ViewSettingsFile;

TEST_F(ViewSettingsFile, AFileThatCannotBeParsedGivesDefaultsAndStays) {
    const std::string text = "this is = no INI file\n";
    Write(text);
    const ExpectErrorLog expected({FailedToOpen(Path()), kBadColor, kBadFont});
    EXPECT_EQ(Read(), DefaultViewSettings());
    EXPECT_EQ(Text(), text);
    EXPECT_THAT(Files(), ElementsAre("wavo.ini"));
}

TEST_F(ViewSettingsFile, AFileThatCannotBeParsedIsKeptBeforeAnotherTakesItsPlace) {
    const std::string text = std::string("\xFF\xFE[\0B\0", 6) + std::string(200'000, '\xE9');
    Write(text);
    {
        const ExpectErrorLog expected({FailedToOpen(Path())});
        EXPECT_TRUE(WriteProperties(Path(), OtherSettings()));
    }
    EXPECT_EQ(Text(), kOtherText);
    EXPECT_EQ(m_folder.Read("wavo.ini.bak"), text);
    EXPECT_THAT(Files(), ElementsAre("wavo.ini", "wavo.ini.bak"));
    // The next write finds a file in order and leaves the kept one alone.
    EXPECT_TRUE(WriteProperties(Path(), DefaultViewSettings()));
    EXPECT_EQ(m_folder.Read("wavo.ini.bak"), text);
}

TEST_F(ViewSettingsFile, WhatIsKeptNeverTakesThePlaceOfWhatWasKeptBefore) {
    for (const char* const text : {"first\n", "second\n", "third\n"}) {
        Write(text);
        const ExpectErrorLog expected({FailedToOpen(Path())});
        EXPECT_TRUE(WriteProperties(Path(), OtherSettings()));
    }
    EXPECT_EQ(m_folder.Read("wavo.ini.bak"), "first\n");
    EXPECT_EQ(m_folder.Read("wavo.ini.bak2"), "second\n");
    EXPECT_EQ(m_folder.Read("wavo.ini.bak3"), "third\n");
    EXPECT_EQ(Text(), kOtherText);
}

TEST_F(ViewSettingsFile, AFileWithoutAFreeNameToKeepItUnderIsNotReplaced) {
    Write("no INI file\n");
    for (int i = 1; i <= 99; ++i) {
        std::ofstream(Path() + ".bak" + (i == 1 ? std::string() : std::to_string(i))) << "kept";
    }
    const ExpectErrorLog expected({FailedToOpen(Path()), FailedToSave(Path())});
    EXPECT_FALSE(WriteProperties(Path(), OtherSettings()));
    EXPECT_EQ(Text(), "no INI file\n");
    EXPECT_EQ(m_folder.Read("wavo.ini.bak"), "kept");
}

TEST_F(ViewSettingsFile, ASettingThatIsRefusedFailsAndTheOthersAreSaved) {
    ViewSettings settings = OtherSettings();
    settings.export_settings.data_file = "two\nlines";
    {
        const ExpectErrorLog expected({FailedToSave(Path())});
        EXPECT_FALSE(WriteProperties(Path(), settings));
    }
    ViewSettings saved = Read();
    EXPECT_EQ(saved.background, settings.background);
    EXPECT_EQ(saved.scale_lines_x, settings.scale_lines_x);
    EXPECT_NE(saved.export_settings.data_file, settings.export_settings.data_file);
}

/// Calls that a save of settings makes where there is a file already.
int StepsOfASaveOf(const std::string& path) {
    FaultyFiles files;
    EXPECT_TRUE(WriteProperties(path, DefaultViewSettings()));
    return files.count();
}

// Every call of a save fails once, or finds the folder gone: the old file, the new one, or, as the
// order of the steps has it, the part of the new one that was written.
TEST_F(ViewSettingsFile, WhateverStepOfASaveFailsTheFileIsOldOrNewOrABeginOfTheNew) {
    ASSERT_TRUE(WriteProperties(Path(), DefaultViewSettings()));
    const std::string before = Text();
    ASSERT_TRUE(WriteProperties(Path(), OtherSettings()));
    const std::string after = Text();
    int failed = 0;
    const int steps = StepsOfASaveOf(Path());
    for (const int error : {ENOSPC, EROFS, EIO}) {
        for (int step = 0; step < steps; ++step) {
            SCOPED_TRACE(step);
            Write(before);
            bool is_saved = false;
            {
                const testing::ExpectAnyErrorLog expected;
                FaultyFiles files;
                files.FailCall(step, error);
                is_saved = WriteProperties(Path(), OtherSettings());
                EXPECT_EQ(is_saved, !expected.Saw(FailedToSave(Path())));
            }
            failed += is_saved ? 0 : 1;
            const std::string text = Text();
            EXPECT_TRUE(text == before || after.starts_with(text)) << text;
            EXPECT_TRUE(!is_saved || text == after);
            for (const std::string& file : Files()) {
                EXPECT_TRUE(file == "wavo.ini" || file.starts_with("wavo.ini.bak")) << file;
            }
            fs::remove(Path() + ".bak");
            EXPECT_TRUE(WriteProperties(Path(), OtherSettings()));
            EXPECT_EQ(Text(), after);
        }
    }
    EXPECT_GT(steps, 6);
    EXPECT_GT(failed, 3 * 5);
}

TEST_F(ViewSettingsFile, AFolderThatVanishesAtAnyStepFailsTheSaveAndTheNextOneWorks) {
    ASSERT_TRUE(WriteProperties(Path(), DefaultViewSettings()));
    const int steps = StepsOfASaveOf(Path());
    int vanished = 0;
    for (int step = 0; step < steps; ++step) {
        SCOPED_TRACE(step);
        ASSERT_TRUE(WriteProperties(Path(), DefaultViewSettings()));
        bool is_saved = false;
        {
            const testing::ExpectAnyErrorLog expected;
            FaultyFiles files;
            files.BeforeCall(step, [this] {
                std::error_code held;  // Windows keeps a folder while a file in it is open
                fs::remove_all(m_folder.path(), held);
            });
            is_saved = WriteProperties(Path(), OtherSettings());
        }
        EXPECT_EQ(is_saved, fs::exists(m_folder.path()));
        vanished += is_saved ? 0 : 1;
        fs::create_directory(m_folder.path());
        EXPECT_TRUE(WriteProperties(Path(), OtherSettings()));
    }
    EXPECT_GT(steps, 6);
    EXPECT_GE(vanished, testing::kOpenFilesHoldTheirFolder ? 1 : steps);
}

TEST_F(ViewSettingsFile, AFolderInItsPlaceGivesDefaultsAndStays) {
    fs::create_directory(Path());
    {
        const ExpectErrorLog expected({FailedToOpen(Path()), kBadColor, kBadFont});
        EXPECT_EQ(Read(), DefaultViewSettings());
    }
    const ExpectErrorLog expected({FailedToOpen(Path()), FailedToSave(Path())});
    EXPECT_FALSE(WriteProperties(Path(), OtherSettings()));
    EXPECT_TRUE(fs::is_directory(Path()));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(ViewSettingsFile, AFileThatCannotBeKeptIsNotReplaced) {
    struct Fault {
        const char* what;
        Call call;
        int passed;  ///< calls of opening the store that work
    };
    const std::string text = "no INI file\n";
    for (const Fault& fault :
         {Fault{"open", Call::kOpenForReading, 1}, Fault{"create", Call::kOpenForWriting, 0},
          Fault{"read", Call::kRead, 1}, Fault{"write", Call::kWrite, 0},
          Fault{"flush", Call::kFlush, 0}, Fault{"close", Call::kClose, 1}}) {
        SCOPED_TRACE(fault.what);
        Write(text);
        {
            FaultyFiles files;
            files.Fail(fault.call, EIO, fault.passed);
            const ExpectErrorLog expected({FailedToOpen(Path()), FailedToSave(Path())});
            EXPECT_FALSE(WriteProperties(Path(), OtherSettings()));
        }
        EXPECT_EQ(Text(), text);
        EXPECT_THAT(Files(), ElementsAre("wavo.ini"));
    }
}

TEST_F(ViewSettingsFile, AFullDiskLosesNothingOfAFileThatCannotBeParsed) {
    const std::string text(100'000, 'x');
    Write(text);
    {
        FaultyFiles files;
        files.LimitSpace(70'000, ENOSPC);
        const ExpectErrorLog expected({FailedToOpen(Path()), FailedToSave(Path())});
        EXPECT_FALSE(WriteProperties(Path(), OtherSettings()));
    }
    EXPECT_EQ(Text(), text);
    EXPECT_THAT(Files(), ElementsAre("wavo.ini"));
}

TEST_F(ViewSettingsFile, AReplacementThatFailsLeavesTheOldFile) {
    Write(kOtherText);
    {
        FaultyFiles files;
        files.Fail(Call::kRename, EACCES);
        const ExpectErrorLog expected({FailedToSave(Path())});
        EXPECT_FALSE(WriteProperties(Path(), DefaultViewSettings()));
    }
    EXPECT_EQ(Text(), kOtherText);
    EXPECT_THAT(Files(), ElementsAre("wavo.ini"));
}

}  // namespace
}  // namespace wavo
