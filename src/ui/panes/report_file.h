// What the panes of tests have in common: notes, numbers that are typed, and the file of a report.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>
#include <string>

#include "report/circle_report.h"
#include "ui/prompts.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QSettings;
class QWidget;

namespace wavo {

/// A label for sentences below each other, which can be selected.
void InitNotes(QLabel& notes);
void ShowNoteTexts(QLabel& notes, const QStringList& texts);

/// The number above 0 that stands in an edit. Anything else is marked, and told to what reads the
/// screen aloud; an empty edit is not.
std::optional<double> PositiveNumberIn(QLineEdit& edit);

/// Offers other names to choose from. What was chosen stays, else it is the first; true when that
/// makes it another choice. Nobody is told.
bool Offer(QComboBox& combo, const QStringList& names);

/// The heading of a report on `data`: a file, or "live".
report::ReportHeader ReportHeaderOf(const std::string& data, const QString& machine,
                                    const QString& program, const QString& made_by);

/// Asks for a file, named so at first, and writes a report to it: JSON where the name says so, else
/// PDF. The folder is kept in `settings`, which may be null.
void SaveReportFile(QWidget* parent, const Prompts& prompts, QSettings* settings,
                    const QString& name, const std::function<bool(const QString&)>& write_pdf,
                    const std::function<std::string()>& json);

}  // namespace wavo
