#include <gtest/gtest.h>

#include <QImage>

#include "ui/controls/elided_label.h"

namespace wavo {
namespace {

QImage Picture(QWidget& widget) {
    widget.show();
    return widget.grab().toImage();
}

TEST(ElidedLabel, ATextThatFitsIsShownWholeWithoutAToolTip) {
    ElidedLabel label;
    label.setText(QStringLiteral("short"));
    label.resize(300, 24);
    Picture(label);
    EXPECT_EQ(label.toolTip(), QString());
}

TEST(ElidedLabel, ATextThatDoesNotFitIsCutWithDotsAndIsTheToolTip) {
    const QString text = QStringLiteral("a text that is much too long for a narrow label");
    ElidedLabel label;
    label.setText(text);
    label.resize(90, 24);
    const QImage cut = Picture(label);
    EXPECT_EQ(label.toolTip(), text);

    ElidedLabel expected;
    expected.setText(label.fontMetrics().elidedText(text, Qt::ElideRight, 90));
    expected.resize(90, 24);
    EXPECT_EQ(cut, Picture(expected));

    label.resize(900, 24);
    Picture(label);
    EXPECT_EQ(label.toolTip(), QString());
}

}  // namespace
}  // namespace wavo
