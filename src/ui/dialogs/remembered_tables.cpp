#include "ui/dialogs/remembered_tables.h"

#include <QCryptographicHash>
#include <QLocale>
#include <QSettings>
#include <QString>
#include <QStringList>

namespace wavo {

namespace {

constexpr char kTablesKey[] = "ImportedTables";

/// What an entry of these columns begins with.
QString PrefixOf(const tables::TablePreview& preview) {
    const QByteArray key = QByteArray::fromStdString(preview.Key());
    return QString::fromLatin1(QCryptographicHash::hash(key, QCryptographicHash::Sha1).toHex()) +
           u' ';
}

QString Number(double value) {
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

}  // namespace

std::optional<tables::TimeChoice> RememberedTables::Find(
    const tables::TablePreview& preview) const {
    if (m_settings == nullptr) {
        return std::nullopt;
    }
    const QString prefix = PrefixOf(preview);
    for (const QString& entry : m_settings->value(QLatin1String(kTablesKey)).toStringList()) {
        const QStringList parts = entry.split(u' ');
        if (!entry.startsWith(prefix) || parts.size() != 4) {
            continue;
        }
        bool is_column = false;
        tables::TimeChoice choice;
        const qulonglong column = parts[1].toULongLong(&is_column);
        if (is_column) {
            choice.column = static_cast<std::size_t>(column);
        }
        choice.unit = parts[2].toDouble();
        choice.cycle_time = parts[3].toDouble();
        const bool has_column =
            !is_column || (column < preview.is_text.size() && !preview.is_text[*choice.column]);
        if (has_column && choice.unit > 0.0 && tables::IsCycleTime(choice.cycle_time)) {
            return choice;
        }
    }
    return std::nullopt;
}

void RememberedTables::Remember(const tables::TablePreview& preview,
                                const tables::TimeChoice& choice) {
    if (m_settings == nullptr) {
        return;
    }
    const QString prefix = PrefixOf(preview);
    QStringList entries = m_settings->value(QLatin1String(kTablesKey)).toStringList();
    entries.removeIf([&](const QString& entry) { return entry.startsWith(prefix); });
    const QString column = choice.column ? QString::number(*choice.column) : QStringLiteral("none");
    entries.prepend(prefix + column + u' ' + Number(choice.unit) + u' ' +
                    Number(choice.cycle_time));
    m_settings->setValue(QLatin1String(kTablesKey), entries.mid(0, kMost));
}

}  // namespace wavo
