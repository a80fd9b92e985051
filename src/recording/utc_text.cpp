#include "recording/utc_text.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace wavo::recording {

std::string UtcText(std::uint64_t time) {
    using namespace std::chrono;
    const milliseconds since(time / 1'000'000);
    const days day_count = floor<days>(since);
    const year_month_day date{sys_days(day_count)};
    const hh_mm_ss clock(since - day_count);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d.%03d UTC",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()),
                  static_cast<int>(clock.subseconds().count()));
    return text.data();
}

std::string MomentText(std::uint64_t time) {
    constexpr std::uint64_t kYear = std::uint64_t{365} * 24 * 3600 * 1'000'000'000;
    if (time >= kYear) {
        return UtcText(time);
    }
    char text[32];
    std::snprintf(text, sizeof text, "%llu.%03llu s",
                  static_cast<unsigned long long>(time / 1'000'000'000),
                  static_cast<unsigned long long>(time / 1'000'000 % 1000));
    return text;
}

}  // namespace wavo::recording
