// The whole viewer on a source of values that is no master.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <memory>
#include <utility>
#include <vector>

#include "expect_errors.h"
#include "graph/values/ring_history.h"
#include "lines_from_memory.h"
#include "real_prompts.h"
#include "system_facts.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using testing::LinesFromMemory;

class OtherSource : public ::testing::Test {
 protected:
    OtherSource() {
        qputenv(testing::kDataHome, m_folder.path().toLocal8Bit());
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box.text);
            return BoxAnswer::kOk;
        };
        auto source = std::make_unique<LinesFromMemory>();
        m_source = source.get();
        m_view = std::make_unique<CWavoView>(m_prompts, nullptr, std::move(source));
        m_view->resize(800, 600);
        m_view->show();
        m_view->OnInitialUpdate();
        QCoreApplication::processEvents();
    }
    ~OtherSource() override {
        m_view.reset();
        qunsetenv(testing::kDataHome);
    }

    Prompts m_prompts = testing::RealPrompts();
    QTemporaryDir m_folder;
    std::vector<std::string> m_boxes;
    LinesFromMemory* m_source = nullptr;
    std::unique_ptr<CWavoView> m_view;
};

TEST_F(OtherSource, FeedsGraphsEditorAndCounters) {
    m_source->values = {1.0, 10.0, 2.0, 20.0, 3.0, 30.0};
    EXPECT_TRUE(m_source->events->BatchReady());
    EXPECT_EQ(m_source->answers, 1);
    EXPECT_EQ(m_view->Work().Values().TotalLines(), 3U);
    ASSERT_THAT(m_view->Work().Graphs().Graphs(), SizeIs(1)) << "a default graph";
    EXPECT_TRUE(m_view->Editor().IsInitialised());
    ASSERT_THAT(m_view->Board().Drawers(), SizeIs(1));
    std::vector<double> shown;
    EXPECT_TRUE(m_view->Board().Drawers()[0]->GetAxValues("X", shown));
    EXPECT_THAT(shown, ElementsAre(1.0, 2.0, 3.0));
    EXPECT_FALSE(m_view->Commands().IsEnabled(CommandId::kConnect));
    EXPECT_TRUE(m_view->Commands().IsEnabled(CommandId::kOpen));
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(OtherSource, IsAnsweredAtOnceWhileStopped) {
    m_view->Commands().Execute(CommandId::kStop);
    m_source->values = {1.0, 10.0};
    EXPECT_TRUE(m_source->events->BatchReady());
    EXPECT_EQ(m_source->answers, 1);
    EXPECT_EQ(m_view->Work().Values().Counters().lines_not_shown, 1U);
}

TEST_F(OtherSource, TakesTheSameUnseenAndShowsItAsSoonAsItIsSeen) {
    const auto give = [this](double first) {
        m_source->values.clear();
        for (int i = 0; i < 50; ++i) {
            m_source->values.insert(m_source->values.end(), {first + i, -first - i});
        }
        EXPECT_TRUE(m_source->events->BatchReady());
    };
    give(0.0);
    const QImage seen = m_view->Screen().Picture().copy();
    const int answers = m_source->answers;
    m_view->hide();
    give(5.0);
    give(300.0);
    EXPECT_EQ(m_source->answers, answers + 2) << "answered as if it were seen";
    EXPECT_EQ(m_view->Work().Values().TotalLines(), 150U);
    std::vector<double> shown;
    EXPECT_TRUE(m_view->Board().Drawers()[0]->GetAxValues("X", shown));
    EXPECT_THAT(shown, SizeIs(150));

    const QImage asked_for = m_view->Screen().Picture().copy();
    EXPECT_NE(asked_for, seen);
    give(7.0);
    m_view->show();
    QCoreApplication::processEvents();
    const QImage window = m_view->grab().toImage();
    const QRect area = m_view->Screen().GraphArea();
    EXPECT_EQ(window.copy(area).convertToFormat(QImage::Format_RGB32),
              m_view->Screen().Picture().copy(area));
    EXPECT_NE(m_view->Screen().Picture(), asked_for);

    // A graph that is drawn anew from what it holds looks the same.
    const QImage late = m_view->Screen().Picture().copy();
    m_view->Screen().DrawAndShow();
    EXPECT_EQ(m_view->Screen().Picture(), late);
}

TEST_F(OtherSource, BuffersAreAskedForTheLinesOfTheSource) {
    for (int batch = 0; batch < 3; ++batch) {
        m_source->values = {1.0 * batch, 0.0, 2.0 * batch, 0.0};
        m_source->events->BatchReady();
    }
    RingHistory history(m_view->Work().Streams().Registry().Values().front());
    EXPECT_EQ(history.Lines(), (LineRange{0, 6}));
    ColumnRow row;
    history.Columns(std::vector<std::int64_t>{0, 3, 6}, row);
    EXPECT_THAT(row.maximum, ElementsAre(1.0, 4.0));
}

TEST(Sources, AreMadeByTheirNames) {
    EXPECT_NE(MakeSource(kMasterSource), nullptr);
    EXPECT_EQ(MakeSource("moon"), nullptr);
}

}  // namespace
}  // namespace wavo
