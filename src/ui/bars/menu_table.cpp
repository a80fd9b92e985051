#include "ui/bars/menu_table.h"

namespace wavo {

namespace {

constexpr MenuRow Menu(int depth, const char* text) {
    return {depth, MenuRowKind::kMenu, text, {}};
}
constexpr MenuRow Item(int depth, CommandId id) {
    return {depth, MenuRowKind::kItem, "", id};
}
constexpr MenuRow Separator(int depth) {
    return {depth, MenuRowKind::kSeparator, "", {}};
}

constexpr MenuRow kMenuBar[] = {
    Menu(0, "&File"),
    Item(1, CommandId::kNew),
    Item(1, CommandId::kOpen),
    Item(1, CommandId::kSave),
    Item(1, CommandId::kSaveAs),
    Separator(1),
    Item(1, CommandId::kPrint),
    Item(1, CommandId::kPrintPreview),
    Item(1, CommandId::kPageSetup),
    Separator(1),
    Item(1, CommandId::kProperties),
    Item(1, CommandId::kAdditionalText),
    Separator(1),
    Item(1, CommandId::kRecentFile),
    Separator(1),
    Item(1, CommandId::kExit),
    Menu(0, "&View"),
    {1, MenuRowKind::kMenu, "", CommandId::kToolBars},
    Item(1, CommandId::kStatusBar),
    Menu(1, "&Application Look"),
    Item(2, CommandId::kLookClassic),
    Item(2, CommandId::kLookFlat),
    Item(2, CommandId::kLookNative),
    Item(2, CommandId::kLookBlueBars),
    Item(2, CommandId::kLookStudio),
    Menu(2, "Office 200&7"),
    Item(3, CommandId::kLookBlue),
    Item(3, CommandId::kLookBlack),
    Item(3, CommandId::kLookSilver),
    Item(3, CommandId::kLookAqua),
    Item(1, CommandId::kShowGraphEditor),
    Menu(0, "&Machine Data"),
    Item(1, CommandId::kConnect),
    Menu(0, "&Run control"),
    Item(1, CommandId::kStart),
    Item(1, CommandId::kStop),
    Item(1, CommandId::kStartAfterTrigger),
    Menu(0, "Rec&ording"),
    Item(1, CommandId::kRecord),
    Item(1, CommandId::kStopRecording),
    Separator(1),
    Item(1, CommandId::kOpenRecording),
    Item(1, CommandId::kCloseRecording),
    Item(1, CommandId::kRecordingGraphs),
    Item(1, CommandId::kFollow),
    Separator(1),
    Item(1, CommandId::kNextTrigger),
    Item(1, CommandId::kPreviousTrigger),
    Item(1, CommandId::kNextEvent),
    Item(1, CommandId::kPreviousEvent),
    Separator(1),
    Item(1, CommandId::kNextFile),
    Item(1, CommandId::kPreviousFile),
    Separator(1),
    Item(1, CommandId::kExportPart),
    Separator(1),
    Item(1, CommandId::kRecentRecording),
    Menu(0, "Meas&ure"),
    Item(1, CommandId::kMeasurements),
    Item(1, CommandId::kHideMeasurements),
    Item(1, CommandId::kSpectrum),
    Item(1, CommandId::kHideSpectrum),
    Separator(1),
    Item(1, CommandId::kComputedAxes),
    Separator(1),
    Item(1, CommandId::kCircleTest),
    Item(1, CommandId::kAxisTest),
    Item(1, CommandId::kReference),
    Separator(1),
    Item(1, CommandId::kLineStyles),
    Item(1, CommandId::kDescribeGraph),
    Menu(0, "&Help"),
    Item(1, CommandId::kAbout),
};

constexpr LookMenuRow kLookMenu[] = {
    {CommandId::kLookBlue, "Office 2007 (&Blue Style)"},
    {CommandId::kLookBlack, "Office 2007 (B&lack Style)"},
    {CommandId::kLookSilver, "Office 2007 (&Silver Style)"},
    {CommandId::kLookAqua, "Office 2007 (&Aqua Style)"},
};

}  // namespace

std::span<const MenuRow> MenuBarRows() {
    return kMenuBar;
}

std::span<const LookMenuRow> LookMenuRows() {
    return kLookMenu;
}

}  // namespace wavo
