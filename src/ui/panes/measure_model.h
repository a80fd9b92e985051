// The table of measurements as its view asks for it: a row per curve. Texts are made for the cells
// that are seen alone.
#pragma once

#include <QAbstractTableModel>

#include "ui/panes/measure_columns.h"

namespace wavo {

class MeasureModel final : public QAbstractTableModel {
    Q_OBJECT

 public:
    using QAbstractTableModel::QAbstractTableModel;

    /// Shows other figures. Where the curves are others the rows are made anew.
    void Show(const MeasuredTable& table);
    [[nodiscard]] const MeasuredTable& Table() const { return m_table; }
    /// The curve of a row; null beyond the rows.
    [[nodiscard]] const MeasuredCurve* CurveOf(int row) const;
    /// The row of a curve; -1 when it has none.
    [[nodiscard]] int RowOf(const CurveId& curve) const;

    // QAbstractTableModel
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

 private:
    MeasuredTable m_table;
};

}  // namespace wavo
