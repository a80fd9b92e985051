// What value buffers report.
#pragma once

namespace wavo {

inline constexpr const char* kOverrun = "GraphValue::SetValue(): overrun last value fifo";
inline constexpr const char* kInvalidRange =
    "GraphValue::GetDefineTimeRangeValue(): invalid time range";

}  // namespace wavo
