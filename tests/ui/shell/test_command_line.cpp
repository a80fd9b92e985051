// What the command line asks for, and what is said when the program ends without its windows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ui/shell/command_line.h"
#include "ui/shell/toolkit_start.h"
#include "ui/shell/wavo_app.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// What is said of a command line: "2 wavo: ..."; empty when nothing is.
std::string Said(const std::vector<std::string>& arguments) {
    const CommandLine line = ReadCommandLine(arguments);
    return line.last_words ? std::to_string(line.last_words->exit_code) + " " +
                                 line.last_words->text.toStdString()
                           : std::string();
}

TEST(CommandLine, MayBeEmpty) {
    const CommandLine line = ReadCommandLine({});
    EXPECT_FALSE(line.last_words.has_value());
    EXPECT_EQ(line.options.graph_file, "");
    EXPECT_EQ(line.options.screenshot, "");
    EXPECT_EQ(line.options.after_lines, 1000U);
}

TEST(CommandLine, NamesAGraphFileAndAPicture) {
    const CommandLine line =
        ReadCommandLine({"--screenshot", "shot.png", "--after-lines=20", "\xC3\xA4.ini"});
    EXPECT_FALSE(line.last_words.has_value());
    EXPECT_EQ(line.options.graph_file, QStringLiteral("\u00e4.ini"));
    EXPECT_EQ(line.options.screenshot, "shot.png");
    EXPECT_EQ(line.options.after_lines, 20U);
}

TEST(CommandLine, NamesARecordingAndItsGraphs) {
    for (const char* const name : {"night.mcap", "NIGHT.MCAP", "table.csv", "table.csv.gz"}) {
        const CommandLine both = ReadCommandLine({name, "shapes.ini"});
        EXPECT_FALSE(both.last_words.has_value());
        EXPECT_EQ(both.options.recording, name);
        EXPECT_EQ(both.options.graph_file, "shapes.ini");
        EXPECT_EQ(ReadCommandLine({name}).options.graph_file, "");
    }
    EXPECT_EQ(Said({"a.mcap", "a.ini", "b.ini"}), "2 wavo: unexpected argument: b.ini\n");
    EXPECT_EQ(Said({"a.ini", "a.mcap"}), "2 wavo: unexpected argument: a.mcap\n");
}

TEST(CommandLine, TellsTheCycleTimeOfATable) {
    EXPECT_EQ(ReadCommandLine({"--cycle", "0.004", "a.csv"}).options.cycle_time, 0.004);
    EXPECT_EQ(ReadCommandLine({"a.csv"}).options.cycle_time, std::nullopt);
    for (const char* const none : {"", "0", "-1", "4ms", "nan", "1e9"}) {
        EXPECT_EQ(Said({"--cycle", none, "a.csv"}), "2 wavo: --cycle needs a time in seconds\n")
            << none;
    }
}

TEST(CommandLine, AsksForHelpOrTheVersion) {
    for (const char* const help : {"-h", "--help"}) {
        EXPECT_THAT(Said({help}),
                    StartsWith("0 Usage: wavo [options] [recording.mcap] [graphs.ini]\n"))
            << help;
        EXPECT_THAT(Said({help}), HasSubstr("--after-lines <lines>")) << help;
    }
    for (const char* const version : {"-v", "--version"}) {
        EXPECT_EQ(Said({version}), "0 Wavo " WAVO_TEST_VERSION "\n") << version;
    }
}

TEST(CommandLine, ThatIsWrongIsRefusedInOneLine) {
    EXPECT_EQ(Said({"--after-lines", "many"}), "2 wavo: --after-lines needs a number\n");
    EXPECT_EQ(Said({"--after-lines", "-1"}), "2 wavo: --after-lines needs a number\n");
    EXPECT_EQ(Said({"a.ini", "b.ini"}), "2 wavo: unexpected argument: b.ini\n");
    EXPECT_EQ(Said({"--screenshot", ""}), "2 wavo: --screenshot needs the name of a file\n");
    EXPECT_EQ(Said({"--zoom"}), "2 wavo: Unknown option 'zoom'.\n");
    EXPECT_EQ(Said({"--screenshot"}), "2 wavo: Missing value after '--screenshot'.\n");
}

TEST(CommandLine, LeavesTheOptionsOfTheToolkitToTheToolkit) {
    const CommandLine line = ReadCommandLine(
        {"-platform", "offscreen", "--style=Fusion", "-reverse", "given.ini", "-style", "Windows"});
    EXPECT_FALSE(line.last_words.has_value());
    EXPECT_EQ(line.options.graph_file, "given.ini");
    EXPECT_EQ(Said({"a.ini", "-platform", "offscreen", "b.ini"}),
              "2 wavo: unexpected argument: b.ini\n");
}

TEST(LastWords, StandOnTheStreamThatFits) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    EXPECT_TRUE(CWavoApp::Print({QStringLiteral("wavo: \u00e4\n"), 2}));
    EXPECT_TRUE(CWavoApp::Print({QStringLiteral("Wavo\n"), 0}));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "wavo: \xC3\xA4\n");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Wavo\n");
}

TEST(LastWords, StandInABoxWhereThereIsNoStream) {
    std::vector<Box> boxes;
    Prompts prompts;
    prompts.box = [&boxes](QWidget*, const Box& box) {
        boxes.push_back(box);
        return BoxAnswer::kOk;
    };
    CWavoApp::ShowInBox({QStringLiteral("wavo: \u00e4\n"), 2}, prompts);
    CWavoApp::ShowInBox({QStringLiteral("Wavo\n"), 0}, prompts);
    EXPECT_THAT(boxes,
                ElementsAre(Box{"wavo: \xC3\xA4", "ERROR", BoxIcon::kExclamation, BoxButtons::kOk},
                            Box{"Wavo", "Wavo", BoxIcon::kInformation, BoxButtons::kOk}));
}

TEST(ToolkitStart, ThatFailsNamesWhatIsMissing) {
    EXPECT_EQ(StartFault({}, {}, {}),
              "wavo: no display: neither DISPLAY nor WAYLAND_DISPLAY is set");
    EXPECT_EQ(StartFault("xcb", {}, {}),
              "wavo: no display: neither DISPLAY nor WAYLAND_DISPLAY is set");
    EXPECT_EQ(StartFault({}, ":9", "wayland-0"), "wavo: no display: cannot use \":9\"");
    EXPECT_EQ(StartFault("wayland", {}, "wayland-0"), "wavo: no display: cannot use \"wayland-0\"");
    EXPECT_EQ(StartFault("nonsense", ":9", {}), "wavo: no window system: cannot use \"nonsense\"");
}

TEST(ToolkitStart, TellsAfterwardsWhatTheToolkitSaid) {
    ::testing::internal::CaptureStderr();
    {
        const ToolkitStart start({});
        qWarning("about the system");
        EXPECT_THAT(::testing::internal::GetCapturedStderr(), IsEmpty());
        ::testing::internal::CaptureStderr();
    }
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), HasSubstr("about the system"));
}

}  // namespace
}  // namespace wavo
