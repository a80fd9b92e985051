#include "ui/dialogs/computed_axes_dialog.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <utility>

#include "computed/expression.h"
#include "computed/functions.h"
#include "support/flag_scope.h"

namespace wavo {

namespace {

using computed::ComputedAxis;
using computed::Finding;

constexpr int AxesNumber(ComputedAxesId id) {
    return static_cast<int>(id);
}

constexpr std::array<ControlRow, 12> kComputedAxesRows{{
    {AxesNumber(ComputedAxesId::kTable), ControlKind::kTable,
     "computed &axes:", "All computed axes; the selected one is edited below"},
    {AxesNumber(ComputedAxesId::kAdd), ControlKind::kButton, "A&dd", "A new computed axis"},
    {AxesNumber(ComputedAxesId::kRemove), ControlKind::kButton, "&Remove",
     "Removes the selected axis; curves of it stay empty"},
    {AxesNumber(ComputedAxesId::kUp), ControlKind::kButton, "Move U&p",
     "Lists the selected axis before the one above it"},
    {AxesNumber(ComputedAxesId::kDown), ControlKind::kButton, "Move Do&wn",
     "Lists the selected axis behind the one below it"},
    {AxesNumber(ComputedAxesId::kName), ControlKind::kEdit,
     "&name:", "What the axis is called in graphs, lists and other expressions"},
    {AxesNumber(ComputedAxesId::kExpression), ControlKind::kEdit, "&expression:",
     "What its values are computed of, line by line: axes, numbers, + - * / ^, brackets, "
     "functions; d(axis) is the derivative per second, prev(axis) the value a line before. Names "
     "with other characters than letters, digits, _ and . stand in [ ]"},
    {AxesNumber(ComputedAxesId::kInsert), ControlKind::kButton, "&Insert",
     "Puts an axis or a function into the expression"},
    {AxesNumber(ComputedAxesId::kUnit), ControlKind::kEdit,
     "&unit:", "Unit of the values, shown with the curves; may stay empty"},
    {AxesNumber(ComputedAxesId::kWrong), ControlKind::kStatic,
     "what is wrong:", "What is wrong with the selected axis"},
    {AxesNumber(ComputedAxesId::kOk), ControlKind::kOk, "OK", "Compute these axes from now on"},
    {AxesNumber(ComputedAxesId::kCancel), ControlKind::kCancel, "Cancel",
     "Leave the axes as they were"},
}};

enum AxesColumn { kNameColumn, kExpressionColumn, kUnitColumn, kWrongColumn, kAxesColumns };

/// A wider table scrolls: the dialog has to fit on a small screen; pixels.
constexpr int kWidestTable = 1000;

/// Sizes in characters and rows.
constexpr int kAxesCharacters = 96;
constexpr int kAxesRows = 8;
constexpr int kUnitCharacters = 12;

QString Text(const std::string& text) {
    return QString::fromStdString(text);
}

}  // namespace

std::span<const ControlRow> ComputedAxesControls() {
    return kComputedAxesRows;
}

ComputedAxesDialog::ComputedAxesDialog(std::vector<ComputedAxis> axes,
                                       std::vector<std::string> machine_names, QWidget* parent)
    : TableDialog(QStringLiteral("Computed Axes"), kComputedAxesRows, parent),
      m_initial(axes),
      m_machine_names(std::move(machine_names)),
      m_axes(std::move(axes)) {
    PrepareTable();
    LayOut();
    Connect();
    Check();
    Select(m_axes.empty() ? -1 : 0);
    ShowSelected();
    Control(AxesNumber(m_axes.empty() ? ComputedAxesId::kAdd : ComputedAxesId::kTable)).setFocus();
}

void ComputedAxesDialog::PrepareTable() {
    auto& table = Control<QTableWidget>(AxesNumber(ComputedAxesId::kTable));
    table.setColumnCount(kAxesColumns);
    table.setHorizontalHeaderLabels({QStringLiteral("name"), QStringLiteral("expression"),
                                     QStringLiteral("unit"), QStringLiteral("what is wrong")});
    table.horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table.horizontalHeader()->setStretchLastSection(true);
    table.horizontalHeader()->setHighlightSections(false);
    table.verticalHeader()->hide();
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setSelectionMode(QAbstractItemView::SingleSelection);
    table.setTabKeyNavigation(false);
    const int character = fontMetrics().averageCharWidth();
    constexpr int kWidths[] = {16, 36, 8};
    for (int column = 0; column < kWrongColumn; ++column) {
        table.setColumnWidth(column, kWidths[column] * character);
    }
    table.setMinimumWidth(std::min(kAxesCharacters * character, kWidestTable));
    table.setMinimumHeight(table.horizontalHeader()->sizeHint().height() +
                           table.verticalHeader()->defaultSectionSize() * kAxesRows);
    Control<QLineEdit>(AxesNumber(ComputedAxesId::kName))
        .setMaxLength(static_cast<int>(computed::kLongestComputedName));
    Control<QLineEdit>(AxesNumber(ComputedAxesId::kExpression))
        .setMaxLength(static_cast<int>(computed::kLongestExpression));
    Control<QLineEdit>(AxesNumber(ComputedAxesId::kUnit))
        .setMaxLength(static_cast<int>(computed::kLongestUnit));
    auto& wrong = Control<QLabel>(AxesNumber(ComputedAxesId::kWrong));
    wrong.setTextFormat(Qt::PlainText);
    wrong.setWordWrap(true);
    wrong.setAlignment(Qt::AlignLeft | Qt::AlignTop);
    wrong.setMinimumHeight(2 * fontMetrics().lineSpacing());
}

void ComputedAxesDialog::LayOut() {
    const auto control = [this](ComputedAxesId id) { return &Control(AxesNumber(id)); };
    auto* const buttons = new QVBoxLayout;
    for (const ComputedAxesId id : {ComputedAxesId::kAdd, ComputedAxesId::kRemove,
                                    ComputedAxesId::kUp, ComputedAxesId::kDown}) {
        buttons->addWidget(control(id));
    }
    buttons->addStretch(1);
    auto* const grid = new QGridLayout(this);
    grid->addWidget(LabelOf(AxesNumber(ComputedAxesId::kTable)), 0, 0, 1, 2);
    grid->addWidget(control(ComputedAxesId::kTable), 1, 0, 1, 2);
    grid->addLayout(buttons, 1, 2);
    grid->addWidget(LabelOf(AxesNumber(ComputedAxesId::kName)), 2, 0);
    grid->addWidget(control(ComputedAxesId::kName), 2, 1);
    grid->addWidget(LabelOf(AxesNumber(ComputedAxesId::kExpression)), 3, 0);
    grid->addWidget(control(ComputedAxesId::kExpression), 3, 1);
    grid->addWidget(control(ComputedAxesId::kInsert), 3, 2);
    grid->addWidget(LabelOf(AxesNumber(ComputedAxesId::kUnit)), 4, 0);
    grid->addWidget(&ShortEdit(AxesNumber(ComputedAxesId::kUnit), kUnitCharacters), 4, 1);
    grid->addWidget(LabelOf(AxesNumber(ComputedAxesId::kWrong)), 5, 0, Qt::AlignTop);
    grid->addWidget(control(ComputedAxesId::kWrong), 5, 1, 1, 2);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(1, 1);
    grid->addWidget(Buttons(), 6, 0, 1, 3);
}

void ComputedAxesDialog::Connect() {
    connect(&Control<QTableWidget>(AxesNumber(ComputedAxesId::kTable)),
            &QTableWidget::itemSelectionChanged, this, [this] { ShowSelected(); });
    for (const ComputedAxesId id :
         {ComputedAxesId::kName, ComputedAxesId::kExpression, ComputedAxesId::kUnit}) {
        connect(&Control<QLineEdit>(AxesNumber(id)), &QLineEdit::textChanged, this,
                [this] { TakeEdits(); });
    }
    OnClick(AxesNumber(ComputedAxesId::kAdd), &ComputedAxesDialog::Add);
    OnClick(AxesNumber(ComputedAxesId::kRemove), &ComputedAxesDialog::Remove);
    OnClick(AxesNumber(ComputedAxesId::kUp), &ComputedAxesDialog::MoveUp);
    OnClick(AxesNumber(ComputedAxesId::kDown), &ComputedAxesDialog::MoveDown);
    auto* const menu = new QMenu(this);
    Control<QPushButton>(AxesNumber(ComputedAxesId::kInsert)).setMenu(menu);
    connect(menu, &QMenu::aboutToShow, this, [this] { FillInsertMenu(); });
}

// ---- the list ----

int ComputedAxesDialog::SelectedRow() const {
    const auto rows =
        Control<QTableWidget>(AxesNumber(ComputedAxesId::kTable)).selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
}

void ComputedAxesDialog::Select(int row) {
    auto& table = Control<QTableWidget>(AxesNumber(ComputedAxesId::kTable));
    if (row < 0) {
        table.clearSelection();
    } else {
        table.setCurrentCell(row, kNameColumn);
        table.selectRow(row);
    }
}

void ComputedAxesDialog::Add() {
    const auto is_taken = [this](const std::string& name) {
        return std::ranges::find(m_axes, name, &ComputedAxis::name) != m_axes.end() ||
               std::ranges::find(m_machine_names, name) != m_machine_names.end();
    };
    ComputedAxis axis;
    for (int number = 1; axis.name.empty() || is_taken(axis.name); ++number) {
        axis.name = "computed" + std::to_string(number);
    }
    const int row = SelectedRow() < 0 ? static_cast<int>(m_axes.size()) : SelectedRow() + 1;
    m_axes.insert(m_axes.begin() + row, axis);
    Check();
    Select(row);
    ShowSelected();
    auto& name = Control<QLineEdit>(AxesNumber(ComputedAxesId::kName));
    name.setFocus();
    name.selectAll();
}

void ComputedAxesDialog::Remove() {
    const int row = SelectedRow();
    m_axes.erase(m_axes.begin() + row);
    Check();
    Select(std::min(row, static_cast<int>(m_axes.size()) - 1));
    ShowSelected();
}

void ComputedAxesDialog::Move(int rows) {
    const int row = SelectedRow();
    std::swap(m_axes[static_cast<std::size_t>(row)], m_axes[static_cast<std::size_t>(row + rows)]);
    Check();
    Select(row + rows);
    ShowSelected();
}

// ---- what is typed ----

void ComputedAxesDialog::FillInsertMenu() {
    QMenu& menu = *Control<QPushButton>(AxesNumber(ComputedAxesId::kInsert)).menu();
    menu.clear();
    const auto add = [this](QMenu& to, const std::string& shown, const std::string& text,
                            int back) {
        QString label = Text(shown);
        to.addAction(label.replace(u'&', QStringLiteral("&&")), this,
                     [this, text, back] { Insert(Text(text), back); });
    };
    QMenu& axes = *menu.addMenu(QStringLiteral("&Axes"));
    for (const std::string& name : m_machine_names) {
        add(axes, name, computed::InExpression(name), 0);
    }
    const auto selected = static_cast<std::size_t>(std::max(SelectedRow(), 0));
    for (std::size_t i = 0; i < m_axes.size(); ++i) {
        if (i != selected && computed::IsPlainName(m_axes[i].name)) {
            add(axes, m_axes[i].name, computed::InExpression(m_axes[i].name), 0);
        }
    }
    axes.setEnabled(!axes.isEmpty());
    QMenu& functions = *menu.addMenu(QStringLiteral("&Functions"));
    add(functions, "d(axis): derivative per second", "d()", 1);
    add(functions, "prev(axis): its value a line before", "prev()", 1);
    functions.addSeparator();
    for (const computed::Function& function : computed::Functions()) {
        const std::string name(function.name);
        add(functions, name + "(): " + std::string(function.help), name + "()", 1);
    }
}

void ComputedAxesDialog::Insert(const QString& text, int back) {
    auto& expression = Control<QLineEdit>(AxesNumber(ComputedAxesId::kExpression));
    expression.insert(text);
    expression.cursorBackward(false, back);
    expression.setFocus();
}

void ComputedAxesDialog::ShowSelected() {
    const FlagScope showing(m_is_showing);
    const int row = SelectedRow();
    const bool is_one = row >= 0;
    const ComputedAxis axis = is_one ? m_axes[static_cast<std::size_t>(row)] : ComputedAxis();
    const auto show = [this](ComputedAxesId id, const std::string& text) {
        if (EditText(AxesNumber(id)) != Text(text)) {
            SetEditText(AxesNumber(id), Text(text));
        }
    };
    show(ComputedAxesId::kName, axis.name);
    show(ComputedAxesId::kExpression, axis.expression);
    show(ComputedAxesId::kUnit, axis.unit);
    const auto enable = [this](ComputedAxesId id, bool on) {
        Control(AxesNumber(id)).setEnabled(on);
    };
    for (const ComputedAxesId id :
         {ComputedAxesId::kName, ComputedAxesId::kExpression, ComputedAxesId::kInsert,
          ComputedAxesId::kUnit, ComputedAxesId::kRemove}) {
        enable(id, is_one);
    }
    enable(ComputedAxesId::kAdd, m_axes.size() < computed::kMostComputedAxes);
    enable(ComputedAxesId::kUp, row > 0);
    enable(ComputedAxesId::kDown, is_one && row + 1 < static_cast<int>(m_axes.size()));
    ShowWrong(row);
}

void ComputedAxesDialog::ShowWrong(int row) {
    const QString wrong = row >= 0 ? WrongText(static_cast<std::size_t>(row)) : QString();
    auto& label = Control<QLabel>(AxesNumber(ComputedAxesId::kWrong));
    label.setText(wrong);
    label.setAccessibleDescription(wrong.isEmpty() ? QStringLiteral("nothing") : wrong);
}

void ComputedAxesDialog::TakeEdits() {
    const int row = SelectedRow();
    if (m_is_showing || row < 0) {
        return;
    }
    m_axes[static_cast<std::size_t>(row)] = {
        EditText(AxesNumber(ComputedAxesId::kName)).trimmed().toStdString(),
        EditText(AxesNumber(ComputedAxesId::kExpression)).trimmed().toStdString(),
        EditText(AxesNumber(ComputedAxesId::kUnit)).trimmed().toStdString()};
    Check();
    ShowWrong(row);
}

bool ComputedAxesDialog::IsRefused(std::size_t axis, const Finding& finding) const {
    switch (finding.kind) {
        case Finding::Kind::kNone:
        case Finding::Kind::kUnknown:
            return false;
        case Finding::Kind::kTaken:
            return std::ranges::find(m_initial, m_axes[axis].name, &ComputedAxis::name) ==
                   m_initial.end();
        case Finding::Kind::kName:
        case Finding::Kind::kExpression:
            break;
    }
    return true;
}

QString ComputedAxesDialog::WrongText(std::size_t axis) const {
    const Finding& finding = m_program.Findings()[axis];
    QString text = Text(finding.text);
    if (finding.place > 0) {
        const std::string before = m_axes[axis].expression.substr(0, finding.place - 1);
        text += QStringLiteral(" (character %1)").arg(Text(before).size() + 1);
    }
    return text;
}

void ComputedAxesDialog::Check() {
    m_program = computed::ComputedProgram(m_axes, m_machine_names);
    auto& table = Control<QTableWidget>(AxesNumber(ComputedAxesId::kTable));
    table.setRowCount(static_cast<int>(m_axes.size()));
    bool is_refused = false;
    for (std::size_t i = 0; i < m_axes.size(); ++i) {
        const std::array<QString, kAxesColumns> texts{
            Text(m_axes[i].name), Text(m_axes[i].expression), Text(m_axes[i].unit), WrongText(i)};
        for (int column = 0; column < kAxesColumns; ++column) {
            const int row = static_cast<int>(i);
            if (table.item(row, column) == nullptr) {
                table.setItem(row, column, new QTableWidgetItem);
            }
            table.item(row, column)->setText(texts[static_cast<std::size_t>(column)]);
            table.item(row, column)->setToolTip(texts[static_cast<std::size_t>(column)]);
        }
        is_refused |= IsRefused(i, m_program.Findings()[i]);
    }
    Control(AxesNumber(ComputedAxesId::kOk)).setEnabled(!is_refused);
}

}  // namespace wavo
