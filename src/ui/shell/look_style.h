// The painting of a look: bars and what is below the pointer in them; the rest is left to the
// style below.
#pragma once

#include <QProxyStyle>

#include "ui/shell/looks.h"

namespace wavo {

class LookStyle : public QProxyStyle {
 public:
    explicit LookStyle(const Look& look);

    using QProxyStyle::polish;
    using QProxyStyle::unpolish;
    void polish(QWidget* widget) override;
    void unpolish(QWidget* widget) override;

    [[nodiscard]] QPalette standardPalette() const override { return LookPalette(m_look); }
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;

 private:
    void FillBar(QPainter& painter, const QRect& area, bool upright) const;
    void FillHot(QPainter& painter, const QRect& area, bool pressed) const;
    [[nodiscard]] bool IsDark() const { return QColor(m_look.window).lightness() < 128; }
    void DrawSeparator(const QStyleOption& option, QPainter& painter) const;
    void DrawKeyboardPlace(const QStyleOption& option, QPainter& painter) const;
    void DrawKeyboardFrame(const QStyleOption& option, QPainter& painter) const;
    void DrawOutline(PrimitiveElement element, const QStyleOption& option, QPainter& painter) const;
    void DrawMenuBarItem(const QStyleOption& option, QPainter& painter,
                         const QWidget* widget) const;

    const Look& m_look;
};

}  // namespace wavo
