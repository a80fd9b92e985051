#include "ui/messages.h"

#include <QCoreApplication>

namespace wavo {

AppMessageEvent::AppMessageEvent(AppMessage number, std::uint64_t w_param, std::int64_t l_param)
    : QEvent(EventType()), m_number(number), m_w_param(w_param), m_l_param(l_param) {}

QEvent::Type AppMessageEvent::EventType() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

void PostAppMessage(QObject* receiver, AppMessage number, std::uint64_t w_param,
                    std::int64_t l_param) {
    if (receiver != nullptr) {
        QCoreApplication::postEvent(receiver, new AppMessageEvent(number, w_param, l_param));
    }
}

std::int64_t SendAppMessage(QObject* receiver, AppMessage number, std::uint64_t w_param,
                            std::int64_t l_param) {
    if (receiver == nullptr) {
        return 0;
    }
    AppMessageEvent event(number, w_param, l_param);
    QCoreApplication::sendEvent(receiver, &event);
    return event.result();
}

}  // namespace wavo
