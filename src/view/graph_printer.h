// Printing of the picture of the graphs: on one page, across its printable width.
//
// Invariants:
// 1. The picture is printed with the pixels that it has: neither smoothed nor compressed with loss.
// 2. Its height follows from its width while the graphs fill the picture; what does not fit on the
//    page is cut off. The page lies, or stands where the graphs would not fit otherwise, until the
//    user chooses.
// 3. Before a picture is printed whose background is not white, the user is asked.
#pragma once

#include <QImage>
#include <QRect>
#include <functional>
#include <memory>

#include "support/color_ref.h"
#include "ui/prompts.h"

class QPagedPaintDevice;
class QPrinter;

namespace wavo {

/// Paints `picture`, from the top of `graph_area` (logical pixels) on, on the first page of
/// `device`, and `over`, which is as large or null, over it. False when the device cannot be
/// painted on.
bool PrintPicture(QPagedPaintDevice& device, const QImage& picture, const QRect& graph_area,
                  const QImage& over = {});

class GraphPrinter {
 public:
    /// What is printed: the picture that is shown, the area of the graphs in it, and what the
    /// screen shows over it (null for nothing).
    struct Source {
        std::function<QImage()> picture;
        std::function<QRect()> graph_area;
        std::function<ColorRef()> background;
        std::function<QImage()> over = [] { return QImage(); };
    };

    /// `prompts` is not owned and outlives the printer.
    GraphPrinter(Source source, const Prompts& prompts);
    ~GraphPrinter();
    GraphPrinter(const GraphPrinter&) = delete;
    GraphPrinter& operator=(const GraphPrinter&) = delete;

    /// Lets the user choose how to print over `parent`, and prints. A failure is shown.
    void Print(QWidget* parent);
    /// Shows the page as it would be printed.
    void Preview(QWidget* parent);
    /// Lets the user choose printer and page.
    void SetUpPage(QWidget* parent);

 private:
    /// Asks where the background is not white. False: do not print.
    [[nodiscard]] bool Prepare(QWidget* parent) const;
    QPrinter& Printer();

    const Source m_source;
    const Prompts& m_prompts;
    std::unique_ptr<QPrinter> m_printer;  // made when first needed: looking for printers takes time
};

}  // namespace wavo
