// The master process as a source of values, with the message window in the program's event loop.
#pragma once

#include "link/shared_memory_source.h"
#include "view/message_pump.h"

namespace wavo {

/// What a MasterLink sends through; a base, so that it is there before the source and after it.
struct MasterLinkPump {
    MessagePump pump;
};

class MasterLink final : private MasterLinkPump, public SharedMemorySource {
 public:
    MasterLink() : SharedMemorySource(pump) {}

    /// The viewer's window for messages; 0 before it was made.
    [[nodiscard]] platform::WindowHandle Window() const { return pump.OwnWindow(); }
};

}  // namespace wavo
