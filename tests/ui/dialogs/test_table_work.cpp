#include "ui/dialogs/table_work.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSettings>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "real_prompts.h"
#include "recording/recording_reader.h"
#include "temporary_folder.h"
#include "ui/dialogs/remembered_tables.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TableWorkTest : public ::testing::Test {
 protected:
    TableWorkTest() {
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_errors.push_back(box.text);
            return BoxAnswer::kOk;
        };
    }
    std::string Write(const std::string& text) const {
        std::ofstream(m_folder.File("table.csv"), std::ios::binary) << text;
        return m_folder.File("table.csv");
    }
    /// Opens a table whose columns were asked for before.
    std::optional<OpenedTable> Open(const std::string& text,
                                    const tables::TimeChoice& choice = {}) {
        const std::string path = Write(text);
        if (const auto preview = tables::PreviewTable(path)) {
            RememberedTables(&m_settings).Remember(*preview, choice);
        }
        return OpenTable(m_surroundings, path,
                         {&m_settings, AskTime::kUnlessRemembered, {}, m_cache.path(), "test 1"});
    }
    [[nodiscard]] bool CacheIsEmpty() const { return std::filesystem::is_empty(m_cache.path()); }

    const testing::TemporaryFolder m_folder;
    const testing::TemporaryFolder m_cache;
    QSettings m_settings{QString::fromStdString(m_folder.File("settings.ini")),
                         QSettings::IniFormat};
    Prompts m_prompts;
    std::vector<std::string> m_errors;
    WorkInSteps m_steps;
    const TableSurroundings m_surroundings{nullptr, m_prompts, m_steps};
};

TEST_F(TableWorkTest, ATableBecomesARecording) {
    const auto opened = Open("X,Y\n1,2\n3\n5,6\n", {std::nullopt, 1.0, 0.002});
    ASSERT_TRUE(opened);
    EXPECT_THAT(opened->notices, ElementsAre("line 3: 1 field instead of 2; the line is left out"));
    const auto reader = recording::RecordingReader::Open(opened->recording.Path());
    ASSERT_TRUE(reader);
    EXPECT_EQ((*reader)->LineCount(), 2U);
    EXPECT_EQ((*reader)->Head().cycle_time, 0.002);
    EXPECT_EQ((*reader)->Head().program, "test 1");
    EXPECT_THAT(m_errors, IsEmpty());
}

TEST_F(TableWorkTest, WhatCannotBeOpenedIsTold) {
    EXPECT_FALSE(Open(""));
    EXPECT_FALSE(Open("state\non\n"));
    EXPECT_FALSE(Open("t,X\n1,2\n1,3\n", {0, 1.0}));
    const std::string path = m_folder.File("table.csv");
    EXPECT_THAT(m_errors,
                ElementsAre(path + ": the file is empty", path + ": there is no column of numbers",
                            path + ": the time in column \"t\" does not rise; tell the cycle time "
                                   "instead"));
    EXPECT_TRUE(CacheIsEmpty());
}

TEST_F(TableWorkTest, APartIsWrittenOrItIsToldWhyNot) {
    const auto opened = Open("X,Y\n1,2\n3,4\n5,6\n");
    ASSERT_TRUE(opened);
    const auto reader = recording::RecordingReader::Open(opened->recording.Path());
    ASSERT_TRUE(reader);
    const std::string path = m_folder.File("part.csv");
    EXPECT_TRUE(
        WritePart(m_surroundings, **reader, {1, 2}, {path, tables::PartFormat::kTable, {}}));
    EXPECT_EQ(m_folder.Read("part.csv"), "time [s],X,Y\r\n0.001000,3.000000,4.000000\r\n");
    EXPECT_THAT(m_errors, IsEmpty());
    EXPECT_FALSE(
        WritePart(m_surroundings, **reader, {9, 10}, {path, tables::PartFormat::kTable, {}}));
    EXPECT_FALSE(WritePart(m_surroundings, **reader, {0, 3},
                           {opened->recording.Path(), tables::PartFormat::kTable, {}}));
    EXPECT_THAT(m_errors, ElementsAre("there are no lines in this part",
                                      "a recording cannot be exported onto itself"));
}

}  // namespace
}  // namespace wavo
