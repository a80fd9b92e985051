// The view's settings file where it cannot be parsed, kept or saved: nothing is lost.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "expect_errors.h"
#include "faulty_files.h"
#include "view/view_settings_file.h"
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
