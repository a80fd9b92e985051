#include "ui/bars/command_icons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainterPath>
#include <QPalette>
#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

#include "ui/bars/icon_sketch.h"

namespace wavo {

namespace {

void Page(IconSketch& sketch) {
    sketch.Polygon({{3, 1}, {9, 1}, {13, 5}, {13, 14}, {3, 14}}, IconInk::kPaper, IconInk::kLine);
    sketch.Line({{9, 1}, {9, 5}, {13, 5}}, IconInk::kLine);
}

void Folder(IconSketch& sketch) {
    sketch.Polygon({{1, 3}, {6, 3}, {8, 5}, {13, 5}, {13, 7}, {4, 7}, {1, 13}}, IconInk::kYellow,
                   IconInk::kLine);
    sketch.Polygon({{4, 7}, {15, 7}, {12, 13}, {1, 13}}, IconInk::kYellow, IconInk::kLine);
}

void FolderWithDisc(IconSketch& sketch) {
    Folder(sketch);
    sketch.Circle(11, 11, 4, IconInk::kRed, IconInk::kLine);
}

void Disk(IconSketch& sketch) {
    sketch.Polygon({{2, 2}, {12, 2}, {14, 4}, {14, 14}, {2, 14}}, IconInk::kBlue, IconInk::kLine);
    sketch.Box(5, 2, 11, 6, IconInk::kPaper, IconInk::kLine);
    sketch.Box(4, 9, 12, 14, IconInk::kPaper, IconInk::kLine);
}

void DiskWithPen(IconSketch& sketch) {
    Disk(sketch);
    sketch.Polygon({{13, 7}, {15, 9}, {10, 14}, {7, 15}, {8, 12}}, IconInk::kYellow,
                   IconInk::kLine);
}

void Printer(IconSketch& sketch) {
    sketch.Box(4, 1, 12, 7, IconInk::kPaper, IconInk::kLine);
    sketch.Box(1, 6, 15, 12, IconInk::kGrey, IconInk::kLine);
    sketch.Box(4, 10, 12, 15, IconInk::kPaper, IconInk::kLine);
    sketch.Line({{6, 12}, {10, 12}}, IconInk::kLine);
}

void Preview(IconSketch& sketch) {
    Page(sketch);
    sketch.Circle(9, 9, 3.5, IconInk::kBlue, IconInk::kLine);
    sketch.Line({{12, 12}, {15, 15}}, IconInk::kLine, 2);
}

void PageSetup(IconSketch& sketch) {
    Page(sketch);
    for (const int y : {7, 9, 11}) {
        sketch.Line({{5, static_cast<double>(y)}, {11, static_cast<double>(y)}}, IconInk::kBlue);
    }
}

void Sliders(IconSketch& sketch) {
    const double knobs[] = {10, 5, 8};
    for (int row = 0; row < 3; ++row) {
        const double y = 3 + 5 * row;
        sketch.Line({{1, y}, {15, y}}, IconInk::kLine);
        sketch.Box(knobs[row], y - 2, knobs[row] + 3, y + 2, IconInk::kBlue, IconInk::kLine);
    }
}

void TextLine(IconSketch& sketch) {
    sketch.Line({{4, 3}, {12, 3}}, IconInk::kLine, 2);
    sketch.Line({{8, 3}, {8, 11}}, IconInk::kLine, 2);
    sketch.Line({{2, 14}, {14, 14}}, IconInk::kBlue);
}

void Plug(IconSketch& sketch) {
    sketch.Box(5, 5, 11, 10, IconInk::kGreen, IconInk::kLine);
    sketch.Line({{6, 1}, {6, 5}}, IconInk::kLine, 2);
    sketch.Line({{10, 1}, {10, 5}}, IconInk::kLine, 2);
    sketch.Line({{8, 10}, {8, 15}}, IconInk::kLine, 2);
}

void Triangle(IconSketch& sketch) {
    sketch.Polygon({{4, 2}, {13, 8}, {4, 14}}, IconInk::kGreen, IconInk::kLine);
}

void Square(IconSketch& sketch) {
    sketch.Box(3, 3, 13, 13, IconInk::kRed, IconInk::kLine);
}

void Disc(IconSketch& sketch) {
    sketch.Circle(8, 8, 5.5, IconInk::kRed, IconInk::kLine);
}

void DiscAndSquare(IconSketch& sketch) {
    sketch.Circle(6, 6, 4.5, IconInk::kRed, IconInk::kLine);
    sketch.Box(8, 8, 15, 15, IconInk::kGrey, IconInk::kLine);
}

void TriangleAfterStep(IconSketch& sketch) {
    sketch.Line({{1, 12}, {4, 12}, {4, 4}, {6, 4}}, IconInk::kRed, 2);
    sketch.Polygon({{8, 3}, {15, 8}, {8, 13}}, IconInk::kGreen, IconInk::kLine);
}

void Curves(IconSketch& sketch) {
    sketch.Box(1, 2, 15, 14, IconInk::kPaper, IconInk::kLine);
    sketch.Line({{1, 5}, {15, 5}}, IconInk::kLine);
    sketch.Line({{3, 12}, {6, 8}, {9, 11}, {13, 7}}, IconInk::kRed, 1.5);
}

void CurveWithCursors(IconSketch& sketch) {
    sketch.Line({{1, 12}, {4, 5}, {7, 5}, {10, 11}, {15, 8}}, IconInk::kRed, 1.5);
    sketch.Line({{5, 1}, {5, 15}}, IconInk::kLine);
    sketch.Line({{11, 1}, {11, 15}}, IconInk::kLine);
}

void CurveWithPeaks(IconSketch& sketch) {
    sketch.Line({{1, 14}, {15, 14}}, IconInk::kLine);
    sketch.Line({{1, 12}, {3, 12}, {4, 3}, {5, 12}, {8, 12}, {9, 7}, {10, 12}, {15, 12}},
                IconInk::kRed, 1.5);
}

void CircleOffCentre(IconSketch& sketch) {
    sketch.Circle(8, 8, 5.5, IconInk::kPaper, IconInk::kRed);
    sketch.Line({{1, 8}, {15, 8}}, IconInk::kLine);
    sketch.Line({{8, 1}, {8, 15}}, IconInk::kLine);
    sketch.Line({{13, 5}, {9, 2}, {4, 4}, {2, 9}, {5, 14}, {11, 13}, {13, 9}}, IconInk::kBlue);
}

void StepAndAnswer(IconSketch& sketch) {
    sketch.Line({{1, 13}, {5, 13}, {5, 4}, {15, 4}}, IconInk::kLine);
    sketch.Line({{5, 13}, {7, 6}, {9, 3}, {11, 5}, {13, 4}, {15, 4}}, IconInk::kRed, 1.5);
}

void CurveOverCurve(IconSketch& sketch) {
    sketch.Line({{2, 1}, {2, 14}, {15, 14}}, IconInk::kLine);
    sketch.Line({{4, 12}, {6, 5}, {9, 5}, {11, 12}, {14, 12}}, IconInk::kGrey, 2);
    sketch.Line({{4, 10}, {7, 4}, {9, 7}, {12, 10}, {15, 8}}, IconInk::kRed, 1.5);
}

void Mark(IconSketch& sketch) {
    sketch.Circle(8, 8, 6.5, IconInk::kBlue, IconInk::kLine);
    sketch.Line({{8, 7}, {8, 12}}, IconInk::kPaper, 2);
    sketch.Line({{8, 4}, {8, 5}}, IconInk::kPaper, 2);
}

void Brush(IconSketch& sketch) {
    const IconInk inks[] = {IconInk::kBlue, IconInk::kGreen, IconInk::kYellow, IconInk::kRed};
    for (int part = 0; part < 4; ++part) {
        const double x = 2 + 6 * (part % 2);
        const double y = 2 + 6 * (part / 2);
        sketch.Box(x, y, x + 6, y + 6, inks[part], IconInk::kLine);
    }
}

void Bars(IconSketch& sketch) {
    sketch.Box(1, 3, 15, 13, IconInk::kPaper, IconInk::kLine);
    sketch.Box(1, 3, 15, 7, IconInk::kBlue, IconInk::kLine);
}

void Door(IconSketch& sketch) {
    sketch.Box(3, 1, 11, 15, IconInk::kGrey, IconInk::kLine);
    sketch.Line({{7, 8}, {15, 8}}, IconInk::kRed, 2);
    sketch.Line({{12, 5}, {15, 8}, {12, 11}}, IconInk::kRed, 2);
}

using Draw = void (*)(IconSketch&);

struct IconRow {
    CommandId id;
    Draw draw;
};

/// Commands that are not here have no icon, and stand in no tool bar.
constexpr IconRow kIcons[] = {
    {CommandId::kNew, Page},
    {CommandId::kOpen, Folder},
    {CommandId::kSave, Disk},
    {CommandId::kSaveAs, DiskWithPen},
    {CommandId::kPrint, Printer},
    {CommandId::kPrintPreview, Preview},
    {CommandId::kPageSetup, PageSetup},
    {CommandId::kProperties, Sliders},
    {CommandId::kAdditionalText, TextLine},
    {CommandId::kConnect, Plug},
    {CommandId::kStart, Triangle},
    {CommandId::kStop, Square},
    {CommandId::kStartAfterTrigger, TriangleAfterStep},
    {CommandId::kRecord, Disc},
    {CommandId::kStopRecording, DiscAndSquare},
    {CommandId::kMeasurements, CurveWithCursors},
    {CommandId::kSpectrum, CurveWithPeaks},
    {CommandId::kCircleTest, CircleOffCentre},
    {CommandId::kAxisTest, StepAndAnswer},
    {CommandId::kReference, CurveOverCurve},
    {CommandId::kOpenRecording, FolderWithDisc},
    {CommandId::kShowGraphEditor, Curves},
    {CommandId::kAbout, Mark},
    {CommandId::kCustomize, Brush},
    {CommandId::kToolBars, Bars},
    {CommandId::kExit, Door},
};

Draw DrawingOf(CommandId id) {
    const auto* const row = std::ranges::find(kIcons, id, &IconRow::id);
    return row == std::end(kIcons) ? nullptr : row->draw;
}

class CommandIconEngine : public QIconEngine {
 public:
    explicit CommandIconEngine(Draw draw) : m_draw(draw) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const double ratio = painter->device()->devicePixelRatioF();
        const int side = std::min(rect.width(), rect.height());
        QPixmap picture = Picture(static_cast<int>(std::lround(side * ratio)), mode);
        picture.setDevicePixelRatio(ratio);
        painter->drawPixmap(rect.x() + (rect.width() - side) / 2,
                            rect.y() + (rect.height() - side) / 2, picture);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        return Picture(std::min(size.width(), size.height()), mode);
    }

    [[nodiscard]] QIconEngine* clone() const override { return new CommandIconEngine(m_draw); }

 private:
    [[nodiscard]] QPixmap Picture(int side, QIcon::Mode mode) const {
        QPixmap picture(side, side);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        IconSketch sketch(painter, side, QGuiApplication::palette(), mode == QIcon::Disabled);
        m_draw(sketch);
        return picture;
    }

    const Draw m_draw;
};

QPainterPath Wave(double left, double right, double middle, double height, double periods) {
    QPainterPath path;
    constexpr int kSteps = 64;
    for (int step = 0; step <= kSteps; ++step) {
        const double part = static_cast<double>(step) / kSteps;
        const QPointF point(left + (right - left) * part,
                            middle - height * std::sin(part * periods * 2 * std::numbers::pi));
        step == 0 ? path.moveTo(point) : path.lineTo(point);
    }
    return path;
}

}  // namespace

QIcon CommandIcon(CommandId id) {
    const Draw draw = DrawingOf(id);
    return draw == nullptr ? QIcon() : QIcon(new CommandIconEngine(draw));
}

void PaintProgramIcon(QPainter& painter, int size) {
    painter.setRenderHint(QPainter::Antialiasing);
    const double unit = size / 16.0;
    const double edge = std::max(1.0, std::round(unit));
    const QRectF screen(edge / 2, edge / 2, size - edge, size - edge);
    painter.setPen(QPen(QColor(0x5f, 0x8f, 0xb8), edge));
    painter.setBrush(QColor(0x0e, 0x1b, 0x2b));
    painter.drawRoundedRect(screen, 2 * unit, 2 * unit);

    const double middle = std::floor(size / 2.0);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(QRectF(2 * edge, middle, size - 4 * edge, std::max(1.0, std::round(unit / 2))),
                     QColor(0x3a, 0x55, 0x70));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    const double pen = std::max(1.3, 1.2 * unit);
    painter.setPen(QPen(QColor(0xff, 0xb6, 0x3c), pen, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(Wave(3 * unit, 13 * unit, middle, 2 * unit, 2));
    painter.setPen(QPen(QColor(0x4f, 0xe3, 0x9a), pen, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(Wave(3 * unit, 13 * unit, middle, 4.5 * unit, 1));
}

QIcon ProgramIcon() {
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        QPixmap picture(size, size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        PaintProgramIcon(painter, size);
        painter.end();
        icon.addPixmap(picture);
    }
    return icon;
}

}  // namespace wavo
