#include "ui/panes/figure_table.h"

#include <QHeaderView>
#include <QTableWidget>
#include <algorithm>

#include "report/page.h"

namespace wavo {

namespace {

constexpr int kRowMargin = 4;

}  // namespace

void MakeFigureTable(QTableWidget& table) {
    table.setColumnCount(4);
    table.setHorizontalHeaderLabels({QStringLiteral("Figure"), QStringLiteral("Value"),
                                     QStringLiteral("Limit"), QStringLiteral("Verdict")});
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setTabKeyNavigation(false);
    table.setWordWrap(false);
    table.verticalHeader()->hide();
    table.verticalHeader()->setDefaultSectionSize(table.fontMetrics().height() + kRowMargin);
    table.horizontalHeader()->setHighlightSections(false);
    table.horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
}

void ShowFigures(QTableWidget& table, std::span<const measure::NamedFigure> figures,
                 const measure::Judgement& judgement) {
    const int rows = static_cast<int>(figures.size());
    const bool is_new = table.rowCount() != rows;
    if (is_new) {
        table.setRowCount(rows);
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < table.columnCount(); ++column) {
                table.setItem(row, column, new QTableWidgetItem);
            }
            table.item(row, 1)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    QFont bold = table.font();
    bold.setBold(true);
    for (int row = 0; row < rows; ++row) {
        const auto place = static_cast<std::size_t>(row);
        const measure::NamedFigure& figure = figures[place];
        const auto judged = std::ranges::find(judgement.judged, place, &measure::Judged::figure);
        const bool has_limit = judged != judgement.judged.end();
        const bool is_wrong = has_limit && judged->verdict != measure::Verdict::kPass;
        const QString texts[] = {
            QString::fromStdString(figure.name), report::DisplayValue(figure),
            has_limit ? QString::fromStdString(measure::TextOf(judged->limit, figure.decimals))
                      : QString(),
            has_limit ? QString::fromStdString(measure::TextOf(judged->verdict)) : QString()};
        const QString tool_tip =
            QString::fromStdString(figure.name + ", " + figure.symbol +
                                   (figure.figure ? "" : ": " + figure.figure.reason));
        for (int column = 0; column < table.columnCount(); ++column) {
            QTableWidgetItem& item = *table.item(row, column);
            // What is set lays the table out anew, which takes longer than all the figures.
            if (item.text() != texts[column]) {
                item.setText(texts[column]);
            }
            if (item.toolTip() != tool_tip) {
                item.setToolTip(tool_tip);
            }
            if (item.font().bold() != is_wrong) {
                item.setFont(is_wrong ? bold : table.font());
            }
        }
    }
    if (is_new) {
        FitFigureColumns(table);
    }
}

void FitFigureColumns(QTableWidget& table) {
    for (int column = 1; column < table.columnCount(); ++column) {
        table.resizeColumnToContents(column);
    }
}

}  // namespace wavo
