#include "ui/panes/limits_dialog.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "report/page.h"
#include "support/fast_file.h"
#include "support/file_name.h"
#include "ui/dialogs/report_texts.h"

namespace wavo {

namespace {

constexpr int LimitsNumber(LimitsId id) {
    return static_cast<int>(id);
}

constexpr std::array<ControlRow, 7> kLimitsRows{{
    {LimitsNumber(LimitsId::kTable), ControlKind::kTable, "limits",
     "A limit is a number (largest magnitude), a range like -5..20, or one side of it: 16.. or "
     "..16"},
    {LimitsNumber(LimitsId::kFault), ControlKind::kElidedStatic, "fault", ""},
    {LimitsNumber(LimitsId::kOpen), ControlKind::kButton, "&Open...", "Takes the limits of a file"},
    {LimitsNumber(LimitsId::kSave), ControlKind::kButton, "&Save...",
     "Saves the limits to a file, which wavo_report takes too"},
    {LimitsNumber(LimitsId::kClear), ControlKind::kButton, "&Clear", "No limits any more"},
    {LimitsNumber(LimitsId::kOk), ControlKind::kOk, "OK", "Judge by these limits"},
    {LimitsNumber(LimitsId::kCancel), ControlKind::kCancel, "Cancel",
     "Leave the limits as they were"},
}};

constexpr int kLimitColumn = 2;
constexpr int kShownRows = 16;
constexpr int kShownCharacters = 76;
constexpr qint64 kLongestFile = 1 << 20;
constexpr char kLimitFilters[] = "Limits|*.ini|All Files|*.*|";

}  // namespace

LimitsDialog::LimitsDialog(std::span<const measure::NamedFigure> figures,
                           const measure::Limits& limits, const Prompts& prompts,
                           const QString& folder, QWidget* parent)
    : TableDialog(QStringLiteral("Limits"), kLimitsRows, parent),
      m_prompts(prompts),
      m_figures(figures.begin(), figures.end()),
      m_limits(limits),
      m_folder(folder) {
    MakeTable();
    auto* const files = new QHBoxLayout;
    for (const LimitsId id : {LimitsId::kOpen, LimitsId::kSave, LimitsId::kClear}) {
        files->addWidget(&Control(LimitsNumber(id)));
    }
    files->addStretch();
    auto* const column = new QVBoxLayout(this);
    column->addWidget(&Control(LimitsNumber(LimitsId::kTable)));
    column->addWidget(&Control(LimitsNumber(LimitsId::kFault)));
    column->addLayout(files);
    column->addWidget(Buttons());
    OnClick(LimitsNumber(LimitsId::kOpen), &LimitsDialog::Open);
    OnClick(LimitsNumber(LimitsId::kSave), &LimitsDialog::Save);
    OnClick(LimitsNumber(LimitsId::kClear), &LimitsDialog::Clear);
    Show();
}

bool LimitsDialog::Edit(std::span<const measure::NamedFigure> figures, measure::Limits* limits,
                        const Prompts& prompts, QSettings* settings, QWidget* parent) {
    const QString setting = QStringLiteral("LimitsFolder");
    const QString home = QDir::homePath();
    LimitsDialog dialog(figures, *limits, prompts,
                        settings == nullptr ? home : settings->value(setting, home).toString(),
                        parent);
    const bool is_accepted = dialog.exec() == QDialog::Accepted;
    if (settings != nullptr) {
        settings->setValue(setting, dialog.Folder());
    }
    if (is_accepted) {
        *limits = dialog.Limits();
    }
    return is_accepted;
}

void LimitsDialog::MakeTable() {
    auto& table = Control<QTableWidget>(LimitsNumber(LimitsId::kTable));
    table.setColumnCount(3);
    table.setHorizontalHeaderLabels(
        {QStringLiteral("Figure"), QStringLiteral("Name"), QStringLiteral("Limit")});
    table.verticalHeader()->hide();
    table.setTabKeyNavigation(false);
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setSelectionMode(QAbstractItemView::SingleSelection);
    table.setMinimumHeight(fontMetrics().height() * kShownRows);
    table.setMinimumWidth(fontMetrics().averageCharWidth() * kShownCharacters);
    connect(&table, &QTableWidget::itemChanged, this, [this] {
        if (!m_is_showing) {
            Take();
        }
    });
    // The Return key opens the edit of a row; it is not OK there.
    connect(&table, &QTableWidget::itemActivated, this, [&table](const QTableWidgetItem* item) {
        table.editItem(table.item(item->row(), kLimitColumn));
    });
}

void LimitsDialog::Show() {
    auto& table = Control<QTableWidget>(LimitsNumber(LimitsId::kTable));
    m_is_showing = true;
    m_keys.clear();
    std::vector<std::pair<QString, QString>> texts;
    for (const measure::NamedFigure& figure : m_figures) {
        m_keys.push_back(figure.key);
        const QString unit = report::DisplayUnit(figure.unit);
        texts.emplace_back(QString::fromStdString(figure.symbol),
                           QString::fromStdString(figure.name) +
                               (unit.isEmpty() ? QString() : QStringLiteral(", in ") + unit));
    }
    for (const auto& [key, limit] : m_limits) {
        if (std::ranges::find(m_keys, key) == m_keys.end()) {
            m_keys.push_back(key);
            texts.emplace_back(QString::fromStdString(key), QStringLiteral("not told of now"));
        }
    }
    table.setRowCount(static_cast<int>(m_keys.size()));
    for (int row = 0; row < table.rowCount(); ++row) {
        const auto place = static_cast<std::size_t>(row);
        const auto limit = m_limits.find(m_keys[place]);
        const QString text = limit == m_limits.end()
                                 ? QString()
                                 : QString::fromStdString(measure::LimitText(limit->second));
        for (const auto& [column, shown] :
             {std::pair{0, texts[place].first}, std::pair{1, texts[place].second},
              std::pair{kLimitColumn, text}}) {
            auto* const item = new QTableWidgetItem(shown);
            if (column != kLimitColumn) {
                item->setFlags(item->flags() & ~Qt::ItemIsEditable);
            }
            table.setItem(row, column, item);
        }
    }
    table.resizeColumnsToContents();
    table.horizontalHeader()->setStretchLastSection(true);
    if (table.rowCount() > 0) {
        table.setCurrentCell(0, kLimitColumn);
    }
    m_is_showing = false;
    Take();
}

void LimitsDialog::Take() {
    const auto& table = Control<QTableWidget>(LimitsNumber(LimitsId::kTable));
    measure::Limits limits;
    QString fault;
    for (int row = 0; row < table.rowCount(); ++row) {
        const QString text = table.item(row, kLimitColumn)->text().trimmed();
        if (text.isEmpty()) {
            continue;
        }
        const auto limit = measure::ParseLimit(text.toStdString());
        if (limit) {
            limits[m_keys[static_cast<std::size_t>(row)]] = *limit;
        } else if (fault.isEmpty()) {
            fault = table.item(row, 0)->text() + QStringLiteral(": ") +
                    QString::fromStdString(limit.reason);
        }
    }
    auto& shown = Control<QLabel>(LimitsNumber(LimitsId::kFault));
    shown.setText(fault);
    shown.setAccessibleDescription(QStringLiteral("What is wrong with a limit"));
    shown.setAccessibleName(fault.isEmpty() ? QStringLiteral("no fault") : fault);
    Buttons()->button(QDialogButtonBox::Ok)->setEnabled(fault.isEmpty());
    Control(LimitsNumber(LimitsId::kSave)).setEnabled(fault.isEmpty() && !limits.empty());
    if (fault.isEmpty()) {
        m_limits = std::move(limits);
    }
}

void LimitsDialog::Open() {
    const auto chosen =
        m_prompts.open_file(this, {QString(), m_folder + QStringLiteral("/"), QStringLiteral("ini"),
                                   QLatin1String(kLimitFilters)});
    if (!chosen) {
        return;
    }
    m_folder = QFileInfo(*chosen).absolutePath();
    const std::string path = QDir::toNativeSeparators(*chosen).toStdString();
    QFile file(*chosen);
    if (!file.open(QIODevice::ReadOnly)) {
        m_prompts.ShowError(this, "Can not read " + path);
        return;
    }
    auto limits = measure::ParseLimits(file.read(kLongestFile).toStdString());
    if (!limits || limits->empty()) {
        m_prompts.ShowError(this, path + ": " + (limits ? "no limits in [Limits]" : limits.reason));
        return;
    }
    m_limits = std::move(*limits.value);
    Show();
}

void LimitsDialog::Save() {
    const auto chosen = m_prompts.save_file(
        this,
        {QString(), QDir::toNativeSeparators(QDir(m_folder).filePath(QStringLiteral("limits.ini"))),
         QStringLiteral("ini"), QLatin1String(kLimitFilters)});
    if (!chosen) {
        return;
    }
    m_folder = QFileInfo(*chosen).absolutePath();
    const std::string path = QDir::toNativeSeparators(*chosen).toStdString();
    if (QFileInfo::exists(*chosen) && !MayReplaceFile(m_prompts, this, path)) {
        return;
    }
    if (MFastFile_WriteLinesAtOnce(path, measure::LimitsText(m_limits), kSaveSafe) ==
        kWriteFailed) {
        m_prompts.ShowError(this, "Can not write " + path + FileNameFault(path));
    }
}

void LimitsDialog::Clear() {
    m_limits.clear();
    Show();
}

}  // namespace wavo
