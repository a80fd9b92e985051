#include "ui/panes/pane_files.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

#include "support/fast_file.h"
#include "support/file_name.h"
#include "ui/dialogs/report_texts.h"
#include "ui/prompts.h"

namespace wavo {

namespace {

constexpr char kFolderSetting[] = "MeasureFolder";

}  // namespace

std::optional<QString> AskWhereToSave(QWidget* parent, const Prompts& prompts, QSettings* settings,
                                      const QString& name, const QString& suffix,
                                      const QString& filters) {
    QString folder;
    if (settings != nullptr) {
        folder = settings->value(QLatin1String(kFolderSetting)).toString();
    }
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) {
        folder = QDir::homePath();
    }
    const QString proposed = QDir::toNativeSeparators(QDir(folder).filePath(name));
    const auto chosen = prompts.save_file(parent, {QString(), proposed, suffix, filters});
    if (!chosen ||
        (QFileInfo::exists(*chosen) &&
         !MayReplaceFile(prompts, parent, QDir::toNativeSeparators(*chosen).toStdString()))) {
        return std::nullopt;
    }
    if (settings != nullptr) {
        settings->setValue(QLatin1String(kFolderSetting), QFileInfo(*chosen).absolutePath());
    }
    return chosen;
}

void SaveAsCsv(QWidget* parent, const Prompts& prompts, QSettings* settings, const QString& name,
               const QString& text) {
    const auto chosen = AskWhereToSave(parent, prompts, settings, name, QStringLiteral("csv"),
                                       QStringLiteral("CSV Files|*.csv|All Files|*.*|"));
    if (!chosen) {
        return;
    }
    const std::string path = QDir::toNativeSeparators(*chosen).toStdString();
    if (MFastFile_WriteLinesAtOnce(path, text.toStdString(), kSaveSafe) == kWriteFailed) {
        prompts.ShowError(parent, "Can not write " + path + FileNameFault(path));
    }
}

QString CsvCell(const QString& text) {
    if (!text.contains(u',') && !text.contains(u'"') && !text.contains(u'\n')) {
        return text;
    }
    return QStringLiteral("\"") + QString(text).replace(u'"', QStringLiteral("\"\"")) +
           QStringLiteral("\"");
}

}  // namespace wavo
