#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "child_process.h"
#include "platform/process.h"

namespace wavo::platform {

using testing::ChildProcess;
using testing::NumberPipe;

namespace {

bool IsReadable(int descriptor, int timeout_ms) {
    pollfd entry{descriptor, POLLIN, 0};
    int count = -1;
    while ((count = ::poll(&entry, 1, timeout_ms)) < 0) {
    }
    return count == 1;
}

class TerminationTest : public ::testing::TestWithParam<int> {};

TEST_P(TerminationTest, IsTurnedIntoAReadableDescriptor) {
    ChildProcess child([](NumberPipe& pipe) {
        ::signal(GetParam(), SIG_DFL);
        const int descriptor = WatchTerminationRequests();
        if (descriptor < 0 || WatchTerminationRequests() != descriptor) {
            return 1;
        }
        if (TerminationRequested() || IsReadable(descriptor, 0)) {
            return 2;
        }
        pipe.Put(1);
        if (!IsReadable(descriptor, 60000)) {
            return 3;
        }
        return TerminationRequested() ? 42 : 4;
    });
    child.pipe().Get();
    child.Signal(GetParam());
    child.Signal(GetParam());
    const int status = child.Wait();
    ASSERT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 42);
}

INSTANTIATE_TEST_SUITE_P(Signals, TerminationTest, ::testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST(Termination, ASignalThatTheParentIgnoresStaysIgnored) {
    ChildProcess child([](NumberPipe& pipe) {
        ::signal(SIGHUP, SIG_IGN);
        ::signal(SIGTERM, SIG_DFL);
        const int descriptor = WatchTerminationRequests();
        ::raise(SIGHUP);
        const bool told = TerminationRequested();
        pipe.Put(1);
        IsReadable(descriptor, 60000);
        return told ? 1 : 42;
    });
    child.pipe().Get();
    child.Signal(SIGTERM);
    EXPECT_EQ(WEXITSTATUS(child.Wait()), 42);
}

TEST(Process, HasItsNumber) {
    EXPECT_EQ(ProcessId(), static_cast<std::uint32_t>(::getpid()));
}

}  // namespace

}  // namespace wavo::platform
