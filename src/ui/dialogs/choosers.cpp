#include "ui/dialogs/choosers.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDialog>
#include <QHeaderView>
#include <QSize>
#include <QStringList>
#include <QTreeView>

#include "ui/controls/line_edits.h"

namespace wavo {

namespace {

/// Of a dialog of the toolkit's own: long names beside whole columns, on the smallest screen too.
constexpr QSize kDialogSize{840, 450};

/// Gives the columns of a dialog of the toolkit's own the widths that their texts need, and the
/// dialog a size that leaves room for long names.
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

/// Shows a file dialog whose mode is set; the chosen path.
std::optional<QString> RunFileDialog(QFileDialog& dialog, const FileQuestion& question) {
    KeepOneLineInEdits(dialog);
    dialog.setDefaultSuffix(question.default_suffix);
    dialog.setNameFilters(FileDialogFilters(question.filters).split(QStringLiteral(";;")));
    const QFileInfo initial(question.initial_path);
    if (!question.initial_path.isEmpty()) {
        dialog.setDirectory(initial.absolutePath());
        dialog.selectFile(initial.fileName());
    }
    ShowWholeColumns(dialog);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return QDir::toNativeSeparators(dialog.selectedFiles().constFirst());
}

}  // namespace

std::optional<QColor> ChooseColor(QWidget* parent, const QColor& initial) {
    const QColor color = QColorDialog::getColor(initial, parent);
    return color.isValid() ? std::optional(color) : std::nullopt;
}

std::optional<QFont> ChooseFont(QWidget* parent, const QFont& initial) {
    bool chosen = false;
    const QFont font = QFontDialog::getFont(&chosen, initial, parent);
    return chosen ? std::optional(font) : std::nullopt;
}

std::optional<QString> ChooseSaveFile(QWidget* parent, const FileQuestion& question) {
    QFileDialog dialog(parent, question.caption);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    return RunFileDialog(dialog, question);
}

std::optional<QString> ChooseOpenFile(QWidget* parent, const FileQuestion& question) {
    QFileDialog dialog(parent, question.caption);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    return RunFileDialog(dialog, question);
}

QString FileDialogFilters(const QString& filters) {
    const QStringList parts = filters.split(u'|');
    QStringList converted;
    for (qsizetype i = 0; i + 1 < parts.size() && !parts[i + 1].isEmpty(); i += 2) {
        QStringList patterns = parts[i + 1].split(u';', Qt::SkipEmptyParts);
        patterns.replaceInStrings(QStringLiteral("*.*"), QStringLiteral("*"));
        const QString name = parts[i].left(parts[i].lastIndexOf(u'(')).trimmed();
        converted += name + QStringLiteral(" (") + patterns.join(u' ') + u')';
    }
    return converted.join(QStringLiteral(";;"));
}

}  // namespace wavo
