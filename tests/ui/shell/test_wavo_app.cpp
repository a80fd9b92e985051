#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include "real_prompts.h"
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
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_boxes.push_back(box);
            return BoxAnswer::kOk;
        };
    }
    ~GraphFileOfTheCommandLine() override { QDir::setCurrent(m_before); }
    [[nodiscard]] std::string Path(const char* name) const {
        return QDir::toNativeSeparators(
                   QDir(QDir::currentPath()).filePath(QString::fromLatin1(name)))
            .toStdString();
    }

    const QString m_before = QDir::currentPath();
    QTemporaryDir m_folder;
    Prompts m_prompts = testing::RealPrompts();
    std::vector<Box> m_boxes;
};

TEST_F(GraphFileOfTheCommandLine, IsTakenAsItStandsWhenItIsThere) {
    EXPECT_EQ(CWavoApp::FindGraphFile(QStringLiteral("given.ini"), m_prompts, nullptr),
              Path("given.ini"));
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(GraphFileOfTheCommandLine, IsLookedForInTheDataFolderElse) {
    EXPECT_EQ(CWavoApp::FindGraphFile(QStringLiteral("other.ini"), m_prompts, nullptr),
              Path("DATA/other.ini"));
    EXPECT_THAT(m_boxes, IsEmpty());
}

TEST_F(GraphFileOfTheCommandLine, ThatIsNowhereIsNamedAsItWasGiven) {
    EXPECT_EQ(CWavoApp::FindGraphFile(QStringLiteral("no/such.ini"), m_prompts, nullptr), "");
    EXPECT_THAT(m_boxes, ElementsAre(Box{"Can not open file [no/such.ini], not exist", "ERROR",
                                         BoxIcon::kExclamation, BoxButtons::kOk}));
}

TEST_F(GraphFileOfTheCommandLine, IsNoFolder) {
    EXPECT_EQ(CWavoApp::FindGraphFile(QStringLiteral("DATA"), m_prompts, nullptr), "");
    EXPECT_THAT(m_boxes, ElementsAre(Box{"Can not open file [DATA], not exist", "ERROR",
                                         BoxIcon::kExclamation, BoxButtons::kOk}));
}

TEST_F(GraphFileOfTheCommandLine, ThatIsNowhereIsToldOverTheFrame) {
    m_prompts.box = testing::RealPrompts().box;  // the box itself
    CMainFrame frame(m_prompts);
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
    EXPECT_EQ(CWavoApp::FindGraphFile(QStringLiteral("none.ini"), m_prompts, &frame), "");
    EXPECT_TRUE(looked);
}

TEST_F(GraphFileOfTheCommandLine, NeedNotBeNamed) {
    EXPECT_EQ(CWavoApp::FindGraphFile(QString(), m_prompts, nullptr), "");
    EXPECT_THAT(m_boxes, IsEmpty());
}

}  // namespace
}  // namespace wavo
