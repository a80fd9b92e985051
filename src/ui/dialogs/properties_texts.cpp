#include "ui/dialogs/properties_texts.h"

#include "settings/character_text.h"
#include "support/number_text.h"

namespace wavo {

ExportTexts FormatExportSettings(const ExportSettings& settings) {
    return {FormatCharacter(settings.separator), std::string(1, settings.decimal_point),
            FormatCharacters(settings.end_of_line), settings.data_file};
}

ExportSettings ParseExportTexts(const ExportTexts& texts) {
    const ExportSettings defaults;
    ExportSettings settings;
    if (const auto separator = ParseCharacters(texts.separator);
        separator && separator->size() == 1) {
        settings.separator = separator->front();
    }
    if (texts.decimal_point == "," || texts.decimal_point == ".") {
        settings.decimal_point = texts.decimal_point.front();
    }
    if (settings.decimal_point == settings.separator) {
        settings.separator = defaults.separator;
        settings.decimal_point = defaults.decimal_point;
    }
    settings.end_of_line = ParseCharacters(texts.end_of_line).value_or(defaults.end_of_line);
    settings.data_file = texts.data_file;
    return settings;
}

std::int32_t ParseScaleLines(std::string_view text, std::int32_t otherwise) {
    const std::int32_t lines = ReadInteger(text);
    return lines < 1 ? otherwise : lines;
}

}  // namespace wavo
