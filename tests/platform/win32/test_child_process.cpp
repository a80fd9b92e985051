// Programs that end with this one.
#include "platform/child_process.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <fstream>
#include <string>
#include <thread>

#include "platform/win32/handle.h"
#include "platform/win32/program_line.h"
#include "platform/win32/wide.h"
#include "support/temporary_folder.h"

namespace wavo::platform {
namespace {

using std::chrono::seconds;

constexpr seconds kLong{60};
constexpr char kProgram[] = WAVO_CHILD_PROGRAM;

std::unique_ptr<ChildProcess> Start(const std::vector<std::string>& arguments) {
    std::string error;
    auto child = ChildProcess::Start(kProgram, arguments, &error);
    EXPECT_EQ(error, "");
    return child;
}

bool IsThere(const std::string& path) {
    return std::ifstream(path).good();
}

/// A process that runs, by its number; without one when there is none.
Handle Watch(const std::string& number) {
    return Handle(::OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(std::atoi(number.c_str()))));
}
bool Ends(const Handle& process) {
    return ::WaitForSingleObject(process.get(), 60'000) == WAIT_OBJECT_0;
}

TEST(ChildProcess, WhatItSaysIsReadLineByLine) {
    const auto child = Start({"say"});
    EXPECT_EQ(child->ReadLine(kLong), "first");
    EXPECT_EQ(child->ReadLine(kLong), "second");
    EXPECT_EQ(child->ReadLine(kLong), "third") << "it has no input, so it ends";
    EXPECT_EQ(child->ReadLine(kLong), "");
    const auto silent = Start({"stay"});
    EXPECT_NE(silent->ReadLine(kLong), "");
    EXPECT_EQ(silent->ReadLine(std::chrono::milliseconds(1)), "");
    EXPECT_TRUE(silent->IsRunning());
}

TEST(ChildProcess, ItsEndIsSeen) {
    const auto child = Start({"end"});
    EXPECT_EQ(child->ReadLine(kLong), "");
    while (child->IsRunning()) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(child->IsRunning());
}

TEST(ChildProcess, WhoSaysMoreThanAnybodyReadsIsNotHeldUp) {
    const testing::TemporaryFolder folder;
    const auto child = Start({"flood", folder.File("done")});
    while (child->IsRunning()) {
        child->SkipOutput();
    }
    EXPECT_TRUE(IsThere(folder.File("done")));
}

TEST(ChildProcess, IsAskedToEndAndWaitedFor) {
    const testing::TemporaryFolder folder;
    auto child = Start({"close", folder.File("asked")});
    EXPECT_EQ(child->ReadLine(kLong), "up");
    child.reset();
    EXPECT_TRUE(IsThere(folder.File("asked")));
}

TEST(ChildProcess, WhoDoesNotWantToEndIsEnded) {
    auto child = Start({"stay"});
    const Handle process = Watch(child->ReadLine(kLong));
    ASSERT_TRUE(process);
    child.reset();
    EXPECT_TRUE(Ends(process));
}

TEST(ChildProcess, EndsWithAParentThatIsKilled) {
    const testing::TemporaryFolder folder;
    const std::string number = folder.File("number");
    std::wstring line = ProgramLine(kProgram, {"parent", number});
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION made{};
    ASSERT_NE(::CreateProcessW(Wide(kProgram).c_str(), line.data(), nullptr, nullptr, FALSE, 0,
                               nullptr, nullptr, &start, &made),
              0);
    const Handle thread(made.hThread);
    const Handle parent(made.hProcess);
    while (!IsThere(number) && ::WaitForSingleObject(parent.get(), 5) == WAIT_TIMEOUT) {
    }
    std::string told;
    std::getline(std::ifstream(number), told);
    const Handle child = Watch(told);
    EXPECT_TRUE(child) << told;
    ASSERT_NE(::TerminateProcess(parent.get(), 9), 0);
    EXPECT_TRUE(Ends(parent));
    if (child) {
        EXPECT_TRUE(Ends(child));
    }
}

TEST(ChildProcess, WhatCannotBeStartedIsToldInWords) {
    const testing::TemporaryFolder folder;
    std::string error;
    EXPECT_EQ(ChildProcess::Start(folder.File("missing.exe"), {}, &error), nullptr);
    EXPECT_NE(error, "");
}

}  // namespace
}  // namespace wavo::platform
