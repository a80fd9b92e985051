#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <utility>

#include "platform/last_error.h"
#include "platform/shared_memory.h"

namespace wavo::platform {

namespace {

std::string NameFor(const char* what) {
    return "wavo-test-" + std::to_string(::getpid()) + "-" + what;
}

TEST(SharedMemory, ASegmentThatDoesNotExistIsNotOpened) {
    EXPECT_EQ(OpenSharedMemory(NameFor("none")), 0U);
    EXPECT_EQ(LastError(), ENOENT);
}

TEST(SharedMemory, OpeningNeverCreates) {
    OpenSharedMemory(NameFor("none"));
    EXPECT_EQ(::shm_open(("/" + NameFor("none")).c_str(), O_RDWR, 0), -1);
}

TEST(SharedMemory, ImpossibleNamesFailWithAReason) {
    for (const std::string& name : {std::string(), std::string("a/b"), std::string("/a"),
                                    std::string("."), std::string(".."), std::string("a\0b", 3)}) {
        EXPECT_EQ(OpenSharedMemory(name), 0U) << name;
        EXPECT_EQ(LastError(), EINVAL) << name;
        EXPECT_FALSE(SharedSegment::Create(name, 10)) << name;
        EXPECT_EQ(LastError(), EINVAL) << name;
    }
    const std::string too_long(255, 'x');
    EXPECT_EQ(OpenSharedMemory(too_long), 0U);
    EXPECT_EQ(LastError(), ENAMETOOLONG);
    EXPECT_FALSE(SharedSegment::Create(too_long, 10));
    EXPECT_EQ(LastError(), ENAMETOOLONG);
}

TEST(SharedMemory, ReaderAndPublisherSeeTheSameBytes) {
    const SharedSegment segment = SharedSegment::Create(NameFor("same"), 10000);
    ASSERT_TRUE(segment);
    EXPECT_EQ(segment.size(), 10000U);
    EXPECT_EQ(segment.name(), NameFor("same"));

    const MappingHandle handle = OpenSharedMemory(NameFor("same"));
    ASSERT_NE(handle, 0U);
    void* const address = MapSharedMemory(handle);
    ASSERT_NE(address, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(address) % 4096, 0U);
    EXPECT_EQ(SharedMemorySize(address, handle), 10000U);

    std::memcpy(static_cast<char*>(segment.data()) + 9990, "from here", 10);
    EXPECT_STREQ(static_cast<const char*>(address) + 9990, "from here");
    std::memcpy(address, "and back", 9);
    EXPECT_STREQ(static_cast<const char*>(segment.data()), "and back");

    EXPECT_TRUE(CloseSharedMemory(handle));
    std::memcpy(segment.data(), "closed", 7);
    EXPECT_STREQ(static_cast<const char*>(address), "closed") << "the mapping stays";
    EXPECT_TRUE(UnmapSharedMemory(address, 10000));
}

TEST(SharedMemory, ANewSegmentIsAllZeroAndForItsUserAlone) {
    const SharedSegment segment = SharedSegment::Create(NameFor("zero"), 5000);
    ASSERT_TRUE(segment);
    const std::string zeros(5000, '\0');
    EXPECT_EQ(std::memcmp(segment.data(), zeros.data(), zeros.size()), 0);

    const int descriptor = ::shm_open(("/" + NameFor("zero")).c_str(), O_RDONLY, 0);
    struct stat info {};
    EXPECT_EQ(::fstat(descriptor, &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600U);
    ::close(descriptor);
}

TEST(SharedMemory, CallsOnNothingFail) {
    EXPECT_EQ(MapSharedMemory(0), nullptr);
    EXPECT_EQ(LastError(), EBADF);
    EXPECT_EQ(SharedMemorySize(nullptr, 0), 0U);
    EXPECT_FALSE(UnmapSharedMemory(nullptr, 10));
    EXPECT_FALSE(CloseSharedMemory(0));
    EXPECT_FALSE(CloseSharedMemory(~MappingHandle{0}));
}

TEST(SharedMemory, AnEmptySegmentCannotBeMapped) {
    const std::string name = "/" + NameFor("empty");
    const int descriptor = ::shm_open(name.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
    ASSERT_GE(descriptor, 0);
    const MappingHandle handle = OpenSharedMemory(NameFor("empty"));
    EXPECT_NE(handle, 0U);
    EXPECT_EQ(MapSharedMemory(handle), nullptr);
    EXPECT_EQ(LastError(), EINVAL);
    CloseSharedMemory(handle);
    ::close(descriptor);
    ::shm_unlink(name.c_str());
}

TEST(SharedMemory, ASegmentOfNoOrOfMoreThanAllMemoryIsNotCreated) {
    EXPECT_FALSE(SharedSegment::Create(NameFor("size"), 0));
    EXPECT_EQ(LastError(), EINVAL);
    EXPECT_FALSE(SharedSegment::Create(NameFor("size"), std::size_t{1} << 60));
    EXPECT_NE(LastError(), 0);
    EXPECT_EQ(OpenSharedMemory(NameFor("size")), 0U) << "no name stays behind";
    EXPECT_EQ(LastError(), ENOENT);
}

TEST(SharedMemory, TheNameGoesWithThePublisherAndTheMappingStays) {
    SharedSegment segment = SharedSegment::Create(NameFor("gone"), 100);
    const MappingHandle handle = OpenSharedMemory(NameFor("gone"));
    auto* const address = static_cast<char*>(MapSharedMemory(handle));
    ASSERT_NE(address, nullptr);
    segment = SharedSegment();
    EXPECT_EQ(OpenSharedMemory(NameFor("gone")), 0U);
    address[99] = 'x';
    EXPECT_EQ(SharedMemorySize(address, handle), 100U);
    EXPECT_TRUE(CloseSharedMemory(handle));
    EXPECT_TRUE(UnmapSharedMemory(address, 100));
}

TEST(SharedMemory, ReplacingASegmentLeavesTheOldMappingToThoseWhoHoldIt) {
    SharedSegment old_segment = SharedSegment::Create(NameFor("replaced"), 100);
    const MappingHandle handle = OpenSharedMemory(NameFor("replaced"));
    auto* const address = static_cast<char*>(MapSharedMemory(handle));
    ASSERT_NE(address, nullptr);
    std::memcpy(old_segment.data(), "old", 4);

    const SharedSegment new_segment = SharedSegment::Create(NameFor("replaced"), 200);
    ASSERT_TRUE(new_segment);
    std::memcpy(new_segment.data(), "new", 4);
    EXPECT_STREQ(address, "old");
    EXPECT_EQ(SharedMemorySize(address, handle), 100U);

    const MappingHandle second = OpenSharedMemory(NameFor("replaced"));
    void* const fresh = MapSharedMemory(second);
    EXPECT_STREQ(static_cast<const char*>(fresh), "new");
    EXPECT_TRUE(UnmapSharedMemory(fresh, SharedMemorySize(fresh, second)));
    EXPECT_TRUE(CloseSharedMemory(second));
    EXPECT_TRUE(UnmapSharedMemory(address, 100));
    EXPECT_TRUE(CloseSharedMemory(handle));
}

TEST(SharedMemory, APublisherLeavesANameThatSomebodyElseTookSince) {
    SharedSegment first = SharedSegment::Create(NameFor("taken"), 100);
    const SharedSegment second = SharedSegment::Create(NameFor("taken"), 100);
    first = SharedSegment();
    const MappingHandle handle = OpenSharedMemory(NameFor("taken"));
    EXPECT_NE(handle, 0U) << "the second one's name was removed";
    CloseSharedMemory(handle);
}

TEST(SharedMemory, ASegmentMovesWithItsName) {
    SharedSegment first = SharedSegment::Create(NameFor("moved"), 100);
    void* const data = first.data();
    SharedSegment second(std::move(first));
    EXPECT_FALSE(first);          // NOLINT(bugprone-use-after-move,*Move)
    EXPECT_EQ(first.name(), "");  // NOLINT(*Move): empty is what is promised
    EXPECT_EQ(second.data(), data);
    SharedSegment third;
    third = std::move(second);
    EXPECT_EQ(third.data(), data);
    EXPECT_EQ(third.name(), NameFor("moved"));
    third = SharedSegment();
    EXPECT_EQ(OpenSharedMemory(NameFor("moved")), 0U);
}

TEST(SharedMemory, LeftoversAreRemovedByTheirPrefixAndNoOthers) {
    const SharedSegment one = SharedSegment::Create(NameFor("left-1"), 10);
    const SharedSegment two = SharedSegment::Create(NameFor("left-2"), 10);
    const SharedSegment other = SharedSegment::Create(NameFor("other"), 10);
    ASSERT_TRUE(one && two && other);
    EXPECT_EQ(RemoveLeftoverSegments(NameFor("left-")), 2U);
    EXPECT_EQ(OpenSharedMemory(one.name()), 0U);
    EXPECT_EQ(OpenSharedMemory(two.name()), 0U);
    const MappingHandle kept = OpenSharedMemory(other.name());
    EXPECT_NE(kept, 0U);
    CloseSharedMemory(kept);
    EXPECT_EQ(RemoveLeftoverSegments(NameFor("left-")), 0U);
}

TEST(SharedMemory, NoDescriptorStaysOpen) {
    const int before = ::dup(0);
    ::close(before);
    for (int i = 0; i < 10; ++i) {
        const SharedSegment segment = SharedSegment::Create(NameFor("leak"), 100);
        const MappingHandle handle = OpenSharedMemory(NameFor("leak"));
        void* const address = MapSharedMemory(handle);
        UnmapSharedMemory(address, 100);
        CloseSharedMemory(handle);
        SharedSegment::Create(NameFor("leak2"), 0);
        OpenSharedMemory(NameFor("leak3"));
    }
    const int after = ::dup(0);
    ::close(after);
    EXPECT_EQ(before, after);
}

}  // namespace

}  // namespace wavo::platform
