// The table of measurements: times of the cursors, and a row per curve with what it says at and
// between them.
#pragma once

#include <QPoint>
#include <QWidget>
#include <map>

#include "ui/panes/measure_columns.h"

class QLayout;
class QCheckBox;
class QLabel;
class QMenu;
class QModelIndex;
class QSettings;
class QTableView;

namespace wavo {

class CWavoView;
class MeasureModel;
struct Prompts;

class MeasurementsPane : public QWidget {
    Q_OBJECT

 public:
    /// `view` and `prompts` are not owned and outlive the pane. Without settings the choice of
    /// columns is not kept.
    MeasurementsPane(CWavoView& view, const Prompts& prompts, QSettings* settings, QWidget* parent);

    /// Measures anew and shows it.
    void Refresh();

    /// Shows or hides a column, and keeps that.
    void ShowColumn(MeasureColumn column, bool shown);
    [[nodiscard]] bool IsColumnShown(MeasureColumn column) const;

    /// The table as text: the times, then the columns that are shown, apart by tabs.
    [[nodiscard]] QString TextOfTable() const;
    /// The table as comma separated values with all digits: a line of titles, then a line per
    /// curve, with the times of the cursors at its end.
    [[nodiscard]] QString CsvOfTable() const;

    void Copy() const;
    /// Asks for a file and writes CsvOfTable to it.
    void Save();

    [[nodiscard]] QSize sizeHint() const override;

 protected:
    void showEvent(QShowEvent* event) override;

 private:
    void MakeTable();
    void MakeHead(QLayout& layout);
    void MakeColumnMenu();
    void LoadColumns();
    void StoreColumns() const;
    void FitColumns();
    void LoadWidths();
    void OnColumnResized(int column, int width);
    void GoOnLater();
    void ShowSelected();
    void OnRowSelected(int row);
    void OnCellClicked(const QModelIndex& cell);

    CWavoView& m_view;
    const Prompts& m_prompts;
    QSettings* const m_settings;
    // Children.
    QLabel* m_times[4] = {};  ///< A, B, their difference, its frequency
    QCheckBox* m_all_graphs = nullptr;
    QMenu* m_column_menu = nullptr;
    QTableView* m_table = nullptr;
    MeasureModel* m_model = nullptr;
    std::map<MeasureColumn, int> m_widths;  ///< that the user has chosen, logical pixels
    bool m_is_showing = false;              ///< what changes is not the user's doing
    bool m_is_fitting = false;              ///< the same of widths
    bool m_is_going_on = false;             ///< the rest is measured later
};

}  // namespace wavo
