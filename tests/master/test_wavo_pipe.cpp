// wavo_pipe as a program, with viewers in this process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "master/pipe/pipe_options.h"
#include "matches_pattern.h"
#include "system/client_socket.h"
#include "system/started_program.h"
#include "system_facts.h"
#include "test_viewer.h"

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;
using wavo::testing::ClientSocket;
using wavo::testing::MatchesPattern;
using wavo::testing::ReadInfo;
using wavo::testing::SegmentExists;
using wavo::testing::StartedProgram;
using wavo::testing::TestViewer;

class WavoPipeTest : public ::testing::Test {
 protected:
    void Start(const std::vector<std::string>& arguments) {
        m_pipe = std::make_unique<StartedProgram>(WAVO_PIPE, arguments);
    }
    void StartPublishing(const std::vector<std::string>& arguments) {
        Start(arguments);
        ASSERT_TRUE(m_pipe->WaitForOutput("axes")) << m_pipe->Errors();
    }
    int Run(const std::vector<std::string>& arguments, std::string_view input = {}) {
        Start(arguments);
        m_pipe->Feed(input);
        m_pipe->CloseInput();
        return m_pipe->Wait();
    }
    /// Lets the viewer connect before the lines come.
    void Connect(TestViewer* viewer) {
        ASSERT_TRUE(viewer->Connect());
        ASSERT_TRUE(m_pipe->WaitForOutput("connected")) << m_pipe->Errors();
    }
    static std::vector<double> Column(const TestViewer& viewer, std::size_t column) {
        std::vector<double> values;
        for (const auto& line : viewer.lines) {
            values.push_back(line[column]);
        }
        return values;
    }

    std::unique_ptr<StartedProgram> m_pipe;
};

TEST_F(WavoPipeTest, HelpAndVersionGoToStandardOutput) {
    EXPECT_EQ(Run({"--help"}), 0);
    EXPECT_THAT(m_pipe->Output(), StartsWith("Usage: my_program | wavo_pipe"));
    EXPECT_EQ(Run({"--version"}), 0);
    EXPECT_THAT(m_pipe->Output(), MatchesPattern("wavo_pipe [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST_F(WavoPipeTest, WrongArgumentsGoToStandardErrorWithStatus2) {
    const struct {
        std::vector<std::string> arguments;
        const char* error;
    } cases[] = {
        {{"--bogus"}, "unknown argument \"--bogus\""},
        {{"--axes"}, "--axes needs a value"},
        {{"--axes", "a,,b"}, "--axes \"a,,b\": an axis name is empty"},
        {{"--axes", "a,a"}, "--axes \"a,a\": axis a is there twice"},
        {{"--cycle", "0"}, "--cycle \"0\": not a number of seconds from 0.000001 to 3600"},
        {{"--cycle", "1s"}, "--cycle \"1s\": not a number of seconds from 0.000001 to 3600"},
        {{"--time-unit", "min"}, "--time-unit \"min\": not one of s, ms, us, ns"},
        {{"--cycle", "1", "--time-unit", "ms"},
         "--time-unit is that of a column of time, which there is none of with --cycle"},
        {{"--limits", "X=1"},
         "--limits \"X=1\": \"X=1\" is not NAME=LOWER..UPPER[:VELOCITY[:ACCELERATION]]"},
        {{"--limits", "X=2..1"},
         "--limits \"X=2..1\": \"X=2..1\" is not NAME=LOWER..UPPER[:VELOCITY[:ACCELERATION]]"},
        {{"--fifo-lines", "1"}, "--fifo-lines \"1\": not a whole number from 2 to 100000000"},
        {{"--listen", "65536"}, "--listen \"65536\": not a whole number from 0 to 65535"},
    };
    for (const auto& wrong : cases) {
        EXPECT_EQ(Run(wrong.arguments), 2);
        EXPECT_EQ(m_pipe->Errors(),
                  "wavo_pipe: " + std::string(wrong.error) + "\nTry wavo_pipe --help.\n");
        EXPECT_EQ(m_pipe->Output(), "");
    }
}

TEST_F(WavoPipeTest, InputOfWhichNothingCanBeMadeHasStatus1) {
    EXPECT_EQ(Run({"--cycle", "1"}, "1 2\n"), 1);
    EXPECT_EQ(m_pipe->Errors(),
              "wavo_pipe: line 1: it has numbers where the names of the axes are expected; name "
              "them with --axes\n");
    EXPECT_EQ(Run({"--cycle", "1"}), 1);
    EXPECT_EQ(Run({"--axes", "a", "--cycle", "1", "--limits", "b=0..1"}), 1);
    EXPECT_EQ(m_pipe->Errors(), "wavo_pipe: --limits: there is no axis b\n");
    EXPECT_FALSE(SegmentExists(kInfoSegmentName));
    EXPECT_EQ(Run({"--axes", "a", "--cycle", "1"}), 0) << "no line is no fault";
}

TEST_F(WavoPipeTest, SecondMasterIsRefusedWithStatus1) {
    StartPublishing({"--axes", "a", "--cycle", "1"});
    StartedProgram second(WAVO_PIPE, {"--axes", "a", "--cycle", "1"});
    EXPECT_EQ(second.Wait(), 1);
    EXPECT_THAT(second.Errors(), StartsWith("wavo_pipe: another master is running (window "));
}

TEST_F(WavoPipeTest, ViewerGetsEveryLineFromConnectToTheEndOfTheInput) {
    StartPublishing(
        {"--axes", "force,temp", "--cycle", "0.001", "--limits", "force=-100..200:50:7,temp=0..1"});
    TestViewer viewer;
    Connect(&viewer);
    EXPECT_THAT(viewer.info.axis_names, ElementsAre("force", "temp"));
    EXPECT_EQ(viewer.info.cycle_time, 0.001);
    EXPECT_EQ(viewer.info.fifo_lines, 10000U);
    const auto limits = viewer.ReadCapabilities();
    ASSERT_TRUE(limits);
    EXPECT_EQ(limits->at("force"), (AxisCapabilities{200.0, -100.0, 50.0, 7.0, 0.001}));
    ASSERT_TRUE(m_pipe->Feed("1,2\n3,4\n5,oops\n7,\n9,10"));  // the last one without its end
    m_pipe->CloseInput();
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.link_ends == 1; }));
    EXPECT_EQ(m_pipe->Wait(), 0);
    ASSERT_THAT(viewer.lines, SizeIs(5));
    EXPECT_EQ(viewer.lines[1], (std::vector<double>{3.0, 4.0}));
    EXPECT_TRUE(std::isnan(viewer.lines[2][0]) && std::isnan(viewer.lines[2][1]));
    EXPECT_EQ(viewer.lines[3][0], 7.0);
    EXPECT_TRUE(std::isnan(viewer.lines[3][1]));
    EXPECT_EQ(viewer.lines[4], (std::vector<double>{9.0, 10.0}));
    EXPECT_EQ(m_pipe->Errors(),
              "wavo_pipe: line 3: \"oops\" is no number\n"
              "wavo_pipe: lines that could not be read: 1\n");
    EXPECT_FALSE(SegmentExists(kInfoSegmentName));
    EXPECT_FALSE(SegmentExists(viewer.FifoName()));
}

TEST_F(WavoPipeTest, NamesAndCycleTimeComeFromTheInput) {
    Start({"--time-unit", "ms", "--wait-viewer"});
    std::string text = "time;X;Y\n";
    for (int i = 0; i < 20; ++i) {
        if (i != 12) {
            text += std::to_string(2 * i) + ";" + std::to_string(i) + ",5;1\n";
        }
    }
    ASSERT_TRUE(m_pipe->Feed(text));
    m_pipe->CloseInput();
    ASSERT_TRUE(m_pipe->WaitForOutput("axes X Y\n")) << m_pipe->Errors();
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    EXPECT_EQ(viewer.info.cycle_time, 0.002);
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.link_ends == 1; }));
    EXPECT_EQ(m_pipe->Wait(), 0);
    ASSERT_THAT(viewer.lines, SizeIs(20));
    for (std::size_t i = 0; i < viewer.lines.size(); ++i) {
        if (i == 12) {
            EXPECT_TRUE(std::isnan(viewer.lines[i][0]));
        } else {
            EXPECT_EQ(viewer.lines[i][0], static_cast<double>(i) + 0.5);
        }
    }
    EXPECT_EQ(m_pipe->Errors(),
              "wavo_pipe: line 14: 1 line is missing before it, between 0.022 s and 0.026 s\n"
              "wavo_pipe: gaps in the time: 1\n");
}

TEST_F(WavoPipeTest, AFileAtFullSpeedLosesNoLine) {
    StartPublishing({"--axes", "a", "--cycle", "0.001", "--fifo-lines", "64", "--wait-viewer"});
    TestViewer viewer;
    ASSERT_TRUE(viewer.Connect());
    std::string text;
    for (int i = 0; i < 50000; ++i) {
        text += std::to_string(i) + "\n";
    }
    std::string_view rest = text;
    ASSERT_TRUE(viewer.ServeUntil([&] {
        if (!rest.empty()) {
            rest.remove_prefix(m_pipe->FeedSome(rest));
        } else {
            m_pipe->CloseInput();
        }
        return viewer.link_ends == 1;
    }));
    ASSERT_THAT(viewer.lines, SizeIs(50000));
    for (std::size_t i = 0; i < viewer.lines.size(); ++i) {
        ASSERT_EQ(viewer.lines[i][0], static_cast<double>(i));
    }
    EXPECT_EQ(viewer.overruns, 0);
    EXPECT_EQ(m_pipe->Wait(), 0);
}

TEST_F(WavoPipeTest, AViewerThatTakesNothingRunsOverAndTheLinesGoOn) {
    StartPublishing({"--axes", "a", "--cycle", "0.001", "--fifo-lines", "100"});
    TestViewer viewer;
    viewer.answers = false;
    Connect(&viewer);
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += std::to_string(i) + "\n";
    }
    ASSERT_TRUE(m_pipe->Feed(text));
    ASSERT_TRUE(m_pipe->WaitForOutput("overrun")) << m_pipe->Errors();
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.overruns == 1; }));
    ASSERT_TRUE(m_pipe->Feed(text));
    m_pipe->CloseInput();
    EXPECT_EQ(m_pipe->Wait(), 0);
    EXPECT_THAT(m_pipe->Output(), HasSubstr("overruns 1\n"));
}

TEST_F(WavoPipeTest, TheFifoOfASlowStreamHoldsAThousandLines) {
    PipeOptions options;
    EXPECT_EQ(FifoLinesOf(options, 1.0), 1000U);
    EXPECT_EQ(FifoLinesOf(options, 0.001), 10000U);
    EXPECT_EQ(FifoLinesOf(options, 1e-6), 1000000U);
    options.fifo_lines = 5;
    EXPECT_EQ(FifoLinesOf(options, 1e-6), 5U);
}

TEST_F(WavoPipeTest, AnInterruptEndsTheLinkInOrder) {
    for (const bool by_interrupt : {false, true}) {
        StartPublishing({"--axes", "a", "--cycle", "1"});
        TestViewer viewer;
        Connect(&viewer);
        ASSERT_TRUE(m_pipe->Feed("1\n2\n"));
        ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() == 2; }));
        if (!(by_interrupt ? m_pipe->Interrupt() : m_pipe->RequestEnd())) {
            GTEST_SKIP() << "there is no console here whose Ctrl-C could be pressed";
        }
        EXPECT_TRUE(viewer.ServeUntil([&] { return viewer.link_ends == 1; }));
        EXPECT_EQ(m_pipe->Wait(), 0);
        EXPECT_FALSE(SegmentExists(kInfoSegmentName));
    }
}

// ---- TCP ----

TEST_F(WavoPipeTest, TakesLinesFromOneClientAfterAnother) {
    Start({"--axes", "a,b", "--cycle", "0.001", "--listen", "0"});
    ASSERT_TRUE(m_pipe->WaitForOutput("axes a b\n")) << m_pipe->Errors();
    const std::string output = m_pipe->Output();
    const auto port_at = output.find("port ") + 5;
    const int port = std::stoi(output.substr(port_at));
    TestViewer viewer;
    Connect(&viewer);
    {
        ClientSocket client(port);
        ASSERT_TRUE(client.Write("1 2\n3 4\n5"));
        ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() == 2; }));
        ClientSocket second(port);
        EXPECT_TRUE(second.WaitForEnd());
    }
    ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() == 3; }));
    EXPECT_TRUE(std::isnan(viewer.lines[2][0])) << "what follows is not joined";
    {
        ClientSocket client(port);
        ASSERT_TRUE(client.Write("a;b\n7;8\n"));  // another separator, and names
        ASSERT_TRUE(viewer.ServeUntil([&] { return viewer.lines.size() == 4; }));
    }
    EXPECT_THAT(Column(viewer, 1), ElementsAre(2.0, 4.0, ::testing::_, 8.0));
    ASSERT_TRUE(m_pipe->WaitForOutput("client disconnected, lines: 2\n"));
    EXPECT_THAT(m_pipe->Errors(), HasSubstr("a further client was sent away: one is connected"));
    m_pipe->RequestEnd();
    EXPECT_EQ(m_pipe->Wait(), 0);
}

TEST_F(WavoPipeTest, APortThatIsTakenIsToldInOneLine) {
    Start({"--axes", "a", "--cycle", "0.001", "--listen", "0"});
    ASSERT_TRUE(m_pipe->WaitForOutput("axes a\n")) << m_pipe->Errors();
    const std::string output = m_pipe->Output();
    const std::string port = std::to_string(std::stoi(output.substr(output.find("port ") + 5)));
    StartedProgram second(WAVO_PIPE, {"--axes", "a", "--cycle", "1", "--listen", port});
    EXPECT_EQ(second.Wait(), 1);
    EXPECT_THAT(second.Errors(), StartsWith("wavo_pipe: cannot listen on port " + port + ": "));
}

}  // namespace
}  // namespace wavo::master
