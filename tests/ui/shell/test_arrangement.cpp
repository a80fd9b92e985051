// What the user arranges: bars, recent files, places; and that it is remembered.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QImage>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QToolBar>
#include <QUrl>

#include "real_prompts.h"
#include "ui/bars/customize_dialog.h"
#include "ui/bars/recent_files.h"
#include "ui/controls/controls.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Arrangement : public ::testing::Test {
 protected:
    QTemporaryDir m_folder;
    QSettings m_settings{m_folder.filePath(QStringLiteral("app.ini")), QSettings::IniFormat};
};

TEST_F(Arrangement, OfBarsIsReadAsItWasStored) {
    BarSetup setup = DefaultBarSetup();
    setup.bars.push_back({QStringLiteral("Mine"), {32779, kSeparatorItem, 32777}});
    setup.icon_size = 48;
    setup.full_menus = false;
    setup.used_commands = {57604};
    setup.user_images = {{32779, 2}};
    SaveBarSetup(&m_settings, setup);
    EXPECT_EQ(LoadBarSetup(&m_settings), setup);
    setup.bars.pop_back();
    setup.user_images.clear();
    SaveBarSetup(&m_settings, setup);
    EXPECT_EQ(LoadBarSetup(&m_settings), setup);
}

TEST_F(Arrangement, OfAnEarlierVersionGetsTheBarsThatAreNew) {
    BarSetup setup = DefaultBarSetup();
    setup.bars.resize(1);
    SaveBarSetup(&m_settings, setup);
    m_settings.remove(QStringLiteral("KnownBars"));  // was not stored then
    EXPECT_EQ(LoadBarSetup(&m_settings), DefaultBarSetup());
    SaveBarSetup(&m_settings, setup);
    EXPECT_EQ(LoadBarSetup(&m_settings), setup) << "what the user removed stays removed";
}

TEST_F(Arrangement, OfAFirstStartIsTwoBars) {
    EXPECT_EQ(LoadBarSetup(&m_settings), DefaultBarSetup());
    EXPECT_EQ(LoadBarSetup(nullptr), DefaultBarSetup());
    ASSERT_EQ(DefaultBarSetup().bars.size(), 2U);
    EXPECT_EQ(DefaultBarSetup().bars[0].name, "Standard");
    EXPECT_EQ(DefaultBarSetup().bars[1],
              (BarContent{QStringLiteral("Recording"), {32760, 32761, 32740}}));
}

TEST_F(Arrangement, ThatMakesNoSenseIsPutRight) {
    BarSetup setup;
    setup.bars = {{QStringLiteral("A"), {1, 32779, 32779, 57616}},
                  {QStringLiteral("A"), {32777}},
                  {QString(), {32777}}};
    setup.icon_size = 17;
    setup.user_images = {{32779, -1}, {1, 1}};
    Normalize(setup);
    ASSERT_EQ(setup.bars.size(), 2U);
    EXPECT_EQ(setup.bars[0], DefaultBarSetup().bars[0]);
    EXPECT_EQ(setup.bars[1], (BarContent{QStringLiteral("A"), {32779}}));
    EXPECT_EQ(setup.icon_size, 24);
    EXPECT_THAT(setup.user_images, IsEmpty());
}

TEST_F(Arrangement, OfWindowAndBarsIsRemembered) {
    {
        CMainFrame frame(testing::RealPrompts(), &m_settings);
        frame.show();
        frame.resize(640, 480);
        BarSetup bars = frame.Bars();
        bars.icon_size = 32;
        bars.bars.push_back({QStringLiteral("Mine"), {32779}});
        frame.SetBars(bars);
        frame.addToolBar(Qt::LeftToolBarArea,
                         frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Mine")));
        frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Standard"))->hide();
        frame.statusBar()->hide();
        frame.close();
    }
    CMainFrame frame(testing::RealPrompts(), &m_settings);
    EXPECT_EQ(frame.size(), QSize(640, 480));
    EXPECT_EQ(frame.iconSize(), QSize(32, 32));
    auto* const mine = frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Mine"));
    ASSERT_NE(mine, nullptr);
    EXPECT_EQ(frame.toolBarArea(mine), Qt::LeftToolBarArea);
    EXPECT_EQ(mine->actions(), QList<QAction*>{frame.Action(CommandId::kStart)});
    EXPECT_TRUE(frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Standard"))->isHidden());
    EXPECT_TRUE(frame.statusBar()->isHidden());
    EXPECT_FALSE(frame.Action(CommandId::kStatusBar)->isChecked());
}

TEST_F(Arrangement, IsNotReadFromDamagedSettings) {
    m_settings.setValue(QStringLiteral("WindowPlace"), QByteArray("nonsense"));
    m_settings.setValue(QStringLiteral("BarPlaces"), QByteArray("nonsense"));
    m_settings.setValue(QStringLiteral("ApplicationLook"), QStringLiteral("purple"));
    m_settings.setValue(QStringLiteral("IconSize"), QStringLiteral("big"));
    const CMainFrame frame(testing::RealPrompts(), &m_settings);
    EXPECT_TRUE(frame.Action(CommandId::kLookStudio)->isChecked());
    EXPECT_EQ(frame.size(), QSize(1366, 768));
    EXPECT_EQ(frame.iconSize(), QSize(24, 24));
}

TEST_F(Arrangement, ADeletedBarGoesFromTheFrame) {
    CMainFrame frame(testing::RealPrompts(), &m_settings);
    BarSetup bars = frame.Bars();
    bars.bars.push_back({QStringLiteral("Mine"), {32779}});
    frame.SetBars(bars);
    EXPECT_NE(frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Mine")), nullptr);
    bars.bars.pop_back();
    frame.SetBars(bars);
    EXPECT_EQ(frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Mine")), nullptr);
    EXPECT_NE(frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Standard")), nullptr);
}

TEST_F(Arrangement, TheFrameFitsIntoASmallScreenWithEveryIconSize) {
    CMainFrame frame(testing::RealPrompts());
    BarSetup bars = frame.Bars();
    bars.icon_size = 48;
    frame.SetBars(bars);
    EXPECT_LE(frame.minimumSizeHint().width(), 1366 / 2);  // scaled by 2 on the smallest screen
    EXPECT_LE(frame.minimumSizeHint().height(), 768 / 2);
}

TEST_F(Arrangement, RecentFilesAreFourNewestFirst) {
    RecentFiles files(&m_settings);
    EXPECT_THAT(files.Paths(), IsEmpty());
    for (const char* path : {"/a", "/b", "/c", "/d", "/e", "/c"}) {
        files.Add(QString::fromLatin1(path));
    }
    const QStringList expected{"/c", "/e", "/d", "/b"};
    EXPECT_EQ(files.Paths(), expected);
    EXPECT_EQ(RecentFiles(&m_settings).Paths(), expected);
}

TEST_F(Arrangement, TheTextOfARecentFileIsANumberAndAShortPath) {
    const QString folder = QDir::rootPath() + QStringLiteral("graphs");
    EXPECT_EQ(RecentFiles::ItemText(0, folder + QStringLiteral("/a&b.ini"), folder), "&1 a&&b.ini");
    EXPECT_EQ(RecentFiles::ItemText(3, "/graphs/a.ini", "/"),
              "&4 " + QDir::toNativeSeparators(QStringLiteral("/graphs/a.ini")));
    const QString text = RecentFiles::ItemText(0, "/" + QString(200, u'x') + "/end.ini", "/");
    EXPECT_EQ(text.size(), 3 + 60);
    EXPECT_TRUE(text.endsWith(QDir::toNativeSeparators(QStringLiteral("x/end.ini"))));
}

TEST_F(Arrangement, AFileThatWasOpenedStandsInTheFileMenu) {
    CMainFrame frame(testing::RealPrompts(), &m_settings);
    auto* const first = frame.findChild<QAction*>(QStringLiteral("recent_file_1"));
    EXPECT_TRUE(frame.Action(CommandId::kRecentFile)->isVisible());
    EXPECT_FALSE(first->isVisible());
    Q_EMIT frame.View().News().RecentFileOpened(QStringLiteral("/graphs/mine.ini"));
    EXPECT_FALSE(frame.Action(CommandId::kRecentFile)->isVisible());
    EXPECT_TRUE(first->isVisible());
    const QString path =
        QDir::toNativeSeparators(QFileInfo(QStringLiteral("/graphs/mine.ini")).absoluteFilePath());
    EXPECT_EQ(first->text(), "&1 " + path);
    EXPECT_EQ(first->toolTip(), path);
    EXPECT_EQ(first->statusTip(), "Open this document");
}

TEST_F(Arrangement, RecordingsHaveAListOfTheirOwn) {
    CMainFrame frame(testing::RealPrompts(), &m_settings);
    auto* const first = frame.findChild<QAction*>(QStringLiteral("recent_recording_1"));
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(frame.Action(CommandId::kRecentRecording)->isVisible());
    Q_EMIT frame.View().News().RecordingOpened(QStringLiteral("/data/night.mcap"));
    EXPECT_FALSE(frame.Action(CommandId::kRecentRecording)->isVisible());
    EXPECT_TRUE(first->isVisible());
    EXPECT_EQ(first->toolTip(), "/data/night.mcap");
    EXPECT_TRUE(frame.Action(CommandId::kRecentFile)->isVisible()) << "no graph file";
    EXPECT_EQ(RecentFiles(&m_settings, QStringLiteral("RecentRecordings")).Paths(),
              QStringList{"/data/night.mcap"});
}

TEST_F(Arrangement, ARecordingThatIsDroppedIsOpened) {
    std::vector<std::string> boxes;
    Prompts prompts = testing::RealPrompts();
    prompts.box = [&boxes](QWidget*, const Box& box) {
        boxes.push_back(box.text);
        return BoxAnswer::kOk;
    };
    CMainFrame frame(prompts, &m_settings);
    const auto drop = [&frame](const QString& path) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QCoreApplication::sendEvent(&frame, &enter);
        if (enter.isAccepted()) {
            QDropEvent event({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(&frame, &event);
            QCoreApplication::processEvents();
        }
        return enter.isAccepted();
    };
    EXPECT_FALSE(drop(QStringLiteral("/graphs/mine.ini")));
    EXPECT_TRUE(drop(QStringLiteral("/missing/night.mcap")));
    ASSERT_EQ(boxes.size(), 1U) << "it was to be opened";
    EXPECT_NE(boxes[0].find("night.mcap"), std::string::npos) << boxes[0];
}

TEST_F(Arrangement, ImagesOfTheUserAreCutFromAStripAndTheirGreyIsTransparent) {
    QImage strip(16 * 3 + 5, 16, QImage::Format_RGB32);
    strip.fill(QColor(192, 192, 192));
    for (int index = 0; index < 3; ++index) {
        strip.setPixelColor(16 * index + 8, 8, QColor(200, 10 * index, 0));
    }
    const QString file = m_folder.filePath(QStringLiteral("UserImages.bmp"));
    ASSERT_TRUE(strip.save(file));
    const std::vector<QIcon> images = LoadUserImages(file);
    ASSERT_EQ(images.size(), 3U);
    const QImage last = images[2].pixmap(16, 16).toImage();
    EXPECT_EQ(last.pixelColor(8, 8), QColor(200, 20, 0));
    EXPECT_EQ(last.pixelColor(0, 0).alpha(), 0);
    EXPECT_THAT(LoadUserImages(m_folder.filePath(QStringLiteral("none.bmp"))), IsEmpty());
}

TEST_F(Arrangement, AnImageOfTheUserIsShownForACommand) {
    QWidget window;
    CommandActions actions(window, [](CommandId) {});
    QPixmap red(16, 16);
    red.fill(Qt::red);
    actions.SetUserImages({{32779, 0}, {32777, 7}}, {QIcon(red)});
    EXPECT_EQ(actions.Find(CommandId::kStart)->icon().pixmap(16, 16).toImage().pixelColor(3, 3),
              QColor(Qt::red));
    const QImage stop = actions.Find(CommandId::kStop)->icon().pixmap(16, 16).toImage();
    EXPECT_EQ(stop.pixelColor(0, 0).alpha(), 0);  // its own
}

class Customizing : public ::testing::Test {
 protected:
    void Click(customize::Control id) {
        auto* const button = FindControl<QPushButton>(m_dialog, id);
        ASSERT_TRUE(button->isEnabled()) << id;
        button->click();
    }
    void Select(customize::Control list, int row) {
        FindControl<QListWidget>(m_dialog, list)->setCurrentRow(row);
    }
    const std::vector<int>& Items(std::size_t bar) { return m_dialog.Setup().bars[bar].items; }

    BarSetup m_before{{{QStringLiteral("Standard"), {57600, 57601, 57603}}}, 24, true, {}, {}};
    CustomizeDialog m_dialog{m_before, {QIcon(QPixmap(16, 16))}};
};

TEST_F(Customizing, EveryControlHasItsRowAndAToolTip) {
    for (const ControlRow& row : customize::Controls()) {
        const QWidget* const control = FindControl(m_dialog, row.id);
        ASSERT_NE(control, nullptr) << row.id;
        EXPECT_FALSE(control->toolTip().isEmpty()) << row.id;
    }
    EXPECT_EQ(m_dialog.Setup(), m_before);
}

TEST_F(Customizing, ButtonsAreAddedRemovedAndMoved) {
    Select(customize::kButtons, 0);
    Click(customize::kSeparator);
    EXPECT_THAT(Items(0), ElementsAre(57600, kSeparatorItem, 57601, 57603));
    Click(customize::kDown);
    EXPECT_THAT(Items(0), ElementsAre(57600, 57601, kSeparatorItem, 57603));
    Click(customize::kUp);
    Click(customize::kRemove);
    EXPECT_THAT(Items(0), ElementsAre(57600, 57601, 57603));
    Select(customize::kCommands, 3);  // save as
    Select(customize::kButtons, 2);
    Click(customize::kAdd);
    Click(customize::kAdd);  // is there already
    EXPECT_THAT(Items(0), ElementsAre(57600, 57601, 57603, 57604));
}

TEST_F(Customizing, TheNameOfABarIsOneLine) {
    Click(customize::kNewBar);
    auto* const name = FindControl<QLineEdit>(m_dialog, customize::kBarName);
    name->clear();
    name->insert(QStringLiteral("My\r\nbar"));
    Q_EMIT name->editingFinished();
    EXPECT_EQ(m_dialog.Setup().bars[1].name, "My bar");
}

TEST_F(Customizing, TheTextsOfButtonsAndSeparatorsStandBelowEachOther) {
    Select(customize::kButtons, 0);
    Click(customize::kSeparator);
    const auto& list = *FindControl<QListWidget>(m_dialog, customize::kButtons);
    for (int row = 0; row < list.count(); ++row) {
        EXPECT_FALSE(list.item(row)->icon().isNull()) << row;  // takes its room
    }
}

TEST_F(Customizing, TheEndsOfTheListAreEnds) {
    Select(customize::kButtons, 0);
    EXPECT_FALSE(FindControl(m_dialog, customize::kUp)->isEnabled());
    EXPECT_TRUE(FindControl(m_dialog, customize::kDown)->isEnabled());
    Select(customize::kButtons, 2);
    EXPECT_TRUE(FindControl(m_dialog, customize::kUp)->isEnabled());
    EXPECT_FALSE(FindControl(m_dialog, customize::kDown)->isEnabled());
}

TEST_F(Customizing, BarsOfTheUserAreMadeRenamedFilledAndDeleted) {
    EXPECT_FALSE(FindControl(m_dialog, customize::kDeleteBar)->isEnabled());
    EXPECT_FALSE(FindControl(m_dialog, customize::kBarName)->isEnabled());
    Click(customize::kNewBar);
    EXPECT_EQ(m_dialog.Setup().bars[1].name, "Tool bar 2");
    EXPECT_FALSE(FindControl(m_dialog, customize::kRemove)->isEnabled());
    Select(customize::kCommands, 0);
    Click(customize::kAdd);
    EXPECT_THAT(Items(1), ElementsAre(57600));
    auto* const name = FindControl<QLineEdit>(m_dialog, customize::kBarName);
    name->setText(QStringLiteral("Standard"));  // stands already
    Q_EMIT name->editingFinished();
    EXPECT_EQ(m_dialog.Setup().bars[1].name, "Tool bar 2");
    name->setText(QStringLiteral("Mine"));
    Q_EMIT name->editingFinished();
    EXPECT_EQ(m_dialog.Setup().bars[1].name, "Mine");
    Click(customize::kDeleteBar);
    EXPECT_EQ(m_dialog.Setup(), m_before);
}

TEST_F(Customizing, ImageIconSizeAndResetAreTaken) {
    Select(customize::kButtons, 1);
    auto* const image = FindControl<QComboBox>(m_dialog, customize::kImage);
    ASSERT_TRUE(image->isEnabled());
    image->setCurrentIndex(1);
    Q_EMIT image->activated(1);
    EXPECT_EQ(m_dialog.Setup().user_images, (std::map<int, int>{{57601, 0}}));
    Select(customize::kButtons, 0);
    EXPECT_EQ(image->currentIndex(), 0);
    auto* const size = FindControl<QComboBox>(m_dialog, customize::kIconSize);
    size->setCurrentIndex(3);
    Q_EMIT size->activated(3);
    EXPECT_EQ(m_dialog.Setup().icon_size, 48);
    Click(customize::kReset);
    EXPECT_EQ(m_dialog.Setup(), DefaultBarSetup());
}

}  // namespace
}  // namespace wavo
