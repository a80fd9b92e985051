#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include "ui/dialogs/message_boxes.h"
#include "ui/shell/main_frame.h"
#include "ui/shell/wavo_app.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A folder with the files given.ini and DATA/other.ini as current folder.
class GraphFileOfTheCommandLine : public ::testing::Test {
 protected:
    GraphFileOfTheCommandLine() {
        QDir::setCurrent(m_folder.path());
        QDir().mkdir(QStringLiteral("DATA"));
        for (const char* name : {"given.ini", "DATA/other.ini"}) {
            QFile file(QString::fromLatin1(name));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        }
        SetBoxHandler([this](const Box& box) {
            m_boxes.push_back(box);
            return BoxAnswer::kOk;
        });
    }
    ~GraphFileOfTheCommandLine() override {
        SetBoxHandler(nullptr);
        QDir::setCurrent(m_before);
    }
    [[nodiscard]] std::string Path(const char* name) const {
        return QDir::toNativeSeparators(
                   QDir(QDir::currentPath()).filePath(QString::fromLatin1(name)))
            .toStdString();
    }

    const QString m_before = QDir::currentPath();
    QTemporaryDir m_folder;
    std::vector<Box> m_boxes;
};

TEST_F(GraphFileOfTheCommandLine, IsTakenAsItStandsWhenItIsThere) {
    EXPECT_EQ(CWavoApp::FindGraphFile(QStringLiteral("given.ini"), nullptr), Path("given.ini"));
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(GraphFileOfTheCommandLine, IsLookedForInTheDataFolderElse) {
    EXPECT_EQ(CWavoApp::FindGraphFile(QStringLiteral("other.ini"), nullptr),
              Path("DATA/other.ini"));
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(GraphFileOfTheCommandLine, ThatIsNowhereIsNamedAsItWasGiven) {
    EXPECT_EQ(CWavoApp::FindGraphFile(QStringLiteral("no/such.ini"), nullptr), "");
    EXPECT_THAT(m_boxes, ElementsAre(Box{"Can not open file [no/such.ini], not exist", "ERROR",
                                         BoxIcon::kExclamation, BoxButtons::kOk}));
}

TEST_F(GraphFileOfTheCommandLine, IsNoFolder) {
    EXPECT_EQ(CWavoApp::FindGraphFile(QStringLiteral("DATA"), nullptr), "");
    EXPECT_THAT(m_boxes, ElementsAre(Box{"Can not open file [DATA], not exist", "ERROR",
                                         BoxIcon::kExclamation, BoxButtons::kOk}));
}

TEST_F(GraphFileOfTheCommandLine, ThatIsNowhereIsToldOverTheFrame) {
    SetBoxHandler(nullptr);  // the box itself
    CMainFrame frame;
    frame.show();
    bool looked = false;
    QTimer::singleShot(0, &frame, [&] {
        QWidget* const box = QApplication::activeModalWidget();
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->parentWidget(), &frame);
        EXPECT_FALSE(box->windowIcon().isNull());
        looked = true;
        box->close();
    });
    EXPECT_EQ(CWavoApp::FindGraphFile(QStringLiteral("none.ini"), &frame), "");
    EXPECT_TRUE(looked);
}

TEST_F(GraphFileOfTheCommandLine, NeedNotBeNamed) {
    EXPECT_EQ(CWavoApp::FindGraphFile(QString(), nullptr), "");
    EXPECT_THAT(m_boxes, IsEmpty());
}

}  // namespace
}  // namespace wavo
