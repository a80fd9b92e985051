// The demo as a child of the viewer.
#include <gmock/gmock.h>

#include <QPushButton>
#include <QToolButton>

#include "expect_errors.h"
#include "platform/message_window.h"
#include "ui/shell/first_page.h"
#include "ui/shell/first_start.h"
#include "viewer_fixture.h"

namespace wavo::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FirstStartAndDemo : public Viewer {
 protected:
    void Begin() {
        OpenWith({});
        m_frame->show();
        m_first = std::make_unique<FirstStart>(*m_frame, m_prompts, m_demo);
        ASSERT_TRUE(WaitFor([this] { return m_first->Page().isVisible(); }));
    }
    void Play() {
        for (QPushButton* const button : m_first->Page().findChildren<QPushButton*>()) {
            if (button->text() == QLatin1String("Play the Demo")) {
                QTest::mouseClick(button, Qt::LeftButton);
            }
        }
    }
    ~FirstStartAndDemo() override { m_first.reset(); }

    const DemoFiles m_demo{QStringLiteral(WAVO_DEMO_MASTER), RecordingPath("circle_xy_r50"),
                           QStringLiteral(WAVO_RECORDINGS "/../graphs/circle.ini")};
    std::unique_ptr<FirstStart> m_first;
};

TEST_F(FirstStartAndDemo, ShowsTheCircleAndEndsWithItsButton) {
    Begin();
    Play();
    ASSERT_TRUE(WaitForLines(500));
    EXPECT_THAT(TakeBoxes(), IsEmpty());
    EXPECT_TRUE(m_first->Page().isHidden());
    EXPECT_EQ(m_frame->windowTitle().toStdString(), "circle.ini - running");
    EXPECT_TRUE(View().Work().Files().IsUnnamed()) << "nothing is saved into the installation";
    ASSERT_TRUE(WaitFor([this] { return m_first->EndButton().isVisible(); }));
    // A batch that the demo has announced may be looked for when its FIFO has gone.
    const ExpectAnyErrorLog expected;
    QTest::mouseClick(&m_first->EndButton(), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([this] { return !View().Work().LiveSource().IsPresent(); }));
    ASSERT_TRUE(WaitFor([this] { return m_first->EndButton().isHidden(); }));
    EXPECT_TRUE(m_first->Page().isHidden()) << "what was seen can be looked at";
    m_frame->Action(CommandId::kNew)->trigger();
    ASSERT_TRUE(WaitFor([this] { return m_first->Page().isVisible(); }));
    Play();
    ASSERT_TRUE(WaitForLines(500)) << "as often as one likes";
}

TEST_F(FirstStartAndDemo, GoesWithTheViewer) {
    Begin();
    Play();
    ASSERT_TRUE(WaitForLines(1));
    EXPECT_GT(platform::MessageWindows().size(), 1U);
    m_first.reset();
    Close();
    EXPECT_THAT(platform::MessageWindows(), IsEmpty());
}

TEST_F(FirstStartAndDemo, AnotherMasterIsConnectedToInItsPlace) {
    Begin();
    const DemoMaster master({QStringLiteral("--axes"), QStringLiteral("X")});
    Play();
    ASSERT_TRUE(WaitForLines(1));
    EXPECT_FALSE(m_first->EndButton().isVisible());
    EXPECT_EQ(View().Work().Values().AxisNames().size(), 1U);
}

}  // namespace
}  // namespace wavo::testing
