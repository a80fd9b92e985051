// Where panes save what they show: the folder of the last time is remembered.
#pragma once

#include <QString>
#include <optional>
#include <string>

class QSettings;
class QWidget;

namespace wavo {

struct Prompts;

/// A file that the user has chosen to save to. A file that is there already may be replaced: the
/// user was asked. Nothing when the user cancels. Without `settings` no folder is remembered.
/// `filters` as in FileQuestion.
std::optional<QString> AskWhereToSave(QWidget* parent, const Prompts& prompts, QSettings* settings,
                                      const QString& name, const QString& suffix,
                                      const QString& filters);

/// Asks for a file and writes comma separated values to it; a failure is shown.
void SaveAsCsv(QWidget* parent, const Prompts& prompts, QSettings* settings, const QString& name,
               const QString& text);

/// A cell of comma separated values.
QString CsvCell(const QString& text);

}  // namespace wavo
