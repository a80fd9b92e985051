#include "ui/dialogs/file_dialogs.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QSize>
#include <QTreeView>
#include <utility>

#include "ui/controls/line_edits.h"

namespace wavo {

namespace {

/// Of a dialog of the toolkit's own: long names beside whole columns, on the smallest screen too.
constexpr QSize kDialogSize{840, 450};

FileHandler& CurrentFileHandler() {
    static FileHandler handler;
    return handler;
}

QStringList NameFilters(const std::vector<FileFilter>& filters) {
    QStringList names;
    for (const FileFilter& filter : filters) {
        // The toolkit takes "*.*" at its word and hides the files without a point.
        names.append(QString::fromStdString(
            filter.name + " (" + (filter.pattern == "*.*" ? "*" : filter.pattern) + ")"));
    }
    return names;
}

}  // namespace

std::optional<std::string> AskForFile(QWidget* parent, const FileQuestion& question) {
    if (CurrentFileHandler()) {
        return CurrentFileHandler()(question);
    }
    QFileDialog dialog(parent);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    KeepOneLineInEdits(dialog);
    dialog.setDefaultSuffix(QString::fromStdString(question.default_extension));
    dialog.setNameFilters(NameFilters(question.filters));
    if (!question.initial_path.empty()) {
        const QFileInfo initial(QString::fromStdString(question.initial_path));
        dialog.setDirectory(initial.absolutePath());
        dialog.selectFile(initial.fileName());
    }
    ShowWholeColumns(dialog);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return QDir::toNativeSeparators(dialog.selectedFiles().front()).toStdString();
}

void ShowWholeColumns(QFileDialog& dialog) {
    const auto* const list = dialog.findChild<QTreeView*>();
    if (list == nullptr) {
        return;  // a dialog of the system
    }
    QHeaderView& header = *list->header();
    header.setStretchLastSection(false);
    header.setSectionResizeMode(QHeaderView::ResizeToContents);
    header.setSectionResizeMode(0, QHeaderView::Stretch);  // the name
    dialog.resize(kDialogSize);
}

void SetFileHandler(FileHandler handler) {
    CurrentFileHandler() = std::move(handler);
}

}  // namespace wavo
