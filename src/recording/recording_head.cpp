#include "recording/recording_head.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <set>
#include <system_error>

#include "recording/checksum.h"
#include "recording/json_text.h"

namespace wavo::recording {

namespace {

constexpr char kFormatVersion[] = "1";
constexpr double kNanoseconds = 1e9;
constexpr double kShortestCycle = 1e-9;
constexpr double kLongestCycle = 1e6;

constexpr char kVersionKey[] = "format_version";
constexpr char kProgramKey[] = "program";
constexpr char kAxesKey[] = "axes";
constexpr char kAxesHexKey[] = "axes_hex";
constexpr char kCycleKey[] = "cycle_time";
constexpr char kStartKey[] = "start_time";
constexpr char kLimitsKey[] = "limits";
constexpr char kCrcKey[] = "crc32";

std::string JsonList(const std::vector<std::string>& texts) {
    std::string list = "[";
    for (const std::string& text : texts) {
        list += list.size() > 1 ? "," : "";
        AppendJsonText(list, text);
    }
    return list + "]";
}

std::string ToHex(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex;
    for (const char byte : bytes) {
        hex += kDigits[static_cast<unsigned char>(byte) >> 4U];
        hex += kDigits[static_cast<unsigned char>(byte) & 0xFU];
    }
    return hex;
}

std::optional<std::string> FromHex(std::string_view hex) {
    std::string bytes;
    for (; hex.size() >= 2; hex.remove_prefix(2)) {
        unsigned byte = 0;
        if (std::from_chars(hex.data(), hex.data() + 2, byte, 16).ptr != hex.data() + 2) {
            return std::nullopt;
        }
        bytes += static_cast<char>(byte);
    }
    return hex.empty() ? std::optional(bytes) : std::nullopt;
}

std::string LimitsText(const std::vector<std::optional<AxisLimits>>& limits) {
    std::string list = "[";
    for (const std::optional<AxisLimits>& axis : limits) {
        list += list.size() > 1 ? "," : "";
        if (!axis) {
            list += "null";
            continue;
        }
        char separator = '[';
        for (const double value :
             {axis->lower, axis->upper, axis->velocity, axis->acceleration, axis->resolution}) {
            list += separator;
            AppendJsonNumber(list, value);
            separator = ',';
        }
        list += ']';
    }
    return list + "]";
}

/// The CRC of all entries but its own, as text.
std::string CrcOf(const std::map<std::string, std::string>& entries) {
    std::uint32_t crc = 0;
    for (const auto& [key, value] : entries) {
        if (key != kCrcKey) {
            crc = Crc32(BytesOf(key + "=" + value + "\n"), crc);
        }
    }
    return std::to_string(crc);
}

template <typename Number>
bool ReadNumber(std::string_view text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

std::optional<std::vector<std::string>> ReadList(std::string_view text) {
    const std::optional<JsonValue> list = ReadJson(text);
    if (!list || list->Items() == nullptr) {
        return std::nullopt;
    }
    std::vector<std::string> texts;
    for (const JsonValue& item : *list->Items()) {
        if (item.Text() == nullptr) {
            return std::nullopt;
        }
        texts.push_back(*item.Text());
    }
    return texts;
}

/// Names that are no text stand in hexadecimal digits.
std::optional<std::vector<std::string>> ReadHexList(std::string_view text) {
    std::optional<std::vector<std::string>> list = ReadList(text);
    for (std::size_t i = 0; list && i < list->size(); ++i) {
        const std::optional<std::string> bytes = FromHex((*list)[i]);
        if (!bytes) {
            return std::nullopt;
        }
        (*list)[i] = *bytes;
    }
    return list;
}

std::vector<std::optional<AxisLimits>> ReadLimits(std::string_view text) {
    std::vector<std::optional<AxisLimits>> limits;
    const std::optional<JsonValue> list = ReadJson(text);
    if (!list || list->Items() == nullptr) {
        return limits;
    }
    for (const JsonValue& item : *list->Items()) {
        const JsonValue::Array* const values = item.Items();
        constexpr std::size_t kValues = 5;
        if (values == nullptr || values->size() != kValues) {
            limits.emplace_back();
            continue;
        }
        const auto at = [values](std::size_t i) { return (*values)[i].Double().value_or(0.0); };
        limits.push_back(AxisLimits{at(0), at(1), at(2), at(3), at(4)});
    }
    return limits;
}

}  // namespace

LineClock::LineClock(double cycle_time, std::uint64_t start_time) : m_start(start_time) {
    const double nanoseconds = cycle_time * kNanoseconds;
    // Most cycle times are whole nanoseconds that a double in seconds only comes close to.
    const double nearest = std::round(nanoseconds);
    const bool is_whole = std::abs(nanoseconds - nearest) <= nearest * 1e-12;
    m_whole = static_cast<std::uint64_t>(is_whole ? nearest : std::floor(nanoseconds));
    m_part = is_whole ? 0.0 : nanoseconds - std::floor(nanoseconds);
}

bool LineClock::CanRecord(double cycle_time) {
    return cycle_time >= kShortestCycle && cycle_time <= kLongestCycle;
}

std::uint64_t LineClock::TimeOf(std::uint64_t line) const {
    return m_start + line * m_whole +
           static_cast<std::uint64_t>(std::floor(static_cast<double>(line) * m_part));
}

std::uint64_t LineClock::LineNear(std::uint64_t time) const {
    if (time <= m_start) {
        return 0;
    }
    const double cycle = static_cast<double>(m_whole) + m_part;
    const std::uint64_t since = time - m_start;
    // A first estimate has the precision of a double; what is left of the time corrects it.
    const auto estimate = static_cast<std::uint64_t>(static_cast<double>(since) / cycle);
    const auto left = static_cast<std::int64_t>(time - TimeOf(estimate));
    const std::int64_t line =
        static_cast<std::int64_t>(estimate) +
        static_cast<std::int64_t>(std::round(static_cast<double>(left) / cycle));
    return line > 0 ? static_cast<std::uint64_t>(line) : 0;
}

std::uint64_t LineClock::LineOf(std::uint32_t low_bits, std::uint64_t time) const {
    const std::uint64_t near = LineNear(time);
    const auto distance = static_cast<std::int32_t>(low_bits - static_cast<std::uint32_t>(near));
    const std::uint64_t line = near + static_cast<std::uint64_t>(std::int64_t{distance});
    return distance < 0 && line > near ? low_bits : line;  // nothing lies before line 0
}

std::map<std::string, std::string> ToMetadata(const RecordingHead& head) {
    std::map<std::string, std::string> entries;
    entries[kVersionKey] = kFormatVersion;
    entries[kProgramKey] = AsUtf8(head.program);
    entries[kAxesKey] = JsonList(head.axis_names);
    if (!std::all_of(head.axis_names.begin(), head.axis_names.end(), IsUtf8)) {
        std::vector<std::string> hex;
        std::transform(head.axis_names.begin(), head.axis_names.end(), std::back_inserter(hex),
                       ToHex);
        entries[kAxesHexKey] = JsonList(hex);
    }
    AppendJsonNumber(entries[kCycleKey], head.cycle_time);
    entries[kStartKey] = std::to_string(head.start_time);
    entries[kLimitsKey] = LimitsText(head.limits);
    entries[kCrcKey] = CrcOf(entries);
    return entries;
}

std::optional<RecordingHead> FromMetadata(const std::map<std::string, std::string>& entries) {
    const auto entry = [&entries](const char* key) -> std::string_view {
        const auto found = entries.find(key);
        return found != entries.end() ? std::string_view(found->second) : std::string_view();
    };
    // Recordings that others make need no CRC.
    if (entries.contains(kCrcKey) && entry(kCrcKey) != CrcOf(entries)) {
        return std::nullopt;
    }
    RecordingHead head;
    std::optional<std::vector<std::string>> names =
        entries.contains(kAxesHexKey) ? ReadHexList(entry(kAxesHexKey)) : ReadList(entry(kAxesKey));
    if (entry(kVersionKey) != kFormatVersion || !names ||
        !ReadNumber(entry(kCycleKey), head.cycle_time) ||
        !ReadNumber(entry(kStartKey), head.start_time) || !LineClock::CanRecord(head.cycle_time)) {
        return std::nullopt;
    }
    head.axis_names = std::move(*names);
    head.program = entry(kProgramKey);
    head.limits = ReadLimits(entry(kLimitsKey));
    return head;
}

std::vector<std::string> FieldNames(const std::vector<std::string>& axis_names) {
    std::vector<std::string> fields;
    std::set<std::string> taken;
    for (const std::string& name : axis_names) {
        std::string field;
        for (const char character : name) {
            const auto code = static_cast<unsigned char>(character);
            if ((code >= 'a' && code <= 'z') || (code >= '0' && code <= '9')) {
                field += character;
            } else if (code >= 'A' && code <= 'Z') {
                field += static_cast<char>(code - 'A' + 'a');
            } else if (!field.empty() && field.back() != '_') {
                field += '_';
            }
        }
        while (!field.empty() && field.back() == '_') {
            field.pop_back();
        }
        if (field.empty() || (field[0] >= '0' && field[0] <= '9')) {
            field.insert(0, field.empty() ? "axis" : "axis_");
        }
        const std::string base = field;
        for (int number = 2; !taken.insert(field).second; ++number) {
            field = base + "_" + std::to_string(number);
        }
        fields.push_back(field);
    }
    return fields;
}

std::string LineSchema(const std::vector<std::string>& axis_names) {
    std::string schema;
    for (const std::string& field : FieldNames(axis_names)) {
        schema += "float64 " + field + "\n";
    }
    return schema;
}

std::optional<std::vector<std::string>> FieldsOfSchema(std::string_view schema) {
    std::vector<std::string> fields;
    while (!schema.empty()) {
        const std::size_t end = std::min(schema.find('\n'), schema.size());
        std::string_view line = schema.substr(0, end);
        schema.remove_prefix(std::min(end + 1, schema.size()));
        if (line.find_first_not_of(" \t\r") == std::string_view::npos || line[0] == '#') {
            continue;
        }
        constexpr std::string_view kType = "float64 ";
        if (!line.starts_with(kType)) {
            return std::nullopt;
        }
        line.remove_prefix(kType.size());
        fields.emplace_back(line.substr(0, line.find_first_of(" \t\r=#")));
        if (fields.back().empty() || line.find('=') != std::string_view::npos) {
            return std::nullopt;  // a constant is no field
        }
    }
    return fields;
}

}  // namespace wavo::recording
