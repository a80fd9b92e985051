// What scales report to the error log, where others rely on the words: service tools search logs
// for them. They stay byte for byte.
#pragma once

namespace wavo::frame_texts {

inline constexpr char kBadScaleType[] = "GraphDefineGetMinMaxValue(): invalid ScaleType";
inline constexpr char kBadScaleAx[] = "GraphDefineGetMinMaxValue(): invalid ScaleAx";

}  // namespace wavo::frame_texts
