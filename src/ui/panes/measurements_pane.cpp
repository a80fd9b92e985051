#include "ui/panes/measurements_pane.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>
#include <optional>
#include <utility>

#include "ui/controls/control_table.h"
#include "ui/controls/flow_layout.h"
#include "ui/controls/roomy_label.h"
#include "ui/panes/measure_model.h"
#include "ui/panes/pane_files.h"
#include "view/wavo_view.h"

namespace wavo {

namespace {

constexpr char kColumnsSetting[] = "MeasureColumns";
constexpr char kAllGraphsSetting[] = "MeasureAllGraphs";
constexpr char kWidthsSetting[] = "MeasureColumnWidths";
constexpr int kMargin = 4;

/// Says what the labels above the table stand for.
struct TimeLabel {
    const char* title;
    const char* tool_tip;
};
constexpr TimeLabel kTimeLabels[] = {
    {"A", "When cursor A is, s from the newest sample; in a recording from its begin"},
    {"B", "When cursor B is, s from the newest sample; in a recording from its begin"},
    {"Δt", "From A to B"},
    {"1/Δt", "Frequency of what takes so long"},
};

int IndexOf(MeasureColumn column) {
    return static_cast<int>(column);
}

QString ExactTime(const std::optional<double>& time, int decimals) {
    return time ? NumberText(*time, decimals) : QString();
}

}  // namespace

MeasurementsPane::MeasurementsPane(CWavoView& view, const Prompts& prompts, QSettings* settings,
                                   QWidget* parent)
    : QWidget(parent),
      m_view(view),
      m_prompts(prompts),
      m_settings(settings),
      m_model(new MeasureModel(this)) {
    setObjectName(QStringLiteral("measurements_pane"));
    SetAccessibleTexts(*this, QStringLiteral("Measurements"),
                       QStringLiteral("What the curves say at and between the cursors"));
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    auto* const head = new FlowLayout;  // what has no room in a row begins another one
    layout->addLayout(head);
    MakeTable();
    MakeColumnMenu();
    MakeHead(*head);
    layout->addWidget(m_table);
    LoadWidths();
    LoadColumns();
}

void MeasurementsPane::MakeTable() {
    m_table = new QTableView(this);
    m_table->setObjectName(QStringLiteral("measurements_table"));
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTabKeyNavigation(false);
    m_table->setWordWrap(false);
    m_table->setMinimumHeight(2 * m_table->fontMetrics().height());
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + kMargin);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->horizontalHeader()->setContextMenuPolicy(Qt::CustomContextMenu);
    SetAccessibleTexts(*m_table, QStringLiteral("Measurements"),
                       QStringLiteral("The figures of each curve at and between the cursors"));
    connect(m_table->horizontalHeader(), &QWidget::customContextMenuRequested, this,
            [this](const QPoint& point) {
                m_column_menu->popup(m_table->horizontalHeader()->mapToGlobal(point));
            });
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { OnRowSelected(current.row()); });
    connect(m_table, &QTableView::clicked, this, &MeasurementsPane::OnCellClicked);
    connect(m_table->horizontalHeader(), &QHeaderView::sectionResized, this,
            [this](int column, int, int width) { OnColumnResized(column, width); });
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] { FitColumns(); });
    auto* const copy = new QAction(QStringLiteral("&Copy"), m_table);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &MeasurementsPane::Copy);
    m_table->addAction(copy);
}

void MeasurementsPane::MakeHead(QLayout& layout) {
    for (std::size_t i = 0; i < std::size(kTimeLabels); ++i) {
        auto* const time = new RoomyLabel(this);
        time->setObjectName(QStringLiteral("measure_time_%1").arg(i));
        time->setToolTip(QString::fromUtf8(kTimeLabels[i].tool_tip));
        SetAccessibleTexts(*time, QString::fromUtf8(kTimeLabels[i].title), time->toolTip());
        time->setTextFormat(Qt::PlainText);
        time->setTextInteractionFlags(Qt::TextSelectableByMouse);
        time->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        time->SetWidestText(QStringLiteral("1/Δt  -100.0000 Hz"));
        layout.addWidget(time);
        m_times[i] = time;
    }
    m_all_graphs = new QCheckBox(QStringLiteral("all graphs"), this);
    m_all_graphs->setObjectName(QStringLiteral("measure_all_graphs"));
    m_all_graphs->setToolTip(
        QStringLiteral("The curves of all graphs, else of the graph that is selected"));
    if (m_settings != nullptr) {
        m_all_graphs->setChecked(m_settings->value(QLatin1String(kAllGraphsSetting)).toBool());
    }
    m_view.Measured().SetAllGraphs(m_all_graphs->isChecked());
    connect(m_all_graphs, &QCheckBox::toggled, this, [this](bool all) {
        m_view.Measured().SetAllGraphs(all);
        if (m_settings != nullptr) {
            m_settings->setValue(QLatin1String(kAllGraphsSetting), all);
        }
        Refresh();
    });
    auto* const columns = new QToolButton(this);
    columns->setText(QStringLiteral("Columns"));
    columns->setObjectName(QStringLiteral("measure_columns"));
    columns->setToolTip(QStringLiteral("Chooses the columns of the table"));
    columns->setPopupMode(QToolButton::InstantPopup);
    columns->setFocusPolicy(Qt::StrongFocus);
    columns->setMenu(m_column_menu);
    auto* const copy = new QPushButton(QStringLiteral("Copy"), this);
    copy->setObjectName(QStringLiteral("measure_copy"));
    copy->setToolTip(QStringLiteral("Copies the table as text with tabs"));
    connect(copy, &QPushButton::clicked, this, &MeasurementsPane::Copy);
    auto* const save = new QPushButton(QStringLiteral("Save as CSV..."), this);
    save->setObjectName(QStringLiteral("measure_save"));
    save->setToolTip(QStringLiteral("Saves the table as comma separated values"));
    connect(save, &QPushButton::clicked, this, &MeasurementsPane::Save);
    for (QWidget* const control :
         std::initializer_list<QWidget*>{m_all_graphs, columns, copy, save}) {
        control->setAccessibleDescription(control->toolTip());
        layout.addWidget(control);
    }
    columns->setAccessibleName(columns->text());
}

void MeasurementsPane::MakeColumnMenu() {
    m_column_menu = new QMenu(this);
    m_column_menu->setObjectName(QStringLiteral("measure_column_menu"));
    for (const MeasureColumnRow& column : MeasureColumns()) {
        if (column.id == MeasureColumn::kCurve) {
            continue;
        }
        auto* const action = m_column_menu->addAction(QString::fromUtf8(column.title));
        action->setObjectName(QLatin1String(column.name));
        action->setToolTip(QString::fromUtf8(column.tool_tip));
        action->setCheckable(true);
        connect(action, &QAction::triggered, this,
                [this, id = column.id](bool shown) { ShowColumn(id, shown); });
    }
    m_column_menu->setToolTipsVisible(true);
    connect(m_column_menu, &QMenu::aboutToShow, this, [this] {
        for (const MeasureColumnRow& column : MeasureColumns()) {
            if (auto* const action =
                    m_column_menu->findChild<QAction*>(QLatin1String(column.name))) {
                action->setChecked(IsColumnShown(column.id));
            }
        }
    });
}

void MeasurementsPane::LoadColumns() {
    const QString setting = QLatin1String(kColumnsSetting);
    const bool is_kept = m_settings != nullptr && m_settings->contains(setting);
    const QStringList names = is_kept ? m_settings->value(setting).toStringList() : QStringList();
    m_is_fitting = true;
    for (const MeasureColumnRow& column : MeasureColumns()) {
        const bool shown = column.id == MeasureColumn::kCurve ||
                           (is_kept ? names.contains(QLatin1String(column.name)) : column.at_first);
        m_table->setColumnHidden(IndexOf(column.id), !shown);
    }
    FitColumns();
}

void MeasurementsPane::StoreColumns() const {
    if (m_settings == nullptr) {
        return;
    }
    QStringList names;
    for (const MeasureColumnRow& column : MeasureColumns()) {
        if (IsColumnShown(column.id)) {
            names << QLatin1String(column.name);
        }
    }
    m_settings->setValue(QLatin1String(kColumnsSetting), names);
}

bool MeasurementsPane::IsColumnShown(MeasureColumn column) const {
    return !m_table->isColumnHidden(IndexOf(column));
}

void MeasurementsPane::ShowColumn(MeasureColumn column, bool shown) {
    m_is_fitting = true;
    m_table->setColumnHidden(IndexOf(column), !shown && column != MeasureColumn::kCurve);
    FitColumns();
    StoreColumns();
}

// Not with every batch: columns that change their widths cannot be read.
void MeasurementsPane::FitColumns() {
    m_is_fitting = true;
    m_table->resizeColumnsToContents();
    const int least = m_table->fontMetrics().horizontalAdvance(QStringLiteral("-1000.000000 "));
    for (int column = 1; column < m_model->columnCount(); ++column) {
        if (!m_table->isColumnHidden(column)) {
            m_table->setColumnWidth(column, std::max(least, m_table->columnWidth(column)));
        }
    }
    for (const auto& [column, width] : m_widths) {
        m_table->setColumnWidth(IndexOf(column), width);
    }
    m_is_fitting = false;
}

void MeasurementsPane::LoadWidths() {
    const QStringList kept = m_settings == nullptr
                                 ? QStringList()
                                 : m_settings->value(QLatin1String(kWidthsSetting)).toStringList();
    for (const MeasureColumnRow& column : MeasureColumns()) {
        const QString name = QLatin1String(column.name) + u'=';
        for (const QString& entry : kept) {
            const int width = entry.startsWith(name) ? entry.mid(name.size()).toInt() : 0;
            if (width > 0) {
                m_widths[column.id] = width;
            }
        }
    }
}

void MeasurementsPane::OnColumnResized(int column, int width) {
    if (m_is_fitting || width <= 0) {
        return;
    }
    m_widths[static_cast<MeasureColumn>(column)] = width;
    if (m_settings == nullptr) {
        return;
    }
    QStringList kept;
    for (const auto& [id, chosen] : m_widths) {
        const char* const name = MeasureColumns()[static_cast<std::size_t>(id)].name;
        kept << QStringLiteral("%1=%2").arg(QLatin1String(name)).arg(chosen);
    }
    m_settings->setValue(QLatin1String(kWidthsSetting), kept);
}

void MeasurementsPane::Refresh() {
    const MeasuredTable& table = m_view.Measured().Renew();
    m_is_showing = true;
    m_model->Show(table);
    ShowSelected();
    m_is_showing = false;
    const QString texts[] = {TimeText(table.a, table.time_decimals),
                             TimeText(table.b, table.time_decimals), DifferenceText(table),
                             FrequencyText(table)};
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        const QString title = QString::fromUtf8(kTimeLabels[i].title);
        m_times[i]->setText(title + QStringLiteral("  ") + texts[i]);
        m_times[i]->setAccessibleName(m_times[i]->text());
    }
    if (!table.is_whole) {
        GoOnLater();
    }
}

// What is long is measured in parts, between two events.
void MeasurementsPane::GoOnLater() {
    if (std::exchange(m_is_going_on, true)) {
        return;
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_is_going_on = false;
            if (isVisible()) {
                Refresh();
            }
        },
        Qt::QueuedConnection);
}

void MeasurementsPane::ShowSelected() {
    const auto curve = m_view.Measured().SelectedCurve();
    const int row = curve ? m_model->RowOf(*curve) : -1;
    if (row >= 0 && row != m_table->currentIndex().row()) {
        m_table->selectRow(row);
    }
}

void MeasurementsPane::OnRowSelected(int row) {
    const MeasuredCurve* const curve = m_model->CurveOf(row);
    if (curve == nullptr || m_is_showing) {
        return;
    }
    const CurveId id = curve->id;
    m_view.Measured().SelectCurve(id);
    m_view.Zooms().Select(id.graph);
}

void MeasurementsPane::OnCellClicked(const QModelIndex& cell) {
    const MeasuredCurve* const curve = m_model->CurveOf(cell.row());
    const auto line = curve == nullptr
                          ? std::nullopt
                          : LineOfCell(*curve, static_cast<MeasureColumn>(cell.column()));
    if (line) {
        m_view.Cursors().JumpTo(m_view.Cursors().Active().value_or(CursorName::kA), *line);
    }
}

QString MeasurementsPane::TextOfTable() const {
    QString text;
    for (const QLabel* const time : m_times) {
        text += QString(time->text()).replace(QStringLiteral("  "), QStringLiteral("\t")) + u'\n';
    }
    const MeasuredTable& table = m_model->Table();
    QStringList cells;
    for (const MeasureColumnRow& column : MeasureColumns()) {
        if (IsColumnShown(column.id)) {
            cells << QString::fromUtf8(column.title);
        }
    }
    text += cells.join(u'\t') + u'\n';
    for (const MeasuredCurve& curve : table.curves) {
        cells.clear();
        for (const MeasureColumnRow& column : MeasureColumns()) {
            if (IsColumnShown(column.id)) {
                cells << CellText(table, curve, column.id);
            }
        }
        text += cells.join(u'\t') + u'\n';
    }
    return text;
}

QString MeasurementsPane::CsvOfTable() const {
    const MeasuredTable& table = m_model->Table();
    QStringList cells;
    for (const MeasureColumnRow& column : MeasureColumns()) {
        if (IsColumnShown(column.id)) {
            cells << CsvCell(QString::fromUtf8(column.title));
        }
    }
    cells << QStringLiteral("t of A") << QStringLiteral("t of B");
    QString text = cells.join(u',') + u'\n';
    for (const MeasuredCurve& curve : table.curves) {
        cells.clear();
        for (const MeasureColumnRow& column : MeasureColumns()) {
            if (IsColumnShown(column.id)) {
                cells << CsvCell(ExactText(table, curve, column.id));
            }
        }
        cells << ExactTime(table.a, table.time_decimals) << ExactTime(table.b, table.time_decimals);
        text += cells.join(u',') + u'\n';
    }
    return text;
}

void MeasurementsPane::Copy() const {
    QGuiApplication::clipboard()->setText(TextOfTable());
}

void MeasurementsPane::Save() {
    const QString text = CsvOfTable();  // of now: values go on while the user is asked
    SaveAsCsv(this, m_prompts, m_settings, QStringLiteral("measurements.csv"), text);
}

QSize MeasurementsPane::sizeHint() const {
    constexpr int kRowsAtFirst = 5;
    const int rows = m_table->verticalHeader()->defaultSectionSize() * kRowsAtFirst;
    return {QWidget::sizeHint().width(), minimumSizeHint().height() + rows};
}

void MeasurementsPane::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    Refresh();
    FitColumns();
}

}  // namespace wavo
