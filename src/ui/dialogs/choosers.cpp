#include "ui/dialogs/choosers.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDialog>
#include <QStringList>
#include <utility>

#include "ui/controls/line_edits.h"
#include "ui/dialogs/file_dialogs.h"

namespace wavo {

namespace {

struct Choosers {
    ColorChooser color;
    FontChooser font;
    SaveFileChooser save_file;
    OpenFileChooser open_file;
};

Choosers& Replacements() {
    static Choosers choosers;
    return choosers;
}

/// Shows a file dialog whose mode is set; the chosen path.
std::optional<QString> RunFileDialog(QFileDialog& dialog, const SaveFileQuestion& question) {
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
    if (Replacements().color) {
        return Replacements().color(parent, initial);
    }
    const QColor color = QColorDialog::getColor(initial, parent);
    return color.isValid() ? std::optional(color) : std::nullopt;
}

std::optional<QFont> ChooseFont(QWidget* parent, const QFont& initial) {
    if (Replacements().font) {
        return Replacements().font(parent, initial);
    }
    bool chosen = false;
    const QFont font = QFontDialog::getFont(&chosen, initial, parent);
    return chosen ? std::optional(font) : std::nullopt;
}

std::optional<QString> ChooseSaveFile(QWidget* parent, const SaveFileQuestion& question) {
    if (Replacements().save_file) {
        return Replacements().save_file(parent, question);
    }
    QFileDialog dialog(parent, question.caption);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    return RunFileDialog(dialog, question);
}

std::optional<QString> ChooseOpenFile(QWidget* parent, const OpenFileQuestion& question) {
    if (Replacements().open_file) {
        return Replacements().open_file(parent, question);
    }
    QFileDialog dialog(parent, question.caption);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    return RunFileDialog(dialog, question);
}

void SetColorChooser(ColorChooser chooser) {
    Replacements().color = std::move(chooser);
}

void SetFontChooser(FontChooser chooser) {
    Replacements().font = std::move(chooser);
}

void SetSaveFileChooser(SaveFileChooser chooser) {
    Replacements().save_file = std::move(chooser);
}

void SetOpenFileChooser(OpenFileChooser chooser) {
    Replacements().open_file = std::move(chooser);
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
