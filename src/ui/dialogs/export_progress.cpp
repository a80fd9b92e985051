#include "ui/dialogs/export_progress.h"

#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>
#include <array>

#include "ui/controls/elided_label.h"

namespace wavo {

namespace {

constexpr int ProgressNumber(ExportProgressId id) {
    return static_cast<int>(id);
}

constexpr std::array<ControlRow, 3> kExportProgressRows{{
    {ProgressNumber(ExportProgressId::kBar), ControlKind::kProgress, "progress", ""},
    {ProgressNumber(ExportProgressId::kRows), ControlKind::kStatic, "", ""},
    {ProgressNumber(ExportProgressId::kCancel), ControlKind::kCancel, "Cancel", ""},
}};

constexpr ProgressTexts kExportTexts{"Save Values",
                                     "The file that is written",
                                     "How much of the file is written",
                                     "How many rows are in the file",
                                     "Stop writing; the rows that are written stay in the file",
                                     "rows"};

/// Steps of the bar.
constexpr std::uint64_t kSteps = 1000;
/// Width in characters.
constexpr int kCharacters = 56;

}  // namespace

ExportProgress::ExportProgress(const std::string& path, QWidget* parent)
    : ExportProgress(kExportTexts, path, parent) {}

ExportProgress::ExportProgress(const ProgressTexts& texts, const std::string& subject,
                               QWidget* parent)
    : TableDialog(QString::fromUtf8(texts.caption), kExportProgressRows, parent), m_texts(texts) {
    setWindowModality(Qt::WindowModal);
    auto* const file = new ElidedLabel(this);
    file->setTextFormat(Qt::PlainText);
    file->setText(QString::fromStdString(subject));
    file->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    file->setAccessibleDescription(QString::fromUtf8(texts.subject_tip));
    auto& rows = Control<QLabel>(ProgressNumber(ExportProgressId::kRows));
    rows.setAccessibleDescription(QString::fromUtf8(texts.count_tip));
    auto& bar = Control<QProgressBar>(ProgressNumber(ExportProgressId::kBar));
    bar.setAccessibleDescription(QString::fromUtf8(texts.bar_tip));
    QWidget& cancel = Control(ProgressNumber(ExportProgressId::kCancel));
    cancel.setToolTip(QString::fromUtf8(texts.cancel_tip));
    cancel.setAccessibleDescription(cancel.toolTip());
    bar.setRange(0, static_cast<int>(kSteps));
    bar.setMinimumWidth(fontMetrics().averageCharWidth() * kCharacters);

    auto* const column = new QVBoxLayout(this);
    column->addWidget(file);
    column->addWidget(&bar);
    auto* const bottom = new QHBoxLayout;
    bottom->addWidget(&rows, 1);
    bottom->addWidget(Buttons());
    column->addLayout(bottom);
}

void ExportProgress::SetRows(std::uint64_t written, std::uint64_t total) {
    const double part =
        total == 0 ? 0.0 : static_cast<double>(written) / static_cast<double>(total);
    Control<QProgressBar>(ProgressNumber(ExportProgressId::kBar))
        .setValue(static_cast<int>(part * static_cast<double>(kSteps)));
    Control<QLabel>(ProgressNumber(ExportProgressId::kRows))
        .setText(QStringLiteral("%1 of %2 %3")
                     .arg(written)
                     .arg(total)
                     .arg(QString::fromUtf8(m_texts.unit)));
}

void ExportProgress::reject() {
    // It stays until the work has ended.
    m_was_cancelled = true;
    Control(ProgressNumber(ExportProgressId::kCancel)).setEnabled(false);
}

}  // namespace wavo
