// Programs that are started to live on by themselves.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "platform/process.h"
#include "support/temporary_folder.h"

namespace wavo::platform {
namespace {

/// The content of a file that another program renames into its place; empty when it never comes.
std::string Await(const std::string& path) {
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!std::filesystem::exists(path) && std::chrono::steady_clock::now() < give_up) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(StartDetached, TheProgramGetsItsArgumentsWhole) {
    const testing::TemporaryFolder folder;
    std::string error;
    const std::string arguments[] = {"a b", "", "\"quoted\"", "back\\slash\\", "$HOME", "\xC3\xA4"};
    ASSERT_TRUE(StartDetached("/bin/sh",
                              {"-c",
                               "out=$1; shift; printf '<%s>' \"$@\" > \"$out.new\" && "
                               "mv \"$out.new\" \"$out\"",
                               "sh", folder.File("out"), arguments[0], arguments[1], arguments[2],
                               arguments[3], arguments[4], arguments[5]},
                              &error))
        << error;
    EXPECT_EQ(Await(folder.File("out")), "<a b><><\"quoted\"><back\\slash\\><$HOME><\xC3\xA4>");
}

TEST(StartDetached, ItIsNobodysChildAloneInItsSessionAndHasNothingOpen) {
    const testing::TemporaryFolder folder;
    const int open_here = ::dup(1);  // would be handed on
    std::string error;
    ASSERT_TRUE(StartDetached("/bin/sh",
                              {"-c",
                               "{ cut -d' ' -f6 /proc/$$/stat; cd /proc/$$/fd; for i in 0 1 2; do "
                               "readlink $i; done; ls | wc -l; } > \"$0.new\" 2>&1; "
                               "mv \"$0.new\" \"$0\"",
                               folder.File("out")},
                              &error))
        << error;
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    const std::string out = Await(folder.File("out"));
    EXPECT_NE(out.find("/dev/null"), std::string::npos) << out;
    EXPECT_EQ(out.find("socket:"), std::string::npos) << out;
    EXPECT_NE(std::atoi(out.c_str()), ::getsid(0)) << out;
    ::close(open_here);
}

TEST(StartDetached, WhatCannotBeStartedIsToldInWords) {
    const testing::TemporaryFolder folder;
    std::string error;
    EXPECT_FALSE(StartDetached(folder.File("missing"), {}, &error));
    EXPECT_EQ(error, "No such file or directory");
    std::ofstream(folder.File("no program")) << "text";
    EXPECT_FALSE(StartDetached(folder.File("no program"), {}, &error));
    EXPECT_EQ(error, "Permission denied");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "nothing is left to be waited for";
}

}  // namespace
}  // namespace wavo::platform
