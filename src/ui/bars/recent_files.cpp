#include "ui/bars/recent_files.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace wavo {

namespace {

constexpr int kLongestPath = 60;  // characters in the menu
const QString& Key() {
    static const QString key = QStringLiteral("RecentFiles");
    return key;
}

}  // namespace

RecentFiles::RecentFiles(QSettings* settings) : m_settings(settings) {
    if (m_settings != nullptr) {
        m_paths = m_settings->value(Key()).toStringList();
        Normalize();
    }
}

void RecentFiles::Add(const QString& path) {
    m_paths.prepend(path);
    Normalize();
    if (m_settings != nullptr) {
        m_settings->setValue(Key(), m_paths);
    }
}

void RecentFiles::Normalize() {
    m_paths.removeAll(QString());
    m_paths.removeDuplicates();
    m_paths = m_paths.mid(0, kMost);
}

QString RecentFiles::ItemText(int index, const QString& path, const QString& folder) {
    const QFileInfo file(path);
    QString shown = file.absolutePath() == QDir(folder).absolutePath()
                        ? file.fileName()
                        : QDir::toNativeSeparators(path);
    if (shown.size() > kLongestPath) {
        shown = shown.left(kLongestPath / 2 - 2) + QStringLiteral("...") +
                shown.right(kLongestPath / 2 - 1);
    }
    return QStringLiteral("&%1 %2").arg(index + 1).arg(shown.replace(u'&', QStringLiteral("&&")));
}

}  // namespace wavo
