#include "recording/json_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace wavo::recording {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// Length of the character that bytes begin with; 0 when they begin with none.
std::size_t CharacterLength(std::string_view bytes) {
    const auto at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned lead = at(0);
    if (lead < 0x80) {
        return 1;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0U) != 0x80) {
            return 0;
        }
    }
    const unsigned second = at(1);
    const bool is_wrong = (lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
                          (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F);
    return is_wrong ? 0 : length;
}

void AppendUtf8(std::string& out, std::uint32_t character) {
    const auto put = [&out](std::uint32_t byte) { out += static_cast<char>(byte); };
    if (character < 0x80) {
        put(character);
    } else if (character < 0x800) {
        put(0xC0U | (character >> 6U));
        put(0x80U | (character & 0x3FU));
    } else if (character < 0x10000) {
        put(0xE0U | (character >> 12U));
        put(0x80U | ((character >> 6U) & 0x3FU));
        put(0x80U | (character & 0x3FU));
    } else {
        put(0xF0U | (character >> 18U));
        put(0x80U | ((character >> 12U) & 0x3FU));
        put(0x80U | ((character >> 6U) & 0x3FU));
        put(0x80U | (character & 0x3FU));
    }
}

class JsonReader {
 public:
    explicit JsonReader(std::string_view text) : m_text(text) {}

    std::optional<JsonValue> ReadAll() {
        JsonValue value;
        const bool is_read = ReadValue(value, 0);
        SkipBlanks();
        return is_read && m_at == m_text.size() ? std::optional(std::move(value)) : std::nullopt;
    }

 private:
    static constexpr int kDeepest = 16;

    void SkipBlanks() { m_at = std::min(m_text.find_first_not_of(" \t\r\n", m_at), m_text.size()); }
    bool TakeCharacter(char character) {
        SkipBlanks();
        const bool is_there = m_at < m_text.size() && m_text[m_at] == character;
        m_at += is_there ? 1 : 0;
        return is_there;
    }
    bool TakeWord(std::string_view word) {
        const bool is_there = m_text.substr(m_at).starts_with(word);
        m_at += is_there ? word.size() : 0;
        return is_there;
    }

    bool ReadValue(JsonValue& value, int depth) {
        SkipBlanks();
        if (depth > kDeepest || m_at == m_text.size()) {
            return false;
        }
        switch (m_text[m_at]) {
            case '{':
                return ReadObject(value.content.emplace<JsonValue::Object>(), depth);
            case '[':
                return ReadArray(value.content.emplace<JsonValue::Array>(), depth);
            case '"':
                return ReadText(value.content.emplace<std::string>());
            case 't':
                value.content = true;
                return TakeWord("true");
            case 'f':
                value.content = false;
                return TakeWord("false");
            case 'n':
                return TakeWord("null");
            default:
                return ReadNumber(value.content.emplace<JsonValue::Number>());
        }
    }

    bool ReadObject(JsonValue::Object& object, int depth) {
        ++m_at;
        if (TakeCharacter('}')) {
            return true;
        }
        do {
            std::string name;
            SkipBlanks();
            if (!ReadText(name) || !TakeCharacter(':') || !ReadValue(object[name], depth + 1)) {
                return false;
            }
        } while (TakeCharacter(','));
        return TakeCharacter('}');
    }

    bool ReadArray(JsonValue::Array& array, int depth) {
        ++m_at;
        if (TakeCharacter(']')) {
            return true;
        }
        do {
            if (!ReadValue(array.emplace_back(), depth + 1)) {
                return false;
            }
        } while (TakeCharacter(','));
        return TakeCharacter(']');
    }

    bool ReadNumber(JsonValue::Number& number) {
        const std::string_view rest = m_text.substr(m_at);
        const std::size_t size = std::min(rest.find_first_not_of("+-.0123456789eE"), rest.size());
        number.text = rest.substr(0, size);
        m_at += size;
        const char* const end = number.text.data() + size;
        return size > 0 && std::from_chars(number.text.data(), end, number.value).ptr == end;
    }

    bool ReadText(std::string& text) {
        if (m_at == m_text.size() || m_text[m_at] != '"') {
            return false;
        }
        for (++m_at; m_at < m_text.size(); ++m_at) {
            const char character = m_text[m_at];
            if (character == '"') {
                ++m_at;
                return IsUtf8(text);
            }
            if (static_cast<unsigned char>(character) < 0x20) {
                return false;
            }
            if (character != '\\') {
                text += character;
            } else if (!ReadEscape(text)) {
                return false;
            }
        }
        return false;
    }

    /// Stands on the backslash, and then on the last character of the escape.
    bool ReadEscape(std::string& text) {
        if (++m_at == m_text.size()) {
            return false;
        }
        constexpr std::string_view kNames = "\"\\/bfnrt";
        constexpr std::string_view kCharacters = "\"\\/\b\f\n\r\t";
        if (const std::size_t found = kNames.find(m_text[m_at]); found != std::string_view::npos) {
            text += kCharacters[found];
            return true;
        }
        std::uint32_t character = 0;
        if (m_text[m_at] != 'u' || !ReadHex(character)) {
            return false;
        }
        if (character >= 0xD800 && character < 0xDC00) {  // the first half of a pair
            std::uint32_t second = 0;
            if (!m_text.substr(m_at + 1).starts_with("\\u")) {
                return false;
            }
            m_at += 2;
            if (!ReadHex(second) || second < 0xDC00 || second > 0xDFFF) {
                return false;
            }
            character = 0x10000 + ((character - 0xD800) << 10U) + (second - 0xDC00);
        }
        AppendUtf8(text, character);
        return true;
    }

    bool ReadHex(std::uint32_t& number) {
        constexpr std::size_t kDigits = 4;
        if (m_text.size() - m_at <= kDigits) {
            return false;
        }
        const char* const begin = m_text.data() + m_at + 1;
        m_at += kDigits;
        return std::from_chars(begin, begin + kDigits, number, 16).ptr == begin + kDigits;
    }

    const std::string_view m_text;
    std::size_t m_at = 0;
};

}  // namespace

bool IsUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t length = CharacterLength(bytes);
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
    return true;
}

std::string AsUtf8(std::string_view bytes) {
    std::string text;
    while (!bytes.empty()) {
        const std::size_t length = CharacterLength(bytes);
        text += length == 0 ? kReplacement : bytes.substr(0, length);
        bytes.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

void AppendJsonText(std::string& out, std::string_view text) {
    constexpr std::string_view kHex = "0123456789abcdef";
    out += '"';
    for (const char character : AsUtf8(text)) {
        const auto code = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            out += '\\';
            out += character;
        } else if (code < 0x20 || code == 0x7F) {
            out += "\\u00";
            out += kHex[code >> 4U];
            out += kHex[code & 0xFU];
        } else {
            out += character;
        }
    }
    out += '"';
}

void AppendJsonNumber(std::string& out, double number) {
    if (!std::isfinite(number)) {
        out += "null";
        return;
    }
    std::array<char, 32> digits{};
    out.append(digits.data(),
               std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

std::optional<double> JsonValue::Double() const {
    const auto* const number = std::get_if<Number>(&content);
    return number != nullptr ? std::optional(number->value) : std::nullopt;
}

std::optional<std::uint64_t> JsonValue::Unsigned() const {
    const auto* const number = std::get_if<Number>(&content);
    if (number == nullptr) {
        return std::nullopt;
    }
    std::uint64_t whole = 0;
    const char* const end = number->text.data() + number->text.size();
    const auto result = std::from_chars(number->text.data(), end, whole);
    return result.ec == std::errc() && result.ptr == end ? std::optional(whole) : std::nullopt;
}

const JsonValue* JsonValue::Member(std::string_view name) const {
    const Object* const members = Members();
    if (members == nullptr) {
        return nullptr;
    }
    const auto found = members->find(name);
    return found != members->end() ? &found->second : nullptr;
}

std::optional<JsonValue> ReadJson(std::string_view text) {
    return JsonReader(text).ReadAll();
}

}  // namespace wavo::recording
