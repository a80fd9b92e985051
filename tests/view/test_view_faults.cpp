// What the status bar tells when settings or logs cannot be written.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "fake_shared_memory.h"
#include "faulty_files.h"
#include "platform/folders.h"
#include "platform/last_error.h"
#include "real_prompts.h"
#include "support/diagnostics.h"
#include "support/diagnostics_output.h"
#include "system_facts.h"
#include "temporary_folder.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using testing::Call;
using ::testing::ElementsAre;
using testing::ExpectAnyErrorLog;
using testing::FaultyFiles;

/// A view that has not begun yet, without a master.
class ViewFaults : public ::testing::Test {
 protected:
    ViewFaults() {
        testing::ResetFakeSharedMemory();
        testing::SetVariable(testing::kDataHome, m_folder.path());
        m_prompts.box = [](QWidget*, const Box&) { return BoxAnswer::kOk; };
        QObject::connect(&m_view.News(), &ViewNews::PaneTextChanged,
                         [this](StatusPane pane, const QString& text) {
                             if (pane == StatusPane::kMessage) {
                                 m_told.push_back(text.toStdString());
                             }
                         });
    }
    ~ViewFaults() override {
        diagnostics::SetLogFolder({});
        testing::UnsetVariable(testing::kDataHome);
    }
    /// The settings dialog opens and is left with OK.
    void SaveSettings() {
        QMetaObject::invokeMethod(
            qApp, [] { dynamic_cast<QDialog&>(*QApplication::activeModalWidget()).accept(); },
            Qt::QueuedConnection);
        m_view.Commands().EditProperties();
    }
    /// There is no data folder, and none can be made.
    std::string LoseDataFolder() {
        std::ofstream(m_folder.File("file")) << "no folder";
        testing::SetVariable(testing::kDataHome, m_folder.File("file"));
        EXPECT_EQ(platform::DataFolder(), "");
        return "GetCommonAppDataFolder() failed " + platform::ErrorText(platform::LastError());
    }
    [[nodiscard]] std::string SettingsFile() const {
        return m_folder.File("Velk") + platform::PathSeparator() + "wavo.ini";
    }
    [[nodiscard]] std::string LogFile(const char* name) const {
        return m_folder.File("logs") + platform::PathSeparator() + name;
    }

    const testing::TemporaryFolder m_folder;
    std::vector<std::string> m_told;
    Prompts m_prompts = testing::RealPrompts();
    CWavoView m_view{m_prompts};
};

TEST_F(ViewFaults, AFirstStartThatCannotLeaveItsSettingsIsTold) {
    const ExpectAnyErrorLog expected;
    {
        FaultyFiles files;
        files.Fail(Call::kName, ENOSPC);
        m_view.OnInitialUpdate();
    }
    EXPECT_TRUE(
        expected.Saw("CWavoView::WriteProperties: failed to svae '" + SettingsFile() + "'"));
    ASSERT_FALSE(m_told.empty());
    EXPECT_EQ(m_told.back(), "Cannot write " + SettingsFile() + ", see the error log");
    EXPECT_EQ(m_view.Work().Settings().Current(), DefaultViewSettings());
    m_told.clear();
    SaveSettings();
    EXPECT_THAT(m_told, ElementsAre()) << "now it can";
    EXPECT_TRUE(std::filesystem::exists(SettingsFile()));
}

TEST_F(ViewFaults, SettingsWithoutADataFolderAreToldAtTheStartAndAtEachSave) {
    const std::string entry = LoseDataFolder();
    {
        const ExpectAnyErrorLog expected;
        m_view.OnInitialUpdate();
        EXPECT_TRUE(expected.Saw(entry));
    }
    ASSERT_FALSE(m_told.empty());
    EXPECT_EQ(m_told.back(), "Cannot write wavo.ini, see the error log");
    m_told.clear();
    {
        const testing::ExpectErrorLog expected({entry});
        SaveSettings();
    }
    EXPECT_THAT(m_told, ElementsAre("Cannot write wavo.ini, see the error log"));
    m_told.clear();
    testing::SetVariable(testing::kDataHome, m_folder.path());
    SaveSettings();
    EXPECT_THAT(m_told, ElementsAre());
    EXPECT_TRUE(std::filesystem::exists(SettingsFile()));
}

TEST_F(ViewFaults, ALogThatCannotBeWrittenIsToldOnce) {
    m_view.OnInitialUpdate();
    m_told.clear();
    diagnostics::SetLogFolder(m_folder.File("logs"));
    const testing::ExpectErrorLog expected({"one", "two", "three"});
    MERRLOG("one");
    MERRLOG("two");
    EXPECT_THAT(m_told, ElementsAre("Cannot write the log " + LogFile("wavo_error.log")));
    std::filesystem::create_directory(m_folder.File("logs"));
    MERRLOG("three");
    EXPECT_THAT(m_told, ::testing::SizeIs(1));
}

TEST_F(ViewFaults, ALogThatWasLostBeforeTheStartIsToldAfterIt) {
    diagnostics::SetLogFolder(m_folder.File("logs"));
    MTRACE(1, "starting");
    m_view.OnInitialUpdate();
    ASSERT_FALSE(m_told.empty());
    EXPECT_EQ(m_told.back(), "Cannot write the log " + LogFile("wavo_trace.log"));
}

TEST_F(ViewFaults, AFileThatCannotBeWrittenIsToldTogetherWithALostLog) {
    m_view.OnInitialUpdate();
    diagnostics::SetLogFolder(m_folder.File("logs"));
    const ExpectAnyErrorLog expected;
    FaultyFiles files;
    files.Fail(Call::kName, ENOSPC);
    SaveSettings();
    EXPECT_EQ(m_told.back(),
              "Cannot write " + SettingsFile() + " nor the log " + LogFile("wavo_error.log"));
}

TEST_F(ViewFaults, ALogThatIsLostAfterTheEndTroublesNobody) {
    {
        CWavoView other(m_prompts);
        other.OnInitialUpdate();
    }
    diagnostics::SetLogFolder(m_folder.File("logs"));
    const testing::ExpectErrorLog expected({"entry"});
    MERRLOG("entry");
}

}  // namespace
}  // namespace wavo
