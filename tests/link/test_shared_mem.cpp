#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cinttypes>

#include "expect_errors.h"
#include "fake_shared_memory.h"
#include "link/shared_mem.h"

namespace wavo {
namespace {

using diagnostics::Service;
using testing::AddFakeSegment;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::FakeCalls;
using ::testing::IsEmpty;

class SharedMem : public ::testing::Test {
 protected:
    SharedMem() { testing::ResetFakeSharedMemory(); }
    CollectReports m_faults{Service::kErrorTrace};
};

TEST_F(SharedMem, LinkingTwiceMapsOnceAndOnlyTheSecondUnlinkUnmaps) {
    const std::byte* const memory = AddFakeSegment("Data", 128);
    void* const first = MSharedMem_Link("Data");
    void* const second = MSharedMem_Link("Data");
    EXPECT_EQ(first, memory);
    EXPECT_EQ(second, memory);
    EXPECT_EQ(MSharedMem_Size(first), 128U);
    EXPECT_THAT(FakeCalls(), ElementsAre("open Data", "map"));

    EXPECT_TRUE(MSharedMem_Unlink(first));
    EXPECT_THAT(FakeCalls(), ElementsAre("open Data", "map"));
    EXPECT_TRUE(MSharedMem_Unlink(second));
    EXPECT_THAT(FakeCalls(), ElementsAre("open Data", "map", "unmap", "close"));
    EXPECT_EQ(MSharedMem_Size(first), 0U);
    EXPECT_THAT(m_faults.Texts(), IsEmpty());
}

TEST_F(SharedMem, NamesAreCaseSensitive) {
    AddFakeSegment("Data", 64);
    AddFakeSegment("data", 64);
    void* const upper = MSharedMem_Link("Data");
    void* const lower = MSharedMem_Link("data");
    EXPECT_NE(upper, lower);
    EXPECT_TRUE(MSharedMem_Unlink(upper));
    EXPECT_TRUE(MSharedMem_Unlink(lower));
}

TEST_F(SharedMem, ASegmentThatIsNotThereGivesTheSystemError) {
    EXPECT_EQ(MSharedMem_Link("Absent"), nullptr);
    EXPECT_THAT(m_faults.Texts(), ElementsAre("MSharedMem_Link() failed for 'Absent' (2)"));
}

TEST_F(SharedMem, AnEmptyNameIsRefused) {
    EXPECT_EQ(MSharedMem_Link(""), nullptr);
    EXPECT_THAT(m_faults.Texts(), ElementsAre("MSharedMem_Link(): name == \"\""));
    EXPECT_THAT(FakeCalls(), IsEmpty());
}

TEST_F(SharedMem, AFailedMappingClosesTheHandle) {
    AddFakeSegment("Data", 64);
    testing::FailNext(testing::FakeFailure::kMap, ENOMEM);
    EXPECT_EQ(MSharedMem_Link("Data"), nullptr);
    EXPECT_THAT(FakeCalls(), ElementsAre("open Data", "map", "close"));
    EXPECT_THAT(m_faults.Texts(), ElementsAre("MSharedMem_Link(): MapViewOfFile() failed (12)"));
}

TEST_F(SharedMem, UnlinkingNothingIsReported) {
    EXPECT_FALSE(MSharedMem_Unlink(nullptr));
    EXPECT_THAT(m_faults.Texts(), ElementsAre("MSharedMem_Unlink(): NULL pointer for memory"));
}

TEST_F(SharedMem, UnlinkingAnUnknownAddressChangesNothing) {
    AddFakeSegment("Data", 64);
    void* const linked = MSharedMem_Link("Data");
    int other = 0;
    EXPECT_FALSE(MSharedMem_Unlink(&other));
    char text[80];
    std::snprintf(text, sizeof text, "MSharedMem_Unlink(): no shared memory registered at %p",
                  static_cast<void*>(&other));
    EXPECT_THAT(m_faults.Texts(), ElementsAre(text));
    EXPECT_EQ(MSharedMem_Size(linked), 64U);
    EXPECT_TRUE(MSharedMem_Unlink(linked));
}

TEST_F(SharedMem, FailuresOfTheLastUnlinkAreReportedAndItSucceedsAllTheSame) {
    AddFakeSegment("Data", 64);
    void* const linked = MSharedMem_Link("Data");
    testing::FailNext(testing::FakeFailure::kUnmap, EINVAL);
    testing::FailNext(testing::FakeFailure::kClose, EBADF);
    EXPECT_TRUE(MSharedMem_Unlink(linked));
    EXPECT_THAT(m_faults.Texts(), ElementsAre("MSharedMem_Unlink(): UnmapViewOfFile() failed (22)",
                                              "MSharedMem_Destroy(): CloseHandle() failed (9)"));
    EXPECT_EQ(MSharedMem_Size(linked), 0U);
}

TEST_F(SharedMem, ARestartedMastersSegmentIsMappedAnewOnceTheOldOneWasUnlinked) {
    AddFakeSegment("Data", 64);
    void* const old_link = MSharedMem_Link("Data");
    const std::byte* const fresh = AddFakeSegment("Data", 128);
    EXPECT_EQ(MSharedMem_Link("Data"), old_link);
    EXPECT_TRUE(MSharedMem_Unlink(old_link));
    EXPECT_TRUE(MSharedMem_Unlink(old_link));
    void* const new_link = MSharedMem_Link("Data");
    EXPECT_EQ(new_link, fresh);
    EXPECT_TRUE(MSharedMem_Unlink(new_link));
}

class Registry : public ::testing::Test {
 protected:
    int m_a = 0;
    int m_b = 0;
    LinkRegistry m_registry;
    CollectReports m_faults{Service::kErrorTrace};
};

TEST_F(Registry, RefusesANullAddressAndAnEmptyName) {
    EXPECT_EQ(m_registry.SetNewLinkInfo("Data", nullptr, 1, 8), m_registry.End());
    EXPECT_EQ(m_registry.SetNewLinkInfo("", &m_a, 1, 8), m_registry.End());
    EXPECT_EQ(m_registry.FindByAddress(&m_a), m_registry.End());
}

TEST_F(Registry, ANewRecordStartsWithNoLinks) {
    const auto record = m_registry.SetNewLinkInfo("Data", &m_a, 7, 64);
    EXPECT_EQ(record->first, &m_a);
    EXPECT_EQ(record->second.name, "Data");
    EXPECT_EQ(record->second.handle, 7U);
    EXPECT_EQ(record->second.size, 64U);
    EXPECT_EQ(record->second.link_count, 0);
}

TEST_F(Registry, OtherDataForTheSameRecordAreAConflictAndChangeNothing) {
    m_registry.SetNewLinkInfo("Data", &m_a, 0x12, 64)->second.link_count = 3;
    const auto record = m_registry.SetNewLinkInfo("Data", &m_a, 0x7FFFFFFF01, 128);
    EXPECT_EQ(record->second.handle, 0x12U);
    EXPECT_EQ(record->second.size, 64U);
    EXPECT_EQ(record->second.link_count, 3);
    EXPECT_THAT(m_faults.Texts(),
                ElementsAre("SetNewLinkInfo():'Data'(128,0x7fffffff01) in conflict to "
                            "'Data'(64,0x12)"));
}

TEST_F(Registry, TheSameDataForTheSameRecordAreNoConflict) {
    m_registry.SetNewLinkInfo("Data", &m_a, 1, 64)->second.link_count = 2;
    EXPECT_EQ(m_registry.SetNewLinkInfo("Data", &m_a, 1, 64)->second.link_count, 2);
    EXPECT_THAT(m_faults.Texts(), IsEmpty());
}

TEST_F(Registry, AnotherNameAtTheAddressOverwrites) {
    m_registry.SetNewLinkInfo("Data", &m_a, 1, 64)->second.link_count = 2;
    const auto record = m_registry.SetNewLinkInfo("Other", &m_a, 2, 128);
    EXPECT_EQ(record->second.name, "Other");
    EXPECT_EQ(record->second.link_count, 0);
    EXPECT_THAT(m_faults.Texts(), IsEmpty());
}

TEST_F(Registry, TheSameNameAtAnotherAddressIsARecordOfItsOwn) {
    m_registry.SetNewLinkInfo("Data", &m_a, 1, 64);
    m_registry.SetNewLinkInfo("Data", &m_b, 2, 64);
    EXPECT_NE(m_registry.FindByAddress(&m_a), m_registry.End());
    EXPECT_NE(m_registry.FindByAddress(&m_b), m_registry.End());
    EXPECT_EQ(m_registry.FindByName("Data")->first, std::min<const void*>(&m_a, &m_b));
    EXPECT_THAT(m_faults.Texts(), IsEmpty());
}

TEST_F(Registry, DeletingAnUnknownAddressFails) {
    m_registry.SetNewLinkInfo("Data", &m_a, 1, 64);
    EXPECT_FALSE(m_registry.DeleteLinkInfo(&m_b));
    EXPECT_TRUE(m_registry.DeleteLinkInfo(&m_a));
    EXPECT_FALSE(m_registry.DeleteLinkInfo(&m_a));
}

}  // namespace
}  // namespace wavo
