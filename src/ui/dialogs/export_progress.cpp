#include "ui/dialogs/export_progress.h"

#include <QDialogButtonBox>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/controls/controls.h"
#include "ui/controls/elided_label.h"

namespace wavo {

namespace {

/// Steps of the bar.
constexpr std::uint64_t kSteps = 1000;
/// Width in characters.
constexpr int kCharacters = 56;

}  // namespace

ExportProgress::ExportProgress(const std::string& path, QWidget* parent)
    : QDialog(parent), m_rows(new QLabel(this)), m_bar(new QProgressBar(this)) {
    setWindowTitle(QStringLiteral("Save Values"));
    setWindowModality(Qt::WindowModal);
    auto* const file = new ElidedLabel(this);
    file->setTextFormat(Qt::PlainText);
    file->setText(QString::fromStdString(path));
    file->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    SetControlId(*m_rows, static_cast<int>(ExportProgressId::kRows));
    SetControlId(*m_bar, static_cast<int>(ExportProgressId::kBar));
    m_bar->setRange(0, static_cast<int>(kSteps));
    m_bar->setMinimumWidth(fontMetrics().averageCharWidth() * kCharacters);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    QPushButton* const cancel = buttons->button(QDialogButtonBox::Cancel);
    cancel->setText(QStringLiteral("Cancel"));
    SetControlId(*cancel, static_cast<int>(ExportProgressId::kCancel));
    cancel->setToolTip(QStringLiteral("Stop writing; the rows that are written stay in the file"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* const column = new QVBoxLayout(this);
    column->addWidget(file);
    column->addWidget(m_bar);
    auto* const bottom = new QHBoxLayout;
    bottom->addWidget(m_rows, 1);
    bottom->addWidget(buttons);
    column->addLayout(bottom);
}

void ExportProgress::SetRows(std::uint64_t written, std::uint64_t total) {
    m_bar->setValue(total == 0 ? 0
                               : static_cast<int>(static_cast<double>(written) /
                                                  static_cast<double>(total) * kSteps));
    m_rows->setText(QStringLiteral("%1 of %2 rows").arg(written).arg(total));
}

void ExportProgress::reject() {
    // It stays until the work has ended.
    m_was_cancelled = true;
    FindControl(*this, static_cast<int>(ExportProgressId::kCancel))->setEnabled(false);
}

}  // namespace wavo
