// JSON as recordings have it: lists of names, limits and events.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace wavo::recording {

/// Whether bytes are text: UTF-8 without overlong forms and halves of surrogate pairs.
bool IsUtf8(std::string_view bytes);

/// The text with U+FFFD in the place of every byte that is none.
std::string AsUtf8(std::string_view bytes);

/// Appends a text in quotation marks, escaped; bytes that are no text as AsUtf8 has them.
void AppendJsonText(std::string& out, std::string_view text);

/// Appends a number so that reading it gives the same bits; null when it is not finite.
void AppendJsonNumber(std::string& out, double number);

/// A value that was read. Whole numbers beyond 2^53 keep their digits in `text`.
struct JsonValue {
    using Array = std::vector<JsonValue>;
    using Object = std::map<std::string, JsonValue, std::less<>>;

    struct Number {
        double value = 0.0;
        std::string text;
    };
    std::variant<std::monostate, bool, Number, std::string, Array, Object> content;

    [[nodiscard]] const std::string* Text() const { return std::get_if<std::string>(&content); }
    [[nodiscard]] const Array* Items() const { return std::get_if<Array>(&content); }
    [[nodiscard]] const Object* Members() const { return std::get_if<Object>(&content); }
    [[nodiscard]] std::optional<double> Double() const;
    [[nodiscard]] std::optional<std::uint64_t> Unsigned() const;
    /// A member of an object; null when this is none or has no such member.
    [[nodiscard]] const JsonValue* Member(std::string_view name) const;
};

/// Reads a text that is one JSON value; nothing when it is not, or is nested deeper than 16.
std::optional<JsonValue> ReadJson(std::string_view text);

}  // namespace wavo::recording
