// Numbers of the messages between viewer and master. lParam is always the viewer's window handle
// when the viewer sends.
#pragma once

#include <cstdint>

#include "platform/message_window.h"

namespace wavo {

/// Messages that the viewer gives to the master.
enum class ToMaster : std::uint32_t {
    kLink = 0x52C,             ///< wParam of LinkRequest
    kReady = 0x52D,            ///< sent, wParam 0: ready for new values
    kCapabilityBegin = 0x52E,  ///< sent, wParam 0: about to read the capability module
    kCapabilityEnd = 0x52F,    ///< sent, wParam 0: capability module read
};

/// wParam of ToMaster::kLink.
enum class LinkRequest : std::uint64_t {
    kDisconnect = 1,  ///< sent
    kConnect = 2,     ///< posted
};

/// Messages that the master gives to the viewer.
enum class FromMaster : std::uint32_t {
    kValues = 0x52C,               ///< wParam of ValuesNotice
    kOverrun = 0x52D,              ///< the value FIFO ran over
    kQuit = 0x52E,                 ///< the viewer ends
    kCapabilitiesChanged = 0x52F,  ///< the capability module is new
};

/// A master has begun to publish: posted to every viewer that can be found, known or not, with
/// wParam and lParam 0. The number after those of FromMaster.
inline constexpr std::uint32_t kMasterIsHere = 0x530;

/// All of them: masters and viewers take them of programs with fewer rights, too.
inline constexpr platform::MessageNumbers kLinkNumbers{static_cast<std::uint32_t>(ToMaster::kLink),
                                                       kMasterIsHere};

/// wParam of FromMaster::kValues; others are ignored.
enum class ValuesNotice : std::uint64_t {
    kNewValues = 1,
    kLinkEnded = 2,
};

}  // namespace wavo
