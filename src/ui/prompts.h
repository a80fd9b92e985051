// Every question to the user: message boxes, files, colours, fonts, triggers, printing.
//
// Whoever asks is given the questions by who makes it, the first one by the application, which has
// those that show dialogs (ui/dialogs/dialog_prompts.h). Tests have answers of their own.
//
// All of them stand over a window and wait; messages are handled meanwhile.
#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class QPrinter;
class QUrl;
class QWidget;

namespace wavo {

struct TriggerEntry;

enum class BoxIcon { kExclamation, kQuestion, kInformation };
enum class BoxButtons { kOk, kOkCancel, kYesNo };
enum class BoxAnswer { kOk, kCancel, kYes, kNo };

/// What a message box shows. Texts are UTF-8.
struct Box {
    std::string text;
    std::string caption;
    BoxIcon icon = BoxIcon::kExclamation;
    BoxButtons buttons = BoxButtons::kOk;

    friend bool operator==(const Box&, const Box&) = default;
};

/// What a dialog for a file to open or to save to shows.
struct FileQuestion {
    QString caption;  ///< empty: that of the system
    QString initial_path;
    QString default_suffix;  ///< added to a name without one; without the point
    QString filters;         ///< "text|patterns|" for each filter, "|" at the end

    friend bool operator==(const FileQuestion&, const FileQuestion&) = default;
};

/// A list of which the user may tick some rows.
struct SeveralQuestion {
    QString caption;
    QString text;
    QString button;  ///< for OK; "&" marks its letter
    QStringList rows;
};

/// The questions. None may be empty where it is asked.
struct Prompts {
    /// Shows a box. Closing it answers with the button that changes nothing.
    std::function<BoxAnswer(QWidget* parent, const Box& box)> box;
    /// Lets the user choose; nothing when the user cancels.
    std::function<std::optional<QColor>(QWidget* parent, const QColor& initial)> color;
    std::function<std::optional<QFont>(QWidget* parent, const QFont& initial)> font;
    /// The absolute path of a file that exists; nothing when the user cancels.
    std::function<std::optional<QString>(QWidget* parent, const FileQuestion& question)> open_file;
    /// The same of a file to save to. A file that is there already is no reason to ask: who saves
    /// does that.
    std::function<std::optional<QString>(QWidget* parent, const FileQuestion& question)> save_file;
    /// The rows that the user ticked, from 0 on; none when the user cancels.
    std::function<std::vector<int>(QWidget* parent, const SeveralQuestion& question)>
        choose_several;
    /// Lets the user edit a trigger; false when nothing was decided.
    std::function<bool(QWidget* parent, TriggerEntry& trigger)> trigger;
    /// Lets the user choose how to print, and sets the printer so; false when the user cancels.
    std::function<bool(QWidget* parent, QPrinter& printer)> print;
    /// Lets the user choose printer and page.
    std::function<void(QWidget* parent, QPrinter& printer)> page_setup;
    /// Shows pages that `paint` paints on the printer, more than once.
    std::function<void(QWidget* parent, QPrinter& printer,
                       const std::function<void(QPrinter&)>& paint)>
        print_preview;

    /// Shows a page, of a file of this computer, in the system's browser; false when there is none.
    std::function<bool(QWidget* parent, const QUrl& page)> open_page;

    /// False: nobody can answer, dialogs of other kinds included.
    bool is_somebody_there = true;

    /// Tells of a fault that the user must see: caption "ERROR", exclamation icon, OK.
    void ShowError(QWidget* parent, const std::string& text) const {
        box(parent, {text, "ERROR", BoxIcon::kExclamation, BoxButtons::kOk});
    }
};

}  // namespace wavo
