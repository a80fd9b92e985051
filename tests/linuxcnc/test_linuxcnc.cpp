// The viewer with wavo_linuxcnc on a running controller: a simulated mill without display and
// without realtime kernel. Run by ./test --linuxcnc.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>

#include "link/axis_capabilities.h"
#include "machine.h"
#include "support/mini_data.h"
#include "system/other_process.h"
#include "system/started_program.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr char kProgram[] = WAVO_LINUXCNC;
/// Sixteen values, of all types.
constexpr char kMore[] =
    "+tick=motion.servo.last-period,line=motion.program-line,type=motion.motion-type,"
    "inpos=motion.in-position,on=spindle.0.on";
const std::vector<std::string> kAxes = {"X",    "X_cmd", "X_err", "Y", "Y_cmd", "Y_err",
                                        "Z",    "Z_cmd", "Z_err", "S", "vel",   "tick",
                                        "line", "type",  "inpos", "on"};
constexpr char kEnded[] = "The master process (Dorvane) has ended the link";

/// What the first run of the controller has written: wirings, and what was said to bad input.
struct Prepared {
    QTemporaryDir folder;
    std::map<std::string, std::string> said;  ///< by run: status, output, errors
    std::string wiring;                       ///< of sixteen values
    std::string many;                         ///< of more than a sampler takes
    std::string loaded;                       ///< HAL's components with the wiring loaded
    std::string unloaded;
};

/// A pin is shown by both samplers, so that a line tells whether it is whole.
std::string ManyPins() {
    std::string pins;
    for (int joint = 0; joint < 3; ++joint) {
        const std::string number = std::to_string(joint);
        for (const char* what : {"pos-cmd", "pos-fb", "f-error", "vel-cmd", "acc-cmd", "homed"}) {
            pins += "j" + number + what + "=joint." + number + "." + what + "\n";
        }
    }
    return pins +
           "# the last two of the first sampler, and the second one\n"
           "tick=motion.servo.last-period\nX = joint.0.pos-cmd\n"
           "tick2=motion.servo.last-period\nX2=joint.0.pos-cmd\nS=spindle.0.speed-out\n";
}

constexpr char kSetupScript[] = R"(
say() { name=$1; shift; "$@" >$name.out 2>$name.err; echo $? >$name.status; }
wavo=$1 pins=$2
say print "$wavo" --setup sim.ini
say write "$wavo" --setup sim.ini --write --pins "$pins"
say again "$wavo" --setup sim.ini --write --pins "$pins"
say many "$wavo" --setup sim.ini --pins @many.txt
say unknown "$wavo" --setup sim.ini --pins a=no.such.pin
say unwired "$wavo" --ini sim.ini
say foreign "$wavo" --setup other/sim.ini --write
say missing "$wavo" --setup missing.ini
say jointless "$wavo" --setup jointless.ini
halcmd -f wavo.hal
for i in 1 2 3 4 5 6 7 8 9 10; do halcmd show comp >loaded; grep -q wavo_linuxcnc loaded && break; sleep 0.5; done
say second "$wavo" --ini sim.ini --pins "$pins"
say other "$wavo" --ini sim.ini --pins a=joint.0.pos-cmd
say unload halcmd unload wavo_linuxcnc
for i in 1 2 3 4 5 6 7 8 9 10; do halcmd show comp >unloaded; grep -q wavo_linuxcnc unloaded || break; sleep 0.5; done
touch stop
)";

class Linuxcnc : public Viewer {
 protected:
    static void SetUpTestSuite() {
        g_prepared = new Prepared;
        const QString folder = g_prepared->folder.path();
        Mill mill(folder);
        mill.Write("many.txt", ManyPins());
        mill.Write("setup.sh", kSetupScript);
        std::filesystem::create_directory(mill.Path("other").toStdString());
        mill.Write("other/sim.ini", mill.Read("sim.ini"));
        mill.Write("other/wavo.hal", "# mine\n");
        mill.Write("jointless.ini", "[EMC]\nMACHINE = none\n");
        ASSERT_TRUE(
            mill.Start({"-b", QStringLiteral("exec bash setup.sh '") + QLatin1String(kProgram) +
                                  "' '" + QLatin1String(kMore) + "'"}))
            << mill.Output().toStdString();
        ASSERT_TRUE(mill.WaitForEnd()) << mill.Output().toStdString();
        for (const char* run : {"print", "write", "again", "many", "unknown", "unwired", "foreign",
                                "missing", "jointless", "second", "other", "unload"}) {
            const QString name = QLatin1String(run);
            g_prepared->said[run] =
                mill.Read(name + ".status") + mill.Read(name + ".out") + mill.Read(name + ".err");
        }
        g_prepared->wiring = mill.Read("wavo.hal");
        g_prepared->many = mill.Read("many.out");
        g_prepared->loaded = mill.Read("loaded");
        g_prepared->unloaded = mill.Read("unloaded");
    }
    static void TearDownTestSuite() { delete std::exchange(g_prepared, nullptr); }

    static const Prepared& Made() { return *g_prepared; }

    /// The viewer's user connects as soon as there is a master, unless the viewer has done so.
    ::testing::AssertionResult Connect() {
        const std::string connected = "Connected to the master process (Dorvane)";
        const bool is_connected = WaitFor(
            [&] {
                if (Message() != connected) {
                    m_frame->Action(CommandId::kConnect)->trigger();
                }
                return Message() == connected;
            },
            60000);
        TakeBoxes();  // of tries before the master was there
        return is_connected ? ::testing::AssertionSuccess()
                            : ::testing::AssertionFailure() << Message();
    }

    void OpenOneGraph(const std::vector<std::string>& axes, double seconds) {
        WavoGraph graph;
        graph.InitGraph(1, axes.front().c_str(), 0, nullptr);
        for (std::size_t i = 1; i < axes.size(); ++i) {
            WavoGraph one;
            one.InitGraph(1, axes[i].c_str(), 0, nullptr);
            graph.YCoorAxName.push_back(axes[i]);
            graph.YCoorAxColor.push_back(one.YCoorAxColor[0]);
            graph.YCoorAxDerivation.push_back(0);
            graph.Triggers.push_back(one.Triggers[0]);
            graph.YScales.push_back(one.YScales[0]);
        }
        graph.XScale.TimeRange = seconds;
        OpenWith({graph});
    }

    static Prepared* g_prepared;
};

Prepared* Linuxcnc::g_prepared = nullptr;

// ---- Setup and bad input ----

TEST_F(Linuxcnc, TheSetupMakesTheWiringAndNoFileOfTheUsersChanges) {
    EXPECT_THAT(Made().said.at("print"),
                HasSubstr("\nloadrt sampler depth=8000 cfg=fffffffffff\n\nnet wavo-X "
                          "joint.0.pos-fb => sampler.0.pin.0\n"));
    EXPECT_THAT(Made().said.at("print"),
                HasSubstr("\nnet spindle-cmd spindle.0.speed-out => sampler.0.pin.9\n"));
    EXPECT_THAT(Made().said.at("write"),
                StartsWith("0\nWritten: wavo.hal\nAdd this line to section "
                           "[HAL] of sim.ini, behind"));
    EXPECT_THAT(Made().said.at("again"), StartsWith("0\nWritten"));
    EXPECT_THAT(Made().wiring, HasSubstr(" cfg=fffffffffffussbb\n"));
    EXPECT_EQ(
        Made().said.at("foreign"),
        "1\nwavo_linuxcnc: other/wavo.hal is not one that this program has made; it stays as it "
        "is\n");
}

TEST_F(Linuxcnc, ComesAndGoesWithLoadusrAndUnload) {
    EXPECT_THAT(Made().loaded, HasSubstr("wavo_linuxcnc"));
    EXPECT_THAT(Made().said.at("unload"), StartsWith("0\n"));
    EXPECT_THAT(Made().unloaded, Not(HasSubstr("wavo_linuxcnc")));
}

TEST_F(Linuxcnc, BadInputIsToldInOneLineWithStatus1) {
    const std::string remedy = "; include what wavo_linuxcnc --setup prints, and start it anew\n";
    const std::string name = "1\nwavo_linuxcnc: ";
    EXPECT_EQ(Made().said.at("unknown"), name + "the controller has no pin no.such.pin\n");
    EXPECT_EQ(Made().said.at("unwired"), name + "the controller has no sampler.0" + remedy);
    EXPECT_EQ(Made().said.at("missing"), name + "cannot read the INI file missing.ini\n");
    EXPECT_EQ(Made().said.at("jointless"),
              name + "the INI file has no joints: JOINTS in section [KINS] is missing or 0\n");
    EXPECT_EQ(Made().said.at("second"), name + "sampler.0 has a reader already\n");
    EXPECT_EQ(Made().said.at("other"), name + "sampler.0 has 16 columns in place of 1" + remedy);
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

TEST_F(Linuxcnc, WithoutAControllerNothingIsMade) {
    const auto memory = [] {
        std::ifstream file("/proc/sysvipc/shm");
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const std::string before = memory();
    const std::string ini = WAVO_MILL "/sim.ini";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--ini", ini}, {"--setup", ini}}) {
        StartedProgram program(kProgram, arguments);
        EXPECT_EQ(program.Wait(), 1);
        EXPECT_EQ(program.Errors(), "wavo_linuxcnc: no controller is running\n");
        EXPECT_EQ(program.Output(), "");
    }
    EXPECT_EQ(memory(), before);
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

// ---- Every cycle ----

/// The wiring with a second sampler on the same pins.
std::string WithWitness(const std::string& wiring) {
    std::istringstream lines(wiring);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        std::string witness;
        if (line.starts_with("loadrt sampler")) {
            const std::string letters = line.substr(line.find("cfg=") + 4);
            line = "loadrt sampler depth=8000,16000 cfg=" + letters + "," + letters;
        } else if (line.starts_with("net ") || line.starts_with("addf ")) {
            witness = line;
            witness.replace(witness.find("sampler.0"), 9, "sampler.1");
            witness += "\n";
        }
        text += line + "\n" + witness;
    }
    return text;
}

/// The lines of `halsampler -t`, which begin with their number.
std::vector<std::vector<double>> WitnessedLines(const std::string& text) {
    std::vector<std::vector<double>> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line) && !stream.eof();) {
        std::istringstream values(line);
        lines.emplace_back(std::istream_iterator<double>(values), std::istream_iterator<double>());
    }
    return lines;
}

TEST_F(Linuxcnc, ShowsEveryCycleOfAMinuteAsASecondSamplerSawIt) {
    constexpr std::uint64_t kLines = 60500;
    QTemporaryDir folder;
    Mill mill(folder.path());
    mill.Write("witness.hal", WithWitness(Made().wiring));
    mill.AddHalFile("witness.hal");
    OpenOneGraph(kAxes, 70.0);
    ASSERT_TRUE(mill.Start(
        {"-l", "-b", "exec halsampler -t -c 1 > lines.txt", "circles.ngc", "drill.ngc"}));
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(WaitForLines(100));
    const auto process = mill.Process("wavo_linuxcnc");
    ASSERT_TRUE(process);
    const double used_before = ProcessorTimeOf(*process);
    QElapsedTimer time;
    time.start();
    ASSERT_TRUE(WaitForLines(kLines, 90000));
    const double share = (ProcessorTimeOf(*process) - used_before) / (0.001 * time.elapsed());
    std::printf("linuxcnc/16: %.2f%% of a core at 1 kHz with 16 values (goal: at most 2%%)\n",
                100.0 * share);

    std::vector<std::vector<double>> shown;
    for (const std::string& axis : kAxes) {
        shown.push_back(Held(axis));
        ASSERT_THAT(shown.back(), SizeIs(Cycle().TotalLines())) << axis;
    }
    const auto limits = View().Work().Source().Limits().FindAxis("X");
    ASSERT_TRUE(limits);
    EXPECT_EQ(*limits, (AxisCapabilities{500.0, -500.0, 420.0, 3150.0, 0.001}));
    EXPECT_EQ(m_frame->PaneText(StatusPane::kCycleTime), QStringLiteral("cycl. time=0.00100s"));
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 1000));  // the witness writes in blocks
    EXPECT_EQ(Cycle().Counters().overruns, 0U);
    EXPECT_EQ(mill.Stop(), 0) << mill.Output().toStdString();
    ASSERT_TRUE(WaitForMessage(kEnded));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    EXPECT_THAT(mill.Output().toStdString(), HasSubstr("overruns 0\n"));

    const auto witnessed = WitnessedLines(mill.Read("lines.txt"));
    constexpr std::size_t kTick = 11;
    const auto is_place = [&](std::size_t place) {
        for (std::size_t i = 0; i < 20; ++i) {
            if (witnessed[place + i][1 + kTick] != shown[kTick][i]) {
                return false;
            }
        }
        return true;
    };
    const std::size_t count = shown[0].size();
    std::size_t place = 0;
    while (place + count <= witnessed.size() && !is_place(place)) {
        ++place;
    }
    ASSERT_LE(place + count, witnessed.size()) << "the witness saw no such line";
    std::size_t on_circle = 0;
    for (std::size_t i = 0; i < count; ++i) {
        ASSERT_EQ(witnessed[place + i][0], witnessed[place][0] + static_cast<double>(i));
        for (std::size_t axis = 0; axis < kAxes.size(); ++axis) {
            ASSERT_NEAR(shown[axis][i], witnessed[place + i][1 + axis], 0.6e-6)
                << kAxes[axis] << " of line " << i;
        }
        constexpr std::size_t kXCommand = 1;
        constexpr std::size_t kYCommand = 4;
        constexpr std::size_t kType = 13;
        if (shown[kType][i] == 3.0) {  // an arc
            ++on_circle;
            ASSERT_NEAR(std::hypot(shown[kXCommand][i], shown[kYCommand][i]), 50.0, 0.02) << i;
        }
    }
    EXPECT_GT(on_circle, 20000U);
    std::printf("%zu lines of 16 values equal, %zu of them on the circle\n", count, on_circle);
}

TEST_F(Linuxcnc, TheDefaultGraphHasTheLimitsOfTheMachine) {
    QTemporaryDir folder;
    Mill mill(folder.path());
    mill.Write("wavo.hal", Made().wiring);
    mill.AddHalFile("wavo.hal");
    OpenWith({});
    ASSERT_TRUE(mill.Start({}));
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(WaitForLines(100));
    View().Commands().Execute(CommandId::kSave);
    MIniData store;
    ASSERT_TRUE(store.Open(View().Work().Files().CurrentPath()));
    std::string value;
    EXPECT_TRUE(store.GetStringEntry("1", "YCoorAxName", value));
    EXPECT_EQ(value, "X");
    EXPECT_TRUE(store.GetStringEntry("1", "YScaleAxMax", value));
    EXPECT_EQ(value, "500.000000");
    EXPECT_TRUE(store.GetStringEntry("1", "YScaleAxMin", value));
    EXPECT_EQ(value, "-500.000000");
    EXPECT_EQ(mill.Stop(), 0) << mill.Output().toStdString();
    ASSERT_TRUE(WaitForMessage(kEnded));
    Close();
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

// ---- More than a sampler, overruns, death ----

TEST_F(Linuxcnc, LinesOfSeveralSamplersStayWholeOverOverrunsDeathAndANewStart) {
    const std::vector<std::string> axes = {"X", "X2", "tick", "tick2"};
    // Without the missing values that stand where there was no master.
    const auto held = [&](const std::string& axis) {
        std::vector<double> values = Held(axis);
        std::erase_if(values, [](double value) { return std::isnan(value); });
        return values;
    };
    const auto expect_whole = [&] {
        const auto x = held("X");
        EXPECT_FALSE(x.empty());
        EXPECT_EQ(x, held("X2"));
        EXPECT_EQ(held("tick"), held("tick2"));
        const auto [lowest, highest] = std::ranges::minmax(x);
        return highest - lowest;
    };
    QTemporaryDir folder;
    Mill mill(folder.path());
    mill.Write("many.txt", ManyPins());
    std::string wiring = Made().many.substr(Made().many.find("# Wavo"));
    const auto list_at = wiring.find("--pins @");
    ASSERT_NE(list_at, std::string::npos) << wiring;
    wiring.replace(list_at, std::string::npos, "--pins @many.txt\n");
    wiring.replace(wiring.find("loadusr "), 8, "loadusr -W ");
    mill.Write("many.hal", wiring);
    mill.AddHalFile("many.hal");
    Open(axes, 20.0);
    ASSERT_TRUE(mill.Start({"-l", "circles.ngc"})) << mill.Output().toStdString();
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(WaitForLines(3000));
    EXPECT_GT(expect_whole(), 1.0) << "it does not move";

    // The reader stands still for longer than the samplers hold lines.
    const auto reader = mill.Process("wavo_linuxcnc");
    ASSERT_TRUE(reader);
    FreezeProcess(*reader);
    QTest::qWait(9000);
    ThawProcess(*reader);
    ASSERT_TRUE(WaitForMessage("The value fifo ran over: Machine Data > Connect to go on"));
    EXPECT_THAT(TakeBoxes(), SizeIs(1));
    ASSERT_TRUE(Connect());
    const std::uint64_t before = Cycle().TotalLines();
    ASSERT_TRUE(WaitForLines(before + 3000));
    EXPECT_GT(expect_whole(), 1.0) << "it does not move";

    const auto controller = mill.Process("rtapi_app");
    ASSERT_TRUE(controller);
    QElapsedTimer time;
    time.start();
    KillProcess(*controller);
    ASSERT_TRUE(WaitForMessage(kEnded));
    std::printf("the end of a killed controller was told after %.2f s\n", 0.001 * time.elapsed());
    EXPECT_THAT(mill.Output().toStdString(), HasSubstr("wavo_linuxcnc: overrun: "));
    ASSERT_TRUE(WaitFor([&] { return !mill.Process("wavo_linuxcnc"); }));
    // What stands in for the operator would wait for an answer of the dead.
    if (const auto screen = mill.Process("drive.py")) {
        KillProcess(*screen);
    }
    ASSERT_TRUE(mill.WaitForEnd());

    ASSERT_TRUE(mill.Start({"-l", "circles.ngc"})) << mill.Output().toStdString();
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(WaitForLines(Cycle().TotalLines() + 2000));
    expect_whole();
    EXPECT_EQ(mill.Stop(), 0) << mill.Output().toStdString();
    ASSERT_TRUE(WaitForMessage(kEnded));
    Close();
    EXPECT_THAT(NamesInUse(), IsEmpty());
}

}  // namespace
}  // namespace wavo::testing
