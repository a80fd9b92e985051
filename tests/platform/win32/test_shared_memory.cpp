// File mappings by name.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <string>
#include <utility>

#include "platform/last_error.h"
#include "platform/process.h"
#include "platform/shared_memory.h"

namespace wavo::platform {
namespace {

constexpr std::size_t kPage = 4096;

std::string NameFor(const char* what) {
    return "wavo-test-" + std::to_string(ProcessId()) + "-" + what;
}

TEST(SharedMemory, ASegmentThatDoesNotExistIsNotOpenedAndNotMade) {
    EXPECT_EQ(OpenSharedMemory(NameFor("none")), 0U);
    EXPECT_EQ(LastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(OpenSharedMemory(NameFor("none")), 0U);
}

TEST(SharedMemory, ImpossibleNamesFailWithAReason) {
    for (const std::string& name : {std::string(), std::string("a\0b", 3)}) {
        EXPECT_EQ(OpenSharedMemory(name), 0U);
        EXPECT_EQ(LastError(), ERROR_INVALID_NAME);
        EXPECT_FALSE(SharedSegment::Create(name, 10));
        EXPECT_EQ(LastError(), ERROR_INVALID_NAME);
    }
}

TEST(SharedMemory, ReaderAndPublisherSeeTheSameBytes) {
    const SharedSegment segment = SharedSegment::Create(NameFor("same"), 10000);
    ASSERT_TRUE(segment);
    EXPECT_EQ(segment.size(), 10000U);
    const MappingHandle handle = OpenSharedMemory(NameFor("same"));
    ASSERT_NE(handle, 0U);
    void* const address = MapSharedMemory(handle);
    ASSERT_NE(address, nullptr);
    EXPECT_EQ(SharedMemorySize(address, handle), 3 * kPage) << "whole pages";
    std::memcpy(static_cast<char*>(segment.data()) + 9990, "from here", 10);
    EXPECT_STREQ(static_cast<const char*>(address) + 9990, "from here");
    std::memcpy(address, "and back", 9);
    EXPECT_STREQ(static_cast<const char*>(segment.data()), "and back");
    EXPECT_TRUE(CloseSharedMemory(handle));
    std::memcpy(segment.data(), "closed", 7);
    EXPECT_STREQ(static_cast<const char*>(address), "closed") << "the mapping stays";
    EXPECT_TRUE(UnmapSharedMemory(address, 3 * kPage));
}

TEST(SharedMemory, ASegmentOfAnotherProgramOpensByItsName) {
    // As a master makes it that knows nothing of this library.
    const std::string name = NameFor("plain");
    const HANDLE mapping =
        ::CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 64, name.c_str());
    ASSERT_NE(mapping, nullptr);
    const MappingHandle handle = OpenSharedMemory(name);
    EXPECT_NE(handle, 0U);
    void* const address = MapSharedMemory(handle);
    EXPECT_EQ(SharedMemorySize(address, handle), kPage);
    EXPECT_TRUE(UnmapSharedMemory(address, kPage));
    EXPECT_TRUE(CloseSharedMemory(handle));
    ::CloseHandle(mapping);
}

TEST(SharedMemory, CallsOnNothingFail) {
    EXPECT_EQ(MapSharedMemory(0), nullptr);
    EXPECT_EQ(LastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(SharedMemorySize(nullptr, 0), 0U);
    EXPECT_FALSE(UnmapSharedMemory(nullptr, 10));
    EXPECT_FALSE(CloseSharedMemory(0));
}

TEST(SharedMemory, ASegmentOfNoOrOfMoreThanAllMemoryIsNotCreated) {
    EXPECT_FALSE(SharedSegment::Create(NameFor("size"), 0));
    EXPECT_EQ(LastError(), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(SharedSegment::Create(NameFor("size"), std::size_t{1} << 60));
    EXPECT_EQ(OpenSharedMemory(NameFor("size")), 0U) << "no name stays behind";
}

TEST(SharedMemory, TheNameGoesWithItsLastHolder) {
    SharedSegment segment = SharedSegment::Create(NameFor("gone"), 100);
    const MappingHandle handle = OpenSharedMemory(NameFor("gone"));
    segment = SharedSegment();
    const MappingHandle second = OpenSharedMemory(NameFor("gone"));
    EXPECT_NE(second, 0U) << "a reader holds it";
    EXPECT_TRUE(CloseSharedMemory(second));
    EXPECT_TRUE(CloseSharedMemory(handle));
    EXPECT_EQ(OpenSharedMemory(NameFor("gone")), 0U);
    EXPECT_EQ(RemoveLeftoverSegments(NameFor("")), 0U);
}

TEST(SharedMemory, ANameThatSomebodyStillHoldsServesAgainAllZeroWhenItIsLargeEnough) {
    SharedSegment old_segment = SharedSegment::Create(NameFor("again"), kPage);
    std::memcpy(old_segment.data(), "old", 4);
    const MappingHandle holder = OpenSharedMemory(NameFor("again"));
    old_segment = SharedSegment();
    EXPECT_FALSE(SharedSegment::Create(NameFor("again"), kPage + 1));
    EXPECT_EQ(LastError(), ERROR_ALREADY_EXISTS);
    const SharedSegment segment = SharedSegment::Create(NameFor("again"), 100);
    ASSERT_TRUE(segment);
    EXPECT_STREQ(static_cast<const char*>(segment.data()), "");
    EXPECT_TRUE(CloseSharedMemory(holder));
}

TEST(SharedMemory, ASegmentMovesWithItsName) {
    SharedSegment first = SharedSegment::Create(NameFor("moved"), 100);
    void* const data = first.data();
    SharedSegment second(std::move(first));
    EXPECT_FALSE(first);          // NOLINT(bugprone-use-after-move,*Move)
    EXPECT_EQ(first.name(), "");  // NOLINT(*Move): empty is what is promised
    SharedSegment third;
    third = std::move(second);
    EXPECT_EQ(third.data(), data);
    EXPECT_EQ(third.name(), NameFor("moved"));
}

}  // namespace
}  // namespace wavo::platform
