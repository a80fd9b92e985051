// What the graph files report to the error log and to the user, where others rely on the words:
// service tools search logs for them. They stay byte for byte; names in them may be those of a
// former time.
#pragma once

#include <string>

namespace wavo::model_texts {

// The error log.
inline constexpr char kBadYScaleType[] =
    "CAxSelect::GetGraphAsIniData(): invalid y-scale type [%s]";
inline constexpr char kOneYAxisAllowed[] =
    "CreateGraphsFromIniData(): only one axis on y-coor. is allowed (x-coor.is an axis value). "
    "using first axis";
inline constexpr char kGraphRefused[] = "CAxSelect::CreateGraphsFromIniData(): %s";

// Why a graph is refused: the error log has it in kGraphRefused, the user with the graph behind it.
inline constexpr char kColorCount[] = "invalid number of colors";
inline constexpr char kDerivationCount[] = "invalid number of derivations";
inline constexpr char kTriggerCount[] = "invalid number of trigger types or trigger values";
inline constexpr char kXTimeRange[] = "invalid time range XCoor";
inline constexpr char kXScaleType[] = "invalid XScaleType";
inline constexpr char kXBounds[] = "invalid min. or max., XScaleAxMax or XScaleAxMin";
inline constexpr char kYScaleTypeCount[] = "invalid number of YScaleType";
inline constexpr char kYScaleAxTypeCount[] = "invalid number of YScaleAxType";
inline constexpr char kYMaximumCount[] = "invalid number of YScaleAxMax";
inline constexpr char kYMinimumCount[] = "invalid number of YScaleAxMin";
inline constexpr char kYTimeRange[] = "invalid time range YCoor";
inline constexpr char kYScaleType[] = "invalid YScaleType";
inline constexpr char kYBounds[] = "invalid min. or max., YScaleAxMax or YScaleAxMin";

/// What the user reads of it.
inline std::string RefusedGraph(const std::string& why, const std::string& section) {
    return why + ", graph [" + section + "]";
}

}  // namespace wavo::model_texts
