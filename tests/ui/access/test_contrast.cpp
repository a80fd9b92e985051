// Texts against what is behind them, measured in the pixels of every look.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QToolTip>
#include <string>
#include <vector>

#include "all_windows.h"
#include "drawing_fixture.h"
#include "graph/draw/frame/colors.h"
#include "text_seen.h"
#include "ui/shell/looks.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using testing::AllDialogs;
using ::testing::IsEmpty;
using testing::NameOfWidget;
using testing::PaintedText;
using testing::SeenContrastIn;
using testing::TextsOf;
using testing::WholeFrame;

constexpr double kReadable = 4.5;

struct Measured {
    std::vector<std::string> weak;
    int texts = 0;
};

bool IsDisabledText(const QWidget& widget) {
    const auto* const label = qobject_cast<const QLabel*>(&widget);
    return !widget.isEnabled() ||
           (label != nullptr && label->buddy() != nullptr && !label->buddy()->isEnabled());
}

/// Measures the texts of a window and of all that is in it.
void MeasureTexts(QWidget& window, Measured& measured) {
    QList<QWidget*> widgets = window.findChildren<QWidget*>();
    widgets.prepend(&window);
    const QImage picture = window.grab().toImage();
    for (QWidget* const widget : widgets) {
        if (widget->window() != &window || !widget->isVisible() || IsDisabledText(*widget) ||
            widget->visibleRegion().isEmpty()) {
            continue;
        }
        const QRect seen = widget->visibleRegion().boundingRect();
        for (const PaintedText& text : TextsOf(*widget)) {
            if (!seen.contains(text.place)) {
                continue;  // partly covered: what is there may be another's
            }
            ++measured.texts;
            const QRect place = text.place.translated(widget->mapTo(&window, QPoint(0, 0)));
            const double contrast = SeenContrastIn(picture, place);
            if (contrast < kReadable) {
                measured.weak.push_back(NameOfWidget(*widget) + " \"" + text.text.toStdString() +
                                        "\": " + std::to_string(contrast));
            }
        }
    }
}

class ContrastOf : public ::testing::TestWithParam<Look> {
 protected:
    ContrastOf() { ApplyLook(GetParam()); }
    ~ContrastOf() override { ApplyLook(FindLook(static_cast<int>(kDefaultLook))); }
};

TEST_P(ContrastOf, TheFrameWithItsPanesIsReadable) {
    WholeFrame frame;
    frame->Action(GetParam().id)->trigger();
    Measured measured;
    for (const CommandId pane : WholeFrame::Panes()) {
        frame.ShowPane(pane);
        MeasureTexts(*frame, measured);
    }
    EXPECT_THAT(measured.weak, IsEmpty());
    EXPECT_GT(measured.texts, 200);
}

TEST_P(ContrastOf, EveryDialogIsReadable) {
    Measured measured;
    for (const testing::NamedDialog& named : AllDialogs()) {
        const std::unique_ptr<QDialog> dialog = named.make();
        dialog->show();
        QApplication::processEvents();
        MeasureTexts(*dialog, measured);
    }
    EXPECT_THAT(measured.weak, IsEmpty());
    EXPECT_GT(measured.texts, 80);
}

TEST_P(ContrastOf, EveryMenuIsReadableAlsoWhereItIsPointedAt) {
    WholeFrame frame;
    frame->Action(GetParam().id)->trigger();
    Measured measured;
    for (QAction* const top : frame->menuBar()->actions()) {
        QMenu& menu = *top->menu();
        menu.popup(QPoint(0, 0));
        for (QAction* const action : menu.actions()) {
            action->setEnabled(true);
        }
        QApplication::processEvents();
        for (QAction* const action : menu.actions()) {
            menu.setActiveAction(action);
            if (action->menu() != nullptr) {
                action->menu()->close();
            }
            const QRect place = menu.actionGeometry(action);
            const QImage picture = menu.grab().toImage();
            for (const PaintedText& text : TextsOf(menu)) {
                if (place.contains(text.place.center())) {
                    ++measured.texts;
                    const double contrast = SeenContrastIn(picture, text.place);
                    if (contrast < kReadable) {
                        measured.weak.push_back(text.text.toStdString() + ": " +
                                                std::to_string(contrast));
                    }
                }
            }
        }
        menu.close();
    }
    EXPECT_THAT(measured.weak, IsEmpty());
    EXPECT_GT(measured.texts, 50);
}

INSTANTIATE_TEST_SUITE_P(Contrast, ContrastOf, ::testing::ValuesIn(Looks().begin(), Looks().end()),
                         [](const auto& info) {
                             return std::to_string(static_cast<int>(info.param.id));
                         });

/// The text rows of a graph: above and below its plot area.
TEST(ContrastOfGraphs, TheirTextsAreReadableOnEveryBackground) {
    const QSize size(500, 130);
    for (int red = 0; red <= 255; red += 85) {
        for (int green = 0; green <= 255; green += 85) {
            for (int blue = 0; blue <= 255; blue += 85) {
                const QColor background(red, green, blue);
                for (const ColorRef color : {0x0000FFU, 0x00FFFFU, 0xFF0000U, 0x808080U}) {
                    WavoGraph graph = testing::TimeGraph(4.0);
                    testing::AddAxis(graph, "X", testing::ManualScale(-10.0, 10.0));
                    graph.YCoorAxColor[0] = color;
                    testing::ScopeLooks looks;
                    looks.size = size;
                    looks.settings.background = ToColorRef(background);
                    looks.settings.font.face = "DejaVu Sans";
                    looks.settings.font.height = -13;
                    for (const TriggerTypeCode trigger :
                         {TriggerTypeCode::kNone, TriggerTypeCode::kStartAbove,
                          TriggerTypeCode::kStopAbove}) {
                        graph.Triggers[0] = {trigger, 1e6, "X"};
                        testing::Scope scope(graph, 0.25, QRect(QPoint(0, 0), size), 0.0, looks);
                        scope.Draw();
                        const QRect plot = scope.draw->PlotArea();
                        const int third = size.width() / 3;
                        const QRect above(0, 0, third, plot.top());
                        const QRect below(0, plot.bottom() + 2, third,
                                          size.height() - plot.bottom() - 2);
                        std::vector<QRect> places{above, above.translated(2 * third, 0), below};
                        if (trigger != TriggerTypeCode::kNone) {
                            places.push_back(above.translated(third, 0));
                        }
                        for (const QRect& place : places) {
                            EXPECT_GE(SeenContrastIn(scope.Image(), place), kReadable)
                                << background.name().toStdString() << " " << color << " "
                                << place.left() << " " << static_cast<int>(trigger);
                        }
                    }
                }
            }
        }
    }
}

TEST(SeenTexts, AreFoundWhereTheyAreAndMeasured) {
    QLabel label(QStringLiteral("letters"));
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::white);
    palette.setColor(QPalette::WindowText, QColor(0xAA, 0xAA, 0xAA));
    label.setPalette(palette);
    label.setAutoFillBackground(true);
    label.resize(120, 30);
    const std::vector<PaintedText> texts = TextsOf(label);
    ASSERT_EQ(texts.size(), 1U);
    EXPECT_EQ(texts[0].text, "letters");
    EXPECT_TRUE(label.rect().contains(texts[0].place));
    EXPECT_NEAR(SeenContrastIn(label.grab().toImage(), texts[0].place), 2.32, 0.1);
}

}  // namespace
}  // namespace wavo
