#include "processor_time.h"

#include <ctime>

namespace wavo::testing {

std::chrono::nanoseconds ThreadProcessorTime() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace wavo::testing
