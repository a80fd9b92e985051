#include "ui/dialogs/work_in_steps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <functional>

#include "accessible_walk.h"
#include "dialog_driver.h"

namespace wavo {
namespace {

using tables::StepState;
using ::testing::IsEmpty;
using Ending = WorkInSteps::Ending;

/// Work of so many steps of 10 ms.
class FakeWork : public tables::SteppedWork {
 public:
    FakeWork(int steps, std::chrono::milliseconds& now) : m_steps(steps), m_now(now) {}
    StepState Step() override {
        m_now += std::chrono::milliseconds(10);
        ++m_done;
        if (m_at_step) {
            m_at_step(m_done);
        }
        return m_done < m_steps ? StepState::kWorking : m_end;
    }
    [[nodiscard]] double Part() const override {
        return static_cast<double>(m_done) / static_cast<double>(m_steps);
    }
    [[nodiscard]] const Fault& Why() const override { return m_why; }

    const int m_steps;
    std::chrono::milliseconds& m_now;
    int m_done = 0;
    StepState m_end = StepState::kDone;
    std::function<void(int)> m_at_step;
    const Fault m_why{"broken"};
};

class WorkInStepsTest : public ::testing::Test {
 protected:
    Ending Run(FakeWork& work) {
        return m_runner.Run(work, QStringLiteral("Export Part"), QStringLiteral("/data/part.mcap"),
                            &m_window);
    }
    static WorkProgress* Shown() {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (auto* const progress = dynamic_cast<WorkProgress*>(window);
                progress != nullptr && progress->isVisible()) {
                return progress;
            }
        }
        return nullptr;
    }

    QWidget m_window;
    std::chrono::milliseconds m_now{0};
    WorkInSteps m_runner{[this] { return m_now; }};
};

TEST_F(WorkInStepsTest, ShortWorkShowsNothing) {
    FakeWork work(40, m_now);
    work.m_at_step = [&](int) {
        EXPECT_EQ(Shown(), nullptr);
        EXPECT_TRUE(m_runner.IsUnderWay());
    };
    EXPECT_EQ(Run(work), Ending::kDone);
    EXPECT_FALSE(m_runner.IsUnderWay());
    FakeWork broken(3, m_now);
    broken.m_end = StepState::kFailed;
    EXPECT_EQ(Run(broken), Ending::kFailed);
}

TEST_F(WorkInStepsTest, LongWorkShowsHowFarItIs) {
    FakeWork work(200, m_now);
    work.m_at_step = [&](int step) {
        if (step == 151) {
            ASSERT_NE(Shown(), nullptr);
            EXPECT_EQ(Shown()->windowTitle(), "Export Part");
            EXPECT_EQ(Shown()->findChild<QProgressBar*>()->value(), 750);
            EXPECT_EQ(
                testing::Control<QLabel>(*Shown(), static_cast<int>(WorkProgressId::kWhat)).text(),
                "/data/part.mcap");
            EXPECT_EQ(Shown()->windowModality(), Qt::WindowModal);
            EXPECT_THAT(testing::WithoutAccessibleTexts(*Shown()), IsEmpty());
        }
    };
    EXPECT_EQ(Run(work), Ending::kDone);
    EXPECT_EQ(Shown(), nullptr);
}

TEST_F(WorkInStepsTest, TheUserMayEndIt) {
    for (const bool by_key : {false, true}) {
        FakeWork work(1000, m_now);
        work.m_at_step = [&](int step) {
            if (step == 100 && by_key) {
                QTest::keyClick(Shown(), Qt::Key_Escape);
            } else if (step == 100) {
                testing::Click(*Shown(), static_cast<int>(WorkProgressId::kCancel));
            }
        };
        EXPECT_EQ(Run(work), Ending::kCancelled);
        EXPECT_LT(work.m_done, 105);
    }
}

TEST_F(WorkInStepsTest, TheEndOfTheWindowEndsIt) {
    FakeWork work(1000, m_now);
    work.m_at_step = [&](int step) {
        if (step == 10) {
            m_runner.Cancel();
        }
    };
    EXPECT_EQ(Run(work), Ending::kCancelled);
    EXPECT_LT(work.m_done, 15);
    FakeWork next(3, m_now);
    EXPECT_EQ(Run(next), Ending::kDone) << "a cancel holds once";
}

}  // namespace
}  // namespace wavo
