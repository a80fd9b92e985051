// What the value buffers report to the error log and to the user, where others rely on the words:
// service tools search logs for them. They stay byte for byte; names in them may be those of a
// former time.
#pragma once

namespace wavo::values_texts {

// The error log.
inline constexpr char kNewValuesOverrun[] = "GraphValue::SetValue(): overrun last value fifo";
inline constexpr char kBadTimeRange[] = "GraphValue::GetDefineTimeRangeValue(): invalid time range";

// Why there is no buffer.
inline constexpr char kOtherCycleTime[] = "prg. eror can not work with different cycl. times";

}  // namespace wavo::values_texts
