#include "ui/panes/pane_title.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPolygonF>
#include <QToolButton>
#include <algorithm>

#include "ui/controls/control_table.h"

namespace wavo {

namespace {

constexpr int kPadding = 3;

enum class Sign {
    kPin,       ///< from the side: it holds the pane
    kLyingPin,  ///< it lets the pane hide
    kWindows,
    kCross,
};

/// A flat button with a sign in the colour of texts.
class TitleButton : public QToolButton {
 public:
    TitleButton(Sign sign, QWidget* parent) : QToolButton(parent), m_sign(sign) {}

 protected:
    void paintEvent(QPaintEvent* event) override {
        QToolButton::paintEvent(event);
        QPainter painter(this);
        if (hasFocus()) {
            painter.setPen(palette().color(QPalette::WindowText));
            painter.drawRect(rect().adjusted(0, 0, -1, -1));
        }
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(rect().center() + QPointF(0.5, 0.5));
        const double unit = std::min(width(), height()) / 16.0;
        painter.scale(unit, unit);
        painter.setPen(QPen(palette().color(QPalette::WindowText), 1.3));
        switch (m_sign) {
            case Sign::kPin:
            case Sign::kLyingPin:
                painter.rotate(m_sign == Sign::kLyingPin ? 90 : 0);
                painter.drawRect(QRectF(-2.2, -5, 4.4, 5));
                painter.drawLine(QPointF(-4, 0), QPointF(4, 0));
                painter.drawLine(QPointF(0, 0), QPointF(0, 5.5));
                break;
            case Sign::kWindows:
                painter.drawRect(QRectF(-4.5, -1.5, 6, 6));
                painter.drawPolyline(
                    QPolygonF{{-1.5, -1.5}, {-1.5, -4.5}, {4.5, -4.5}, {4.5, 1.5}, {1.5, 1.5}});
                break;
            case Sign::kCross:
                painter.drawLine(QPointF(-4, -4), QPointF(4, 4));
                painter.drawLine(QPointF(-4, 4), QPointF(4, -4));
                break;
        }
    }

 private:
    const Sign m_sign;
};

void InitButton(QToolButton& button, const char* name, const char* text) {
    button.setObjectName(QLatin1String(name));
    button.setToolTip(QString::fromLatin1(text));
    button.setAccessibleName(button.toolTip());
    button.setAccessibleDescription(button.toolTip());
    button.setAutoRaise(true);
    button.setFocusPolicy(Qt::TabFocus);  // a click leaves the keyboard where it is
    const int side = button.fontMetrics().height() + kPadding;
    button.setFixedSize(side, side);
}

}  // namespace

PaneTitle::PaneTitle(const QString& title, bool hides, QWidget* parent) : QWidget(parent) {
    SetAccessibleTexts(*this, title, QStringLiteral("Title of the pane, with its buttons"));
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(2 * kPadding, 1, 1, 1);
    layout->setSpacing(1);
    layout->addWidget(new QLabel(title, this), 1);
    auto* const pin = new TitleButton(hides ? Sign::kLyingPin : Sign::kPin, this);
    InitButton(*pin, "pane_pin", hides ? "Keeps the pane shown" : "Hides the pane at the edge");
    connect(pin, &QToolButton::clicked, this, &PaneTitle::PinClicked);
    auto* const floating = new TitleButton(Sign::kWindows, this);
    InitButton(*floating, "pane_float", "Takes the pane out of the window, or back");
    connect(floating, &QToolButton::clicked, this, &PaneTitle::FloatClicked);
    auto* const close = new TitleButton(Sign::kCross, this);
    InitButton(*close, "pane_close", "Closes the pane");
    connect(close, &QToolButton::clicked, this, &PaneTitle::CloseClicked);
    for (QToolButton* const button : std::initializer_list<QToolButton*>{pin, floating, close}) {
        layout->addWidget(button);
    }
}

EdgeStrip::EdgeStrip(const QString& title, QWidget* parent) : QAbstractButton(parent) {
    setText(title);
    setObjectName(QStringLiteral("edge_strip"));
    setFocusPolicy(Qt::StrongFocus);
    setToolTip(QStringLiteral("Shows the pane that hides here"));
    setAccessibleDescription(toolTip());
}

void EdgeStrip::SetUpright(bool upright) {
    m_upright = upright;
    updateGeometry();
    update();
}

QSize EdgeStrip::sizeHint() const {
    const QSize lying(fontMetrics().horizontalAdvance(text()) + 4 * kPadding,
                      fontMetrics().height() + 2 * kPadding);
    return m_upright ? lying.transposed() : lying;
}

QSize EdgeStrip::minimumSizeHint() const {
    return sizeHint();
}

void EdgeStrip::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(underMouse() ? QPalette::Midlight : QPalette::Button));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    painter.setPen(palette().color(QPalette::ButtonText));
    QRect area = rect();
    if (m_upright) {
        painter.translate(width(), 0);
        painter.rotate(90);
        area = QRect(0, 0, height(), width());
    }
    painter.drawText(area.adjusted(2 * kPadding, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                     text());
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::ButtonText), 1, Qt::DotLine));
        painter.drawRect(area.adjusted(2, 2, -3, -3));
    }
}

void EdgeStrip::enterEvent(QEnterEvent* event) {
    QAbstractButton::enterEvent(event);
    Q_EMIT Pointed();
}

}  // namespace wavo
