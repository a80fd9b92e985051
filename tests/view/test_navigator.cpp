// The bar with the whole recording: what it shows, and what mouse and keys do on it.
#include "view/navigator.h"

#include <gmock/gmock.h>

#include <QHelpEvent>
#include <QToolTip>

#include "past_fixture.h"

namespace wavo {
namespace {

class Overview : public testing::PastFixture {
 protected:
    Overview() { Give(1.0, 5); }

    [[nodiscard]] Navigator& Bar() { return m_view->Past().Overview(); }
    void Drag(int from, int to) {
        const int y = Bar().height() / 2;
        QTest::mousePress(&Bar(), Qt::LeftButton, {}, {from, y});
        const QPoint at(to, y);
        QMouseEvent move(QEvent::MouseMove, at, Bar().mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(&Bar(), &move);
        QTest::mouseRelease(&Bar(), Qt::LeftButton, {}, at);
    }
    void OpenWithGap() {
        m_lines = testing::MakeLines(2, 4000, 3);
        const std::string path = PathOf("gap.mcap");
        testing::WriteRecording(path, testing::MakeHead(2), m_lines, 0, 1000);
        ASSERT_TRUE(m_view->Past().Files().Open(path));
    }
    /// Whether a column of the bar shows a colour.
    [[nodiscard]] bool HasColor(int column, const QColor& color) {
        const QImage picture = Bar().grab().toImage();
        for (int y = 0; y < picture.height(); ++y) {
            if (picture.pixelColor(column, y) == color) {
                return true;
            }
        }
        return false;
    }
};

TEST_F(Overview, IsThereWhileARecordingIsOpenBelowTheGraphs) {
    const QRect before = m_view->Screen().GraphArea();
    EXPECT_FALSE(Bar().isVisible());
    OpenSample();
    EXPECT_TRUE(Bar().isVisible());
    EXPECT_EQ(Bar().width(), m_view->width());
    EXPECT_EQ(Bar().geometry().bottom(), m_view->height() - 1);
    EXPECT_EQ(m_view->Screen().GraphArea().bottom(), Bar().y() - 1);
    EXPECT_EQ(m_view->Screen().Picture().height(), Bar().y());
    EXPECT_TRUE(Bar().accessibleName().startsWith(QStringLiteral("Recording: 2025-08-01")))
        << Bar().accessibleName().toStdString();
    m_view->resize(700, 600);
    QCoreApplication::processEvents();
    EXPECT_EQ(Bar().width(), 700);
    m_view->Past().Execute(CommandId::kCloseRecording);
    EXPECT_FALSE(Bar().isVisible());
    m_view->resize(900, 700);
    QCoreApplication::processEvents();
    EXPECT_EQ(m_view->Screen().GraphArea(), before);
}

TEST_F(Overview, TheWindowIsDraggedAndSoAreItsBorders) {
    OpenSample();
    m_view->Past().Window().Show({1100, 2101});
    const int width = Bar().width() - 1;
    const double lines_per_pixel = 4999.0 / width;
    EXPECT_NEAR(Bar().LeftBorder(), 1000 / lines_per_pixel, 1.0);
    EXPECT_NEAR(Bar().RightBorder(), 2000 / lines_per_pixel, 1.0);

    const int middle = (Bar().LeftBorder() + Bar().RightBorder()) / 2;
    Drag(middle, middle + 100);
    EXPECT_NEAR(static_cast<double>(Seen().begin), 1100 + 100 * lines_per_pixel, 1.0);
    EXPECT_EQ(Seen().Count(), 1001);

    LineRange before = Seen();
    Drag(Bar().LeftBorder(), Bar().LeftBorder() - 50);
    EXPECT_NEAR(static_cast<double>(Seen().begin), before.begin - 50 * lines_per_pixel, 1.0);
    EXPECT_EQ(Seen().end, before.end);

    before = Seen();
    Drag(Bar().RightBorder(), Bar().RightBorder() + 70);
    EXPECT_EQ(Seen().begin, before.begin);
    EXPECT_NEAR(static_cast<double>(Seen().end), before.end + 70 * lines_per_pixel, 1.0);

    Drag(Bar().RightBorder(), 0);
    EXPECT_EQ(Seen(), (LineRange{before.begin, before.begin + SeenLines::kFewest}))
        << "borders do not pass each other";
    Drag(Bar().LeftBorder(), width + 500);
    EXPECT_EQ(Seen().Count(), SeenLines::kFewest);
}

TEST_F(Overview, ADragWhoseReleaseIsLostHasEnded) {
    OpenSample();
    m_view->Past().Window().Show({1100, 2101});
    const QPoint at((Bar().LeftBorder() + Bar().RightBorder()) / 2, 20);
    QTest::mousePress(&Bar(), Qt::LeftButton, {}, at);
    const LineRange before = Seen();
    const QPoint to = at + QPoint(100, 0);
    QMouseEvent move(QEvent::MouseMove, to, Bar().mapToGlobal(to), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(&Bar(), &move);
    EXPECT_EQ(Seen(), before);
    QTest::mouseRelease(&Bar(), Qt::LeftButton, {}, to);
}

TEST_F(Overview, DrawingTheBarTakesNothingFromTheGraphs) {
    OpenSample();
    recording::ReadingBudget& budget = m_view->Work().Recording()->Budget();
    budget.Renew(2);
    Bar().resize(Bar().width() / 2, Bar().height());  // its envelope has to be drawn anew
    Bar().grab();
    budget.Spend(0);
    EXPECT_FALSE(budget.IsSpent());
    budget.Spend(0);
    EXPECT_TRUE(budget.IsSpent()) << "nor is more left than there was";
}

TEST_F(Overview, AClickBesideTheWindowBringsItThere) {
    OpenSample();
    m_view->Past().Window().Show({1100, 2101});
    const int x = Bar().width() * 3 / 4;
    QTest::mouseClick(&Bar(), Qt::LeftButton, {}, {x, 20});
    EXPECT_NEAR((Bar().LeftBorder() + Bar().RightBorder()) / 2.0, x, 1.0);
    EXPECT_EQ(Seen().Count(), 1001);
}

TEST_F(Overview, KeysDoWhatTheMouseDoes) {
    OpenSample();
    m_view->Past().Window().Show({1100, 2101});
    QTest::keyClick(&Bar(), Qt::Key_Right);
    EXPECT_EQ(Seen(), (LineRange{1200, 2201}));
    QTest::keyClick(&Bar(), Qt::Key_Left);
    EXPECT_EQ(Seen(), (LineRange{1100, 2101}));
    QTest::keyClick(&Bar(), Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(Seen(), (LineRange{1100, 2201}));
    QTest::keyClick(&Bar(), Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(Seen(), (LineRange{990, 2201}));
    QTest::keyClick(&Bar(), Qt::Key_Up);
    EXPECT_EQ(Seen().Count(), 969);
    QTest::keyClick(&Bar(), Qt::Key_Home);
    EXPECT_EQ(Seen().begin, 100);
    QTest::keyClick(&Bar(), Qt::Key_PageDown);
    EXPECT_GT(Seen().begin, 900);
    QTest::keyClick(&Bar(), Qt::Key_End);
    EXPECT_EQ(Seen().end, 5100);
    for (int i = 0; i < 30; ++i) {
        QTest::keyClick(&Bar(), Qt::Key_Down);
        QTest::keyClick(&Bar(), Qt::Key_Left, Qt::ControlModifier);
        QTest::keyClick(&Bar(), Qt::Key_Right, Qt::ShiftModifier);
    }
    EXPECT_EQ(Seen(), (LineRange{100, 5100}));
}

TEST_F(Overview, ShowsEventsAndGaps) {
    OpenWithGap();
    EXPECT_TRUE(HasColor(Bar().ColumnOf(2500), QColor(220, 40, 40)));
    EXPECT_FALSE(HasColor(Bar().ColumnOf(1000), QColor(220, 40, 40)));
    EXPECT_TRUE(HasColor(Bar().ColumnOf(3000), QColor(230, 160, 0)));
    EXPECT_FALSE(HasColor(Bar().ColumnOf(1000), QColor(230, 160, 0)));
    m_view->Past().Window().Show({100, 200});
    EXPECT_TRUE(HasColor(Bar().ColumnOf(2500), QColor(220, 40, 40))) << "beside the window, too";
    EXPECT_TRUE(HasColor(Bar().ColumnOf(3000), QColor(230, 160, 0)));
}

TEST_F(Overview, AsManyMarksArePaintedAsThereAreColumns) {
    const std::string path = PathOf("eventful.mcap");
    constexpr std::uint64_t kPieces = 400;
    constexpr std::uint64_t kStep = 20;  // of which 10 lines are missing
    {
        auto writer = recording::RecordingWriter::Create(path, testing::MakeHead(1), std::nullopt);
        ASSERT_TRUE(writer.HasValue());
        for (std::uint64_t piece = 0; piece < kPieces; ++piece) {
            for (const char* text : {"first", "second", "third"}) {
                (*writer)->AddEvent({recording::kEventOverrun, piece * kStep, 10, text});
            }
            testing::Append(**writer, piece * kStep, testing::MakeLines(1, 10, 1));
        }
        testing::RequireNoFault((*writer)->Finish());
    }
    ASSERT_TRUE(m_view->Past().Files().Open(path));
    OpenRecording& recording = *m_view->Work().Recording();
    ASSERT_EQ(recording.Reader().Gaps().size(), kPieces - 1);
    RecordingMarks marks;
    marks.Renew(recording, recording.Lines(), 100);
    EXPECT_EQ(marks.Events().size(), 100U);
    ASSERT_EQ(marks.Gaps().size(), 1U) << "they touch";
    EXPECT_EQ(marks.Gaps()[0], (RecordingMarks::Columns{0, 99}));
    marks.Renew(recording, {0, 60}, 601);
    EXPECT_EQ(marks.Events().front(), 0);
    EXPECT_EQ(marks.Events()[1], ColumnOfLine({0, 60}, 601, 20));
    EXPECT_EQ(marks.Gaps()[0], (RecordingMarks::Columns{102, 203}));
    EXPECT_EQ(marks.Gaps()[1].first, 305);

    QHelpEvent help(QEvent::ToolTip, {300, 20}, Bar().mapToGlobal(QPoint(300, 20)));
    QCoreApplication::sendEvent(&Bar(), &help);
    const QStringList lines = QToolTip::text().split('\n');
    ASSERT_EQ(lines.size(), 11);
    EXPECT_TRUE(lines[0].startsWith("2025-08-01")) << lines[0].toStdString();
    EXPECT_EQ(lines[10], "and others: look more closely, or step through them");
    QToolTip::hideText();
}

TEST_F(Overview, TheEnvelopeIsThatOfTheSelectedCurve) {
    OpenSample();
    while (!Bar().IsExact()) {
        Bar().DrawEnvelope();
    }
    const QImage of_x = Bar().DrawEnvelope().copy();
    ASSERT_FALSE(of_x.isNull());
    WavoGraph graph = m_view->Work().Graphs().Graphs()[0];
    graph.YCoorAxName = {"Z"};
    m_view->Work().Graphs().Put(graph);
    Bar().DrawEnvelope();
    while (!Bar().IsExact()) {
        Bar().DrawEnvelope();
    }
    EXPECT_NE(Bar().DrawEnvelope(), of_x);
    graph.YCoorAxName = {"Q"};
    m_view->Work().Graphs().Put(graph);
    EXPECT_TRUE(Bar().DrawEnvelope().isNull()) << "nothing is known of it";
}

}  // namespace
}  // namespace wavo
