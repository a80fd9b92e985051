// Shows on the screen what reports paint on pages: dark lines on white. It is painted once, until
// it or the size is another.
#pragma once

#include <QPainter>
#include <QPixmap>
#include <QString>
#include <QWidget>

namespace wavo {

class PageView : public QWidget {
 protected:
    explicit PageView(QWidget* parent);

    /// There is something else to paint; nothing: `text` stands in its place.
    void ShowAnew(bool has_content, const QString& text);
    virtual void PaintContent(QPainter& painter, const QRectF& area) = 0;

    void paintEvent(QPaintEvent* event) override;

 private:
    bool m_has_content = false;
    QString m_text;
    QPixmap m_painted;
};

}  // namespace wavo
