// What curves report to the error log, where others rely on the words: service tools search logs
// for them. They stay byte for byte; names in them may be those of a former time.
#pragma once

namespace wavo::curve_texts {

inline constexpr char kTooManyNewValues[] =
    "LinesDrawAxis::DrawLinesXIsTime(): number of new values > number of max. values in line-fifo";
inline constexpr char kUnequalValueCounts[] =
    "LinesDrawAxis::DrawLinesXIsAx(): number of values x-coor. and number of values y-coor. are "
    "not equal";

}  // namespace wavo::curve_texts
