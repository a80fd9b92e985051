#include "platform/crash_line.h"

#include <algorithm>

namespace wavo::platform {

CrashLine& CrashLine::Text(std::string_view text) noexcept {
    const std::size_t room = m_line.size() - m_line_end.size() - m_size;
    const std::size_t size = std::min(text.size(), room);
    std::copy_n(text.data(), size, m_line.data() + m_size);
    m_size += size;
    return *this;
}

CrashLine& CrashLine::Decimal(std::uint64_t number, int digits) noexcept {
    std::array<char, 20> text{};
    std::size_t begin = text.size();
    while (begin > 0 && (number > 0 || digits > 0)) {
        text[--begin] = static_cast<char>('0' + number % 10);
        number /= 10;
        --digits;
    }
    return Text({text.data() + begin, text.size() - begin});
}

CrashLine& CrashLine::Hex(std::uint64_t number) noexcept {
    std::array<char, 16> text{};
    std::size_t begin = text.size();
    do {
        text[--begin] = "0123456789abcdef"[number % 16];
        number /= 16;
    } while (number > 0);
    return Text("0x").Text({text.data() + begin, text.size() - begin});
}

CrashLine& CrashLine::Time(const CrashTime& time) noexcept {
    Decimal(time.year, 4).Text("-").Decimal(time.month, 2).Text("-").Decimal(time.day, 2);
    Text("T").Decimal(time.hour, 2).Text(":").Decimal(time.minute, 2).Text(":");
    return Decimal(time.second, 2).Text(".").Decimal(time.millisecond, 3).Text("Z");
}

void CrashLine::EndLine() noexcept {
    std::copy(m_line_end.begin(), m_line_end.end(), m_line.data() + m_size);
    Write({m_line.data(), m_size + m_line_end.size()});
    m_size = 0;
}

}  // namespace wavo::platform
