// The command line of wavo_record.
#include "recorder/record_options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace wavo::recorder {
namespace {

OptionsOutcome Parse(const std::vector<std::string>& arguments, RecordOptions* options,
                     std::string* error) {
    return ParseRecordOptions(arguments, options, error);
}

std::string ErrorOf(const std::vector<std::string>& arguments) {
    RecordOptions options;
    std::string error;
    EXPECT_EQ(Parse(arguments, &options, &error), OptionsOutcome::kError);
    return error;
}

TEST(RecordOptionsText, AllOfThemAreTaken) {
    RecordOptions options;
    std::string error;
    ASSERT_EQ(Parse({"--graphs", "g.ini", "--out=name", "--for", "1.5h", "--before", "5s",
                     "--after", "250ms", "--repeat", "--keep", "20GB", "--split", "1h", "--quiet",
                     "--wait", "forever"},
                    &options, &error),
              OptionsOutcome::kRun)
        << error;
    EXPECT_EQ(options.graphs, "g.ini");
    EXPECT_EQ(options.out, "name");
    EXPECT_EQ(options.duration, 5400.0);
    EXPECT_EQ(options.before, 5.0);
    EXPECT_EQ(options.after, 0.25);
    EXPECT_TRUE(options.repeat);
    EXPECT_EQ(options.keep, 20'000'000'000U);
    EXPECT_EQ(options.split, 3600.0);
    EXPECT_TRUE(options.quiet);
    EXPECT_FALSE(options.json);
    EXPECT_EQ(options.wait, std::nullopt);
    options = {};
    ASSERT_EQ(Parse({"--lines", "100", "--json", "--wait=0"}, &options, &error),
              OptionsOutcome::kRun);
    EXPECT_EQ(options.lines, 100U);
    EXPECT_TRUE(options.json);
    EXPECT_EQ(options.wait, 0.0);
    EXPECT_EQ(options.out, "recording");
    options = {};
    ASSERT_EQ(Parse({"--verify", "a.mcap", "--json"}, &options, &error), OptionsOutcome::kVerify);
    EXPECT_EQ(options.verify, "a.mcap");
    EXPECT_EQ(Parse({"--help"}, &options, &error), OptionsOutcome::kHelp);
    EXPECT_EQ(Parse({"--version"}, &options, &error), OptionsOutcome::kVersion);
    options = {};
    EXPECT_EQ(Parse({}, &options, &error), OptionsOutcome::kRun);
}

TEST(RecordOptionsText, WhatIsWrongIsTold) {
    EXPECT_EQ(ErrorOf({"--bogus"}), "unknown argument \"--bogus\"");
    EXPECT_EQ(ErrorOf({"--out"}), "--out needs a value");
    EXPECT_EQ(ErrorOf({"--out="}), "--out \"\": no file name");
    EXPECT_EQ(ErrorOf({"--for", "0"}), "--for \"0\": not a time such as 90s, 5m, 1.5h or 250ms");
    EXPECT_EQ(ErrorOf({"--for", "5 s"}),
              "--for \"5 s\": not a time such as 90s, 5m, 1.5h or 250ms");
    EXPECT_EQ(ErrorOf({"--keep", "0"}), "--keep \"0\": not a size such as 20GB, 500MB or 1.5GiB");
    EXPECT_EQ(ErrorOf({"--lines", "-1"}),
              "--lines \"-1\": not a whole number from 1 to 1000000000000000");
    EXPECT_EQ(ErrorOf({"--before", "1s"}), "--before needs --graphs");
    EXPECT_EQ(ErrorOf({"--after", "1s"}), "--after needs --graphs");
    EXPECT_EQ(ErrorOf({"--repeat"}), "--repeat needs --graphs");
    EXPECT_EQ(ErrorOf({"--for", "1s", "--lines", "1"}), "--for and --lines exclude each other");
    EXPECT_EQ(ErrorOf({"--quiet", "--json"}), "--quiet and --json exclude each other");
    EXPECT_EQ(ErrorOf({"--verify", "a", "--for", "1s"}),
              "--verify goes with --json and --quiet alone");
}

TEST(RecordOptionsText, TimesAndSizesHaveUnits) {
    EXPECT_EQ(ParseDuration("90"), 90.0);
    EXPECT_EQ(ParseDuration("2m"), 120.0);
    EXPECT_EQ(ParseDuration("2min"), 120.0);
    EXPECT_EQ(ParseDuration("1d"), 86400.0);
    EXPECT_EQ(ParseDuration("0.5ms"), 0.0005);
    for (const char* bad : {"", "s", "-1s", "1w", "1e3s", "nan", "inf", "1001d", "1s "}) {
        EXPECT_EQ(ParseDuration(bad), std::nullopt) << bad;
    }
    EXPECT_EQ(ParseSize("100"), 100U);
    EXPECT_EQ(ParseSize("100B"), 100U);
    EXPECT_EQ(ParseSize("1kB"), 1000U);
    EXPECT_EQ(ParseSize("1.5GiB"), 1610612736U);
    EXPECT_EQ(ParseSize("2TB"), 2'000'000'000'000U);
    for (const char* bad : {"", "GB", "-1", "1gb", "1e30", "99999999TB"}) {
        EXPECT_EQ(ParseSize(bad), std::nullopt) << bad;
    }
}

TEST(RecordOptionsText, TheHelpNamesEachOption) {
    for (const char* option :
         {"--out", "--split", "--keep", "--for", "--lines", "--graphs", "--before", "--after",
          "--repeat", "--wait", "--quiet", "--json", "--verify", "--help", "--version"}) {
        EXPECT_THAT(RecordHelp(), ::testing::HasSubstr(option));
    }
}

}  // namespace
}  // namespace wavo::recorder
