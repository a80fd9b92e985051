// A field that shows a colour; a click, or the space bar, asks for another one.
#pragma once

#include <QAbstractButton>
#include <QColor>

namespace wavo {

class ColorField : public QAbstractButton {
 public:
    using QAbstractButton::QAbstractButton;

    [[nodiscard]] const QColor& Color() const { return m_color; }
    /// Shows the colour at once.
    void SetColor(const QColor& color);

    [[nodiscard]] QSize sizeHint() const override;

 protected:
    void paintEvent(QPaintEvent* event) override;

 private:
    QColor m_color = Qt::black;
};

}  // namespace wavo
