// The viewer's message window inside the program's event loop.
#pragma once

#include <memory>

#include "link/window_channel.h"

class QSocketNotifier;

namespace wavo {

class MessagePump final : public WindowChannel {
 public:
    MessagePump();
    ~MessagePump() override;

    bool Open(MasterMessages& messages) override;

 private:
    std::unique_ptr<QSocketNotifier> m_notifier;  // null where the system calls the handler
};

}  // namespace wavo
