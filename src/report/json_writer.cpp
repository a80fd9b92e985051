#include "report/json_writer.h"

#include <array>
#include <charconv>
#include <cmath>

namespace wavo::report {

std::string QuotedForJson(std::string_view text) {
    constexpr std::string_view kHexadecimal = "0123456789abcdef";
    std::string quoted = "\"";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (code < 0x20U) {
            quoted += "\\u00";
            quoted += kHexadecimal[code >> 4U];
            quoted += kHexadecimal[code & 15U];
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

void JsonWriter::Begin(std::string_view key) {
    if (m_depth > 0) {
        m_text += m_first ? "\n" : ",\n";
        m_text.append(static_cast<std::size_t>(m_depth) * 2, ' ');
    }
    if (!key.empty()) {
        m_text += QuotedForJson(key) + ": ";
    }
    m_first = false;
}

void JsonWriter::Open(std::string_view key, char bracket) {
    Begin(key);
    m_text += bracket;
    m_first = true;
    ++m_depth;
}

void JsonWriter::Close(char bracket) {
    --m_depth;
    if (!m_first) {
        m_text += '\n';
        m_text.append(static_cast<std::size_t>(m_depth) * 2, ' ');
    }
    m_text += bracket;
    m_first = false;
}

void JsonWriter::Text(std::string_view key, std::string_view text) {
    Begin(key);
    m_text += QuotedForJson(text);
}

void JsonWriter::Number(std::string_view key, double number) {
    if (!std::isfinite(number)) {
        Null(key);
        return;
    }
    Begin(key);
    std::array<char, 40> digits{};
    m_text.append(digits.data(),
                  std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

void JsonWriter::Flag(std::string_view key, bool flag) {
    Begin(key);
    m_text += flag ? "true" : "false";
}

void JsonWriter::Null(std::string_view key) {
    Begin(key);
    m_text += "null";
}

void JsonWriter::Value(std::string_view key, const measure::Figure& figure) {
    if (figure) {
        Number(key, *figure);
    } else {
        Null(key);
    }
}

std::string JsonWriter::Finish() {
    EndObject();
    return std::move(m_text) + "\n";
}

}  // namespace wavo::report
