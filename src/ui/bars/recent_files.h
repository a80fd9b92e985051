// The files of one kind that were opened last, newest first.
//
// Invariants:
// 1. No more than kMost paths, none empty, none twice.
// 2. What changes is stored at once.
#pragma once

#include <QString>
#include <QStringList>

class QSettings;

namespace wavo {

class RecentFiles {
 public:
    static constexpr int kMost = 4;

    /// Reads the list that is stored under `key`. `settings` is not owned and outlives the object;
    /// null: nothing is stored.
    explicit RecentFiles(QSettings* settings, QString key = QStringLiteral("RecentFiles"));

    /// Puts a path (UTF-8) at the top.
    void Add(const QString& path);

    [[nodiscard]] const QStringList& Paths() const { return m_paths; }

    /// The text of the menu item of a path: a number to type, then the path; a path in `folder`
    /// is shown by its name alone, a long one with dots in its middle.
    static QString ItemText(int index, const QString& path, const QString& folder);

 private:
    void Normalize();

    QSettings* const m_settings;
    const QString m_key;
    QStringList m_paths;
};

}  // namespace wavo
