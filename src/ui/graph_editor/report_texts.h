// What the graph editor reports to the error log, to the trace and to the user, where others rely
// on the words: service tools search logs for them. They stay byte for byte; names in them may be
// those of a former time.
#pragma once

namespace wavo::editor_texts {

// The error log.
inline constexpr char kOneYAxisAllowed[] =
    "CAxSelect::OnBnClickedRadioXcoorAx(): only one axis on y-coor. is allowed (x-coor.is an axis "
    "value). using first axis";
inline constexpr char kGraphNotFound[] = "CAxSelect::EraseGraphData(): Graph data not found";
inline constexpr char kColoredGraphNotFound[] =
    "CAxSelect::OnLButtonDown(): graph data not found [%s]";
inline constexpr char kBadYScaleType[] =
    "CAxSelect::OnBnClickedRadioYScaleAuto(): invalid y-coor. scale type";
inline constexpr char kUnknownGraph[] = "CAxSelect::SetWindowData(): unknow graph-id: %u";
inline constexpr char kBadScaleType[] = "CAxSelect::DisplayScaleAx(): invalid scale type";
inline constexpr char kColorMissing[] =
    "CAxSelect::EraseGraphData(): size of GraphData.YCoorAxColor not valid";
inline constexpr char kDerivationMissing[] =
    "CAxSelect::EraseGraphData(): size of GraphData.Derivation not valid";

// The trace.
inline constexpr char kXIsTime[] =
    "CAxSelect::OnBnClickedRadioXcoorTime(): graph data changed, x-coor.is time";
inline constexpr char kXIsNoAxis[] =
    "CAxSelect::OnBnClickedRadioXcoorTime(): graph data changed, x-coor.is axis, no axis defined";
inline constexpr char kXIsAxis[] =
    "CAxSelect::OnBnClickedRadioXcoorTime(): graph data changed, x-coor.is axis [%s]";
inline constexpr char kNewXAxis[] =
    "CAxSelect::SetNewAxXCoor(): graph data changed, x-coor.is axis [%s]";
inline constexpr char kNewYAxis[] =
    "CAxSelect::OnBnClickedButtonYcoorAdd(): graph data changed, new y-coor. axis [%s]";
inline constexpr char kYAxisErased[] =
    "CAxSelect::OnBnClickedButtonYcoorDel(): graph data erased, axis [%s]";
inline constexpr char kModeClassic[] =
    "CAxSelect::OnBnClickedRadioModeClassic(): graph data changed, mode is classic";
inline constexpr char kModeContinuity[] =
    "CAxSelect::OnBnClickedRadioModeClassic(): graph data changed, mode is continuity";
inline constexpr char kModeLines[] =
    "CAxSelect::OnBnClickedRadioModeLines(): graph data changed, mode is lines";
inline constexpr char kModePoints[] =
    "CAxSelect::OnBnClickedRadioModePoints(): graph data changed, mode is points";

// Message boxes.
inline constexpr char kMixedTriggersBox[] =
    "It is not possible to define a start- and a stop-trigger in the same graph";
inline constexpr char kMixedTriggersCaption[] = "invalid trigger-conditions";
inline constexpr char kNoGraphBox[] = "Select a graph in the 'graph no.' input box";
inline constexpr char kNoGraphCaption[] = "graph not defined";

}  // namespace wavo::editor_texts
