// The platform's dialogs for a colour, a font and a file to open or to save to. All of them go
// through here, so that tests can choose.
#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <functional>
#include <optional>

class QWidget;

namespace wavo {

/// What a dialog for a file to save to shows.
struct SaveFileQuestion {
    QString caption;
    QString initial_path;
    QString default_suffix;  ///< added to a name without one; without the point
    QString filters;         ///< "text|patterns|" for each filter, "|" at the end

    friend bool operator==(const SaveFileQuestion&, const SaveFileQuestion&) = default;
};

/// A dialog for a file to open shows the same.
using OpenFileQuestion = SaveFileQuestion;

using ColorChooser = std::function<std::optional<QColor>(QWidget* parent, const QColor& initial)>;
using FontChooser = std::function<std::optional<QFont>(QWidget* parent, const QFont& initial)>;
using SaveFileChooser =
    std::function<std::optional<QString>(QWidget* parent, const SaveFileQuestion& question)>;
using OpenFileChooser =
    std::function<std::optional<QString>(QWidget* parent, const OpenFileQuestion& question)>;

/// Lets the user choose over `parent`; messages are handled meanwhile. Nothing when the user
/// cancels.
std::optional<QColor> ChooseColor(QWidget* parent, const QColor& initial);
std::optional<QFont> ChooseFont(QWidget* parent, const QFont& initial);

/// The same for the path of a file to save to. Does not ask about a file that exists.
std::optional<QString> ChooseSaveFile(QWidget* parent, const SaveFileQuestion& question);

/// The same for the path of a file that exists.
std::optional<QString> ChooseOpenFile(QWidget* parent, const OpenFileQuestion& question);

/// Choose from now on instead of showing the dialog; null shows it again.
void SetColorChooser(ColorChooser chooser);
void SetFontChooser(FontChooser chooser);
void SetSaveFileChooser(SaveFileChooser chooser);
void SetOpenFileChooser(OpenFileChooser chooser);

/// Filters as the toolkit's file dialog takes them. Patterns are separated by ";"; the pattern of
/// all files, "*.*", stands for names without a point too. Text without patterns is dropped.
QString FileDialogFilters(const QString& filters);

}  // namespace wavo
