// The folder in which windows meet.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/message_window.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/window_folder.h"
#include "window_fixture.h"

namespace wavo::platform {

using ::testing::HasSubstr;
using testing::ScopedVariable;
using ::testing::UnorderedElementsAre;

namespace {

class WindowFolderTest : public testing::WindowTest {
 protected:
    /// The reason why no window can be made.
    static std::string Refusal() {
        std::string error;
        EXPECT_EQ(MessageWindow::Create(nullptr, &error), nullptr);
        EXPECT_FALSE(WindowExists(1));
        return error;
    }

    /// A name in the folder of a socket that listens as long as the result lives, and that is
    /// left over when it goes.
    Descriptor Listen(  // NOLINT(modernize-use-nodiscard)
        const std::string& name) const {
        Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = WindowFolderPath() + "/" + name;
        std::memcpy(address.sun_path, path.c_str(), path.size());
        EXPECT_EQ(
            ::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
            0);
        EXPECT_EQ(::listen(socket.number(), 1), 0);
        return socket;
    }

    static pid_t PidThatIsGone() {
        const pid_t child = ::fork();
        if (child == 0) {
            ::_exit(0);
        }
        ::waitpid(child, nullptr, 0);
        return child;
    }
};

TEST_F(WindowFolderTest, IsMadeForTheUserAlone) {
    const auto window = Make(nullptr);
    struct stat info {};
    ASSERT_EQ(::lstat(WindowFolderPath().c_str(), &info), 0);
    EXPECT_TRUE(S_ISDIR(info.st_mode));
    EXPECT_EQ(info.st_mode & 0777, 0700U);
}

TEST_F(WindowFolderTest, ASymbolicLinkIsRefused) {
    std::filesystem::create_directory(WindowFolderPath() + "-elsewhere");
    std::filesystem::permissions(WindowFolderPath() + "-elsewhere",
                                 std::filesystem::perms::owner_all);
    std::filesystem::create_symlink(WindowFolderPath() + "-elsewhere", WindowFolderPath());
    EXPECT_THAT(Refusal(), HasSubstr("is not a folder"));
}

TEST_F(WindowFolderTest, AFileIsRefused) {
    std::ofstream(WindowFolderPath()) << "in the way";
    EXPECT_THAT(Refusal(), HasSubstr("is not a folder"));
}

TEST_F(WindowFolderTest, AFolderThatOthersMayEnterIsRefused) {
    std::filesystem::create_directory(WindowFolderPath());
    for (const mode_t mode : {0710U, 0740U, 0701U, 0777U}) {
        ASSERT_EQ(::chmod(WindowFolderPath().c_str(), mode), 0);
        EXPECT_THAT(Refusal(), HasSubstr("is open to other users"));
    }
    ASSERT_EQ(::chmod(WindowFolderPath().c_str(), 0700), 0);
    EXPECT_NE(Make(nullptr), nullptr);
}

TEST_F(WindowFolderTest, AFolderOfAnotherUserIsRefused) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root to give a folder away";
    }
    std::filesystem::create_directory(WindowFolderPath());
    ASSERT_EQ(::chmod(WindowFolderPath().c_str(), 0700), 0);
    ASSERT_EQ(::chown(WindowFolderPath().c_str(), 65534, 65534), 0);
    EXPECT_THAT(Refusal(), HasSubstr("belongs to another user"));
}

TEST_F(WindowFolderTest, LiesInTheTemporaryFolderWithoutARuntimeFolder) {
    const std::string expected = "/tmp/wavo-" + std::to_string(::geteuid());
    for (const char* unusable : {static_cast<const char*>(nullptr), "", "relative", "/nowhere"}) {
        const ScopedVariable variable("XDG_RUNTIME_DIR", unusable);
        std::string error;
        EXPECT_EQ(WindowFolder(&error), expected);
        const auto window = Make(nullptr);
        EXPECT_TRUE(std::filesystem::is_socket(expected + "/" + std::to_string(window->handle())));
    }
}

TEST_F(WindowFolderTest, TheRuntimeFolderOfAnotherUserIsNotUsed) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root to give a folder away";
    }
    ASSERT_EQ(::chown(std::filesystem::path(WindowFolderPath()).parent_path().c_str(), 65534, 0),
              0);
    std::string error;
    EXPECT_EQ(WindowFolder(&error), "/tmp/wavo-0");
}

TEST_F(WindowFolderTest, APathThatIsTooLongForASocketIsAReason) {
    const testing::TemporaryFolder base;
    const std::string deep = base.path() + "/" + std::string(100, 'x');
    std::filesystem::create_directory(deep);
    const ScopedVariable variable("XDG_RUNTIME_DIR", deep.c_str());
    EXPECT_THAT(Refusal(), HasSubstr("cannot listen on a socket in"));
}

TEST_F(WindowFolderTest, WhatDeadProcessesLeftIsSweptAndWhatLivesStays) {
    std::filesystem::create_directory(WindowFolderPath());
    std::filesystem::permissions(WindowFolderPath(), std::filesystem::perms::owner_all);
    const std::string gone = std::to_string(PidThatIsGone());
    Listen("1001");
    Listen(".new-" + gone + "-1");
    Listen(".new-nonsense-1");
    Listen("12x");
    const Descriptor living = Listen("1002");
    const Descriptor finishing = Listen(".new-" + std::to_string(::getpid()) + "-77");
    EXPECT_FALSE(WindowExists(1001));
    EXPECT_TRUE(WindowExists(1002));

    const auto window = Make(nullptr);
    EXPECT_THAT(NamesInFolder(),
                UnorderedElementsAre("1002", ".new-" + std::to_string(::getpid()) + "-77", "12x",
                                     ".new-nonsense-1", std::to_string(window->handle())));
}

TEST_F(WindowFolderTest, AHandleThatIsTakenIsLeftToItsOwnerAndAnotherOneTried) {
    const auto owner = Make([](const Message&) { return std::int64_t{77}; });
    std::vector<WindowHandle> proposed;
    const auto propose = [&] {
        proposed.push_back(proposed.size() < 3 ? owner->handle() : owner->handle() % 1000 + 1);
        return proposed.back();
    };
    WindowHandle handle = 0;
    std::string error;
    const Descriptor listener = ListenAsWindow(WindowFolderPath(), &handle, &error, propose);
    ASSERT_TRUE(listener) << error;
    EXPECT_EQ(proposed.size(), 4U);
    EXPECT_EQ(handle, proposed.back());
    EXPECT_EQ(owner->Send(owner->handle(), {1}).result, 77);
    EXPECT_TRUE(WindowExists(owner->handle()));
    RemoveWindowName(WindowFolderPath(), handle);
}

TEST_F(WindowFolderTest, WhenEveryHandleIsTakenThatIsAReason) {
    const auto owner = Make(nullptr);
    WindowHandle handle = 0;
    std::string error;
    EXPECT_FALSE(
        ListenAsWindow(WindowFolderPath(), &handle, &error, [&] { return owner->handle(); }));
    EXPECT_THAT(error, HasSubstr("cannot name a socket in "));
    EXPECT_THAT(NamesInFolder(), UnorderedElementsAre(std::to_string(owner->handle())));
}

TEST_F(WindowFolderTest, AnUnfinishedNameOfAnEarlierProcessOfOurNumberIsNoObstacle) {
    std::filesystem::create_directory(WindowFolderPath());
    std::filesystem::permissions(WindowFolderPath(), std::filesystem::perms::owner_all);
    for (int i = 0; i < 60; ++i) {
        Listen(".new-" + std::to_string(::getpid()) + "-" + std::to_string(i));
    }
    EXPECT_NE(Make(nullptr), nullptr);
}

}  // namespace

}  // namespace wavo::platform
