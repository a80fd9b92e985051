// The platform's dialogs for a colour, a font and a file to open or to save to.
#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <optional>

#include "ui/prompts.h"

namespace wavo {

/// As Prompts::color and Prompts::font ask.
std::optional<QColor> ChooseColor(QWidget* parent, const QColor& initial);
std::optional<QFont> ChooseFont(QWidget* parent, const QFont& initial);

/// As Prompts::save_file and Prompts::open_file ask.
std::optional<QString> ChooseSaveFile(QWidget* parent, const FileQuestion& question);
std::optional<QString> ChooseOpenFile(QWidget* parent, const FileQuestion& question);

/// Filters as the toolkit's file dialog takes them. Patterns are separated by ";"; the pattern of
/// all files, "*.*", stands for names without a point too. Text without patterns is dropped.
QString FileDialogFilters(const QString& filters);

}  // namespace wavo
