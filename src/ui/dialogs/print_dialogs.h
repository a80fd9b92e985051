// The platform's dialogs of printing.
#pragma once

#include <functional>

class QPrinter;
class QWidget;

namespace wavo {

/// As Prompts::print asks. Where the system has no printer to choose, a PDF file is offered.
bool ChooseHowToPrint(QWidget* parent, QPrinter& printer);

/// As Prompts::page_setup asks. Where the system has no printer, a box says so.
void SetUpPage(QWidget* parent, QPrinter& printer);

/// As Prompts::print_preview asks.
void ShowPrintPreview(QWidget* parent, QPrinter& printer,
                      const std::function<void(QPrinter&)>& paint);

}  // namespace wavo
