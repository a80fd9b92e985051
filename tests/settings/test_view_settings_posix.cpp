// The view's settings file in a folder that may not be written, and saved by two processes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>

#include "expect_errors.h"
#include "settings/view_settings_file.h"
#include "unprivileged.h"
#include "view_settings_fixture.h"

namespace wavo {
namespace {

namespace fs = std::filesystem;
using ::testing::AnyOf;
using testing::CollectReports;
using ::testing::ElementsAre;
using ::testing::Eq;
using testing::ExpectErrorLog;
using testing::FailedToOpen;
using testing::FailedToSave;
using testing::kOtherText;
using testing::OtherSettings;
using testing::RunUnprivileged;
using testing::ViewSettingsFile;

TEST_F(ViewSettingsFile, AReadOnlyFolderKeepsItsFile) {
    Write(kOtherText);
    fs::permissions(m_folder.path(), fs::perms(0555));
    const std::optional<std::string> seen = RunUnprivileged([this] {
        const CollectReports entries(diagnostics::Service::kErrorLog);
        std::string text = Read() == OtherSettings() ? "read\n" : "not read\n";
        text += WriteProperties(Path(), DefaultViewSettings()) ? "saved\n" : "not saved\n";
        for (const std::string& entry : entries.Texts()) {
            text += entry + "\n";
        }
        return text;
    });
    fs::permissions(m_folder.path(), fs::perms(0755));
    if (!seen.has_value()) {
        GTEST_SKIP() << "the superuser's rights cannot be given up here";
    }
    EXPECT_EQ(*seen, "read\nnot saved\n" + FailedToSave(Path()) + "\n");
    EXPECT_EQ(Text(), kOtherText);
    EXPECT_THAT(Files(), ElementsAre("wavo.ini"));
}

TEST_F(ViewSettingsFile, WhatIsKeptIsAsPrivateAsTheFileWas) {
    Write("no INI file\n");
    fs::permissions(Path(), fs::perms(0600));
    const ExpectErrorLog expected({FailedToOpen(Path())});
    EXPECT_TRUE(WriteProperties(Path(), OtherSettings()));
    EXPECT_EQ(fs::status(Path() + ".bak").permissions(), fs::perms(0600));
    EXPECT_EQ(fs::status(Path()).permissions(), fs::perms(0600));
}

// Two viewers may save at the same time; whoever looks sees the file of one of them, whole.
TEST_F(ViewSettingsFile, TwoViewersThatSaveLeaveOneWholeFile) {
    constexpr int kRounds = 100;
    ASSERT_TRUE(WriteProperties(Path(), DefaultViewSettings()));
    const std::string defaults = Text();
    ASSERT_TRUE(WriteProperties(Path(), OtherSettings()));
    const pid_t other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        bool saved = true;
        for (int i = 0; i < kRounds; ++i) {
            saved &= WriteProperties(Path(), OtherSettings());
        }
        ::_exit(saved ? 0 : 1);
    }
    for (int i = 0; i < kRounds; ++i) {
        EXPECT_TRUE(WriteProperties(Path(), DefaultViewSettings()));
        EXPECT_THAT(Text(), AnyOf(Eq(defaults), Eq(std::string(kOtherText))));
    }
    int status = -1;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(Text(), AnyOf(Eq(defaults), Eq(std::string(kOtherText))));
    EXPECT_THAT(Files(), ElementsAre("wavo.ini"));
}

}  // namespace
}  // namespace wavo
