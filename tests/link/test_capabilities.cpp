#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "expect_errors.h"
#include "fake_master_channel.h"
#include "fake_shared_memory.h"
#include "link/capabilities.h"
#include "link/wire_format.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::FakeMasterChannel;
using ::testing::IsEmpty;
using ::testing::Optional;

class Capabilities : public ::testing::Test {
 protected:
    Capabilities() { testing::ResetFakeSharedMemory(); }

    struct Axis {
        std::string name;
        double upper;
        double lower;
    };

    static void Publish(const std::vector<Axis>& axes, std::int32_t count, std::size_t size) {
        std::byte* const memory = testing::AddFakeSegment("DataModCap4711", size);
        std::memcpy(memory, &count, sizeof count);
        for (std::size_t k = 0; k < axes.size(); ++k) {
            CapabilityRecord record{};
            std::memcpy(record.axis_name, axes[k].name.data(), axes[k].name.size());
            record.upper_limit = axes[k].upper;
            record.lower_limit = axes[k].lower;
            record.velocity_limit = 400.0;
            record.acceleration_limit = 3000.0;
            record.resolution = 0.0001;
            std::memcpy(memory + CapabilityRecordOffset(k), &record, sizeof record);
        }
    }
    static void Publish(const std::vector<Axis>& axes) {
        Publish(axes, static_cast<std::int32_t>(axes.size()), CapabilityRecordOffset(axes.size()));
    }
    void Announce() {
        m_capabilities.OnCapabilitiesChanged(FakeMasterChannel::kMaster,
                                             FakeMasterChannel::kViewer);
    }

    FakeMasterChannel m_channel;
    SlaveGlobalCapabilities m_capabilities{m_channel};
};

TEST_F(Capabilities, NothingIsFetchedBeforeTheMasterAnnouncedThem) {
    Publish({{"X", 1.0, -1.0}});
    EXPECT_EQ(m_capabilities.FindAxis("X"), std::nullopt);
    EXPECT_THAT(m_channel.said, IsEmpty());
    EXPECT_THAT(testing::FakeCalls(), IsEmpty());
}

TEST_F(Capabilities, ALookupFetchesTheModuleBetweenTwoSentMessages) {
    Publish({{"X", 250.0, -50.0}, {"Y", 100.0, -100.0}});
    Announce();
    EXPECT_THAT(m_capabilities.FindAxis("Y"),
                Optional(AxisCapabilities{100.0, -100.0, 400.0, 3000.0, 0.0001}));
    EXPECT_THAT(m_channel.Take(), ElementsAre("send 815 52e 0", "send 815 52f 0"));
    EXPECT_THAT(testing::FakeCalls(), ElementsAre("open DataModCap4711", "map", "unmap", "close"));
    EXPECT_EQ(m_capabilities.FindAxis("Z"), std::nullopt);
}

TEST_F(Capabilities, EveryLookupAfterTheFirstAnnouncementFetchesAnew) {
    Publish({{"X", 1.0, -1.0}});
    Announce();
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 1.0);
    Publish({{"X", 2.0, -2.0}});
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 2.0);
    EXPECT_EQ(m_channel.said.size(), 4U);
}

TEST_F(Capabilities, AModuleThatIsNotThereEmptiesTheStoreAndIsLogged) {
    Publish({{"X", 1.0, -1.0}});
    Announce();
    EXPECT_TRUE(m_capabilities.FindAxis("X"));
    testing::RemoveFakeSegment("DataModCap4711");
    m_channel.Take();
    const ExpectErrorLog expected(
        {"SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): failed to link data module "
         "[DataModCap4711]"});
    EXPECT_EQ(m_capabilities.FindAxis("X"), std::nullopt);
    EXPECT_THAT(m_channel.Take(), ElementsAre("send 815 52e 0", "send 815 52f 0"));
}

TEST_F(Capabilities, TheModuleNumberIsPrintedSigned) {
    m_capabilities.OnCapabilitiesChanged(FakeMasterChannel::kMaster, 0xFFFFFFFE);
    const ExpectErrorLog expected(
        {"SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): failed to link data module "
         "[DataModCap-2]"});
    EXPECT_EQ(m_capabilities.FindAxis("X"), std::nullopt);
}

TEST_F(Capabilities, TheSecondRecordOfANameWins) {
    Publish({{"X", 1.0, -1.0}, {"X", 2.0, -2.0}});
    Announce();
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 2.0);
}

struct BadModule {
    std::int32_t count;
    std::size_t size;
    const char* text;
};

class HostileModule : public Capabilities, public ::testing::WithParamInterface<BadModule> {};

TEST_P(HostileModule, IsRefusedInWords) {
    const BadModule& bad = GetParam();
    Publish({}, bad.count, bad.size);
    Announce();
    const ExpectErrorLog expected({bad.text});
    EXPECT_EQ(m_capabilities.FindAxis("X"), std::nullopt);
    EXPECT_THAT(m_channel.Take(), ElementsAre("send 815 52e 0", "send 815 52f 0"));
}

#define MODULE_TEXT "SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): data module "

INSTANTIATE_TEST_SUITE_P(
    Counts, HostileModule,
    ::testing::Values(
        BadModule{-1, 300, MODULE_TEXT "[DataModCap4711] of 300 bytes cannot hold -1 records"},
        BadModule{2, 300, MODULE_TEXT "[DataModCap4711] of 300 bytes cannot hold 2 records"},
        BadModule{2147483647, 300,
                  MODULE_TEXT "[DataModCap4711] of 300 bytes cannot hold 2147483647 records"}));

TEST_F(Capabilities, OfMoreAxesThanAnyMachineHasAreReadInPart) {
    constexpr std::int32_t kCount = 2'000'000;
    Publish({{"X", 1.0, -1.0}}, kCount, CapabilityRecordOffset(kCount));
    Announce();
    const ExpectErrorLog expected(
        {MODULE_TEXT "[DataModCap4711] with 2000000 records: only 10000 are read"});
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 1.0);
}

TEST_F(Capabilities, AreAskedOfTheNextMasterOnceAnyMasterHasAnnouncedThem) {
    Publish({{"X", 1.0, -1.0}});
    Announce();
    EXPECT_TRUE(m_capabilities.FindAxis("X"));
    m_channel.Take();
    m_channel.alive = {816};
    Publish({{"X", 2.0, -2.0}});
    m_capabilities.SetMaster(816);
    EXPECT_THAT(m_channel.Take(), IsEmpty()) << "not before a lookup";
    const std::size_t calls = testing::FakeCalls().size();
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 2.0);
    // One reload for one lookup.
    EXPECT_THAT(m_channel.Take(), ElementsAre("send 816 52e 0", "send 816 52f 0"));
    EXPECT_THAT(std::vector(testing::FakeCalls().begin() + static_cast<std::ptrdiff_t>(calls),
                            testing::FakeCalls().end()),
                ElementsAre("open DataModCap4711", "map", "unmap", "close"));
    Publish({{"X", 3.0, -3.0}});
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 3.0);
    EXPECT_THAT(m_channel.Take(), ElementsAre("send 816 52e 0", "send 816 52f 0"));
}

TEST_F(Capabilities, OfTheNextMasterAreNotAskedForBeforeAnyWereAnnounced) {
    Publish({{"X", 1.0, -1.0}});
    m_capabilities.SetMaster(FakeMasterChannel::kMaster);
    m_capabilities.SetMaster(816);
    EXPECT_EQ(m_capabilities.FindAxis("X"), std::nullopt);
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    EXPECT_THAT(testing::FakeCalls(), IsEmpty());
}

TEST_F(Capabilities, ANameWithoutEndIsSkippedAndTheOthersAreKept) {
    Publish({{std::string(256, 'x'), 1.0, -1.0}, {"Y", 2.0, -2.0}});
    Announce();
    const ExpectErrorLog expected(
        {"SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): record 0 of data module "
         "[DataModCap4711] has a name without end"});
    EXPECT_EQ(m_capabilities.FindAxis("Y")->upper_limit, 2.0);
}

TEST_F(Capabilities, AMasterThatDoesNotAnswerCostsOneWaitAndWhatIsKnownStays) {
    Publish({{"X", 1.0, -1.0}});
    Announce();
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 1.0);
    m_channel.Take();
    m_channel.send_status = platform::SendStatus::kNoAnswer;
    Publish({{"X", 2.0, -2.0}});
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 1.0);
    // The end of the reading is posted: a master that wakes up finds both messages.
    EXPECT_THAT(m_channel.Take(), ElementsAre("send 815 52e 0", "post 815 52f 0"));
}

TEST_F(Capabilities, ASilentMasterIsNotAskedUntilItIsHeardOf) {
    Publish({{"X", 1.0, -1.0}});
    Announce();
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 1.0);
    m_channel.Take();
    Publish({{"X", 2.0, -2.0}});
    m_channel.silent = true;
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 1.0);
    }
    EXPECT_THAT(m_channel.Take(), IsEmpty());
    m_channel.silent = false;
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 2.0);
}

TEST_F(Capabilities, AMasterThatHangsBehindTheReadingFindsItsEndLater) {
    Publish({{"X", 1.0, -1.0}});
    Announce();
    m_channel.on_send = [this](ToMaster number, std::uint64_t) {
        m_channel.send_status = number == ToMaster::kCapabilityEnd ? platform::SendStatus::kNoAnswer
                                                                   : platform::SendStatus::kDone;
    };
    EXPECT_EQ(m_capabilities.FindAxis("X")->upper_limit, 1.0);
    EXPECT_THAT(m_channel.Take(),
                ElementsAre("send 815 52e 0", "send 815 52f 0", "post 815 52f 0"));
}

}  // namespace
}  // namespace wavo
