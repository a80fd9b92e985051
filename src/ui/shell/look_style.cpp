#include "ui/shell/look_style.h"

#include <QLinearGradient>
#include <QMenuBar>
#include <QPainter>
#include <QStatusBar>
#include <QStyleFactory>
#include <QStyleOption>
#include <QToolBar>
#include <QToolButton>

namespace wavo {

namespace {

/// How much of the text's colour is in the outlines of controls in a dark window.
constexpr float kOutlinePart = 0.5F;
constexpr float kDisabledOutlinePart = 0.2F;

bool IsBar(const QWidget* widget) {
    return qobject_cast<const QMenuBar*>(widget) != nullptr ||
           qobject_cast<const QToolBar*>(widget) != nullptr ||
           qobject_cast<const QStatusBar*>(widget) != nullptr;
}

/// The whole bar that a menu bar lies on, as the menu bar sees it.
QRect BarBelow(const QWidget* menu_bar, const QRect& otherwise) {
    if (menu_bar == nullptr) {
        return otherwise;
    }
    const auto* const bar = qobject_cast<const QToolBar*>(menu_bar->parentWidget());
    return bar == nullptr ? menu_bar->rect() : bar->rect().translated(-menu_bar->pos());
}

bool IsSeparator(const QStyleOption& menu_item) {
    const auto& item = static_cast<const QStyleOptionMenuItem&>(menu_item);
    return item.menuItemType == QStyleOptionMenuItem::Separator && item.text.isEmpty();
}

bool StandsInToolBar(const QWidget* widget) {
    return widget != nullptr && qobject_cast<const QToolBar*>(widget->parentWidget()) != nullptr;
}

}  // namespace

LookStyle::LookStyle(const Look& look)
    : QProxyStyle(QStyleFactory::create(QString::fromLatin1(look.style))), m_look(look) {}

void LookStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (IsBar(widget)) {
        widget->setPalette(BarPalette(m_look));
    }
}

void LookStyle::unpolish(QWidget* widget) {
    if (IsBar(widget)) {
        widget->setPalette(QPalette());
    }
    QProxyStyle::unpolish(widget);
}

int LookStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                         QStyleHintReturn* data) const {
    if (hint == SH_EtchDisabledText || hint == SH_DitherDisabledText) {
        return 0;  // a second, shifted text is hard to read
    }
    return QProxyStyle::styleHint(hint, option, widget, data);
}

void LookStyle::FillBar(QPainter& painter, const QRect& area, bool upright) const {
    const QColor top(m_look.bar_top);
    const QColor bottom(m_look.bar_bottom);
    QLinearGradient gradient(area.topLeft(), upright ? area.topRight() : area.bottomLeft());
    gradient.setColorAt(0, top);
    gradient.setColorAt(1, bottom);
    if (m_look.bars == BarPainting::kGlass && !upright) {  // its edge would cut the icons in two
        const bool dark = top.lightness() < 128;
        gradient.setColorAt(0.45, dark ? top.darker(115) : top.darker(103));
        gradient.setColorAt(0.46, bottom);
        gradient.setColorAt(1, dark ? bottom.lighter(125) : bottom.lighter(106));
    }
    painter.fillRect(area, gradient);
}

void LookStyle::FillHot(QPainter& painter, const QRect& area, bool pressed) const {
    const QColor top(m_look.hot_top);
    const QColor bottom(m_look.hot_bottom);
    QLinearGradient gradient(area.topLeft(), area.bottomLeft());
    gradient.setColorAt(0, pressed ? bottom : top);
    gradient.setColorAt(1, pressed ? top : bottom);
    painter.fillRect(area, gradient);
    painter.setPen(QColor(m_look.hot_border));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(area.adjusted(0, 0, -1, -1));
}

void LookStyle::DrawMenuBarItem(const QStyleOption& option, QPainter& painter,
                                const QWidget* widget) const {
    const auto& item = static_cast<const QStyleOptionMenuItem&>(option);
    // The part of the whole bar that this item covers.
    painter.save();
    painter.setClipRect(item.rect);
    FillBar(painter, BarBelow(widget, item.rect), false);
    painter.restore();
    const bool enabled = (item.state & State_Enabled) != 0;
    const bool hot = enabled && (item.state & State_Selected) != 0;
    if (hot) {
        FillHot(painter, item.rect, (item.state & State_Sunken) != 0);
    }
    int alignment = Qt::AlignCenter | Qt::TextShowMnemonic | Qt::TextDontClip | Qt::TextSingleLine;
    if (proxy()->styleHint(SH_UnderlineShortcut, &item, widget, nullptr) == 0) {
        alignment |= Qt::TextHideMnemonic;
    }
    QPalette palette = BarPalette(m_look);
    if (hot) {
        palette.setColor(QPalette::ButtonText, QColor(m_look.hot_text));
    }
    proxy()->drawItemText(&painter, item.rect, alignment, palette, enabled, item.text,
                          QPalette::ButtonText);
}

void LookStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const {
    if (m_look.bars != BarPainting::kRaised) {
        if (element == CE_MenuBarItem) {
            DrawMenuBarItem(*option, *painter, widget);
            return;
        }
        if (element == CE_MenuBarEmptyArea) {
            FillBar(*painter, BarBelow(widget, option->rect), false);
            return;
        }
        if (element == CE_ToolBar) {
            FillBar(*painter, option->rect, (option->state & State_Horizontal) == 0);
            return;
        }
        if (element == CE_MenuItem && IsDark() && IsSeparator(*option)) {
            DrawSeparator(*option, *painter);
            return;
        }
        if (element == CE_MenuItem) {
            QStyleOptionMenuItem item(*static_cast<const QStyleOptionMenuItem*>(option));
            item.palette.setColor(QPalette::Highlight, QColor(m_look.hot_bottom));
            item.palette.setColor(QPalette::HighlightedText, QColor(m_look.hot_text));
            QProxyStyle::drawControl(element, &item, painter, widget);
            return;
        }
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

// The style below shows the keyboard's place weakly, or not at all on a flat button.
void LookStyle::DrawKeyboardPlace(const QStyleOption& option, QPainter& painter) const {
    const QRect area = option.rect.adjusted(-2, -2, 2, 2);
    if (m_look.bars == BarPainting::kRaised) {
        painter.fillRect(area, QColor(m_look.base));
    } else {
        FillHot(painter, area, false);
    }
    painter.setPen(QPen(QColor(m_look.bar_text), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(area.adjusted(0, 0, -1, -1));
}

// The frame that the style below draws around what is typed into tells it by a shade only.
void LookStyle::DrawKeyboardFrame(const QStyleOption& option, QPainter& painter) const {
    constexpr QStyle::State kWanted = State_HasFocus | State_KeyboardFocusChange;
    if ((option.state & kWanted) != kWanted) {
        return;
    }
    painter.save();
    painter.setPen(QPen(QColor(m_look.highlight), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(option.rect.adjusted(1, 1, -2, -2));
    painter.restore();
}

void LookStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                   QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_ComboBox) {
        DrawKeyboardFrame(*option, *painter);
    }
}

// The style below outlines and separates with a darker shade, which does not show in a dark window.
void LookStyle::DrawSeparator(const QStyleOption& option, QPainter& painter) const {
    QColor color(m_look.text);
    color.setAlphaF(kDisabledOutlinePart);
    const int y = option.rect.center().y();
    painter.fillRect(option.rect.left() + 5, y, option.rect.width() - 10, 1, color);
}

void LookStyle::DrawOutline(PrimitiveElement element, const QStyleOption& option,
                            QPainter& painter) const {
    const bool is_radio = element == PE_IndicatorRadioButton;
    const bool is_edit = element == PE_FrameLineEdit;
    if (!IsDark() || !(is_radio || is_edit || element == PE_IndicatorCheckBox) ||
        (is_edit && (option.state & State_HasFocus) != 0)) {  // outlined as having the keyboard
        return;
    }
    QColor color(m_look.text);
    color.setAlphaF((option.state & State_Enabled) != 0 ? kOutlinePart : kDisabledOutlinePart);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(color);
    painter.setBrush(Qt::NoBrush);
    const QRectF area = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
    if (is_radio) {
        painter.drawEllipse(area);
    } else {
        painter.drawRoundedRect(area, is_edit ? 2 : 0, is_edit ? 2 : 0);
    }
    painter.restore();
}

void LookStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                              QPainter* painter, const QWidget* widget) const {
    if (element == PE_FrameFocusRect && StandsInToolBar(widget)) {
        DrawKeyboardPlace(*option, *painter);
        return;
    }
    if (m_look.bars != BarPainting::kRaised) {
        if (element == PE_PanelStatusBar) {
            FillBar(*painter, option->rect, false);
            return;
        }
        if (element == PE_PanelButtonTool && StandsInToolBar(widget)) {
            const bool pressed = (option->state & (State_Sunken | State_On)) != 0;
            const bool below_pointer =
                (option->state & State_Enabled) != 0 && (option->state & State_MouseOver) != 0;
            if (pressed || below_pointer) {
                FillHot(*painter, option->rect, pressed);
            }
            return;
        }
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    DrawOutline(element, *option, *painter);
    if (element == PE_FrameLineEdit) {
        DrawKeyboardFrame(*option, *painter);
    }
}

}  // namespace wavo
