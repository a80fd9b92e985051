#include "ui/dialogs/import_table.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <algorithm>
#include <array>
#include <utility>

#include "support/number_text.h"
#include "ui/dialogs/remembered_tables.h"

namespace wavo {

namespace {

constexpr int ImportNumber(ImportTableId id) {
    return static_cast<int>(id);
}

constexpr std::array<ControlRow, 9> kImportTableRows{{
    {ImportNumber(ImportTableId::kFile), ControlKind::kElidedStatic, "table:", ""},
    {ImportNumber(ImportTableId::kLines), ControlKind::kTable, "first lines",
     "The first lines of the table, as they stand in it"},
    {ImportNumber(ImportTableId::kByCycle), ControlKind::kRadio, "every &line takes",
     "From each line to the next the same time goes by"},
    {ImportNumber(ImportTableId::kCycleTime), ControlKind::kEdit, "seconds (cycle time)",
     "Time from one line to the next, in seconds"},
    {ImportNumber(ImportTableId::kByColumn), ControlKind::kRadio, "the &time stands in column",
     "A column tells the time of each line; where it jumps, lines are missing"},
    {ImportNumber(ImportTableId::kColumn), ControlKind::kCombo, "column with the time",
     "The column that tells the time"},
    {ImportNumber(ImportTableId::kUnit), ControlKind::kCombo, "unit of the time",
     "What the numbers of that column count"},
    {ImportNumber(ImportTableId::kOk), ControlKind::kOk, "OK", "Open the table as a recording"},
    {ImportNumber(ImportTableId::kCancel), ControlKind::kCancel, "Cancel", "Do not open it"},
}};

constexpr std::array<std::pair<const char*, double>, 4> kTimeUnits{
    {{"seconds", 1.0}, {"milliseconds", 1e-3}, {"microseconds", 1e-6}, {"nanoseconds", 1e-9}}};

/// Size of the table in characters and lines.
constexpr int kShownCharacters = 90;
constexpr int kShownLines = 9;
/// Longest text of a field that is shown.
constexpr qsizetype kLongestField = 40;

QString FieldText(const std::string& text) {
    const QString field = QString::fromStdString(text);
    return field.size() > kLongestField ? field.left(kLongestField) + QStringLiteral("...") : field;
}

}  // namespace

std::span<const ControlRow> ImportTableControls() {
    return kImportTableRows;
}

ImportTable::ImportTable(const tables::TablePreview& preview, const tables::TimeChoice& initial,
                         QWidget* parent)
    : TableDialog(QStringLiteral("Import Table"), kImportTableRows, parent) {
    auto& file = Control<QLabel>(ImportNumber(ImportTableId::kFile));
    file.setText(QString::fromStdString(preview.path));
    // Its tool tip is for what does not fit.
    file.setAccessibleDescription(QStringLiteral("The table that is opened"));
    ShowLines(preview);
    FillColumns(preview);
    ShowChoice(initial);
    LayOut();
    for (const ImportTableId id : {ImportTableId::kByCycle, ImportTableId::kByColumn}) {
        connect(&Control<QRadioButton>(ImportNumber(id)), &QRadioButton::toggled, this,
                [this] { Enable(); });
    }
    connect(&Control<QLineEdit>(ImportNumber(ImportTableId::kCycleTime)), &QLineEdit::textChanged,
            this, [this] { Enable(); });
    Enable();
}

void ImportTable::ShowLines(const tables::TablePreview& preview) {
    auto& lines = Control<QTableWidget>(ImportNumber(ImportTableId::kLines));
    const auto columns =
        static_cast<int>(std::min(preview.names.size(), tables::TablePreview::kColumns));
    lines.setEditTriggers(QAbstractItemView::NoEditTriggers);
    lines.setTabKeyNavigation(false);
    lines.setColumnCount(columns);
    lines.setRowCount(static_cast<int>(preview.rows.size()));
    for (int column = 0; column < columns; ++column) {
        lines.setHorizontalHeaderItem(
            column,
            new QTableWidgetItem(FieldText(preview.names[static_cast<std::size_t>(column)])));
    }
    for (int row = 0; row < lines.rowCount(); ++row) {
        const auto& texts = preview.rows[static_cast<std::size_t>(row)];
        for (int column = 0; column < std::min(columns, static_cast<int>(texts.size())); ++column) {
            lines.setItem(row, column,
                          new QTableWidgetItem(FieldText(texts[static_cast<std::size_t>(column)])));
        }
    }
    lines.resizeColumnsToContents();
    lines.setMinimumWidth(fontMetrics().averageCharWidth() * kShownCharacters);
    lines.setMinimumHeight(lines.horizontalHeader()->sizeHint().height() +
                           fontMetrics().height() * kShownLines);
}

void ImportTable::FillColumns(const tables::TablePreview& preview) {
    auto& columns = Control<QComboBox>(ImportNumber(ImportTableId::kColumn));
    for (std::size_t i = 0; i < preview.names.size(); ++i) {
        if (!preview.is_text[i]) {
            columns.addItem(FieldText(preview.names[i]), QVariant::fromValue<qulonglong>(i));
        }
    }
    auto& units = Control<QComboBox>(ImportNumber(ImportTableId::kUnit));
    for (const auto& [name, seconds] : kTimeUnits) {
        units.addItem(QString::fromLatin1(name), seconds);
    }
}

void ImportTable::ShowChoice(const tables::TimeChoice& choice) {
    auto& columns = Control<QComboBox>(ImportNumber(ImportTableId::kColumn));
    const int column =
        choice.column ? columns.findData(QVariant::fromValue<qulonglong>(*choice.column)) : -1;
    columns.setCurrentIndex(std::max(column, 0));
    auto& units = Control<QComboBox>(ImportNumber(ImportTableId::kUnit));
    units.setCurrentIndex(std::max(units.findData(choice.unit), 0));
    SetEditText(ImportNumber(ImportTableId::kCycleTime),
                QString::number(choice.cycle_time, 'g', QLocale::FloatingPointShortest));
    Control<QRadioButton>(
        ImportNumber(column >= 0 ? ImportTableId::kByColumn : ImportTableId::kByCycle))
        .setChecked(true);
}

void ImportTable::LayOut() {
    constexpr int kCycleCharacters = 16;
    auto* const grid = new QGridLayout(this);
    const auto control = [this](ImportTableId id) { return &Control(ImportNumber(id)); };
    grid->addWidget(LabelOf(ImportNumber(ImportTableId::kFile)), 0, 0);
    grid->addWidget(control(ImportTableId::kFile), 0, 1, 1, 3);
    grid->addWidget(control(ImportTableId::kLines), 1, 0, 1, 4);
    grid->addWidget(control(ImportTableId::kByCycle), 2, 0);
    grid->addWidget(&ShortEdit(ImportNumber(ImportTableId::kCycleTime), kCycleCharacters), 2, 1);
    grid->addWidget(LabelOf(ImportNumber(ImportTableId::kCycleTime)), 2, 2);
    grid->addWidget(control(ImportTableId::kByColumn), 3, 0);
    grid->addWidget(control(ImportTableId::kColumn), 3, 1);
    grid->addWidget(control(ImportTableId::kUnit), 3, 2);
    grid->setColumnStretch(3, 1);
    grid->setRowStretch(1, 1);
    grid->addWidget(Buttons(), 4, 0, 1, 4);
}

std::optional<double> ImportTable::CycleTime() const {
    QString text = EditText(ImportNumber(ImportTableId::kCycleTime));
    const std::optional<double> seconds = FindWholeDouble(text.replace(u',', u'.').toStdString());
    return seconds && tables::IsCycleTime(*seconds) ? seconds : std::nullopt;
}

void ImportTable::Enable() {
    const auto enable = [this](ImportTableId id, bool on) {
        Control(ImportNumber(id)).setEnabled(on);
    };
    const bool by_column =
        Control<QRadioButton>(ImportNumber(ImportTableId::kByColumn)).isChecked();
    const bool has_columns = Control<QComboBox>(ImportNumber(ImportTableId::kColumn)).count() > 0;
    enable(ImportTableId::kByColumn, has_columns);
    enable(ImportTableId::kCycleTime, !by_column);
    enable(ImportTableId::kColumn, by_column);
    enable(ImportTableId::kUnit, by_column);
    enable(ImportTableId::kOk, by_column ? has_columns : CycleTime().has_value());
}

tables::TimeChoice ImportTable::Choice() const {
    tables::TimeChoice choice;
    if (Control<QRadioButton>(ImportNumber(ImportTableId::kByColumn)).isChecked()) {
        choice.column = static_cast<std::size_t>(
            Control<QComboBox>(ImportNumber(ImportTableId::kColumn)).currentData().toULongLong());
        choice.unit =
            Control<QComboBox>(ImportNumber(ImportTableId::kUnit)).currentData().toDouble();
    }
    choice.cycle_time = CycleTime().value_or(choice.cycle_time);
    return choice;
}

std::optional<tables::TimeChoice> TimeOfTable(QWidget* parent, QSettings* settings,
                                              const tables::TablePreview& preview, AskTime ask) {
    RememberedTables answers(settings);
    const std::optional<tables::TimeChoice> remembered = answers.Find(preview);
    if (remembered && ask != AskTime::kAlways) {
        return remembered;
    }
    if (ask == AskTime::kNever) {
        return preview.guess;
    }
    ImportTable dialog(
        preview, remembered ? *remembered : preview.guess.value_or(tables::TimeChoice()), parent);
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    answers.Remember(preview, dialog.Choice());
    return dialog.Choice();
}

}  // namespace wavo
