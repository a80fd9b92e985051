// Large fonts and scale factors: no text is cut off, and every dialog has room on a small screen.
// The program of these tests is run with several values of QT_SCALE_FACTOR.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QStyleOptionGroupBox>
#include <QTabBar>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>
#include <string>
#include <vector>

#include "all_windows.h"
#include "ui/controls/elided_label.h"
#include "ui/dialogs/message_boxes.h"
#include "view/wavo_view.h"

namespace wavo {
namespace {

using testing::AllDialogs;
using ::testing::IsEmpty;
using testing::NameOfWidget;
using testing::WholeFrame;

/// What a window has of a screen of 1366 x 768, logical pixels: its frame takes some of it.
constexpr QSize kSmallScreen(1360, 730);

QString WithoutMnemonic(QString text) {
    return text.remove(u'&');
}

/// The width that a text needs.
int WidthOf(const QWidget& widget, const QString& text) {
    return widget.fontMetrics().horizontalAdvance(WithoutMnemonic(text));
}

bool IsTooSmall(const QWidget& widget, const QSize& wanted) {
    return widget.width() < wanted.width() || widget.height() < wanted.height();
}

/// The toolkit's own size of a button with a sign for its text is larger than it needs.
QSize NeededBy(const QAbstractButton& button) {
    constexpr int kFrame = 3;  // on each side
    return qobject_cast<const QPushButton*>(&button) == nullptr
               ? button.minimumSizeHint()
               : QSize(WidthOf(button, button.text()) + 2 * kFrame,
                       button.fontMetrics().height() + 2 * kFrame)
                     .boundedTo(button.minimumSizeHint());
}

bool IsCutLabel(const QLabel& label) {
    if (label.text().isEmpty() || dynamic_cast<const ElidedLabel*>(&label) != nullptr) {
        return false;
    }
    return label.wordWrap() ? label.height() < label.heightForWidth(label.width())
                            : IsTooSmall(label, label.minimumSizeHint());
}

bool IsCutCombo(const QComboBox& combo) {
    QStyleOptionComboBox option;
    option.initFrom(&combo);
    option.editable = combo.isEditable();
    const QRect field = combo.style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                      QStyle::SC_ComboBoxEditField, &combo);
    // What is typed may be longer than any field.
    const int wanted = combo.isEditable() ? 0 : WidthOf(combo, combo.currentText());
    return field.height() < combo.fontMetrics().height() || field.width() < wanted;
}

bool IsCutGroup(const QGroupBox& group) {
    QStyleOptionGroupBox option;
    option.initFrom(&group);
    option.text = group.title();
    option.lineWidth = 1;
    option.subControls = QStyle::SC_GroupBoxFrame | QStyle::SC_GroupBoxLabel;
    option.textAlignment = Qt::AlignLeft;
    const QRect place = group.style()->subControlRect(QStyle::CC_GroupBox, &option,
                                                      QStyle::SC_GroupBoxLabel, &group);
    return !group.title().isEmpty() &&
           (place.width() < WidthOf(group, group.title()) ||
            place.height() < group.fontMetrics().height() - 1 || !group.rect().contains(place));
}

bool IsCutTab(const QTabBar& bar) {
    for (int i = 0; i < bar.count(); ++i) {
        if (bar.isTabVisible(i) && (bar.tabRect(i).width() < WidthOf(bar, bar.tabText(i)) ||
                                    bar.tabRect(i).height() < bar.fontMetrics().height())) {
            return true;
        }
    }
    return false;
}

/// What is wrong with a control; empty: nothing, or it has no text.
std::string FaultOf(const QWidget& widget) {
    bool is_cut = false;
    if (const auto* const label = qobject_cast<const QLabel*>(&widget)) {
        is_cut = IsCutLabel(*label);
    } else if (const auto* const tool = qobject_cast<const QToolButton*>(&widget)) {
        is_cut = IsTooSmall(*tool, tool->minimumSizeHint()) && !tool->text().isEmpty() &&
                 tool->toolButtonStyle() != Qt::ToolButtonIconOnly;
    } else if (const auto* const button = qobject_cast<const QAbstractButton*>(&widget)) {
        is_cut = !button->text().isEmpty() && IsTooSmall(*button, NeededBy(*button));
    } else if (const auto* const combo = qobject_cast<const QComboBox*>(&widget)) {
        is_cut = IsCutCombo(*combo);
    } else if (const auto* const edit = qobject_cast<const QLineEdit*>(&widget)) {
        is_cut = edit->height() < edit->fontMetrics().height();
    } else if (const auto* const group = qobject_cast<const QGroupBox*>(&widget)) {
        is_cut = IsCutGroup(*group);
    } else if (const auto* const tabs = qobject_cast<const QTabBar*>(&widget)) {
        is_cut = IsCutTab(*tabs);
    } else {
        return {};
    }
    if (is_cut) {
        return "cut";
    }
    // What scrolls, and what a bar offers behind its button for more, is not lost.
    for (const QWidget* above = widget.parentWidget(); above != nullptr;
         above = above->parentWidget()) {
        if (qobject_cast<const QAbstractScrollArea*>(above) != nullptr ||
            qobject_cast<const QToolBar*>(above) != nullptr ||
            qobject_cast<const QTabBar*>(above) != nullptr) {
            return {};
        }
    }
    return widget.visibleRegion().boundingRect() == widget.rect() ? "" : "partly outside";
}

std::vector<std::string> CutIn(QWidget& window) {
    std::vector<std::string> faults;
    for (const QWidget* const widget : window.findChildren<QWidget*>()) {
        if (widget->window() != &window || !widget->isVisible()) {
            continue;
        }
        if (const std::string fault = FaultOf(*widget); !fault.empty()) {
            faults.push_back(NameOfWidget(*widget) + ": " + fault);
        }
    }
    return faults;
}

/// The font of the system in a size, points.
class FitAt : public ::testing::TestWithParam<int> {
 protected:
    FitAt() {
        QFont font = m_before;
        font.setPointSize(GetParam());
        QApplication::setFont(font);
    }
    ~FitAt() override { QApplication::setFont(m_before); }

    const QFont m_before = QApplication::font();
};

TEST_P(FitAt, NoDialogCutsATextAndEachHasRoomOnASmallScreen) {
    for (const testing::NamedDialog& named : AllDialogs()) {
        SCOPED_TRACE(named.name);
        const std::unique_ptr<QDialog> dialog = named.make();
        dialog->show();
        QApplication::processEvents();
        EXPECT_THAT(CutIn(*dialog), IsEmpty());
        EXPECT_LE(dialog->width(), kSmallScreen.width());
        EXPECT_LE(dialog->height(), kSmallScreen.height());
    }
}

TEST_P(FitAt, TheFrameCutsNoText) {
    WholeFrame frame;
    for (const CommandId pane : WholeFrame::Panes()) {
        SCOPED_TRACE(static_cast<int>(pane));
        frame.ShowPane(pane);
        QApplication::processEvents();
        EXPECT_THAT(CutIn(*frame), IsEmpty());
    }
    frame.ShowPane({});
    frame.OpenRecording();
    EXPECT_THAT(CutIn(*frame), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Fonts, FitAt, ::testing::Values(8, 10, 14, 20));

TEST(Fit, FindsWhatIsCut) {
    QWidget window;
    window.resize(300, 100);
    QLabel label(QStringLiteral("a text of some length"), &window);
    label.setObjectName(QStringLiteral("label"));
    label.resize(20, 20);
    window.show();
    EXPECT_THAT(CutIn(window), ::testing::ElementsAre("QLabel label: cut"));
    label.resize(label.sizeHint());
    EXPECT_THAT(CutIn(window), IsEmpty());
    label.move(290, 0);
    EXPECT_THAT(CutIn(window), ::testing::ElementsAre("QLabel label: partly outside"));
}

}  // namespace
}  // namespace wavo
