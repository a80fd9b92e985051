// Programs that end with this one.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "platform/child_process.h"
#include "support/temporary_folder.h"

namespace wavo::platform {
namespace {

using std::chrono::seconds;

constexpr seconds kLong{60};

std::unique_ptr<ChildProcess> Shell(const std::string& commands) {
    std::string error;
    auto child = ChildProcess::Start("/bin/sh", {"-c", commands}, &error);
    EXPECT_EQ(error, "");
    return child;
}

bool Exists(pid_t process) {
    return ::kill(process, 0) == 0;
}

void AwaitEnd(pid_t process) {
    const auto give_up = std::chrono::steady_clock::now() + kLong;
    while (Exists(process) && std::chrono::steady_clock::now() < give_up) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

TEST(ChildProcess, WhatItSaysIsReadLineByLine) {
    const auto child = Shell("echo first; echo second >&2; printf third; exec cat");
    EXPECT_EQ(child->ReadLine(kLong), "first");
    EXPECT_EQ(child->ReadLine(kLong), "second");
    EXPECT_EQ(child->ReadLine(kLong), "third") << "it has no input, so it ends";
    EXPECT_EQ(child->ReadLine(kLong), "");
    const auto silent = Shell("exec sleep 600");
    EXPECT_EQ(silent->ReadLine(std::chrono::milliseconds(1)), "");
    EXPECT_TRUE(silent->IsRunning());
}

TEST(ChildProcess, ItsEndIsSeen) {
    const auto child = Shell("exit 3");
    EXPECT_EQ(child->ReadLine(kLong), "");
    while (child->IsRunning()) {  // it has closed its output before
        std::this_thread::yield();
    }
    EXPECT_FALSE(child->IsRunning());
}

TEST(ChildProcess, WhoSaysMoreThanAnybodyReadsIsNotHeldUp) {
    const testing::TemporaryFolder folder;
    const auto child = Shell("head -c 300000 /dev/zero; touch '" + folder.File("done") + "'");
    while (child->IsRunning()) {
        child->SkipOutput();
    }
    EXPECT_TRUE(std::ifstream(folder.File("done")).good());
}

TEST(ChildProcess, IsAskedToEndAndWaitedFor) {
    const testing::TemporaryFolder folder;
    auto child = Shell("trap 'touch \"" + folder.File("asked") +
                       "\"; exit' TERM; echo; while :; do sleep 0.01; done");
    EXPECT_EQ(child->ReadLine(kLong), "");
    child.reset();
    EXPECT_TRUE(std::ifstream(folder.File("asked")).good());
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "nothing is left to be waited for";
}

TEST(ChildProcess, WhoDoesNotWantToEndIsEnded) {
    auto child = Shell("trap '' TERM; echo $$; while :; do sleep 0.01; done");
    const pid_t process = std::atoi(child->ReadLine(kLong).c_str());
    ASSERT_TRUE(Exists(process));
    child.reset();
    EXPECT_FALSE(Exists(process));
}

TEST(ChildProcess, EndsWithAParentThatIsKilled) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t parent = ::fork();
    ASSERT_GE(parent, 0);
    if (parent == 0) {
        const auto child = Shell("echo $$; exec sleep 600");
        const pid_t process = std::atoi(child->ReadLine(kLong).c_str());
        if (::write(ends[1], &process, sizeof process) == sizeof process) {
            ::pause();
        }
        ::_exit(1);
    }
    pid_t process = 0;
    ASSERT_EQ(::read(ends[0], &process, sizeof process), static_cast<ssize_t>(sizeof process));
    EXPECT_TRUE(Exists(process));
    ::kill(parent, SIGKILL);
    ::waitpid(parent, nullptr, 0);
    AwaitEnd(process);
    EXPECT_FALSE(Exists(process));
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(ChildProcess, WhatCannotBeStartedIsToldInWords) {
    const testing::TemporaryFolder folder;
    std::string error;
    EXPECT_EQ(ChildProcess::Start(folder.File("missing"), {}, &error), nullptr);
    EXPECT_EQ(error, "No such file or directory");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "nothing is left to be waited for";
}

}  // namespace
}  // namespace wavo::platform
