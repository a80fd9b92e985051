// What the session reports to the error log and to the user, where others rely on the words:
// service tools search logs for them. They stay byte for byte; names in them may be those of a
// former time.
#pragma once

#include <string>

namespace wavo::session_texts {

// The error log.
inline constexpr char kGraphsNotShown[] =
    "CWavoView::OnMessageFromMainNewMValues(): m_GraphAxSelect.Init() failed";
inline constexpr char kStreamNotFound[] = "CWavoView::GetGraphValueFifo(): %s";
inline constexpr char kStreamNotMade[] =
    "CWavoView::CreateAllGraphRects(): GetGraphValueFifo() failed";
inline constexpr char kNoDataFolder[] = "GetCommonAppDataFolder() failed %s";

// The trace.
inline constexpr char kReadyWhileStopped[] =
    "DrawingGraphsValue(): --- tx msg. 'ready for new values'";
inline constexpr char kSettingValues[] = "OnMessageFromMainNewMValues(): --- start to set values";
inline constexpr char kValuesSet[] = "OnMessageFromMainNewMValues(): --- end of set values";
inline constexpr char kReadyAfterDrawing[] = "OnDraw(): --- tx msg. 'ready for new values'";
inline constexpr char kReadingGraphs[] = "CWavoView::OnInitialUpdate(): read graph ini. file %s";

// Message boxes.
inline constexpr char kBatchWhileDrawingBox[] =
    "Fatal prg. error, can not take new mvalues.\n All ax. values out of sync.";
inline constexpr char kNoMasterDataBox[] = "Prg.error, m_MasterInfoData==NULL";
inline constexpr char kNotSavedBox[] = "Failed to create ini. data file";
inline std::string FileMissingBox(const std::string& path) {
    return "file " + path + " not exist !";
}
inline std::string NotReadBox(const std::string& path, const std::string& why) {
    return "failed to read " + path + ".\n" + why;
}
inline constexpr char kGraphsNotShownBox[] = "Prg.error, can not display graph data";

}  // namespace wavo::session_texts
