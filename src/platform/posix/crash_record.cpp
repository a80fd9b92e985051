#include "platform/posix/crash_record.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace wavo::platform {

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
/// How long a reader of standard error that does not read may hold the record up.
constexpr int kStandardErrorPatience = 200;  // ms

void WriteAll(int descriptor, const char* text, std::size_t size) noexcept {
    while (size > 0) {
        const ssize_t written = ::write(descriptor, text, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return;
        }
        text += written;
        size -= static_cast<std::size_t>(written);
    }
}

struct Date {
    std::int64_t year;
    std::uint64_t month;
    std::uint64_t day;
};

/// The date of a day counted from 1970-01-01, by 400-year eras that begin on a first of March.
Date DateOf(std::int64_t days_since_epoch) noexcept {
    constexpr std::int64_t kDaysPerEra = 146097;
    const std::int64_t days = days_since_epoch + 719468;  // from 0000-03-01
    const std::int64_t era = (days >= 0 ? days : days - kDaysPerEra + 1) / kDaysPerEra;
    const std::int64_t in_era = days - era * kDaysPerEra;
    const std::int64_t year_of_era =
        (in_era - in_era / 1460 + in_era / 36524 - in_era / 146096) / 365;
    const std::int64_t in_year = in_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const std::int64_t march_month = (5 * in_year + 2) / 153;
    const std::int64_t day = in_year - (153 * march_month + 2) / 5 + 1;
    const std::int64_t month = march_month < 10 ? march_month + 3 : march_month - 9;
    const std::int64_t year = year_of_era + era * 400 + (month <= 2 ? 1 : 0);
    return {year, static_cast<std::uint64_t>(month), static_cast<std::uint64_t>(day)};
}

}  // namespace

CrashTime UtcOf(const timespec& time) noexcept {
    const std::int64_t seconds = time.tv_sec;
    std::int64_t days = seconds / kSecondsPerDay;
    if (seconds % kSecondsPerDay < 0) {
        --days;
    }
    const auto in_day = static_cast<std::uint64_t>(seconds - days * kSecondsPerDay);
    const Date date = DateOf(days);
    return {static_cast<std::uint64_t>(date.year),
            date.month,
            date.day,
            in_day / 3600,
            in_day / 60 % 60,
            in_day % 60,
            static_cast<std::uint64_t>(time.tv_nsec) / 1000000};
}

void CrashRecord::Write(std::string_view line) noexcept {
    if (m_file >= 0) {
        WriteAll(m_file, line.data(), line.size());
    }
    pollfd standard_error{STDERR_FILENO, POLLOUT, 0};
    if (::poll(&standard_error, 1, kStandardErrorPatience) == 1 &&
        (standard_error.revents & POLLOUT) != 0) {
        WriteAll(STDERR_FILENO, line.data(), line.size());
    }
}

}  // namespace wavo::platform
