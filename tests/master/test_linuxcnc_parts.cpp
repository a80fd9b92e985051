// What wavo_linuxcnc can tell without a controller: INI files, pins, limits, wiring, arguments.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "master/linuxcnc/chosen_pins.h"
#include "master/linuxcnc/hal_listing.h"
#include "master/linuxcnc/linuxcnc_options.h"
#include "master/linuxcnc/machine_ini.h"
#include "master/linuxcnc/wiring.h"

namespace wavo::master {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr char kMill[] = R"(# a mill
[EMCMOT]
SERVO_PERIOD = 500000
[KINS]
KINEMATICS = trivkins coordinates=XYYZ kinstype=BOTH
JOINTS = 4
[TRAJ]
COORDINATES = X Y Z
MAX_LINEAR_VELOCITY = 400
[AXIS_X]
MIN_LIMIT = -500
MAX_LIMIT = 500 # mm
MAX_VELOCITY = 300
MAX_ACCELERATION = 3000
[JOINT_0]
MIN_LIMIT = -510
MAX_LIMIT = 1e99
MAX_VELOCITY = 320
FERROR = 2
[AXIS_Y]
MIN_LIMIT = 0
MAX_LIMIT = 200
[JOINT_1]
FERROR = 0
[SPINDLE_0]
MAX_FORWARD_VELOCITY = 24000
MAX_REVERSE_VELOCITY = 6000
[HAL]
HALFILE = a.hal
HALFILE = b.hal
)";

MachineIni IniOf(const std::string& text, const std::map<std::string, std::string>& others = {}) {
    std::string error;
    const auto read = [&](const std::string& path) -> std::optional<std::string> {
        if (path == "/m/machine.ini") {
            return text;
        }
        const auto found = others.find(path);
        return found != others.end() ? std::optional(found->second) : std::nullopt;
    };
    auto ini = MachineIni::Read("/m/machine.ini", read, &error);
    EXPECT_TRUE(ini) << error;
    return ini.value_or(MachineIni());
}

// ---- INI file ----

TEST(MachineIniTest, EntriesAreFoundByTheirSection) {
    const MachineIni ini = IniOf(kMill);
    EXPECT_EQ(ini.Find("KINS", "JOINTS"), "4");
    EXPECT_EQ(ini.Find("KINS", "joints"), std::nullopt);
    EXPECT_EQ(ini.Number("AXIS_X", "MAX_LIMIT"), 500.0);
    EXPECT_EQ(ini.Number("KINS", "KINEMATICS"), std::nullopt);
    EXPECT_EQ(ini.Find("AXIS_Z", "MAX_LIMIT"), std::nullopt);
    EXPECT_THAT(ini.FindAll("HAL", "HALFILE"), ElementsAre("a.hal", "b.hal"));
}

TEST(MachineIniTest, CommentsLineEndsAndJoinedLines) {
    const MachineIni ini = IniOf("[A]\r\n; X = 1\r\n#X = 2\r\n  X=3  \r\nY = a \\\n b\nZ\n");
    EXPECT_EQ(ini.Find("A", "X"), "3");
    EXPECT_EQ(ini.Find("A", "Y"), "a  b");
    EXPECT_EQ(ini.Find("A", "Z"), std::nullopt);
}

TEST(MachineIniTest, OtherFilesAreIncludedInTheirPlace) {
    const MachineIni ini =
        IniOf("[A]\n#INCLUDE more/axis.inc\nY = 2\n",
              {{"/m/more/axis.inc", "X = 1\n#INCLUDE /abs.inc\n"}, {"/abs.inc", "[B]\nX = 3\n"}});
    EXPECT_EQ(ini.Find("A", "X"), "1");
    EXPECT_EQ(ini.Find("B", "X"), "3");
    EXPECT_EQ(ini.Find("B", "Y"), "2");
}

TEST(MachineIniTest, FilesThatAreMissingOrIncludeThemselves) {
    std::string error;
    const auto none = [](const std::string&) { return std::optional<std::string>(); };
    EXPECT_FALSE(MachineIni::Read("x.ini", none, &error));
    EXPECT_EQ(error, "cannot read the INI file x.ini");
    const auto itself = [](const std::string&) { return std::optional<std::string>("#INCLUDE x"); };
    EXPECT_FALSE(MachineIni::Read("x", itself, &error));
    EXPECT_EQ(error, "the INI file x includes itself");
}

// ---- Pins ----

TEST(ChosenPinsTest, JointsAreNamedAfterTheirAxes) {
    std::string error;
    EXPECT_EQ(PinsText(DefaultPins(IniOf(kMill), &error)),
              "X=joint.0.pos-fb,X_cmd=joint.0.pos-cmd,X_err=joint.0.f-error,"
              "Y=joint.1.pos-fb,Y_cmd=joint.1.pos-cmd,Y_err=joint.1.f-error,"
              "Y2=joint.2.pos-fb,Y2_cmd=joint.2.pos-cmd,Y2_err=joint.2.f-error,"
              "Z=joint.3.pos-fb,Z_cmd=joint.3.pos-cmd,Z_err=joint.3.f-error,"
              "S=spindle.0.speed-out,vel=motion.current-vel");
    EXPECT_EQ(error, "");
}

TEST(ChosenPinsTest, WithoutCoordinatesTheLettersAreInOrder) {
    std::string error;
    const auto pins = DefaultPins(IniOf("[KINS]\nKINEMATICS=trivkins\nJOINTS=4\n"), &error);
    EXPECT_EQ(pins[9].name, "A");
}

TEST(ChosenPinsTest, JointsThatAreNoAxesHaveNumbersAndTheAxesTheirCommands) {
    std::string error;
    const auto pins = DefaultPins(
        IniOf("[KINS]\nKINEMATICS=genserkins\nJOINTS=2\n[TRAJ]\nCOORDINATES=XZ\nSPINDLES=2\n"),
        &error);
    EXPECT_EQ(PinsText(pins),
              "J0=joint.0.pos-fb,J0_cmd=joint.0.pos-cmd,J0_err=joint.0.f-error,"
              "J1=joint.1.pos-fb,J1_cmd=joint.1.pos-cmd,J1_err=joint.1.f-error,"
              "X_cmd=axis.x.pos-cmd,Z_cmd=axis.z.pos-cmd,S=spindle.0.speed-out,"
              "S1=spindle.1.speed-out,vel=motion.current-vel");
}

TEST(ChosenPinsTest, AFileWithoutJointsIsRefused) {
    for (const char* text : {"", "[KINS]\nJOINTS = 0\n", "[KINS]\nJOINTS = none\n"}) {
        std::string error;
        EXPECT_THAT(DefaultPins(IniOf(text), &error), IsEmpty());
        EXPECT_EQ(error, "the INI file has no joints: JOINTS in section [KINS] is missing or 0");
    }
}

TEST(ChosenPinsTest, ListsOfPins) {
    std::vector<ChosenPin> pins;
    EXPECT_EQ(ParsePins("force=my.force,ok=x.y-z.1", &pins), "");
    EXPECT_THAT(pins, ElementsAre(ChosenPin{"force", "my.force"}, ChosenPin{"ok", "x.y-z.1"}));
    EXPECT_EQ(ParsePins("force=other", &pins), "the name force is there twice");
    for (const char* wrong : {"", "a", "a=", "=b", "a b=c", "a=b c", "a=b#", "a=[X]", "a/b=c"}) {
        pins.clear();
        EXPECT_THAT(ParsePins(wrong, &pins), HasSubstr("is not NAME=PIN")) << wrong;
    }
    EXPECT_THAT(ParsePins(std::string(37, 'a') + "=b", &pins), HasSubstr("is not NAME=PIN"));
}

// ---- Limits ----

TEST(PinLimitsTest, PositionsHaveTheLimitsOfTheirJointElseOfTheirAxis) {
    const MachineIni ini = IniOf(kMill);
    // The joint's own upper limit is none.
    EXPECT_EQ(LimitsOfPin(ini, "joint.0.pos-fb", false),
              (AxisCapabilities{500.0, -510.0, 320.0, 3000.0, 0.001}));
    EXPECT_EQ(LimitsOfPin(ini, "axis.x.pos-cmd", false),
              (AxisCapabilities{500.0, -500.0, 300.0, 3000.0, 0.001}));
    EXPECT_EQ(LimitsOfPin(ini, "joint.2.motor-pos-cmd", false),
              (AxisCapabilities{200.0, 0.0, 0.0, 0.0, 0.001}));
    EXPECT_EQ(LimitsOfPin(ini, "joint.3.pos-fb", false), std::nullopt);
}

TEST(PinLimitsTest, OtherQuantities) {
    const MachineIni ini = IniOf(kMill);
    EXPECT_EQ(LimitsOfPin(ini, "joint.0.f-error", false),
              (AxisCapabilities{2.0, -2.0, 0.0, 0.0, 0.001}));
    EXPECT_EQ(LimitsOfPin(ini, "joint.1.f-error", false), std::nullopt);
    EXPECT_EQ(LimitsOfPin(ini, "joint.0.vel-cmd", false),
              (AxisCapabilities{320.0, -320.0, 0.0, 0.0, 0.001}));
    EXPECT_EQ(LimitsOfPin(ini, "motion.current-vel", false),
              (AxisCapabilities{400.0, 0.0, 0.0, 0.0, 0.001}));
    EXPECT_EQ(LimitsOfPin(ini, "spindle.0.speed-out", false),
              (AxisCapabilities{24000.0, -6000.0, 0.0, 0.0, 0.001}));
    EXPECT_EQ(LimitsOfPin(ini, "spindle.0.speed-in", false),
              (AxisCapabilities{400.0, -100.0, 0.0, 0.0, 0.001}));
    EXPECT_EQ(LimitsOfPin(ini, "my.switch", true), (AxisCapabilities{1.0, 0.0, 0.0, 0.0, 0.001}));
    EXPECT_EQ(LimitsOfPin(ini, "my.value", false), std::nullopt);
}

TEST(PinLimitsTest, ThePathIsAsFastAsTheFastestAxisWhereNothingElseIsTold) {
    const MachineIni ini = IniOf(
        "[TRAJ]\nCOORDINATES = X Y\n[AXIS_X]\nMAX_VELOCITY = 30\n[AXIS_Y]\nMAX_VELOCITY = 50\n");
    EXPECT_EQ(LimitsOfPin(ini, "motion.current-vel", false)->upper_limit, 50.0);
    EXPECT_EQ(LimitsOfPin(IniOf(""), "motion.current-vel", false), std::nullopt);
}

TEST(PinLimitsTest, CycleTime) {
    EXPECT_EQ(CycleTimeOf(IniOf(kMill)), 0.0005);
    EXPECT_EQ(CycleTimeOf(IniOf("")), 0.001);
}

// ---- HAL ----

constexpr char kPins[] = R"(motmod float OUT 0 joint.0.pos-fb
motmod float OUT 1.5 joint.0.f-error ==> x-err
motmod bit   IN FALSE joint.0.home-sw-in <== home
motmod u32   OUT 7 motion.servo.last-period
motmod s32   OUT 7 motion.program-line
raster port  IN 0 raster.data
this is no pin
)";
constexpr char kThreads[] =
    "25000 NO base-thread 1 2 stepgen.make-pulses\n"
    "1000000 YES servo-thread    32396 156390 motion-command-handler motion-controller pid\n";

HalListing Listing(const std::string& more = {}) {
    return HalListing::Parse(kPins + more, kThreads);
}

TEST(HalListingTest, PinsAndTheThreadOfTheMotionController) {
    const HalListing hal = Listing();
    ASSERT_NE(hal.Find("joint.0.f-error"), nullptr);
    EXPECT_EQ(hal.Find("joint.0.f-error")->signal, "x-err");
    EXPECT_EQ(hal.Find("joint.0.f-error")->type, "float");
    EXPECT_EQ(hal.Find("joint.0.pos-fb")->signal, "");
    EXPECT_EQ(hal.Find("joint.0.pos"), nullptr);
    EXPECT_EQ(hal.ServoThread(), "servo-thread");
    EXPECT_EQ(hal.ServoPeriod(), 0.001);
    EXPECT_EQ(HalListing::Parse("", "").ServoThread(), std::nullopt);
}

TEST(WiringTest, PinsThatCannotBeSampled) {
    EXPECT_EQ(WhyNotSampled({{"a", "joint.0.pos-fb"}, {"b", "motion.program-line"}}, Listing()),
              "");
    EXPECT_EQ(WhyNotSampled({{"a", "joint.9.pos-fb"}}, Listing()),
              "the controller has no pin joint.9.pos-fb");
    EXPECT_EQ(WhyNotSampled({{"a", "raster.data"}}, Listing()),
              "the pin raster.data is of type port; float, s32, u32 and bit can be sampled");
}

const std::vector<ChosenPin> kFour = {{"X", "joint.0.pos-fb"},
                                      {"X_err", "joint.0.f-error"},
                                      {"sw", "joint.0.home-sw-in"},
                                      {"line", "motion.program-line"}};
const WiringText kText{"/m/machine.ini", "/usr/bin/wavo_linuxcnc", ""};

std::string WiringFor(const std::vector<ChosenPin>& pins, const HalListing& hal,
                      const WiringText& text = kText) {
    std::string error;
    const auto channels = ShareOut(pins, FirstChannel(hal), &error);
    const auto wiring = channels ? MakeWiring(*channels, hal, text, &error) : std::nullopt;
    return wiring.value_or("error: " + error);
}

TEST(WiringTest, PinsOnASignalAreTakenFromThere) {
    const std::string wiring = WiringFor(kFour, Listing());
    EXPECT_THAT(wiring, StartsWith("# Wavo: made by wavo_linuxcnc --setup for /m/machine.ini\n"));
    EXPECT_THAT(wiring, HasSubstr("\nloadrt sampler depth=8000 cfg=ffbs\n"
                                  "\n"
                                  "net wavo-X joint.0.pos-fb => sampler.0.pin.0\n"
                                  "net x-err joint.0.f-error => sampler.0.pin.1\n"
                                  "net home joint.0.home-sw-in => sampler.0.pin.2\n"
                                  "net wavo-line motion.program-line => sampler.0.pin.3\n"
                                  "\n"
                                  "addf sampler.0 servo-thread\n"
                                  "\n"
                                  "loadusr /usr/bin/wavo_linuxcnc\n"));
}

TEST(WiringTest, TheProgramIsStartedWithThePinsThatWereChosen) {
    WiringText text = kText;
    text.own_pins = "+line=motion.program-line";
    EXPECT_THAT(WiringFor(kFour, Listing(), text),
                HasSubstr("\nloadusr /usr/bin/wavo_linuxcnc --pins +line=motion.program-line\n"));
    text.own_pins = std::string(2000, 'x');
    EXPECT_THAT(WiringFor(kFour, Listing(), text),
                HasSubstr("error: the list of pins is too long for a line of a HAL file"));
}

TEST(WiringTest, ASamplerOfSomebodyElseStaysAsItIs) {
    const HalListing hal = Listing("sampler float IN 0 sampler.0.pin.0 <== x-cmd\n");
    const std::string wiring = WiringFor(kFour, hal);
    EXPECT_THAT(wiring, Not(HasSubstr("loadrt")));
    EXPECT_THAT(wiring,
                HasSubstr("#"
                          " Another file loads sampler already, which is possible once only. "
                          "Add to its line there,\n# behind the commas of what it has:  "
                          "depth=8000 cfg=ffbs\n"));
    EXPECT_THAT(wiring, HasSubstr("net wavo-X joint.0.pos-fb => sampler.1.pin.0\n"));
    EXPECT_THAT(wiring, HasSubstr("addf sampler.1 servo-thread\n"));
}

TEST(WiringTest, OurOwnSamplerIsTakenForOurs) {
    EXPECT_EQ(FirstChannel(Listing("sampler float IN 0 sampler.0.pin.0 <== x-cmd\n"
                                   "sampler float IN 0 sampler.0.pin.1 <== wavo-vel\n")),
              0U);
}

TEST(WiringTest, ManyPinsAreSharedOutAndBeginTogether) {
    std::vector<ChosenPin> pins;
    std::string more;
    for (int i = 0; i < 22; ++i) {
        pins.push_back({"n" + std::to_string(i), "my." + std::to_string(i)});
        more += "my float OUT 0 my." + std::to_string(i) + "\n";
    }
    const std::string wiring = WiringFor(pins, Listing(more));
    EXPECT_THAT(wiring, HasSubstr("\nloadrt sampler depth=8000,8000 cfg=" + std::string(20, 'f') +
                                  "u,ffu\n"));
    EXPECT_THAT(wiring, HasSubstr("net wavo-enable sampler.0.enable sampler.1.enable\n"
                                  "sets wavo-enable 0\n"));
    EXPECT_THAT(wiring, HasSubstr("net wavo-n19 my.19 => sampler.0.pin.19\n"
                                  "net wavo-cycle motion.servo.last-period => sampler.0.pin.20\n"
                                  "net wavo-n20 my.20 => sampler.1.pin.0\n"));
    EXPECT_THAT(wiring, HasSubstr("net wavo-cycle motion.servo.last-period => sampler.1.pin.2\n"));
    EXPECT_THAT(wiring, HasSubstr("addf sampler.0 servo-thread\naddf sampler.1 servo-thread\n"
                                  "sets wavo-enable 1\n"));
}

TEST(WiringTest, APinThatIsShownTwiceIsOnOneSignal) {
    const std::string wiring =
        WiringFor({{"a", "joint.0.pos-fb"}, {"b", "joint.0.pos-fb"}}, Listing());
    EXPECT_THAT(wiring, HasSubstr("net wavo-a joint.0.pos-fb => sampler.0.pin.0\n"
                                  "net wavo-a joint.0.pos-fb => sampler.0.pin.1\n"));
}

TEST(WiringTest, SignalsOfAnEarlierWiringAreNamedAnew) {
    const HalListing hal = Listing("motmod float OUT 0 joint.0.pos-fb ==> wavo-old\n");
    EXPECT_THAT(WiringFor(kFour, hal), HasSubstr("net wavo-X joint.0.pos-fb => sampler.0.pin.0\n"));
}

TEST(WiringTest, AsManyPinsAsThereIsRoomFor) {
    std::string error;
    EXPECT_THAT(*ShareOut(std::vector<ChosenPin>(21), 0, &error), SizeIs(1));
    EXPECT_THAT(*ShareOut(std::vector<ChosenPin>(160), 0, &error), SizeIs(8));
    EXPECT_FALSE(ShareOut(std::vector<ChosenPin>(161), 0, &error));
    EXPECT_EQ(error, "too many pins: 161, there is room for 160");
    EXPECT_FALSE(ShareOut(std::vector<ChosenPin>(60), 6, &error));
    EXPECT_EQ(error, "too many pins: 60, there is room for 40");
}

TEST(WiringTest, WhatIsWiredIsCompared) {
    std::string error;
    const auto channels = *ShareOut({{"X", "joint.0.pos-fb"}, {"E", "joint.0.f-error"}}, 0, &error);
    const std::string x_on = "motmod float OUT 0 joint.0.pos-fb ==> wavo-X\n";
    const std::string pin_0 = "sampler float IN 0 sampler.0.pin.0 <== wavo-X\n";
    const std::string remedy = "; include what wavo_linuxcnc --setup prints, and start it anew";
    EXPECT_EQ(WhyNotWired(channels, Listing()), "the controller has no sampler.0" + remedy);
    EXPECT_EQ(WhyNotWired(channels, Listing(pin_0)),
              "sampler.0 has 1 columns in place of 2" + remedy);
    EXPECT_EQ(WhyNotWired(channels,
                          Listing(x_on + pin_0 + "sampler float IN 0 sampler.0.pin.1 <== x-err\n")),
              "");
    EXPECT_EQ(
        WhyNotWired(channels, Listing(x_on + pin_0 + "sampler float IN 0 sampler.0.pin.1 <== z\n")),
        "sampler.0.pin.1 is not on the signal of joint.0.f-error" + remedy);
    EXPECT_EQ(
        WhyNotWired(channels, Listing(pin_0 + "sampler float IN 0 sampler.0.pin.1 <== x-err\n")),
        "sampler.0.pin.0 is not on the signal of joint.0.pos-fb" + remedy);
    EXPECT_EQ(
        WhyNotWired(channels,
                    Listing(x_on + pin_0 + "sampler s32 IN 0 sampler.0.pin.1 <== x-err\n")),
        "the pin joint.0.f-error is of type float, the column sampler.0.pin.1 of s32" + remedy);
}

// ---- Arguments ----

TEST(LinuxcncOptionsTest, Arguments) {
    LinuxcncOptions options;
    std::string error;
    EXPECT_EQ(ParseLinuxcncOptions(std::vector<std::string>{"--setup", "a.ini", "--write"},
                                   &options, &error),
              OptionsOutcome::kRun);
    EXPECT_EQ(options.setup, "a.ini");
    EXPECT_TRUE(options.write);
    for (const char* pins : {"a=b", "+a=b,c=d", "@list", "+@list"}) {
        EXPECT_EQ(ParseLinuxcncOptions(std::vector<std::string>{"--pins", pins}, &options, &error),
                  OptionsOutcome::kRun)
            << error;
        EXPECT_EQ(options.pins, pins);
    }
}

TEST(LinuxcncOptionsTest, WrongArguments) {
    const struct {
        std::vector<std::string> arguments;
        const char* error;
    } cases[] = {
        {{"--bogus"}, "unknown argument \"--bogus\""},
        {{"--setup"}, "--setup needs a value"},
        {{"--setup="}, "--setup \"\": no file name"},
        {{"--write"}, "--write needs --setup"},
        {{"--setup", "a", "--ini", "b"}, "--setup and --ini exclude each other"},
        {{"--pins", "@"}, "--pins \"@\": no file name"},
        {{"--pins", "a"},
         "--pins \"a\": \"a\" is not NAME=PIN, with a name of letters, digits, _, - and ."},
    };
    for (const auto& wrong : cases) {
        LinuxcncOptions options;
        std::string error;
        EXPECT_EQ(ParseLinuxcncOptions(wrong.arguments, &options, &error), OptionsOutcome::kError);
        EXPECT_EQ(error, wrong.error);
    }
}

}  // namespace
}  // namespace wavo::master
