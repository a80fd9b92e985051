// Whatever was drawn before, the picture shows the background and the layers of the last drawing.
#include "graph/draw/raster/plot_canvas.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace wavo {
namespace {

struct TestLayer {
    ColumnSpans spans;
    bool painted = false;
    QRect rectangle;  // that a painting fills
    QRgb color = 0;
    std::uint64_t version = 0;
};

class Board {
 public:
    Board(const QSize& picture, const QRect& frame, const QRect& plot, unsigned seed)
        : m_random(seed),
          m_picture(picture, QImage::Format_RGB32),
          m_frame(frame & QRect(QPoint(0, 0), picture)),
          m_background(m_frame.size(), QImage::Format_RGB32),
          m_plot(plot) {
        m_picture.fill(qRgb(1, 2, 3));
        NewBackground();
    }

    std::size_t Below(std::size_t end) { return m_random() % end; }

    /// The frame of a graph was drawn anew.
    void NewBackground() {
        const int period = 1 + static_cast<int>(Below(9));
        for (int y = 0; y < m_background.height(); ++y) {
            for (int x = 0; x < m_background.width(); ++x) {
                const bool line = y % 7 == period || x % 11 == period;
                m_background.setPixel(x, y, line ? qRgb(90, 90, period) : qRgb(10, 10, 10));
            }
        }
        QPainter(&m_picture).drawImage(m_frame.topLeft(), m_background);
        m_outside = m_picture.copy();
        m_canvas.Forget();
    }

    ColumnSpans RandomSpans() {
        ColumnSpans spans;
        spans.Clear(m_plot.width());
        const std::size_t kind = Below(4);
        const auto height = static_cast<std::size_t>(m_plot.height());
        const std::size_t middle = Below(height);
        for (int column = 0; column < m_plot.width(); ++column) {
            std::size_t rows = kind == 0 ? 1 : kind == 1 ? height : 1 + Below(height);
            std::size_t first = kind == 2 ? middle : Below(height);
            if (kind == 3 && Below(3) == 0) {
                continue;
            }
            rows = std::min(rows, height);
            first = std::min(first, height - rows);
            spans.Add(column, static_cast<std::int32_t>(first),
                      static_cast<std::int32_t>(first + rows - 1));
            if (kind == 3 && Below(5) == 0) {
                const auto row = static_cast<std::int32_t>(Below(height));
                spans.Add(column, row, row);
            }
        }
        return spans;
    }

    /// Changes a few columns.
    void Move(ColumnSpans& spans) {
        const ColumnSpans other = RandomSpans();
        const std::size_t from = Below(other.top.size());
        const std::size_t to = std::min(other.top.size(), from + 1 + Below(40));
        for (std::size_t column = from; column < to; ++column) {
            spans.top[column] = other.top[column];
            spans.bottom[column] = other.bottom[column];
        }
    }

    void ChangeLayers() {
        static constexpr QRgb kColors[] = {qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255)};
        switch (Below(6)) {
            case 0:
                m_layers.clear();
                break;
            case 1:
                m_layers.clear();
                m_layers.emplace_back();
                break;
            case 2:
                m_layers.resize(Below(4));
                break;
            case 3:
                std::reverse(m_layers.begin(), m_layers.end());
                return;
            default:
                break;
        }
        for (TestLayer& layer : m_layers) {
            const std::size_t change = layer.color == 0 ? 0 : Below(6);
            if (change == 0) {
                layer.spans = RandomSpans();
                layer.painted = m_paintings && Below(3) == 0;
                layer.rectangle = QRect(m_plot.left() + static_cast<int>(Below(30)) - 5,
                                        m_plot.top() + static_cast<int>(Below(30)) - 5,
                                        static_cast<int>(Below(40)), static_cast<int>(Below(40)));
                layer.version = ++m_version;
            }
            if (change <= 1) {
                layer.color = kColors[Below(3)];
                layer.version = ++m_version;
            }
            if (change == 2) {
                Move(layer.spans);
            }
        }
    }

    void AllowPaintings() { m_paintings = true; }

    void Draw() {
        m_canvas.Begin(m_picture, m_background, m_frame.topLeft(), m_plot);
        for (const TestLayer& layer : m_layers) {
            if (layer.painted) {
                m_canvas.Add(
                    [&layer, this](QImage& image, PixelRuns& touched) {
                        QPainter painter(&image);
                        painter.setClipRect(m_plot);
                        painter.fillRect(layer.rectangle, QColor(layer.color));
                        AddRectangle(touched, layer.rectangle);
                    },
                    layer.version);
            } else {
                m_canvas.Add(layer.spans, layer.color);
            }
        }
        m_canvas.End();
    }

    [[nodiscard]] QImage Expected() const {
        QImage image = m_outside.copy();
        const QRect visible = m_plot & m_frame;
        if (m_plot.left() < 0) {
            return image;
        }
        const auto paint = [&](int column, int top, int bottom, QRgb color) {
            for (int row = top; row <= bottom; ++row) {
                const QPoint place = m_plot.topLeft() + QPoint(column, row);
                if (visible.contains(place)) {
                    image.setPixel(place, color);
                }
            }
        };
        for (const TestLayer& layer : m_layers) {
            if (layer.painted) {
                QPainter painter(&image);
                painter.setClipRect(m_plot);
                painter.fillRect(layer.rectangle, QColor(layer.color));
                continue;
            }
            for (int column = 0; column < layer.spans.Columns(); ++column) {
                const auto at = static_cast<std::size_t>(column);
                paint(column, layer.spans.top[at], layer.spans.bottom[at], layer.color);
            }
            for (const ColumnSpans::Span& span : layer.spans.more) {
                paint(span.column, span.top, span.bottom, layer.color);
            }
        }
        return image;
    }

    [[nodiscard]] const QImage& Picture() const { return m_picture; }

 private:
    std::mt19937 m_random;
    QImage m_picture;
    QRect m_frame;
    QImage m_background;
    QRect m_plot;
    QImage m_outside;  // the picture without curves
    PlotCanvas m_canvas;
    std::vector<TestLayer> m_layers;
    std::uint64_t m_version = 0;
    bool m_paintings = false;
};

struct Place {
    QSize picture;
    QRect frame;
    QRect plot;
};

const std::vector<Place> kPlaces{
    {{200, 150}, {0, 0, 200, 150}, {6, 18, 180, 110}},
    {{200, 150}, {20, 10, 170, 130}, {25, 12, 33, 125}},
    {{200, 150}, {20, 10, 100, 100}, {21, 12, 16, 1}},
    {{200, 150}, {20, 10, 100, 100}, {21, 12, 1, 90}},
    {{200, 150},
     {50, -40, 190, 300},
     {60, -25, 160, 260}},                                // cut off above, below and at the right
    {{200, 150}, {50, -40, 90, 100}, {60, -25, 65, 60}},  // above
    {{200, 150}, {-30, 10, 190, 120}, {-25, 20, 160, 100}},  // at the left
    {{900, 700}, {0, 0, 900, 700}, {3, 3, 890, 690}},
};

TEST(PlotCanvas, AnySequenceOfDrawingsShowsTheLastOne) {
    for (std::size_t place = 0; place < kPlaces.size(); ++place) {
        for (const bool paintings : {false, true}) {
            const Place& at = kPlaces[place];
            Board board(at.picture, at.frame, at.plot, static_cast<unsigned>(place) + 100);
            if (paintings && at.plot.left() >= 0) {
                board.AllowPaintings();
            }
            const int drawings = at.picture.width() > 500 ? 40 : 200;
            for (int drawing = 0; drawing < drawings; ++drawing) {
                if (board.Below(25) == 0) {
                    board.NewBackground();
                }
                if (board.Below(8) != 0) {
                    board.ChangeLayers();
                }
                board.Draw();
                ASSERT_EQ(board.Picture(), board.Expected())
                    << "place " << place << ", drawing " << drawing;
            }
        }
    }
}

}  // namespace
}  // namespace wavo
