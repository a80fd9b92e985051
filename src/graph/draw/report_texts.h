// What drawing reports to the error log and to the trace, where others rely on the words: service
// tools search logs for them. They stay byte for byte; names in them may be those of a former time.
#pragma once

namespace wavo::draw_texts {

// The error log.
inline constexpr char kBadScaleLinesX[] =
    "GraphDraw::GraphDraw(): invalid number of scale lines x-corr., setting five scale line";
inline constexpr char kBadScaleLinesY[] =
    "GraphDraw::GraphDraw(): invalid number of scale lines y-corr., setting three scale line";
inline constexpr char kBadZoomTime[] = "GraphDraw::SetZoomRange(): invalid zoom time";
inline constexpr char kZoomTooSmall[] = "GraphDraw::SetZoomRange(): zoom range to small";
inline constexpr char kBadLineCount[] = "GraphDraw::DrawGraph(): invalid size of m_pLinesY";
inline constexpr char kUnknownAxis[] = "GraphDraw::GetAxValues(): unknown axis: %s";
inline constexpr char kStreamsMissing[] =
    "GraphDraw::DrawGraph(): m_pLinesY.size()!=m_pVectYValueFifo.size()";
inline constexpr char kNoTimeRange[] =
    "LinesDrawAxis::GetXTimeRange(): x scale is not a time range";

// The trace.
inline constexpr char kTakingValues[] = "DrawGraph(): --- starting to get act. valus";
inline constexpr char kValuesTaken[] = "DrawGraph(): --- end of get act values";
inline constexpr char kTestingTrigger[] = "DrawGraph(): --- starting test trigger condition";
inline constexpr char kTriggerTested[] = "DrawGraph(): --- end of test trigger condition";
inline constexpr char kDrawingGraph[] = "DrawGraph(): --- starting to draw graphs";
inline constexpr char kGraphDrawn[] = "DrawGraph(): --- end of drawing graphs";
inline constexpr char kCheckingYScale[] = "CheckYScaleValue(): --- starting";
inline constexpr char kYScaleChecked[] = "CheckYScaleValue(): --- leaving";
inline constexpr char kCheckingXScale[] = "CheckXScaleValue(): --- starting";
inline constexpr char kXScaleChecked[] = "CheckXScaleValue(): --- leaving";
inline constexpr char kDrawingOverTime[] = "DrawAllLinesXIsTime(): --- starting";
inline constexpr char kDrawnOverTime[] = "DrawAllLinesXIsTime(): --- leaving";
inline constexpr char kDrawingOverAxis[] = "DrawAllLinesXIsAx(): --- starting";
inline constexpr char kDrawnOverAxis[] = "DrawAllLines(): --- leaving";

}  // namespace wavo::draw_texts
