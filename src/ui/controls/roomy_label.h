// A label with room for the widest of its texts, so that what stands beside it keeps its place
// while the text changes. Where there is little room it takes what its text needs.
#pragma once

#include <QLabel>

namespace wavo {

class RoomyLabel : public QLabel {
 public:
    explicit RoomyLabel(QWidget* parent) : QLabel(parent) {}

    void SetWidestText(const QString& text) {
        m_widest = text;
        updateGeometry();
    }

    [[nodiscard]] QSize sizeHint() const override {
        const QMargins sides = contentsMargins();
        return QLabel::sizeHint().expandedTo({fontMetrics().horizontalAdvance(m_widest) +
                                                  2 * margin() + sides.left() + sides.right(),
                                              0});
    }

 private:
    QString m_widest;
};

}  // namespace wavo
