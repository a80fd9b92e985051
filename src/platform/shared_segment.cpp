#include <utility>

#include "platform/shared_memory.h"

namespace wavo::platform {

SharedSegment::~SharedSegment() {
    Release();
}

SharedSegment::SharedSegment(SharedSegment&& other) noexcept
    : m_name(std::move(other.m_name)),
      m_data(std::exchange(other.m_data, nullptr)),
      m_size(std::exchange(other.m_size, 0)),
      m_handle(std::exchange(other.m_handle, 0)) {
    other.m_name.clear();
}

SharedSegment& SharedSegment::operator=(SharedSegment&& other) noexcept {
    if (this != &other) {
        Release();
        m_name = std::move(other.m_name);
        other.m_name.clear();
        m_data = std::exchange(other.m_data, nullptr);
        m_size = std::exchange(other.m_size, 0);
        m_handle = std::exchange(other.m_handle, 0);
    }
    return *this;
}

}  // namespace wavo::platform
