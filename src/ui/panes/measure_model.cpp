#include "ui/panes/measure_model.h"

#include <QIcon>
#include <QPixmap>
#include <algorithm>

namespace wavo {

namespace {

/// A square of the colour, the same in a selected row.
QIcon ColorSign(const QColor& color) {
    constexpr int kSide = 16;
    QPixmap square(kSide, kSide);
    square.fill(color);
    QIcon icon(square);
    icon.addPixmap(square, QIcon::Selected);
    return icon;
}

bool SameCurves(const MeasuredTable& a, const MeasuredTable& b) {
    return std::equal(a.curves.begin(), a.curves.end(), b.curves.begin(), b.curves.end(),
                      [](const MeasuredCurve& x, const MeasuredCurve& y) { return x.id == y.id; });
}

}  // namespace

void MeasureModel::Show(const MeasuredTable& table) {
    if (!SameCurves(table, m_table)) {
        beginResetModel();
        m_table = table;
        endResetModel();
        return;
    }
    m_table = table;
    if (!m_table.curves.empty()) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    }
}

const MeasuredCurve* MeasureModel::CurveOf(int row) const {
    return row >= 0 && row < rowCount() ? &m_table.curves[static_cast<std::size_t>(row)] : nullptr;
}

int MeasureModel::RowOf(const CurveId& curve) const {
    const auto found = std::find_if(m_table.curves.begin(), m_table.curves.end(),
                                    [&](const MeasuredCurve& row) { return row.id == curve; });
    return found == m_table.curves.end() ? -1 : static_cast<int>(found - m_table.curves.begin());
}

int MeasureModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_table.curves.size());
}

int MeasureModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(MeasureColumns().size());
}

QVariant MeasureModel::data(const QModelIndex& index, int role) const {
    const MeasuredCurve* const curve = CurveOf(index.row());
    if (curve == nullptr) {
        return {};
    }
    const auto column = static_cast<MeasureColumn>(index.column());
    switch (role) {
        case Qt::DisplayRole:
        case Qt::ToolTipRole:
            return CellText(m_table, *curve, column);
        case Qt::DecorationRole:
            return column == MeasureColumn::kCurve ? QVariant(ColorSign(curve->color)) : QVariant();
        case Qt::TextAlignmentRole:
            return QVariant::fromValue(
                (column == MeasureColumn::kCurve ? Qt::AlignLeft : Qt::AlignRight) |
                Qt::AlignVCenter);
        default:
            return {};
    }
}

QVariant MeasureModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return {};
    }
    const MeasureColumnRow& column = MeasureColumns()[static_cast<std::size_t>(section)];
    return role == Qt::DisplayRole   ? QVariant(QString::fromUtf8(column.title))
           : role == Qt::ToolTipRole ? QVariant(QString::fromUtf8(column.tool_tip))
                                     : QVariant();
}

}  // namespace wavo
