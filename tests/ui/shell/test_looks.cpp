// Looks and icons: that they can be read, and told apart.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>
#include <QSettings>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QToolBar>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <set>

#include "graph/draw/frame/colors.h"
#include "real_prompts.h"
#include "seen_contrast.h"
#include "ui/bars/bar_setup.h"
#include "ui/bars/command_icons.h"
#include "ui/shell/looks.h"
#include "ui/shell/main_frame.h"

namespace wavo {
namespace {

struct TextPair {
    QPalette::ColorRole text;
    QPalette::ColorRole ground;
};

constexpr TextPair kPairs[] = {
    {QPalette::WindowText, QPalette::Window},
    {QPalette::Text, QPalette::Base},
    {QPalette::Text, QPalette::AlternateBase},
    {QPalette::ButtonText, QPalette::Button},
    {QPalette::HighlightedText, QPalette::Highlight},
    {QPalette::ToolTipText, QPalette::ToolTipBase},
    {QPalette::Link, QPalette::Base},
    {QPalette::LinkVisited, QPalette::Base},
};

class EveryLook : public ::testing::TestWithParam<Look> {};

TEST_P(EveryLook, ShowsItsTextsClearly) {
    const QPalette palette = LookPalette(GetParam());
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        for (const TextPair& pair : kPairs) {
            EXPECT_GE(
                SeenContrast(palette.color(group, pair.text), palette.color(group, pair.ground)),
                4.5)
                << pair.text << " on " << pair.ground;
        }
        EXPECT_GE(SeenContrast(palette.color(group, QPalette::PlaceholderText),
                               palette.color(group, QPalette::Base)),
                  3.0);
    }
}

TEST_P(EveryLook, ShowsWhatCannotBeUsedWeakerButReadable) {
    const QPalette palette = LookPalette(GetParam());
    for (const TextPair& pair : {kPairs[0], kPairs[1], kPairs[3]}) {
        const double disabled = SeenContrast(palette.color(QPalette::Disabled, pair.text),
                                             palette.color(QPalette::Disabled, pair.ground));
        EXPECT_GE(disabled, 2.3) << pair.text;
        EXPECT_LT(disabled, SeenContrast(palette.color(QPalette::Active, pair.text),
                                         palette.color(QPalette::Active, pair.ground)));
    }
}

TEST_P(EveryLook, ShowsTextsOnItsBarsClearly) {
    const Look& look = GetParam();
    for (const QRgb ground : {look.bar_top, look.bar_bottom}) {
        EXPECT_GE(SeenContrast(QColor(look.bar_text), QColor(ground)), 4.5);
        EXPECT_GE(SeenContrast(BarPalette(look).color(QPalette::Disabled, QPalette::ButtonText),
                               QColor(ground)),
                  2.0);
    }
    for (const QRgb ground : {look.hot_top, look.hot_bottom}) {
        EXPECT_GE(SeenContrast(QColor(look.hot_text), QColor(ground)), 4.5);
    }
}

TEST_P(EveryLook, HasBarsAndWindowsOfOneKindSoThatIconsShowOnBoth) {
    const Look& look = GetParam();
    const bool dark = QColor(look.window).lightness() < 128;
    EXPECT_EQ(QColor(look.bar_top).lightness() < 128, dark);
    EXPECT_EQ(QColor(look.bar_bottom).lightness() < 128, dark);
}

/// The part of a widget's left edge that stands out most from the window around it.
double OutlineContrast(QWidget& widget, const Look& look) {
    widget.resize(60, 24);
    widget.ensurePolished();
    const QImage picture = widget.grab().toImage();
    double most = 1.0;
    for (int x = 0; x < 4; ++x) {
        most = std::max(most, SeenContrast(picture.pixelColor(x, 12), QColor(look.window)));
    }
    return most;
}

TEST_P(EveryLook, OutlinesWhatCanBeCheckedAndTyped) {
    const Look& look = GetParam();
    ApplyLook(look);
    QRadioButton radio;
    QCheckBox check;
    QLineEdit edit;
    for (QWidget* const widget : {static_cast<QWidget*>(&radio), static_cast<QWidget*>(&check),
                                  static_cast<QWidget*>(&edit)}) {
        EXPECT_GE(OutlineContrast(*widget, look), 1.5) << widget->metaObject()->className();
    }
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
}

TEST_P(EveryLook, IsChosenShownAndRemembered) {
    const QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("app.ini")), QSettings::IniFormat);
    const CommandId id = GetParam().id;
    {
        CMainFrame frame(testing::RealPrompts(), &settings);
        frame.show();
        frame.Action(id)->trigger();
        QCoreApplication::processEvents();  // the windows take the colours over
        EXPECT_EQ(settings.value(QStringLiteral("ApplicationLook")).toInt(), static_cast<int>(id));
        EXPECT_EQ(QApplication::palette().color(QPalette::Window), QColor(GetParam().window));
        EXPECT_EQ(frame.palette().color(QPalette::WindowText), QColor(GetParam().text));
        EXPECT_EQ(frame.menuBar()->palette().color(QPalette::ButtonText),
                  QColor(GetParam().bar_text));
        EXPECT_EQ(frame.statusBar()->palette().color(QPalette::WindowText),
                  QColor(GetParam().bar_text));
    }
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
    CMainFrame again(testing::RealPrompts(), &settings);
    again.show();
    QCoreApplication::processEvents();
    EXPECT_EQ(again.palette().color(QPalette::Window), QColor(GetParam().window));
    EXPECT_EQ(again.menuBar()->palette().color(QPalette::ButtonText), QColor(GetParam().bar_text));
    for (const Look& look : Looks()) {
        EXPECT_EQ(again.Action(look.id)->isChecked(), look.id == id);
    }
}

TEST_P(EveryLook, SeparatesTheItemsOfItsMenus) {
    ApplyLook(GetParam());
    QMenu menu;
    menu.addAction(QStringLiteral("above"));
    QAction* const separator = menu.addSeparator();
    menu.addAction(QStringLiteral("below"));
    menu.popup(QPoint(0, 0));
    const QImage picture = menu.grab(menu.actionGeometry(separator)).toImage();
    double most = 1.0;
    for (int y = 0; y < picture.height(); ++y) {
        most = std::max(most, Contrast(picture.pixelColor(picture.width() / 2, y),
                                       menu.palette().color(QPalette::Base)));
    }
    EXPECT_GE(most, 1.3);
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
}

/// The most that two pixels beside each other differ in a row of a picture, its edges left out.
int SharpestStep(const QImage& picture, int row) {
    int most = 0;
    for (int x = 2; x + 3 < picture.width(); ++x) {
        const QColor a = picture.pixelColor(x, row);
        const QColor b = picture.pixelColor(x + 1, row);
        most = std::max({most, std::abs(a.red() - b.red()), std::abs(a.green() - b.green()),
                         std::abs(a.blue() - b.blue())});
    }
    return most;
}

TEST_P(EveryLook, PaintsBarsOnTheSidesWithoutAnEdgeThroughTheirMiddle) {
    CMainFrame frame(testing::RealPrompts());
    frame.resize(700, 700);
    frame.Action(GetParam().id)->trigger();
    auto* const bar = frame.findChild<QToolBar*>(QStringLiteral("tool_bar_Standard"));
    for (const Qt::ToolBarArea area : {Qt::LeftToolBarArea, Qt::RightToolBarArea}) {
        frame.addToolBar(area, bar);
        frame.show();
        QCoreApplication::processEvents();
        const QImage picture = bar->grab().toImage();
        ASSERT_GT(picture.height(), picture.width());
        EXPECT_LE(SharpestStep(picture, picture.height() - 20), 8);
    }
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
}

INSTANTIATE_TEST_SUITE_P(Looks, EveryLook, ::testing::ValuesIn(Looks().begin(), Looks().end()),
                         [](const auto& info) {
                             return "Number" + std::to_string(static_cast<int>(info.param.id));
                         });

TEST(Looks, AreTheNumbers210To218AndTheDefaultIs214) {
    int expected = 210;
    for (const Look& look : Looks()) {
        EXPECT_EQ(static_cast<int>(look.id), expected++);
    }
    EXPECT_EQ(expected, 219);
    EXPECT_EQ(FindLook(0).id, CommandId::kLookStudio);
    EXPECT_EQ(static_cast<int>(kDefaultLook), 214);
}

TEST(Looks, PaintTheFrameEachInItsOwnWay) {
    CMainFrame frame(testing::RealPrompts());
    frame.resize(500, 300);
    frame.show();
    std::vector<QImage> pictures;
    for (const Look& look : Looks()) {
        frame.Action(look.id)->trigger();
        pictures.push_back(frame.grab(QRect(0, 0, 500, 60)).toImage());
    }
    for (std::size_t a = 0; a < pictures.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b) {
            int different = 0;
            for (int y = 0; y < pictures[a].height(); ++y) {
                for (int x = 0; x < pictures[a].width(); ++x) {
                    different += pictures[a].pixel(x, y) != pictures[b].pixel(x, y) ? 1 : 0;
                }
            }
            EXPECT_GT(different, 500 * 60 / 2) << 210 + a << " and " << 210 + b;
        }
    }
}

QImage IconPicture(CommandId id, int size, QIcon::Mode mode = QIcon::Normal) {
    return CommandIcon(id)
        .pixmap(QSize(size, size), 1.0, mode)
        .toImage()
        .convertToFormat(QImage::Format_ARGB32);
}

class EveryIconSize : public ::testing::TestWithParam<int> {};

TEST_P(EveryIconSize, HasIconsOfThatSizeEachOfItsOwn) {
    std::vector<QImage> pictures;
    for (const CommandId id : ToolBarCommands()) {
        const QImage picture = IconPicture(id, GetParam());
        ASSERT_EQ(picture.size(), QSize(GetParam(), GetParam()));
        for (const QImage& other : pictures) {
            EXPECT_NE(picture, other) << static_cast<int>(id);
        }
        pictures.push_back(picture);
    }
    EXPECT_GT(pictures.size(), 14U);
}

TEST_P(EveryIconSize, HasSharpStraightEdges) {
    // Stop is a square: nothing in it is half covered.
    const QImage picture = IconPicture(CommandId::kStop, GetParam());
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const int alpha = qAlpha(picture.pixel(x, y));
            EXPECT_TRUE(alpha == 0 || alpha == 255) << x << "," << y << ": " << alpha;
        }
    }
    EXPECT_EQ(qAlpha(picture.pixel(0, 0)), 0);
    EXPECT_EQ(qAlpha(picture.pixel(GetParam() / 2, GetParam() / 2)), 255);
}

INSTANTIATE_TEST_SUITE_P(Sizes, EveryIconSize, ::testing::ValuesIn(kIconSizes));

TEST(Icons, ShowOnTheBarsOfEveryLook) {
    for (const Look& look : Looks()) {
        ApplyLook(look);
        for (const CommandId id : ToolBarCommands()) {
            const QImage picture = IconPicture(id, 24);
            int clear = 0;
            for (int y = 0; y < 24; ++y) {
                for (int x = 0; x < 24; ++x) {
                    const QColor color = picture.pixelColor(x, y);
                    clear += color.alpha() > 200 &&
                                     SeenContrast(color, QColor(look.bar_top)) >= 3.0 &&
                                     SeenContrast(color, QColor(look.bar_bottom)) >= 3.0
                                 ? 1
                                 : 0;
                }
            }
            EXPECT_GE(clear, 20) << static_cast<int>(id) << " in " << static_cast<int>(look.id);
        }
    }
    ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
}

TEST(Icons, OfCommandsThatCannotBeUsedAreWeak) {
    const QImage picture = IconPicture(CommandId::kStop, 24, QIcon::Disabled);
    const QColor middle = picture.pixelColor(12, 12);
    EXPECT_LT(middle.alpha(), 128);
    EXPECT_EQ(middle.saturation(), 0);
}

}  // namespace
}  // namespace wavo
