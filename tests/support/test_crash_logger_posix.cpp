#include <gtest/gtest.h>

#include <csignal>

namespace wavo {
namespace {

// This program has the crash logger in it, and installs it only where it is to crash.
TEST(CrashLogger, ProgramsThatDoNotInstallItGetNoHook) {
    struct sigaction action {};
    ASSERT_EQ(::sigaction(SIGABRT, nullptr, &action), 0);
    EXPECT_EQ(action.sa_handler, SIG_DFL);
}

}  // namespace
}  // namespace wavo
