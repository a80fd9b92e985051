// Circle test, axis test and the comparison with a good run, with a master in another process that
// plays a recorded machine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTest>
#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "measure/axis_test.h"
#include "recording/recording_writer.h"
#include "ui/panes/axis_control.h"
#include "ui/panes/circle_control.h"
#include "ui/panes/reference_control.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::Contains;
using ::testing::DoubleNear;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What the figures of the recording are known to be, um; two ways of computing agree on them.
constexpr double kCircularError = 13.8858;
constexpr double kFasterError = 27.7448;  // of the third turn, at twice the feed
constexpr double kNear = 0.002;

class MachineTests : public Viewer {
 protected:
    const std::vector<std::string> m_axes{"X_cmd", "Y_cmd", "X", "Y"};
    const std::vector<std::vector<double>> m_played = ReadRecording("circle_xy_r50", m_axes);

    static WavoGraph Plane() {
        WavoGraph graph;
        graph.InitGraph(1, "Y", 0, nullptr);
        graph.XCoorType = CoorType::kAxis;
        graph.XCoorAxName = "X";
        graph.FadeOutTime = 40.0;
        for (ScaleDefinition* const scale : {&graph.XScale, &graph.YScales.front()}) {
            *scale = {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -60.0, 60.0};
        }
        return graph;
    }
    /// All lines of the recording, so many times as quickly as they were recorded.
    void Play(const char* speed = "full") {
        DemoMaster master({"--speed", speed, "--loop", "1", "--stay", "--recording",
                           RecordingPath("circle_xy_r50"), "--axes", "X_cmd,Y_cmd,X,Y",
                           "--wait-viewer"});
        View().Commands().Execute(CommandId::kConnect);
        ASSERT_TRUE(WaitForLines(m_played[0].size()));
        View().Commands().Execute(CommandId::kStop);
        const auto totals = master.End();
        ASSERT_TRUE(totals);
        EXPECT_EQ(totals->overruns, 0U);
    }
    /// The same as a recording.
    std::string Recorded() {
        recording::RecordingHead head;
        head.axis_names = m_axes;
        head.cycle_time = 0.001;
        const std::string path = m_folder.filePath(QStringLiteral("circle.mcap")).toStdString();
        auto writer = recording::RecordingWriter::Create(path, head, std::nullopt);
        EXPECT_TRUE(writer.HasValue());
        std::vector<double> lines;
        for (std::size_t i = 0; i < m_played[0].size(); ++i) {
            for (const std::vector<double>& column : m_played) {
                lines.push_back(column[i]);
            }
        }
        EXPECT_FALSE((*writer)->Append(0, lines, m_played[0].size()));
        EXPECT_FALSE((*writer)->Finish());
        return path;
    }
};

TEST_F(MachineTests, TheCircleOfTheRecordingHasItsFiguresLive) {
    OpenWith({Plane()});
    CircleControl& circle = m_frame->Circle();
    m_frame->Action(CommandId::kCircleTest)->trigger();
    std::vector<double> errors;  // of both senses
    std::vector<double> single;
    QObject::connect(&circle.Watch(), &CircleWatch::Changed, &circle.Watch(), [&] {
        const CircleOutcome* const outcome = circle.Watch().Outcome();
        for (std::size_t i = 0; outcome != nullptr && i < outcome->result.evaluations.size(); ++i) {
            const measure::CircleEvaluation& evaluation = outcome->result.evaluations[i];
            if (evaluation.bidirectional_error) {
                errors.push_back(*evaluation.bidirectional_error.value);
            }
        }
        for (std::size_t i = 0; outcome != nullptr && i < outcome->result.turns.size(); ++i) {
            single.push_back(*outcome->result.turns[i].circular_error.value);
        }
    });
    Play("20");
    circle.Watch().Finish();
    EXPECT_THAT(errors, Contains(DoubleNear(kCircularError, kNear)));
    EXPECT_THAT(single, Contains(DoubleNear(kFasterError, kNear)));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
}

TEST_F(MachineTests, TheCircleOfTheRecordingHasItsFiguresWhenItIsOpened) {
    OpenWith({Plane()});
    m_frame->Action(CommandId::kCircleTest)->trigger();
    ASSERT_TRUE(View().Past().Files().Open(Recorded()));
    QCoreApplication::processEvents();
    m_frame->Circle().Watch().Finish();
    const CircleOutcome* const outcome = m_frame->Circle().Watch().Outcome();
    ASSERT_NE(outcome, nullptr);
    ASSERT_FALSE(outcome->result.evaluations.empty());
    EXPECT_NEAR(*outcome->result.evaluations.front().bidirectional_error.value, kCircularError,
                kNear);
}

TEST_F(MachineTests, TheAxesAreTestedByWhatTheMasterSent) {
    Open({"X"});
    m_frame->Action(CommandId::kAxisTest)->trigger();
    Play();
    m_frame->Axis().Watch().Finish();
    const AxisOutcome* const outcome = m_frame->Axis().Watch().Outcome();
    ASSERT_NE(outcome, nullptr);
    ASSERT_EQ(outcome->axes.size(), 2U);
    EXPECT_EQ(outcome->axes[0].commanded, m_played[0]);
    EXPECT_EQ(outcome->axes[1].actual, m_played[3]);
    const measure::AxisResult expected =
        measure::TestAxis(m_played[0], m_played[2], 0.001, outcome->setup);
    EXPECT_EQ(*outcome->axes[0].result.following.largest.value, *expected.following.largest.value);
    EXPECT_EQ(outcome->contour.size(), m_played[0].size());
}

TEST_F(MachineTests, ARunIsLikeItsOwnRecording) {
    Open({"X", "Y"}, 40.0);
    m_frame->Action(CommandId::kReference)->trigger();
    ReferenceWatch& watch = m_frame->Reference().Watch();
    ASSERT_FALSE(watch.Choose({{{Recorded()}, {}, 0}}));
    watch.Finish();
    Play();
    watch.Finish();
    ASSERT_NE(watch.Outcome(), nullptr) << watch.Reason();
    EXPECT_THAT(watch.Outcome()->axes, ElementsAre("X", "Y"));
    EXPECT_EQ(watch.Outcome()->comparison.shift, 0);
    for (const measure::AxisComparison& axis : watch.Outcome()->comparison.axes) {
        EXPECT_TRUE(axis.compared->passed);
        EXPECT_EQ(axis.compared->worst, 0.0);
        EXPECT_EQ(axis.compared->compared, m_played[0].size());
    }
}

TEST_F(MachineTests, AGoodRunOutlivesTheMaster) {
    Open({"X", "Y"}, 40.0);
    m_frame->Action(CommandId::kReference)->trigger();
    ReferenceWatch& watch = m_frame->Reference().Watch();
    ASSERT_FALSE(watch.Choose({{{Recorded()}, {}, 0}}));
    watch.Finish();
    const ExpectAnyErrorLog expected;  // whatever the dead master's batches lead to
    {
        DemoMaster master({"--recording", RecordingPath("circle_xy_r50"), "--axes",
                           "X_cmd,Y_cmd,X,Y", "--wait-viewer"});
        View().Commands().Execute(CommandId::kConnect);
        ASSERT_TRUE(WaitForLines(300));
        master.Kill();
    }
    ASSERT_TRUE(WaitFor([this] { return !View().Work().LiveSource().IsPresent(); }));
    EXPECT_EQ(watch.Runs().size(), 1U);
    Play();
    watch.Finish();
    ASSERT_NE(watch.Outcome(), nullptr) << watch.Reason();
    for (const measure::AxisComparison& axis : watch.Outcome()->comparison.axes) {
        EXPECT_TRUE(axis.compared->passed);
        EXPECT_EQ(axis.compared->compared, m_played[0].size());
    }
}

}  // namespace
}  // namespace wavo::testing
