// A label of one line that ends in "..." where its text does not fit, and then shows the whole text
// as its tool tip.
#pragma once

#include <QLabel>

namespace wavo {

class ElidedLabel : public QLabel {
 public:
    using QLabel::QLabel;

 protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace wavo
