// Masters that tell of themselves, with real ones: who is there already connects without being
// asked.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAction>
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "demo_master_process.h"
#include "master_link_of.h"
#include "real_prompts.h"
#include "support/mini_data.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::IsEmpty;

constexpr char kConnectedText[] = "Connected to the master process (Dorvane)";

class ComingBack : public Viewer {
 protected:
    static std::size_t Missing(const std::vector<double>& values) {
        return static_cast<std::size_t>(std::count_if(
            values.begin(), values.end(), [](double value) { return std::isnan(value); }));
    }
    /// What stands before the first missing value.
    static std::vector<double> Before(std::vector<double> values) {
        values.erase(std::find_if(values.begin(), values.end(),
                                  [](double value) { return std::isnan(value); }),
                     values.end());
        return values;
    }
};

TEST_F(ComingBack, AViewerThatWasThereFirstConnectsByItself) {
    Open({"X"});
    ASSERT_TRUE(m_frame->Action(CommandId::kConnect)->isEnabled());
    DemoMaster master({"--motion", "circle"});
    ASSERT_TRUE(WaitForMessage(kConnectedText));
    ASSERT_TRUE(WaitForLines(300));
    EXPECT_FALSE(m_frame->Action(CommandId::kConnect)->isEnabled());
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->overruns, 0U);
}

TEST_F(ComingBack, CurvesOfAMasterThatWasKilledGoOnBehindAGap) {
    Open({"X"}, 600.0);
    std::size_t held_before = 0;
    {
        DemoMaster master({"--motion", "circle"});
        ASSERT_TRUE(WaitForLines(500));
        const GraphDraw* const drawer = View().Board().Drawers()[0].get();
        master.Kill();
        ASSERT_TRUE(WaitFor([this] { return !Cycle().Source().IsPresent(); }));
        const std::vector<double> before = Held("X");
        held_before = before.size();
        EXPECT_EQ(Missing(before), 0U);
        const std::uint64_t lines = Cycle().TotalLines();
        DemoMaster again({"--motion", "circle"});
        ASSERT_TRUE(WaitForMessage(kConnectedText));
        ASSERT_TRUE(WaitForLines(lines + 500));
        const std::vector<double> held = Held("X");
        EXPECT_EQ(Before(held), before) << "nothing was wiped";
        EXPECT_GT(Missing(held), 0U) << "nothing is joined";
        EXPECT_EQ(held.size() - Missing(held), before.size() + Cycle().TotalLines() - lines);
        EXPECT_EQ(View().Board().Drawers()[0].get(), drawer) << "nothing was made anew";
        EXPECT_THAT(TakeBoxes(), IsEmpty());
        EXPECT_TRUE(again.End());
    }
    EXPECT_GT(held_before, 0U);
}

TEST_F(ComingBack, ASecondViewerWithoutAMasterDoesNotDisturbTheFirst) {
    Open({"X"});
    CMainFrame second(testing::RealPrompts());
    second.show();
    second.View().OnInitialUpdate();
    DemoMaster master({"--motion", "circle"});
    ASSERT_TRUE(WaitForLines(300));
    ASSERT_TRUE(WaitFor([&] { return second.View().Work().Values().TotalLines() >= 300; }));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    const auto totals = master.End();
    ASSERT_TRUE(totals);
    EXPECT_EQ(totals->overruns, 0U);
}

TEST_F(ComingBack, SwitchedOffItIsLeftToTheUser) {
    Open({"X"});  // which makes the settings file
    const std::string settings = View().Work().Settings().File();
    Close();
    {
        MIniData store;
        ASSERT_TRUE(store.Open(settings));
        ASSERT_TRUE(store.SetStringEntry("GENERAL", "AutoConnect", "0"));
        ASSERT_TRUE(store.Save());
    }
    Open({"X"});
    DemoMaster master({"--motion", "circle", "--wait-viewer"});
    QTest::qWait(200);
    EXPECT_FALSE(Cycle().Source().IsPresent());
    m_frame->Action(CommandId::kConnect)->trigger();
    EXPECT_TRUE(WaitForLines(100));
    Close();
    MIniData store;
    ASSERT_TRUE(store.Open(settings));
    ASSERT_TRUE(store.SetStringEntry("GENERAL", "AutoConnect", "1"));
    ASSERT_TRUE(store.Save());
}

}  // namespace
}  // namespace wavo::testing
