#include "ui/panes/report_file.h"

#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QSettings>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>

#include "support/fast_file.h"
#include "support/file_name.h"
#include "support/number_text.h"
#include "ui/dialogs/report_texts.h"

namespace wavo {

namespace {

constexpr char kReportFilters[] = "PDF Files|*.pdf|JSON Files|*.json|";
constexpr char kReportFolder[] = "ReportFolder";

}  // namespace

void InitNotes(QLabel& notes) {
    notes.setWordWrap(true);
    notes.setTextFormat(Qt::PlainText);
    notes.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    notes.setAlignment(Qt::AlignTop | Qt::AlignLeft);
    notes.setAccessibleDescription(QStringLiteral("What to know of the figures"));
}

void ShowNoteTexts(QLabel& notes, const QStringList& texts) {
    notes.setText(texts.join(u'\n'));
    notes.setVisible(!texts.isEmpty());
    notes.setAccessibleName(texts.isEmpty() ? QStringLiteral("no notes") : notes.text());
}

std::optional<double> PositiveNumberIn(QLineEdit& edit) {
    auto number = FindWholeDouble(edit.text().toStdString());
    if (number && !(*number > 0.0 && std::isfinite(*number))) {
        number.reset();
    }
    const bool is_wrong = !number && !edit.text().trimmed().isEmpty();
    edit.setStyleSheet(is_wrong ? QStringLiteral("color: #b00000; background: #ffe8e8")
                                : QString());
    edit.setAccessibleDescription(is_wrong ? QStringLiteral("No number above 0; it is ignored")
                                           : edit.toolTip());
    return number;
}

bool Offer(QComboBox& combo, const QStringList& names) {
    QStringList offered;
    for (int i = 0; i < combo.count(); ++i) {
        offered << combo.itemText(i);
    }
    if (names == offered) {
        return false;
    }
    const QString chosen = combo.currentText();
    const QSignalBlocker blocker(combo);
    combo.clear();
    combo.addItems(names);
    combo.setCurrentIndex(std::max(0, static_cast<int>(names.indexOf(chosen))));
    return combo.currentText() != chosen;
}

report::ReportHeader ReportHeaderOf(const std::string& data, const QString& machine,
                                    const QString& program, const QString& made_by) {
    const QFileInfo file(QString::fromStdString(data));
    const bool is_file = file.exists();
    report::ReportHeader header;
    header.machine = machine;
    header.program = program;
    header.file = is_file ? file.fileName() : QString::fromStdString(data);
    header.date = (is_file ? file.lastModified() : QDateTime::currentDateTime())
                      .toString(QStringLiteral("yyyy-MM-dd HH:mm"));
    header.made_by = made_by;
    return header;
}

void SaveReportFile(QWidget* parent, const Prompts& prompts, QSettings* settings,
                    const QString& name, const std::function<bool(const QString&)>& write_pdf,
                    const std::function<std::string()>& json) {
    const QString setting = QLatin1String(kReportFolder);
    QString folder = settings == nullptr ? QString() : settings->value(setting).toString();
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) {
        folder = QDir::homePath();
    }
    const auto chosen =
        prompts.save_file(parent, {QString(), QDir::toNativeSeparators(QDir(folder).filePath(name)),
                                   QStringLiteral("pdf"), QLatin1String(kReportFilters)});
    if (!chosen) {
        return;
    }
    const std::string path = QDir::toNativeSeparators(*chosen).toStdString();
    if (QFileInfo::exists(*chosen) && !MayReplaceFile(prompts, parent, path)) {
        return;
    }
    if (settings != nullptr) {
        settings->setValue(setting, QFileInfo(*chosen).absolutePath());
    }
    const bool is_json = chosen->endsWith(QStringLiteral(".json"), Qt::CaseInsensitive);
    const bool is_written =
        is_json ? MFastFile_WriteLinesAtOnce(path, json(), kSaveSafe) != kWriteFailed
                : write_pdf(*chosen);
    if (!is_written) {
        prompts.ShowError(parent, "Can not write " + path + FileNameFault(path));
    }
}

}  // namespace wavo
