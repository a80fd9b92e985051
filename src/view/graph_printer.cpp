#include "view/graph_printer.h"

#include <QPagedPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPrinter>
#include <utility>

#include "support/diagnostics.h"
#include "view/report_texts.h"

namespace wavo {

namespace {

constexpr ColorRef kWhite = 0xFFFFFF;

}  // namespace

bool PrintPicture(QPagedPaintDevice& device, const QImage& picture, const QRect& graph_area,
                  const QImage& over) {
    QPainter painter;
    if (!painter.begin(&device)) {
        return false;
    }
    if (!picture.isNull() && !graph_area.isEmpty()) {
        const double scale = static_cast<double>(device.width()) / graph_area.width();
        // The whole picture's size from the top of the area on is stretched to the area's size;
        // what would stand below the picture's end is left out.
        const double top = graph_area.top() * picture.devicePixelRatio();
        const double part = (picture.height() - top) / picture.height();
        const QRectF source(0.0, top, picture.width(), picture.height() - top);
        // Paper shows the pixels as they are. A preview is smaller than they are: there texts would
        // lose strokes.
        painter.setRenderHint(QPainter::SmoothPixmapTransform,
                              painter.paintEngine()->type() == QPaintEngine::Picture);
        painter.setRenderHint(QPainter::LosslessImageRendering);
        const QRectF target(0.0, 0.0, graph_area.width() * scale,
                            graph_area.height() * scale * part);
        for (QImage pixels : {picture, over}) {
            pixels.setDevicePixelRatio(1.0);
            painter.drawImage(target, pixels, source);
        }
    }
    return painter.end();
}

GraphPrinter::GraphPrinter(Source source, const Prompts& prompts)
    : m_source(std::move(source)), m_prompts(prompts) {}

GraphPrinter::~GraphPrinter() = default;

bool GraphPrinter::Prepare(QWidget* parent) const {
    return m_source.background() == kWhite ||
           m_prompts.box(parent, {view_texts::kNotWhiteBox, view_texts::kNotWhiteCaption,
                                  BoxIcon::kQuestion, BoxButtons::kYesNo}) == BoxAnswer::kYes;
}

QPrinter& GraphPrinter::Printer() {
    if (m_printer == nullptr) {
        m_printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
        m_printer->setPageOrientation(QPageLayout::Landscape);
        const QRect area = m_source.graph_area();
        if (static_cast<double>(m_printer->width()) * area.height() >
            static_cast<double>(m_printer->height()) * area.width()) {
            m_printer->setPageOrientation(QPageLayout::Portrait);  // landscape would cut it off
        }
        m_printer->setDocName(QStringLiteral("Wavo"));
    }
    return *m_printer;
}

void GraphPrinter::Print(QWidget* parent) {
    if (!Prepare(parent)) {
        return;
    }
    if (m_prompts.print(parent, Printer()) &&
        !PrintPicture(Printer(), m_source.picture(), m_source.graph_area(), m_source.over())) {
        MERRLOG("GraphPrinter::Print(): cannot print");
        m_prompts.ShowError(parent, "Can not print");
    }
}

void GraphPrinter::Preview(QWidget* parent) {
    if (!Prepare(parent)) {
        return;
    }
    // One picture for the whole preview: it is painted again at every change of its window.
    const QImage picture = m_source.picture();
    const QImage over = m_source.over();
    const QRect area = m_source.graph_area();
    const auto paint = [&](QPrinter& printer) { PrintPicture(printer, picture, area, over); };
    m_prompts.print_preview(parent, Printer(), paint);
}

void GraphPrinter::SetUpPage(QWidget* parent) {
    m_prompts.page_setup(parent, Printer());
}

}  // namespace wavo
