#include "platform/win32/crash_record.h"

#include <algorithm>

namespace wavo::platform {

namespace {

void WriteAll(HANDLE file, const char* text, std::size_t size) noexcept {
    DWORD written = 0;
    ::WriteFile(file, text, static_cast<DWORD>(size), &written, nullptr);
}

}  // namespace

CrashRecord& CrashRecord::Text(std::string_view text) noexcept {
    const std::size_t room = m_line.size() - 2 - m_size;  // for the line end
    const std::size_t size = std::min(text.size(), room);
    std::copy_n(text.data(), size, m_line.data() + m_size);
    m_size += size;
    return *this;
}

CrashRecord& CrashRecord::Decimal(std::uint64_t number, int digits) noexcept {
    std::array<char, 20> text{};
    std::size_t begin = text.size();
    while (begin > 0 && (number > 0 || digits > 0)) {
        text[--begin] = static_cast<char>('0' + number % 10);
        number /= 10;
        --digits;
    }
    return Text({text.data() + begin, text.size() - begin});
}

CrashRecord& CrashRecord::Hex(std::uint64_t number) noexcept {
    std::array<char, 16> text{};
    std::size_t begin = text.size();
    do {
        text[--begin] = "0123456789abcdef"[number % 16];
        number /= 16;
    } while (number > 0);
    return Text("0x").Text({text.data() + begin, text.size() - begin});
}

CrashRecord& CrashRecord::Time(const SYSTEMTIME& time) noexcept {
    Decimal(time.wYear, 4).Text("-").Decimal(time.wMonth, 2).Text("-").Decimal(time.wDay, 2);
    Text("T").Decimal(time.wHour, 2).Text(":").Decimal(time.wMinute, 2).Text(":");
    return Decimal(time.wSecond, 2).Text(".").Decimal(time.wMilliseconds, 3).Text("Z");
}

void CrashRecord::EndLine() noexcept {
    m_line[m_size++] = '\r';
    m_line[m_size++] = '\n';
    if (m_file != nullptr) {
        WriteAll(m_file, m_line.data(), m_size);
    }
    const HANDLE standard_error = ::GetStdHandle(STD_ERROR_HANDLE);
    if (standard_error != nullptr && standard_error != INVALID_HANDLE_VALUE) {
        WriteAll(standard_error, m_line.data(), m_size);
    }
    m_size = 0;
}

}  // namespace wavo::platform
