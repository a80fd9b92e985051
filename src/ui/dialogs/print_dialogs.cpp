#include "ui/dialogs/print_dialogs.h"

#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QScreen>
#include <QWidget>

#include "platform/system_dialogs.h"
#include "ui/dialogs/choosers.h"
#include "ui/dialogs/message_boxes.h"

namespace wavo {

namespace {

/// Whether the system's dialogs have no printer to show. Then a PDF file can be written.
bool LacksPrinter(QPrinter& printer) {
    if (!platform::HasSystemDialogs()) {
        return false;
    }
    if (printer.outputFormat() != QPrinter::NativeFormat) {
        if (QPrinterInfo::defaultPrinter().isNull()) {
            return true;
        }
        printer.setOutputFileName({});  // to a printer: one was installed meanwhile
    }
    return printer.outputFormat() != QPrinter::NativeFormat;
}

}  // namespace

bool ChooseHowToPrint(QWidget* parent, QPrinter& printer) {
    if (!LacksPrinter(printer)) {
        return QPrintDialog(&printer, parent).exec() == QDialog::Accepted;
    }
    const auto file =
        ChooseSaveFile(parent, {QStringLiteral("Export to PDF"), printer.outputFileName(),
                                QStringLiteral("pdf"), QStringLiteral("PDF files|*.pdf|")});
    if (file) {
        printer.setOutputFileName(*file);
    }
    return file.has_value();
}

void SetUpPage(QWidget* parent, QPrinter& printer) {
    if (LacksPrinter(printer)) {
        ShowBox(parent, {"There is no printer", "ERROR", BoxIcon::kExclamation, BoxButtons::kOk});
        return;
    }
    QPageSetupDialog(&printer, parent).exec();
}

void ShowPrintPreview(QWidget* parent, QPrinter& printer,
                      const std::function<void(QPrinter&)>& paint) {
    QPrintPreviewDialog dialog(&printer, parent);
    if (parent != nullptr) {
        dialog.resize(parent->screen()->availableSize() * 3 / 4);
    }
    QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog,
                     [&](QPrinter* target) { paint(*target); });
    dialog.exec();
}

}  // namespace wavo
