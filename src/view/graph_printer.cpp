#include "view/graph_printer.h"

#include <QPageSetupDialog>
#include <QPagedPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QScreen>
#include <QWidget>
#include <utility>

#include "platform/system_dialogs.h"
#include "support/diagnostics.h"
#include "ui/dialogs/choosers.h"
#include "ui/dialogs/message_boxes.h"
#include "view/report_texts.h"

namespace wavo {

namespace {

constexpr ColorRef kWhite = 0xFFFFFF;

}  // namespace

bool PrintPicture(QPagedPaintDevice& device, const QImage& picture, const QRect& graph_area) {
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
        QImage pixels = picture;
        pixels.setDevicePixelRatio(1.0);
        painter.drawImage(
            QRectF(0.0, 0.0, graph_area.width() * scale, graph_area.height() * scale * part),
            pixels, source);
    }
    return painter.end();
}

GraphPrinter::GraphPrinter(Source source) : m_source(std::move(source)) {}
GraphPrinter::~GraphPrinter() = default;

bool GraphPrinter::Prepare(QWidget* parent) const {
    return m_source.background() == kWhite ||
           ShowBox(parent, {view_texts::kNotWhiteBox, view_texts::kNotWhiteCaption,
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

bool GraphPrinter::LacksPrinter() {
    if (!platform::HasSystemDialogs()) {
        return false;
    }
    if (Printer().outputFormat() != QPrinter::NativeFormat) {
        m_printer.reset();  // one may have been installed meanwhile
    }
    return Printer().outputFormat() != QPrinter::NativeFormat;
}

bool GraphPrinter::ChooseHowToPrint(QWidget* parent) {
    if (m_dialogs.print) {
        return m_dialogs.print(Printer(), parent);
    }
    if (!LacksPrinter()) {
        return QPrintDialog(&Printer(), parent).exec() == QDialog::Accepted;
    }
    const auto file =
        ChooseSaveFile(parent, {QStringLiteral("Export to PDF"), Printer().outputFileName(),
                                QStringLiteral("pdf"), QStringLiteral("PDF files|*.pdf|")});
    if (file) {
        Printer().setOutputFileName(*file);
    }
    return file.has_value();
}

void GraphPrinter::Print(QWidget* parent) {
    if (!Prepare(parent)) {
        return;
    }
    if (ChooseHowToPrint(parent) &&
        !PrintPicture(Printer(), m_source.picture(), m_source.graph_area())) {
        MERRLOG("GraphPrinter::Print(): cannot print");
        ShowErrorBox(parent, "Can not print");
    }
}

void GraphPrinter::Preview(QWidget* parent) {
    if (!Prepare(parent)) {
        return;
    }
    // One picture for the whole preview: it is painted again at every change of its window.
    const QImage picture = m_source.picture();
    const QRect area = m_source.graph_area();
    const auto paint = [&](QPrinter& printer) { PrintPicture(printer, picture, area); };
    if (m_dialogs.preview) {
        m_dialogs.preview(Printer(), parent, paint);
        return;
    }
    QPrintPreviewDialog dialog(&Printer(), parent);
    if (parent != nullptr) {
        dialog.resize(parent->screen()->availableSize() * 3 / 4);
    }
    QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog,
                     [&](QPrinter* printer) { paint(*printer); });
    dialog.exec();
}

void GraphPrinter::SetUpPage(QWidget* parent) {
    if (m_dialogs.page_setup) {
        m_dialogs.page_setup(Printer(), parent);
        return;
    }
    if (LacksPrinter()) {
        ShowErrorBox(parent, "There is no printer");
        return;
    }
    QPageSetupDialog(&Printer(), parent).exec();
}

}  // namespace wavo
