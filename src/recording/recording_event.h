// What happened beside the lines.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wavo::recording {

/// Kinds that this program writes; others may come from elsewhere.
inline constexpr char kEventOverrun[] = "overrun";       ///< the value FIFO ran over
inline constexpr char kEventLinkEnded[] = "link_ended";  ///< by the master, or it vanished
inline constexpr char kEventMasterRestarted[] = "master_restarted";
inline constexpr char kEventDamaged[] = "fifo_damaged";    ///< the value FIFO was tampered with
inline constexpr char kEventDiskSlow[] = "disk_too_slow";  ///< lines that the queue had no room for
inline constexpr char kEventTrigger[] = "trigger";         ///< the condition became true
inline constexpr char kEventTimeJump[] = "time_jump";      ///< in the time column of a table

struct Event {
    std::string kind;
    std::uint64_t line = 0;  ///< the first line behind it
    std::uint64_t lost = 0;  ///< lines that are missing before that line because of it
    std::string text;        ///< for people

    friend bool operator==(const Event&, const Event&) = default;
};

/// The event as a JSON text.
std::string ToJson(const Event& event);

/// Reads an event; nothing when the text is none.
std::optional<Event> EventFromJson(std::string_view text);

/// JSON Schema of these texts.
std::string_view EventSchema();

}  // namespace wavo::recording
