// The polar picture of a circle test, on the screen as on the page: dark lines on white.
#pragma once

#include <QPixmap>
#include <QWidget>
#include <optional>

#include "report/polar_picture.h"

namespace wavo {

class PolarView : public QWidget {
 public:
    explicit PolarView(QWidget* parent);

    /// Shows another picture; nothing: `text` in its place.
    void Show(std::optional<report::PolarPicture> picture, const QString& text);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

 protected:
    void paintEvent(QPaintEvent* event) override;

 private:
    std::optional<report::PolarPicture> m_picture;
    QString m_text;
    QPixmap m_painted;  ///< of the picture, as long as neither it nor the size is another
};

}  // namespace wavo
