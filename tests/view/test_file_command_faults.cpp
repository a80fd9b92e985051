// Graph files on disks that are full, read-only or gone, at every step of Save and Save As.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "faulty_files.h"
#include "file_command_fixture.h"
#include "system_facts.h"

namespace wavo {
namespace {

namespace fs = std::filesystem;
using testing::ExpectAnyErrorLog;
using testing::FailedToSaveGraphs;
using testing::FailedToSaveSettings;
using testing::FaultyFiles;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::string TextOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

void PutText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

enum class Command { kSave, kSaveAs };

/// A file with a graph and settings, and others of both to save over it.
class FaultyGraphFile : public testing::FileCommandTest,
                        public ::testing::WithParamInterface<Command> {
 protected:
    FaultyGraphFile() {
        m_path = MakeFile("a.ini", "X1", 0x111111);
        m_before = TextOf(m_path);
        m_files.SetCurrentPath(m_path);
        Choose(m_path);
        AddGraph("Y1");
        AddGraph("X1");
        m_settings.background = 0x222222;
        FaultyFiles files;
        Run();
        m_steps = files.count();
        m_after = TextOf(m_path);
        EXPECT_THAT(m_unwritten, IsEmpty());
        m_written = {WithGraphs(m_before), m_after, WithSettings(m_before), WithSettings("")};
    }

    void Run() {
        if (GetParam() == Command::kSave) {
            m_commands.Save();
        } else {
            m_commands.SaveAs();
        }
    }
    /// Saves graphs and settings where something may fail. Every fault is told, each in its way;
    /// true when there was none.
    bool RunTells() {
        m_unwritten.clear();
        m_boxes.clear();
        m_host.Take();
        const ExpectAnyErrorLog expected;
        Run();
        const bool is_save = GetParam() == Command::kSave;
        const bool graphs_failed = expected.Saw(FailedToSaveGraphs(m_path));
        const bool settings_failed = expected.Saw(FailedToSaveSettings(m_path));
        EXPECT_EQ(m_unwritten, std::vector<std::string>(
                                   (graphs_failed ? 1 : 0) + (settings_failed ? 1 : 0), m_path));
        std::vector<std::string> boxes;
        for (const Box& box : m_boxes) {
            if (box.buttons == BoxButtons::kOk) {  // not the question of Save As
                boxes.push_back(box.text);
            }
        }
        EXPECT_EQ(boxes, std::vector<std::string>(graphs_failed ? 1 : 0,
                                                  "Failed to create ini. data file"));
        EXPECT_FALSE(is_save && graphs_failed && settings_failed) << "no settings without graphs";
        const std::vector<std::string> happened = m_host.Take();
        const std::string title = is_save ? "title wavo.ini - running" : "title a.ini";
        EXPECT_EQ(!happened.empty() && happened.back() == title, !is_save || !graphs_failed);
        // The program goes on with what it has.
        EXPECT_THAT(m_graphs.Graphs(), SizeIs(2));
        EXPECT_EQ(m_settings.background, 0x222222U);
        EXPECT_EQ(m_files.CurrentPath(), m_path);
        return m_unwritten.empty();
    }
    /// A text with the entries of the settings set.
    std::string WithSettings(const std::string& text) {
        const std::string other = Path("other.ini");
        PutText(other, text);
        EXPECT_TRUE(WriteProperties(other, m_settings));
        std::string with = TextOf(other);
        fs::remove(other);
        return with;
    }
    /// A text with the graphs set.
    std::string WithGraphs(const std::string& text) {
        const std::string other = Path("other.ini");
        PutText(other, text);
        MIniData store;
        EXPECT_TRUE(store.Open(other));
        EXPECT_TRUE(GetGraphAsIniData(store, m_graphs.Graphs(), m_files.AdditionalText()));
        EXPECT_TRUE(store.Save());
        std::string with = TextOf(other);
        fs::remove(other);
        return with;
    }
    /// The old file, a begin of what a step wrote, or what the later step made of that; besides it
    /// only what was kept of it.
    void ExpectNoWorseThanTheStepsAllow() {
        for (const std::string& name : Names()) {
            EXPECT_TRUE(name == "a.ini" || name.starts_with("a.ini.bak")) << name;
            const std::string text = TextOf(Path(name.c_str()));
            bool is_allowed = text == m_before;
            for (const std::string& written : m_written) {
                is_allowed |= written.starts_with(text);
            }
            EXPECT_TRUE(is_allowed) << name << ":\n" << text;
        }
    }
    /// Whether a file holds all graphs, or was kept with them.
    bool HasOrKeptAllGraphs() {
        return TextOf(m_path) == m_after ||
               (fs::exists(m_path + ".bak") && GraphsIn(m_path + ".bak").size() == 2);
    }
    std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder.path().toStdString())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }
    void PutOldFile() {
        for (const std::string& name : Names()) {
            fs::remove(Path(name.c_str()));
        }
        PutText(m_path, m_before);
    }
    void ExpectTheNextSaveToWork() {
        EXPECT_TRUE(RunTells());
        EXPECT_THAT(GraphsIn(m_path), SizeIs(2));
        EXPECT_EQ(BackgroundIn(m_path), 0x222222U);
    }

    std::string m_path;
    std::string m_before;
    std::string m_after;                 // what a save leaves
    std::vector<std::string> m_written;  // what its steps write, one after the other
    int m_steps = 0;                     // calls that it makes
};

INSTANTIATE_TEST_SUITE_P(Commands, FaultyGraphFile,
                         ::testing::Values(Command::kSave, Command::kSaveAs), [](const auto& info) {
                             return info.param == Command::kSave ? "Save" : "SaveAs";
                         });

TEST_P(FaultyGraphFile, WhateverStepFailsItIsToldAndTheFileIsNoWorseThanTheStepsAllow) {
    int failed = 0;
    for (const int error : {ENOSPC, EROFS, EIO}) {
        for (int step = 0; step < m_steps; ++step) {
            SCOPED_TRACE(std::to_string(error) + " at " + std::to_string(step));
            PutOldFile();
            bool is_saved = false;
            {
                FaultyFiles files;
                files.FailCall(step, error);
                is_saved = RunTells();
            }
            failed += is_saved ? 0 : 1;
            EXPECT_TRUE(!is_saved || HasOrKeptAllGraphs());
            ExpectNoWorseThanTheStepsAllow();
            ExpectTheNextSaveToWork();
        }
    }
    // Looks at a name and the close of what was read fail without harm, and a file that cannot be
    // read for its settings is kept.
    EXPECT_GT(m_steps, 2 * 9);
    EXPECT_GE(failed, 3 * (m_steps - 8));
}

TEST_P(FaultyGraphFile, AFullDiskIsToldAndTheNextSaveWithRoomWorks) {
    for (const std::size_t room : {std::size_t{0}, std::size_t{1}, std::size_t{60},
                                   m_after.size() / 2, m_after.size() - 1, m_after.size() + 1}) {
        SCOPED_TRACE(room);
        PutOldFile();
        {
            FaultyFiles files;
            files.LimitSpace(room, ENOSPC);
            EXPECT_FALSE(RunTells());
        }
        ExpectNoWorseThanTheStepsAllow();
        if (MIniData().Open(m_path)) {
            ExpectTheNextSaveToWork();
            continue;
        }
        // Cut within a line, it is not saved over; under another name it is.
        EXPECT_FALSE(RunTells());
        m_files.SetCurrentPath(Path("b.ini"));
        m_commands.Save();
        EXPECT_THAT(GraphsIn(Path("b.ini")), SizeIs(2));
        m_files.SetCurrentPath(m_path);
    }
}

TEST_P(FaultyGraphFile, AFolderThatVanishesAtAnyStepIsToldAndTheNextSaveWorks) {
    const std::string folder = m_folder.path().toStdString();
    int vanished = 0;
    for (int step = 0; step < m_steps; ++step) {
        SCOPED_TRACE(step);
        PutOldFile();
        bool is_saved = false;
        {
            FaultyFiles files;
            files.BeforeCall(step, [&folder] {
                std::error_code held;  // Windows keeps a folder while a file in it is open
                fs::remove_all(folder, held);
            });
            is_saved = RunTells();
        }
        if (!is_saved && !fs::exists(m_path)) {
            ++vanished;
        }
        EXPECT_TRUE(is_saved || !fs::exists(folder) || testing::kOpenFilesHoldTheirFolder);
        fs::create_directory(folder);
        ExpectTheNextSaveToWork();
    }
    EXPECT_GE(vanished, testing::kOpenFilesHoldTheirFolder ? 1 : m_steps);
}

}  // namespace
}  // namespace wavo
