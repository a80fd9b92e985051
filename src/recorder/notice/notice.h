// What a recorder that runs tells of itself, and how others find it.
//
// A recorder has a message window and publishes a small segment, "WavoRecorder_" and the window's
// number, with how far it is. When it begins it tells all windows of the user that it is there; who
// answers that it wants to watch, or looks for recorders later, is told whenever there is news. The
// segment goes with the recorder; the last news is sent, not posted, so that it can still be read.
// A recorder that was killed leaves its segment behind: it counts while its window exists.
//
// kRecorderIsHere, kWatchRecorder, kRecorderNews: lParam is the sender's window, wParam 0. A
// recorder finishes its files when it gets FromMaster::kQuit.
#pragma once

#include <cstdint>
#include <string>

#include "platform/message_window.h"

namespace wavo::recorder {

inline constexpr std::uint32_t kRecorderIsHere = 0x531;  ///< from a recorder, to all windows
inline constexpr std::uint32_t kWatchRecorder = 0x532;   ///< to a recorder
inline constexpr std::uint32_t kRecorderNews = 0x533;    ///< from a recorder, to who watches it

enum class RecorderState : std::uint32_t {
    kWaitsForMaster = 1,
    kWaitsForTrigger = 2,
    kRecords = 3,
    kEnded = 4,   ///< all files are whole
    kFailed = 5,  ///< it could not go on; `reason` tells why
};

struct Notice {
    RecorderState state = RecorderState::kWaitsForMaster;
    double seconds = 0.0;     ///< since the first line
    std::uint64_t lines = 0;  ///< on the device
    std::uint64_t lost = 0;   ///< lines
    std::uint64_t bytes = 0;  ///< on the device, of all files
    std::string file;         ///< path of the newest file; before there is one, the one asked for
    std::string reason;       ///< why it has ended

    [[nodiscard]] bool HasEnded() const { return state >= RecorderState::kEnded; }
    friend bool operator==(const Notice&, const Notice&) = default;
};

/// Name of the segment of the recorder with that window.
std::string NoticeSegmentName(platform::WindowHandle window);

/// "00:01:23", hours as many as there are.
std::string TimeText(double seconds);

/// "181.2 MB", "8.8 GB".
std::string SizeText(std::uint64_t bytes);

}  // namespace wavo::recorder
