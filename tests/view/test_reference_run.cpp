// Good runs, taken out of recordings.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <cmath>

#include "past_fixture.h"
#include "session/reference_run.h"

namespace wavo::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsNan;

class ReferenceRuns : public ::testing::Test {
 protected:
    ReferenceRuns() {
        m_head.axis_names = {"X", "Y"};
        m_head.cycle_time = 0.5;
    }
    /// A recording of so many lines from line 100 on, whose X is the square of the line's number.
    ReferencePart Written(int lines, std::uint64_t lost = 0) {
        std::vector<std::vector<double>> values;
        for (int i = 0; i < lines; ++i) {
            values.push_back({static_cast<double>(i * i), -1.0});
        }
        const std::string path = m_folder.filePath(QStringLiteral("run.mcap")).toStdString();
        WriteRecording(path, m_head, values, 100, lost);
        ReferencePart part;
        part.recording.path = path;
        return part;
    }
    static std::shared_ptr<ReferenceRun> Read(const ReferencePart& part) {
        auto reading = ReferenceReading::Begin(part);
        EXPECT_TRUE(reading.HasValue());
        while ((*reading)->Step()) {
        }
        EXPECT_FALSE((*reading)->Step());
        return (*reading)->Run();
    }
    static std::string FaultOf(const ReferencePart& part) {
        const auto reading = ReferenceReading::Begin(part);
        return reading.HasValue() ? "no fault" : reading.Why().text;
    }

    QTemporaryDir m_folder;
    recording::RecordingHead m_head;
};

TEST_F(ReferenceRuns, HoldTheirValuesWhenTheFileIsGone) {
    const ReferencePart part = Written(3000);
    const std::shared_ptr<ReferenceRun> run = Read(part);
    ASSERT_TRUE(QFile::remove(QString::fromStdString(part.recording.path)));
    EXPECT_EQ(run->Path(), part.recording.path);
    EXPECT_THAT(run->Axes(), ElementsAre("X", "Y"));
    EXPECT_EQ(run->CycleTime(), 0.5);
    EXPECT_EQ(run->Lines(), 3000);
    EXPECT_EQ(run->ValuesOf("X")[2999], 2999.0 * 2999.0);
    EXPECT_EQ(run->ValuesOf("Y")[0], -1.0);
    EXPECT_TRUE(run->ValuesOf("Z").empty());
    EXPECT_EQ(run->StreamOf("Z", 0), nullptr);
    std::vector<double> values(2);
    run->StreamOf("X", 0)->Values(10, values);
    EXPECT_THAT(values, ElementsAre(100.0, 121.0));
    EXPECT_EQ(run->StreamOf("X", 0), run->StreamOf("X", -1));
}

TEST_F(ReferenceRuns, HaveDerivativesWhereThereAreEarlierLines) {
    const std::shared_ptr<ReferenceRun> run = Read(Written(20, 5));  // 10 lines, 5 lost, 10 lines
    EXPECT_EQ(run->Lines(), 25);
    EXPECT_THAT(run->ValuesOf("X")[12], IsNan());
    std::vector<double> velocity(25);
    run->StreamOf("X", 1)->Values(0, velocity);
    EXPECT_THAT(velocity[0], IsNan());
    EXPECT_EQ(velocity[1], 1.0 / 0.5);
    EXPECT_EQ(velocity[9], (81.0 - 64.0) / 0.5);
    EXPECT_THAT(velocity[12], IsNan());
    EXPECT_THAT(velocity[15], IsNan()) << "the lines before were lost";
    EXPECT_EQ(velocity[16], (121.0 - 100.0) / 0.5);
    std::vector<double> acceleration(3);
    run->StreamOf("X", 2)->Values(1, acceleration);
    EXPECT_THAT(acceleration[0], IsNan());
    EXPECT_EQ(acceleration[1], 2.0 / 0.25);
}

TEST_F(ReferenceRuns, MayBeAPart) {
    ReferencePart part = Written(3000);
    part.lines = {1100, 1200};
    EXPECT_EQ(Read(part)->Lines(), 100);
    EXPECT_EQ(Read(part)->ValuesOf("X")[0], 1000.0 * 1000.0);
    part.lines = {0, 150};  // it begins with line 100
    EXPECT_EQ(Read(part)->Lines(), 50);
    part.lines = {5000, 6000};
    EXPECT_THAT(FaultOf(part), HasSubstr("run.mcap: there are no lines to compare with"));
}

TEST_F(ReferenceRuns, OfTooManyLinesAreNotTaken) {
    ReferencePart part = Written(2, 2'000'000);
    EXPECT_THAT(FaultOf(part),
                HasSubstr("run.mcap: 2000002 lines are too many to compare with; open it, and take "
                          "the part that counts"));
    part.lines = {100, 20'100};
    EXPECT_EQ(Read(part)->Lines(), 20'000);
    part.recording.path += ".missing";
    EXPECT_THAT(FaultOf(part), HasSubstr(".missing"));
}

}  // namespace
}  // namespace wavo::testing
