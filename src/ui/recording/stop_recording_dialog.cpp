#include "ui/recording/stop_recording_dialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace wavo {

namespace {

/// Width in characters.
constexpr int kListWidth = 72;

}  // namespace

StopRecordingDialog::StopRecordingDialog(const std::vector<SeenRecorder>& running, QWidget* parent)
    : QDialog(parent), m_list(new QListWidget(this)) {
    setWindowTitle(QStringLiteral("Stop Recording"));
    auto* const question = new QLabel(QStringLiteral("Which recordings are to &end?"), this);
    question->setBuddy(m_list);
    m_list->setAccessibleName(QStringLiteral("Recordings that run"));
    m_list->setAccessibleDescription(QStringLiteral("Those that are ticked end"));
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->setMinimumWidth(fontMetrics().averageCharWidth() * kListWidth);
    for (const SeenRecorder& one : running) {
        auto* const item =
            new QListWidgetItem(QString::fromStdString(one.notice.file + "   " +
                                                       recorder::TimeText(one.notice.seconds) +
                                                       "  " + recorder::SizeText(one.notice.bytes)),
                                m_list);
        item->setToolTip(QString::fromStdString(one.notice.file));
        item->setCheckState(Qt::Unchecked);
        m_windows.push_back(one.window);
    }
    m_list->setCurrentRow(0);
    auto* const buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* const ok = buttons->button(QDialogButtonBox::Ok);
    ok->setText(QStringLiteral("&Stop"));
    ok->setEnabled(false);
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Cancel"));
    connect(m_list, &QListWidget::itemChanged, this,
            [this, ok] { ok->setEnabled(!Chosen().empty()); });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(question);
    column->addWidget(m_list);
    column->addWidget(buttons);
}

std::vector<platform::WindowHandle> StopRecordingDialog::Chosen() const {
    std::vector<platform::WindowHandle> chosen;
    for (int row = 0; row < m_list->count(); ++row) {
        if (m_list->item(row)->checkState() == Qt::Checked) {
            chosen.push_back(m_windows[static_cast<std::size_t>(row)]);
        }
    }
    return chosen;
}

}  // namespace wavo
