#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "platform/last_error.h"

namespace wavo::platform {

TEST(LastError, IsWhatTheLastFailedCallLeft) {
    SetLastError(0);
    ASSERT_EQ(::close(-1), -1);
    EXPECT_EQ(LastError(), EBADF);
}

TEST(LastError, IsKeptOverAScope) {
    SetLastError(ENOSPC);
    {
        const LastErrorKeeper keep;
        ::close(-1);
        EXPECT_EQ(LastError(), EBADF);
    }
    EXPECT_EQ(LastError(), ENOSPC);
}

TEST(LastError, HasWordsForEveryNumber) {
    EXPECT_EQ(ErrorText(ENOENT), "No such file or directory");
    for (const int number : {-1, 0, 1, 99999}) {
        const std::string text = ErrorText(number);
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(text.find('\n'), std::string::npos);
    }
}

TEST(LastError, IsNotChangedByAskingForWords) {
    SetLastError(EPERM);
    ErrorText(99999);
    EXPECT_EQ(LastError(), EPERM);
}

}  // namespace wavo::platform
