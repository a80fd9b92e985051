#include "ui/shell/count_pane.h"

#include <QFrame>
#include <QGridLayout>
#include <QMouseEvent>
#include <utility>

namespace wavo {

namespace {

QLabel* AddCell(QGridLayout& grid, int row, int column, Qt::Alignment alignment) {
    auto* const cell = new QLabel;
    cell->setTextFormat(Qt::PlainText);
    cell->setAlignment(alignment);
    grid.addWidget(cell, row, column);
    return cell;
}

QLabel& Cell(const QFrame& details, int row, int column) {
    const auto& grid = static_cast<const QGridLayout&>(*details.layout());
    return static_cast<QLabel&>(*grid.itemAtPosition(row, column)->widget());
}

/// A pop-up with a row of two cells for each counter.
std::unique_ptr<QFrame> MakeDetails(QWidget* parent) {
    auto details = std::make_unique<QFrame>(parent, Qt::Popup);
    details->setFrameStyle(QFrame::StyledPanel | QFrame::Raised);
    details->setAccessibleName(QStringLiteral("Counters of the link"));
    details->setAccessibleDescription(
        QStringLiteral("What became of the lines and batches of the master"));
    auto* const grid = new QGridLayout(details.get());
    grid->setContentsMargins(8, 6, 8, 6);
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(2);
    const int rows = static_cast<int>(Describe(LinkCounters()).size());
    for (int row = 0; row < rows; ++row) {
        AddCell(*grid, row, 0, Qt::AlignLeft);
        AddCell(*grid, row, 1, Qt::AlignRight);
    }
    return details;
}

}  // namespace

CountPane::CountPane(std::function<LinkCounters()> counters, QWidget* parent)
    : RoomyLabel(parent), m_counters(std::move(counters)) {
    setCursor(Qt::PointingHandCursor);
}

CountPane::~CountPane() = default;

void CountPane::ShowDetails() {
    if (m_details == nullptr) {
        m_details = MakeDetails(this);
    }
    m_details->show();  // before its size is known, so that Refresh fills it
    Refresh();
    const QPoint corner = mapToGlobal(QPoint(width(), 0));
    m_details->move(corner - QPoint(m_details->width(), m_details->height()));
}

void CountPane::Refresh() {
    if (m_details == nullptr || !m_details->isVisible()) {
        return;
    }
    int row = 0;
    for (const CounterLine& line : Describe(m_counters())) {
        Cell(*m_details, row, 0).setText(QString::fromStdString(line.name));
        Cell(*m_details, row, 1).setText(QString::number(line.count));
        ++row;
    }
    m_details->adjustSize();
}

std::string CountPane::DetailsText() const {
    std::string text;
    if (m_details == nullptr || !m_details->isVisible()) {
        return text;
    }
    const int rows = static_cast<const QGridLayout&>(*m_details->layout()).rowCount();
    for (int row = 0; row < rows; ++row) {
        text += Cell(*m_details, row, 0).text().toStdString() + "\t" +
                Cell(*m_details, row, 1).text().toStdString() + "\n";
    }
    return text;
}

void CountPane::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        ShowDetails();
    } else {
        RoomyLabel::mousePressEvent(event);
    }
}

}  // namespace wavo
