#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>

#include "child_process.h"
#include "platform/last_error.h"
#include "platform/shared_memory.h"

namespace wavo::platform {

using testing::ChildProcess;
using testing::NumberPipe;

namespace {

std::string NameFor(const char* what) {
    return "wavo-test-link-" + std::to_string(::getpid()) + "-" + what;
}

TEST(SharedMemoryBetweenProcesses, ALeftoverOfADeadPublisherIsReplaced) {
    const std::string name = NameFor("leftover");
    ChildProcess publisher([&](NumberPipe& pipe) {
        const SharedSegment segment = SharedSegment::Create(name, 100);
        std::memcpy(segment.data(), "left over", 10);
        pipe.Put(1);
        return static_cast<int>(pipe.Get());
    });
    publisher.pipe().Get();
    publisher.Signal(SIGKILL);
    publisher.Wait();
    const MappingHandle left = OpenSharedMemory(name);
    ASSERT_NE(left, 0U) << "a killed publisher leaves its name";
    CloseSharedMemory(left);

    SharedSegment segment = SharedSegment::Create(name, 200);
    ASSERT_TRUE(segment);
    EXPECT_EQ(static_cast<const char*>(segment.data())[0], '\0');
    segment = SharedSegment();
    EXPECT_EQ(OpenSharedMemory(name), 0U);
}

TEST(SharedMemoryBetweenProcesses, ASegmentOfAnotherUserIsRefused) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root to become another user";
    }
    const std::string name = NameFor("foreign");
    constexpr uid_t kNobody = 65534;
    ChildProcess publisher([&](NumberPipe& pipe) {
        if (::setuid(kNobody) != 0) {
            return 1;
        }
        const SharedSegment segment = SharedSegment::Create(name, 100);
        pipe.Put(segment ? 1 : 0);
        return pipe.Get() == 1 ? 0 : 1;
    });
    if (publisher.pipe().Get() != 1) {
        publisher.pipe().Put(1);
        publisher.Wait();
        GTEST_SKIP() << "other users cannot create segments on this machine";
    }
    EXPECT_EQ(OpenSharedMemory(name), 0U);
    EXPECT_EQ(LastError(), EACCES);
    publisher.pipe().Put(1);
    // The fork ends without destructors of its statics, but the segment was a local of it.
    EXPECT_EQ(publisher.Wait(), 0);
    EXPECT_EQ(OpenSharedMemory(name), 0U);
    EXPECT_EQ(LastError(), ENOENT);
}

}  // namespace

}  // namespace wavo::platform
