#include "view/message_pump.h"

#include <QObject>
#include <QSocketNotifier>

#include "support/diagnostics.h"

namespace wavo {

MessagePump::MessagePump() = default;
MessagePump::~MessagePump() = default;

bool MessagePump::Open(MasterMessages& messages) {
    if (!WindowChannel::Open(messages)) {
        MERRLOG("MessagePump::Open(): no message window: %s", Error().c_str());
        return false;
    }
    const int descriptor = Window()->PollDescriptor();
    if (descriptor >= 0 && m_notifier == nullptr) {
        m_notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                         [this] { Window()->Dispatch(); });
    }
    return true;
}

}  // namespace wavo
