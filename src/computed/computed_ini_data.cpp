#include "computed/computed_ini_data.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "computed/expression.h"
#include "support/mini_data_text.h"

namespace wavo::computed {

namespace {

constexpr std::string_view kSection = "COMPUTED";
constexpr std::string_view kAxes = "Axes";

std::string ExpressionKey(std::size_t number) {
    return "Expression" + std::to_string(number);
}

std::string UnitKey(std::size_t number) {
    return "Unit" + std::to_string(number);
}

/// One line, without blanks around it, as it reads back.
std::string OneLine(std::string text, std::size_t longest) {
    std::ranges::replace_if(
        text, [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
    std::size_t length = std::min(text.size(), longest);
    while (length < text.size() && length > 0 &&
           (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        --length;  // no part of a character
    }
    text.resize(length);
    return std::string(ini::Trim(text));
}

std::string EntryOf(const MIniData& store, const std::string& key, std::size_t longest) {
    std::string value;
    (void)store.GetStringEntry(kSection, key, value);
    return OneLine(std::move(value), longest);
}

}  // namespace

bool PutComputedAxes(MIniData& store, const std::vector<ComputedAxis>& axes) {
    std::vector<ComputedAxis> written;
    std::string names;
    for (const ComputedAxis& axis : axes) {
        if (IsPlainName(axis.name) && written.size() < kMostComputedAxes) {
            names += (names.empty() ? "" : ",") + axis.name;
            written.push_back(axis);
        }
    }
    const std::vector<std::string> former = store.EntryNames(kSection);
    if (written.empty()) {
        return !store.HasSection(kSection) || store.DeleteSection(kSection);
    }
    bool all_set = store.SetStringEntry(kSection, kAxes, names);
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < written.size(); ++i) {
        keys.push_back(ExpressionKey(i + 1));
        keys.push_back(UnitKey(i + 1));
        const ComputedAxis& axis = written[i];
        all_set &= store.SetStringEntry(kSection, keys[2 * i],
                                        OneLine(axis.expression, kLongestExpression));
        all_set &=
            store.SetStringEntry(kSection, keys[2 * i + 1], OneLine(axis.unit, kLongestUnit));
    }
    // Those of axes that are gone.
    for (const std::string& key : former) {
        const bool is_ours = key.starts_with("Expression") || key.starts_with("Unit");
        if (is_ours && std::ranges::find(keys, key) == keys.end()) {
            all_set &= store.DeleteEntry(kSection, key);
        }
    }
    return all_set;
}

std::vector<ComputedAxis> TakeComputedAxes(const MIniData& store) {
    std::vector<ComputedAxis> axes;
    std::string names;
    if (!store.GetStringEntry(kSection, kAxes, names)) {
        return axes;
    }
    std::size_t number = 1;
    for (std::string_view rest = names; axes.size() < kMostComputedAxes; ++number) {
        const std::size_t comma = rest.find(',');
        const std::string name(ini::Trim(rest.substr(0, comma)));
        if (!name.empty()) {
            axes.push_back({name.substr(0, kLongestComputedName + 1),
                            EntryOf(store, ExpressionKey(number), kLongestExpression + 1),
                            EntryOf(store, UnitKey(number), kLongestUnit)});
        }
        if (comma == std::string_view::npos) {
            break;
        }
        rest = rest.substr(comma + 1);
    }
    return axes;
}

}  // namespace wavo::computed
