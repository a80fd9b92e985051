#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <thread>

#include "expect_errors.h"
#include "support/ordered_mutex.h"

namespace wavo {
namespace {

using testing::CollectReports;
using testing::ExpectErrorLog;
using ::testing::IsEmpty;

class Locks : public ::testing::Test {
 protected:
    OrderedMutex m_first{1, "first"};
    OrderedMutex m_second{2, "second"};
};

TEST_F(Locks, TakenInTheirOrderAreNotReported) {
    const CollectReports entries(diagnostics::Service::kErrorLog);
    {
        const std::lock_guard first(m_first);
        const std::lock_guard second(m_second);
        const std::lock_guard first_again(m_first);
        const std::lock_guard second_again(m_second);
    }
    const std::lock_guard second_alone(m_second);
    EXPECT_THAT(entries.Texts(), IsEmpty());
}

TEST_F(Locks, TakenInTheWrongOrderAreReportedOnceAndTaken) {
    const ExpectErrorLog expected({"OrderedMutex::lock(): the first is taken inside the second"});
    const std::lock_guard second(m_second);
    const std::lock_guard first(m_first);
    EXPECT_TRUE(m_first.IsHeld());
    const std::lock_guard first_again(m_first);
}

TEST_F(Locks, OfOnePlaceHaveNoOrder) {
    OrderedMutex other(1, "other");
    const ExpectErrorLog expected({"OrderedMutex::lock(): the other is taken inside the first"});
    const std::lock_guard first(m_first);
    const std::lock_guard second(other);
}

TEST_F(Locks, AreHeldUntilTheyWereGivenBackAsOftenAsTaken) {
    EXPECT_FALSE(m_first.IsHeld());
    {
        const std::lock_guard first(m_first);
        {
            const std::lock_guard second(m_second);
            const std::lock_guard first_again(m_first);
            EXPECT_TRUE(m_second.IsHeld());
        }
        EXPECT_TRUE(m_first.IsHeld());
        EXPECT_FALSE(m_second.IsHeld());
        bool is_held_elsewhere = true;
        std::thread([&] { is_held_elsewhere = m_first.IsHeld(); }).join();
        EXPECT_FALSE(is_held_elsewhere);
    }
    EXPECT_FALSE(m_first.IsHeld());
}

}  // namespace
}  // namespace wavo
