// When the lines of tables are, as the user said it last, by the columns of the tables; in the
// application's settings. Those that were not used for long fall away.
#pragma once

#include <optional>

#include "tables/table_preview.h"

class QSettings;

namespace wavo {

class RememberedTables {
 public:
    /// So many tables are remembered.
    static constexpr int kMost = 100;

    /// `settings` is not owned and may be null: then nothing is remembered.
    explicit RememberedTables(QSettings* settings) : m_settings(settings) {}

    /// What was said for tables with these columns; nothing when they are new, or what the settings
    /// hold makes no sense.
    [[nodiscard]] std::optional<tables::TimeChoice> Find(const tables::TablePreview& preview) const;
    void Remember(const tables::TablePreview& preview, const tables::TimeChoice& choice);

 private:
    QSettings* const m_settings;
};

}  // namespace wavo
