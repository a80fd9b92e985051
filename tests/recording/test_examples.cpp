// The programs that docs/recording-format.md points to read what is in a recording, to the last
// bit.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <charconv>
#include <sstream>
#include <string>
#include <vector>

#include "file_surgery.h"
#include "sample_recording.h"
#include "support/temporary_folder.h"
#include "system/started_program.h"

namespace wavo::recording {
namespace {

using testing::Append;
using testing::MakeHead;
using testing::MakeLines;
using testing::RequireNoFault;
using testing::SameBits;
using testing::StartedProgram;
using testing::TemporaryFolder;

using Program = std::vector<std::string>;

class RecordingExamples : public ::testing::TestWithParam<Program> {
 protected:
    void SetUp() override {
        auto writer = RecordingWriter::Create(m_folder.File("a.mcap"), MakeHead(3),
                                              GraphFile{"graph.ini", "[GENERAL]\n"});
        ASSERT_TRUE(writer);
        Append(**writer, 0, m_lines);
        (*writer)->AddEvent({kEventOverrun, 5000, 2000, "a gap"});
        Append(**writer, 5000, m_lines);
        RequireNoFault((*writer)->Keep());
        std::filesystem::copy_file(m_folder.File("a.mcap"), m_folder.File("cut.mcap"));
        RequireNoFault((*writer)->Finish());
    }

    const std::vector<std::vector<double>> m_lines = MakeLines(3, 2500, 1);
    TemporaryFolder m_folder;
};

TEST_P(RecordingExamples, PrintEveryValue) {
    const LineClock clock(0.001, MakeHead(3).start_time);
    for (const char* name : {"a.mcap", "cut.mcap"}) {
        Program arguments(GetParam().begin() + 1, GetParam().end());
        if (GetParam()[0].empty()) {
            GTEST_SKIP() << "the language is not installed here";
        }
        arguments.push_back(m_folder.File(name));
        StartedProgram program(GetParam()[0], arguments);
        ASSERT_EQ(program.Wait(), 0) << program.Errors();
        EXPECT_EQ(program.Errors(),
                  "event: {\"kind\":\"overrun\",\"line\":5000,\"lost\":2000,\"text\":\"a gap\"}\n");
        std::istringstream output(program.Output());
        std::string text;
        std::getline(output, text);
        EXPECT_THAT(text, ::testing::AnyOf("line,time_ns,X,Y,Z", "line,time_ns,\"X\",\"Y\",\"Z\""));
        for (std::size_t i = 0; i < 2 * m_lines.size(); ++i) {
            const std::uint64_t number = i < m_lines.size() ? i : 5000 + i - m_lines.size();
            ASSERT_TRUE(std::getline(output, text));
            std::istringstream fields(text);
            std::string field;
            std::getline(fields, field, ',');
            ASSERT_EQ(field, std::to_string(number));
            std::getline(fields, field, ',');
            ASSERT_EQ(field, std::to_string(clock.TimeOf(number)));
            for (const double expected : m_lines[i % m_lines.size()]) {
                std::getline(fields, field, ',');
                double value = 0.0;
                std::from_chars(field.data(), field.data() + field.size(), value);
                ASSERT_TRUE(SameBits(value, expected)) << text;
            }
        }
        EXPECT_FALSE(std::getline(output, text) && !text.empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, RecordingExamples,
                         ::testing::Values(Program{WAVO_PYTHON, WAVO_EXAMPLES "/read_recording.py"},
                                           Program{WAVO_READ_RECORDING_C},
                                           Program{WAVO_NODE,
                                                   WAVO_EXAMPLES "/read_recording.mjs"}));

}  // namespace
}  // namespace wavo::recording
