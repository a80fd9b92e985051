// What the view reports to the error log, to the trace and to the user, where others rely on the
// words: service tools search logs for them. They stay byte for byte; names in them may be those of
// a former time.
#pragma once

namespace wavo::view_texts {

// The error log.
inline constexpr char kNothingToSave[] =
    "CWavoView::OnMessageFromAxSelectSaveValues: Graph not found";
inline constexpr char kDataFileNotWritten[] = "CView::OnCreate(): m_DataExport.CreateDataFile()";

// The trace.
inline constexpr char kDrawingGraphs[] = "OnDraw(): --- start to draw all graphs";
inline constexpr char kGraphsDrawn[] = "OnDraw(): --- end of drawing all graphs";

// Message boxes.
inline constexpr char kNotWhiteBox[] =
    "     Back ground color is not white !\r\n"
    "               Continue printing ?";
inline constexpr char kNotWhiteCaption[] = "Inconvenient back ground color";

}  // namespace wavo::view_texts
