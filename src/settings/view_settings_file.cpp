#include "settings/view_settings_file.h"

#include <optional>
#include <string_view>

#include "settings/character_text.h"
#include "settings/report_texts.h"
#include "support/diagnostics.h"
#include "support/kept_file.h"
#include "support/number_text.h"

namespace wavo {

namespace {

/// A face name longer than this is refused; one as long is cut to what the record holds.
constexpr std::size_t kLongestAcceptedFaceName = 32;

// Written once it was wanted: other programs that read the file do not know it.
constexpr char kCurves[] = "CURVES";
constexpr char kLineStyles[] = "LineStyles";

bool OpenStore(MIniData& store, const std::string& path) {
    if (!store.Open(path)) {
        MERRLOG(settings_texts::kNotOpened, path.c_str());
        return false;
    }
    return true;
}

std::optional<std::string> Entry(const MIniData& store, const char* section, const char* name) {
    std::string value;
    if (!store.GetStringEntry(section, name, value)) {
        return std::nullopt;
    }
    return value;
}

std::optional<std::int32_t> WholeNumber(const MIniData& store, const char* section,
                                        const char* name) {
    const std::optional<std::string> text = Entry(store, section, name);
    return text.has_value() ? ReadWholeNumber(*text) : std::nullopt;
}

/// The face name as the font record can hold it, cut between characters.
std::string FitFaceName(const std::string& name) {
    if (name.size() <= kLongestFaceName) {
        return name;
    }
    std::size_t length = kLongestFaceName;
    const auto continues_character = [&](std::size_t i) {
        return (static_cast<unsigned char>(name[i]) & 0xC0U) == 0x80U;
    };
    while (length > 0 && continues_character(length)) {
        --length;
    }
    return name.substr(0, length);
}

ColorRef ReadBackground(const MIniData& store) {
    ColorRef color = 0;
    unsigned shift = 0;
    for (const char* const name : {"red", "green", "blue"}) {
        const std::optional<std::int32_t> value = WholeNumber(store, "BKCOLOR", name);
        if (!value.has_value()) {
            MERRLOG(settings_texts::kBackgroundIncomplete);
            return 0;
        }
        color |= (static_cast<ColorRef>(*value) & 0xFFU) << shift;
        shift += 8;
    }
    return color;
}

FontDescription ReadFont(const MIniData& store) {
    FontDescription font;
    const std::optional<std::int32_t> height = WholeNumber(store, "GRAPH_FONT", "height");
    const std::optional<std::string> name = Entry(store, "GRAPH_FONT", "name");
    if (!height.has_value() || !name.has_value()) {
        MERRLOG(settings_texts::kFontIncomplete);
        return font;
    }
    font.height = *height;
    if (name->size() > kLongestAcceptedFaceName) {
        MERRLOG(settings_texts::kFontNameInvalid);
        return font;
    }
    font.face = FitFaceName(*name);
    return font;
}

std::int32_t ReadScaleLines(const MIniData& store, const char* name, std::int32_t otherwise) {
    const std::int32_t lines = WholeNumber(store, "SCALE_LINES", name).value_or(0);
    return lines < 1 ? otherwise : lines;
}

ExportSettings ReadExportSettings(const MIniData& store) {
    ExportSettings settings = DefaultExportSettings();
    const auto characters = [&](const char* name) {
        return ParseCharacters(Entry(store, "DATA_EXPORT", name).value_or(std::string()));
    };
    if (const auto separator = characters("Separator"); separator && separator->size() == 1) {
        settings.separator = separator->front();
    }
    if (const auto point = Entry(store, "DATA_EXPORT", "DecimalPoint");
        point && point->size() == 1) {
        settings.decimal_point = point->front();
    }
    if (auto end_of_line = characters("EndOfLine")) {
        settings.end_of_line = *std::move(end_of_line);
    }
    if (auto file = Entry(store, "DATA_EXPORT", "File"); file && !file->empty()) {
        settings.data_file = *std::move(file);
    }
    return settings;
}

bool SaveFailed(const std::string& path) {
    MERRLOG(settings_texts::kNotSaved, path.c_str());
    return false;
}

}  // namespace

bool ReadProperties(const std::string& path, ViewSettings& settings) {
    MTRACE(1, settings_texts::kReadingSettings);
    MIniData store;
    OpenStore(store, path);
    bool is_written = true;
    if (store.HasNoFileContent()) {
        store.Clear();
        settings = DefaultViewSettings();
        is_written = WriteProperties(path, settings);
        OpenStore(store, path);
    }
    GetPropertiesFromIniData(store, settings);
    return is_written;
}

bool WriteProperties(const std::string& path, const ViewSettings& settings, bool* has_kept) {
    MIniData store(MIniData::kSaveFlush | MIniData::kSaveSafe);
    if (!OpenStore(store, path)) {
        if (!KeepFile(path)) {
            return SaveFailed(path);
        }
        if (has_kept != nullptr) {
            *has_kept = true;
        }
    }
    const bool all_set = PutPropertiesIntoIniData(settings, store);
    return (store.Save() && all_set) || SaveFailed(path);
}

void GetPropertiesFromIniData(const MIniData& store, ViewSettings& settings) {
    settings.background = ReadBackground(store);
    settings.font = ReadFont(store);
    settings.scale_lines_x = ReadScaleLines(store, "x", kDefaultScaleLinesX);
    settings.scale_lines_y = ReadScaleLines(store, "y", kDefaultScaleLinesY);
    const std::int32_t trace_level =
        WholeNumber(store, "GENERAL", "mtrace_level").value_or(kDefaultTraceLevel);
    settings.trace_level = trace_level > kHighestTraceLevel ? kDefaultTraceLevel : trace_level;
    settings.show_graph_editor = WholeNumber(store, "AX_EDIT", "ShowDialog").value_or(1) != 0;
    settings.export_settings = ReadExportSettings(store);
    settings.line_styles = WholeNumber(store, kCurves, kLineStyles).value_or(0) != 0;
}

bool PutPropertiesIntoIniData(const ViewSettings& settings, MIniData& store) {
    const ExportSettings& values = settings.export_settings;
    bool all_set = true;
    const auto set_long = [&](const char* section, const char* name, std::int64_t value) {
        all_set &= store.SetLongEntry(section, name, static_cast<long>(value));
    };
    const auto set_string = [&](const char* section, const char* name, std::string_view value) {
        all_set &= store.SetStringEntry(section, name, value);
    };
    set_long("BKCOLOR", "red", settings.background & 0xFFU);
    set_long("BKCOLOR", "green", (settings.background >> 8U) & 0xFFU);
    set_long("BKCOLOR", "blue", (settings.background >> 16U) & 0xFFU);
    set_long("GRAPH_FONT", "height", settings.font.height);
    set_string("GRAPH_FONT", "name", FitFaceName(settings.font.face));
    set_long("SCALE_LINES", "x", settings.scale_lines_x);
    set_long("SCALE_LINES", "y", settings.scale_lines_y);
    set_long("AX_EDIT", "ShowDialog", settings.show_graph_editor ? 1 : 0);
    set_string("DATA_EXPORT", "Separator", FormatCharacter(values.separator));
    set_string("DATA_EXPORT", "DecimalPoint", std::string_view(&values.decimal_point, 1));
    set_string("DATA_EXPORT", "EndOfLine", FormatCharacters(values.end_of_line));
    set_string("DATA_EXPORT", "File", values.data_file);
    if (settings.line_styles || Entry(store, kCurves, kLineStyles).has_value()) {
        set_long(kCurves, kLineStyles, settings.line_styles ? 1 : 0);
    }
    return all_set;
}

}  // namespace wavo
