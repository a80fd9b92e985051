// JSON text, member after member in the order in which they are said.
#pragma once

#include <string>
#include <string_view>

#include "measure/figure.h"

namespace wavo::report {

/// Members of objects have a key, elements of arrays an empty one.
class JsonWriter {
 public:
    JsonWriter() { Open("", '{'); }

    void BeginObject(std::string_view key = {}) { Open(key, '{'); }
    void BeginArray(std::string_view key = {}) { Open(key, '['); }
    void EndObject() { Close('}'); }
    void EndArray() { Close(']'); }

    void Text(std::string_view key, std::string_view text);
    /// As short as reads back the same; null for what is not finite.
    void Number(std::string_view key, double number);
    void Flag(std::string_view key, bool flag);
    void Null(std::string_view key);
    /// The value or null.
    void Value(std::string_view key, const measure::Figure& figure);

    /// The whole text, ended. To be called once.
    std::string Finish();

 private:
    void Begin(std::string_view key);
    void Open(std::string_view key, char bracket);
    void Close(char bracket);

    std::string m_text;
    int m_depth = 0;
    bool m_first = true;  ///< of its object or array
};

/// A text in quotes, as JSON writes it.
std::string QuotedForJson(std::string_view text);

}  // namespace wavo::report
