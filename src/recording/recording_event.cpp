#include "recording/recording_event.h"

#include "recording/json_text.h"

namespace wavo::recording {

std::string ToJson(const Event& event) {
    std::string text = "{\"kind\":";
    AppendJsonText(text, event.kind);
    text += ",\"line\":" + std::to_string(event.line) + ",\"lost\":" + std::to_string(event.lost) +
            ",\"text\":";
    AppendJsonText(text, event.text);
    return text + "}";
}

std::optional<Event> EventFromJson(std::string_view text) {
    const std::optional<JsonValue> json = ReadJson(text);
    const JsonValue* const kind = json ? json->Member("kind") : nullptr;
    const JsonValue* const line = json ? json->Member("line") : nullptr;
    if (kind == nullptr || kind->Text() == nullptr || line == nullptr || !line->Unsigned()) {
        return std::nullopt;
    }
    Event event{*kind->Text(), *line->Unsigned(), 0, {}};
    if (const JsonValue* const lost = json->Member("lost"); lost != nullptr) {
        event.lost = lost->Unsigned().value_or(0);
    }
    if (const JsonValue* const words = json->Member("text");
        words != nullptr && words->Text() != nullptr) {
        event.text = *words->Text();
    }
    return event;
}

std::string_view EventSchema() {
    return R"({"type":"object","required":["kind","line"],"properties":{)"
           R"("kind":{"type":"string"},"line":{"type":"integer"},)"
           R"("lost":{"type":"integer"},"text":{"type":"string"}}})";
}

}  // namespace wavo::recording
