#include "ui/bars/recent_files.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <utility>

namespace wavo {

namespace {

constexpr int kLongestPath = 60;  // characters in the menu

}  // namespace

RecentFiles::RecentFiles(QSettings* settings, QString key)
    : m_settings(settings), m_key(std::move(key)) {
    if (m_settings != nullptr) {
        m_paths = m_settings->value(m_key).toStringList();
        Normalize();
    }
}

void RecentFiles::Add(const QString& path) {
    m_paths.prepend(path);
    Normalize();
    if (m_settings != nullptr) {
        m_settings->setValue(m_key, m_paths);
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
