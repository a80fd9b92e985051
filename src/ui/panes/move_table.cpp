#include "ui/panes/move_table.h"

#include <QHeaderView>
#include <QTableWidget>

#include "measure/words.h"

namespace wavo {

namespace {

using measure::Decimals;

constexpr int kMoveMargin = 4;

QString Told(const measure::Figure& figure, int decimals) {
    return QString::fromStdString(figure ? Decimals(*figure, decimals) : figure.reason);
}

}  // namespace

void MakeMoveTable(QTableWidget& table) {
    const QStringList titles{QStringLiteral("Axis"),         QStringLiteral("Begin, s"),
                             QStringLiteral("From, mm"),     QStringLiteral("To, mm"),
                             QStringLiteral("Speed, mm/s"),  QStringLiteral("Following, µm"),
                             QStringLiteral("Settling, ms"), QStringLiteral("Overshoot, µm"),
                             QStringLiteral("Remaining, µm")};
    table.setColumnCount(static_cast<int>(titles.size()));
    table.setHorizontalHeaderLabels(titles);
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setSelectionMode(QAbstractItemView::SingleSelection);
    table.setTabKeyNavigation(false);
    table.verticalHeader()->hide();
    table.verticalHeader()->setDefaultSectionSize(table.fontMetrics().height() + kMoveMargin);
}

void ShowMove(QTableWidget& table, int row, const std::string& axis, const measure::Move& move,
              double cycle_time) {
    const auto number = [](double value, int decimals) {
        return QString::fromStdString(Decimals(value, decimals));
    };
    const QString texts[] = {
        QString::fromStdString(axis), number(static_cast<double>(move.first) * cycle_time, 3),
        number(move.from, 4),         number(move.to, 4),
        number(move.speed, 2),        Told(move.following, 2),
        Told(move.settling, 1),       Told(move.overshoot, 2),
        Told(move.steady_error, 2)};
    for (int column = 0; column < table.columnCount(); ++column) {
        auto* const item = new QTableWidgetItem(texts[column]);
        item->setTextAlignment(column == 0 ? Qt::AlignLeft | Qt::AlignVCenter
                                           : Qt::AlignRight | Qt::AlignVCenter);
        table.setItem(row, column, item);
    }
}

}  // namespace wavo
