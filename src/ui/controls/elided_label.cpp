#include "ui/controls/elided_label.h"

#include <QPainter>
#include <QStyle>

namespace wavo {

void ElidedLabel::paintEvent(QPaintEvent*) {
    const QRect area = contentsRect().marginsRemoved({margin(), margin(), margin(), margin()});
    const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, area.width());
    if (const QString tip = shown == text() ? QString() : text(); toolTip() != tip) {
        setToolTip(tip);
    }
    QPainter painter(this);
    style()->drawItemText(&painter, area, static_cast<int>(alignment()), palette(), isEnabled(),
                          shown, foregroundRole());
}

}  // namespace wavo
