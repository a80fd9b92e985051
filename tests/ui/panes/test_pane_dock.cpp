// A pane that docks, floats and hides at the edge.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include "ui/panes/pane_dock.h"
#include "ui/panes/pane_title.h"

namespace wavo {
namespace {

class Docked : public ::testing::Test {
 protected:
    Docked() {
        auto* const view = new QWidget(&m_frame);
        view->setFocusPolicy(Qt::StrongFocus);
        m_frame.setCentralWidget(view);
        m_frame.resize(800, 600);
        m_content = new QWidget;
        m_edit = new QLineEdit(m_content);
        auto* const layout = new QVBoxLayout(m_content);
        layout->addWidget(m_edit);
        m_dock = new PaneDock(QStringLiteral("Figures"), m_content, m_frame);
        m_frame.show();
        m_frame.activateWindow();
        m_dock->show();
        QCoreApplication::processEvents();
    }
    [[nodiscard]] EdgeStrip& Strip() {
        return *m_dock->findChild<EdgeStrip*>(QStringLiteral("edge_strip"));
    }
    QToolButton& Button(const char* name) {
        for (auto* const button : m_frame.findChildren<QToolButton*>(QLatin1String(name))) {
            if (button->isVisible()) {
                return *button;
            }
        }
        ADD_FAILURE() << name;
        return *m_frame.findChild<QToolButton*>(QLatin1String(name));
    }

    QMainWindow m_frame;
    QWidget* m_content = nullptr;
    QLineEdit* m_edit = nullptr;
    PaneDock* m_dock = nullptr;
};

TEST_F(Docked, HidesAtEachSideAndComesBack) {
    for (const Qt::DockWidgetArea side : {Qt::LeftDockWidgetArea, Qt::RightDockWidgetArea,
                                          Qt::TopDockWidgetArea, Qt::BottomDockWidgetArea}) {
        SCOPED_TRACE(side);
        m_frame.addDockWidget(side, m_dock);
        m_dock->show();
        QCoreApplication::processEvents();
        ASSERT_TRUE(m_content->isVisible());
        const int room = m_frame.centralWidget()->width() * m_frame.centralWidget()->height();
        QTest::mouseClick(&Button("pane_pin"), Qt::LeftButton);
        QCoreApplication::processEvents();
        EXPECT_TRUE(m_dock->HidesAtEdge());
        EXPECT_FALSE(m_content->isVisible());
        EXPECT_TRUE(m_dock->IsOpen());
        const bool upright = side == Qt::LeftDockWidgetArea || side == Qt::RightDockWidgetArea;
        EXPECT_EQ(upright ? m_dock->width() : m_dock->height(),
                  upright ? Strip().sizeHint().width() : Strip().sizeHint().height());
        EXPECT_GT(m_frame.centralWidget()->width() * m_frame.centralWidget()->height(), room);

        QTest::mouseClick(&Strip(), Qt::LeftButton);
        EXPECT_TRUE(m_dock->IsOut());
        EXPECT_TRUE(m_content->isVisible());
        EXPECT_EQ(QApplication::focusWidget(), m_edit);
        const QRect out = m_content->parentWidget()->geometry();
        EXPECT_TRUE(m_frame.centralWidget()->geometry().intersects(out));
        EXPECT_FALSE(m_dock->geometry().intersects(out));
        QTest::mouseClick(&Button("pane_pin"), Qt::LeftButton);
        QCoreApplication::processEvents();
        EXPECT_FALSE(m_dock->HidesAtEdge());
        EXPECT_TRUE(m_content->isVisible());
        EXPECT_EQ(m_content->parentWidget(), m_dock);
    }
}

TEST_F(Docked, GoesInWhenTheKeyboardGoesElsewhere) {
    m_dock->SetAutoHide(true);
    Strip().setFocus();
    QTest::keyClick(&Strip(), Qt::Key_Space);
    ASSERT_TRUE(m_dock->IsOut());
    m_frame.centralWidget()->setFocus();
    EXPECT_FALSE(m_dock->IsOut());
    QTest::mouseClick(&Strip(), Qt::LeftButton);
    ASSERT_TRUE(m_dock->IsOut());
    QTest::keyClick(m_edit, Qt::Key_Escape);
    EXPECT_FALSE(m_dock->IsOut());
    EXPECT_EQ(QApplication::focusWidget(), m_frame.centralWidget());
}

TEST_F(Docked, ComesOutBelowThePointerAndGoesInWhenThatLeaves) {
    m_dock->SetAutoHide(true);
    QCoreApplication::processEvents();
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QApplication::sendEvent(&Strip(), &enter);
    EXPECT_FALSE(m_dock->IsOut()) << "the pointer is where it let the pane hide";
    QCursor::setPos(QCursor::pos() + QPoint(30, 0));
    QApplication::sendEvent(&Strip(), &enter);
    ASSERT_TRUE(m_dock->IsOut());
    QCursor::setPos(m_frame.mapToGlobal(QPoint(400, 5)));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(m_content->parentWidget(), &leave);
    EXPECT_FALSE(m_dock->IsOut());
    QApplication::sendEvent(&Strip(), &enter);
    m_edit->setFocus();
    QApplication::sendEvent(m_content->parentWidget(), &leave);
    EXPECT_TRUE(m_dock->IsOut()) << "it has the keyboard";
}

TEST_F(Docked, FloatsAndClosesByItsButtons) {
    QTest::mouseClick(&Button("pane_float"), Qt::LeftButton);
    EXPECT_TRUE(m_dock->isFloating());
    EXPECT_TRUE(m_content->isVisible());
    m_dock->SetAutoHide(true);
    EXPECT_FALSE(m_dock->isFloating()) << "what floats has no edge";
    QTest::mouseClick(&Strip(), Qt::LeftButton);
    QTest::mouseClick(&Button("pane_float"), Qt::LeftButton);
    EXPECT_TRUE(m_dock->isFloating());
    EXPECT_FALSE(m_dock->HidesAtEdge());
    m_dock->setFloating(false);
    m_dock->SetAutoHide(true);
    QTest::mouseClick(&Strip(), Qt::LeftButton);
    QTest::mouseClick(&Button("pane_close"), Qt::LeftButton);
    EXPECT_FALSE(m_dock->IsOpen());
    EXPECT_FALSE(m_dock->IsOut());
    m_dock->show();
    EXPECT_TRUE(Strip().isVisible());
}

}  // namespace
}  // namespace wavo
