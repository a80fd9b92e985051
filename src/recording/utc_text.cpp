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

}  // namespace wavo::recording
