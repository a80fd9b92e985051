#include "support/diagnostics.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <exception>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/last_error.h"
#include "support/diagnostics_output.h"
#include "support/report_sink.h"

namespace {

using wavo::diagnostics::Emit;
using wavo::diagnostics::kLargestText;
using wavo::diagnostics::Service;
using wavo::platform::LastErrorKeeper;
using Clock = std::chrono::system_clock;

constexpr unsigned kInitialLevel = 1;
constexpr std::string_view kCutMark = "...";
/// Messages that one context holds; a context that is never closed must not eat the memory.
constexpr std::size_t kLargestContext = 10000;

struct Location {
    const char* source = "";
    int line = 0;
    unsigned level = 0;
};

struct HeldMessage {
    std::string source;
    int line = 0;
    std::string text;
    Clock::time_point time;
};

struct Context {
    std::vector<HeldMessage> messages;
    std::size_t dropped = 0;
};

struct Diagnostics {
    std::map<std::string, unsigned, std::less<>> levels;  ///< of channels other than "default"
    Location trace;
    Location error_trace;
    Location error_log;
    std::vector<Context> contexts;  ///< the innermost one last
};

/// Level of "default". Apart from the rest, so that a test of it costs next to nothing and works
/// before and after everything else.
unsigned g_default_level = kInitialLevel;

Diagnostics& State() {
    // Never destroyed: destructors of other statics may still report.
    static Diagnostics& state = *new Diagnostics;
    return state;
}

bool IsDefault(const char* channel) {
    constexpr char kDefault[] = "default";
    return channel[0] == kDefault[0] && std::strcmp(channel, kDefault) == 0;
}

/// Runs one call: the last error number stays, nothing is thrown.
template <typename Action>
void Guarded(Action action) noexcept {
    const LastErrorKeeper keep;
    try {
        action();
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): reports never fail
    }
}

/// Takes line ends off the end, and cuts what is too long between two characters.
void Trim(std::string* text, bool is_cut) {
    if (is_cut) {
        std::size_t end = std::min(text->size(), kLargestText - kCutMark.size());
        while (end > 0 && (static_cast<unsigned char>((*text)[end]) & 0xC0) == 0x80) {
            --end;
        }
        text->resize(end);
        *text += kCutMark;
    }
    while (!text->empty() && (text->back() == '\n' || text->back() == '\r')) {
        text->pop_back();
    }
}

WAVO_PRINTF(1, 0) std::string Format(const char* format, std::va_list arguments) {
    if (format == nullptr) {
        return {};
    }
    std::array<char, kLargestText + 1> buffer;  // NOLINT(*-member-init): filled by the call
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the callers have started it
    const int size = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    if (size < 0) {
        return format;  // an argument that cannot be written; the words around it still tell
    }
    const std::size_t written = std::min(static_cast<std::size_t>(size), kLargestText);
    std::string text(buffer.data(), written);
    Trim(&text, static_cast<std::size_t>(size) > kLargestText);
    return text;
}

Location MakeLocation(const char* source, int line) {
    return {source != nullptr ? source : "", line, 0};
}

void PassOn(const HeldMessage& message) {
    Emit({Service::kErrorTrace, message.source, message.line, message.text}, 0, message.time);
}

void PassOn(const Context& context) {
    for (const HeldMessage& message : context.messages) {
        PassOn(message);
    }
    if (context.dropped > 0) {
        PassOn({__FILE__, __LINE__, std::to_string(context.dropped) + " more messages not kept",
                Clock::now()});
    }
}

void Hold(HeldMessage message, Context* context) {
    if (context->messages.size() < kLargestContext) {
        context->messages.push_back(std::move(message));
    } else {
        ++context->dropped;
    }
}

}  // namespace

void _MTrace_SetLevel(const char* channel, unsigned level) {
    if (channel == nullptr) {
        return;
    }
    if (IsDefault(channel)) {
        g_default_level = level;
        return;
    }
    Guarded([&] { State().levels[channel] = level; });
}

int _MTrace_TestLevel(const char* channel, unsigned level) {
    if (channel == nullptr) {
        return 0;
    }
    if (IsDefault(channel)) {
        return level <= g_default_level ? 1 : 0;
    }
    int enabled = 0;
    Guarded([&] {
        const auto& levels = State().levels;
        const auto found = levels.find(std::string_view(channel));
        enabled = level <= (found != levels.end() ? found->second : kInitialLevel) ? 1 : 0;
    });
    return enabled;
}

int _MTrace_Location(const char* source, int line, const char* channel, unsigned level) {
    Guarded([&] {
        State().trace = MakeLocation(source, line);
        State().trace.level = level;
    });
    return _MTrace_TestLevel(channel, level);
}

void _MTrace_Always(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    Guarded([&] {
        const Location& at = State().trace;
        const std::string text = Format(format, arguments);
        Emit({Service::kTrace, at.source, at.line, text}, at.level, Clock::now());
    });
    va_end(arguments);
}

void _MErrTrace_Location(int /*module*/, const char* source, int line) {
    Guarded([&] { State().error_trace = MakeLocation(source, line); });
}

void _MErrTrace_Add(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    Guarded([&] {
        Diagnostics& state = State();
        HeldMessage message{state.error_trace.source, state.error_trace.line,
                            Format(format, arguments), Clock::now()};
        if (state.contexts.empty()) {
            PassOn(message);
        } else {
            Hold(std::move(message), &state.contexts.back());
        }
    });
    va_end(arguments);
}

void MErrTrace_BeginContext() {
    Guarded([] { State().contexts.emplace_back(); });
}

void MErrTrace_EndContext() {
    Guarded([] {
        std::vector<Context>& contexts = State().contexts;
        if (contexts.empty()) {
            return;
        }
        Context ended = std::move(contexts.back());
        contexts.pop_back();
        if (contexts.empty()) {
            PassOn(ended);
            return;
        }
        Context& enclosing = contexts.back();
        for (HeldMessage& message : ended.messages) {
            Hold(std::move(message), &enclosing);
        }
        enclosing.dropped += ended.dropped;
    });
}

void MErrTrace_ClearContext() {
    Guarded([] {
        if (!State().contexts.empty()) {
            State().contexts.back() = {};
        }
    });
}

void MErrTrace_Dump() {
    Guarded([] {
        // Taken out first: an observer may report while this goes on.
        std::vector<Context> held;
        for (Context& context : State().contexts) {
            held.push_back(std::exchange(context, {}));
        }
        for (const Context& context : held) {
            PassOn(context);
        }
    });
}

void _MErrLog_Location(int /*module*/, const char* source, int line) {
    Guarded([&] { State().error_log = MakeLocation(source, line); });
}

void _MErrLog_Add(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    Guarded([&] {
        const Location& at = State().error_log;
        const std::string text = Format(format, arguments);
        Emit({Service::kErrorLog, at.source, at.line, text}, 0, Clock::now());
    });
    va_end(arguments);
}
