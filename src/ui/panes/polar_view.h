// The polar picture of a circle test on the screen.
#pragma once

#include <optional>

#include "report/polar_picture.h"
#include "ui/panes/page_view.h"

namespace wavo {

class PolarView : public PageView {
 public:
    explicit PolarView(QWidget* parent) : PageView(parent) {}

    /// Shows another picture; nothing: `text` in its place.
    void Show(std::optional<report::PolarPicture> picture, const QString& text);

    [[nodiscard]] QSize sizeHint() const override { return {280, 280}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {140, 140}; }

 protected:
    void PaintContent(QPainter& painter, const QRectF& area) override;

 private:
    std::optional<report::PolarPicture> m_picture;
};

}  // namespace wavo
