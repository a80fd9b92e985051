#include "ui/bars/commands.h"

#include <algorithm>
#include <iterator>

namespace wavo {

namespace {

constexpr CommandOwner kShell = CommandOwner::kShell;
constexpr CommandOwner kRecording = CommandOwner::kRecording;
constexpr CommandOwner kMeasure = CommandOwner::kMeasure;
constexpr CommandOwner kCircle = CommandOwner::kCircle;
constexpr CommandOwner kAxis = CommandOwner::kAxis;
constexpr CommandOwner kReference = CommandOwner::kReference;
constexpr CommandOwner kRecorded = CommandOwner::kRecorded;
constexpr CommandOwner kParts = CommandOwner::kParts;

constexpr Command kCommandTable[] = {
    {CommandId::kNew, "new", "&New\tCtrl+N", "Begins without any graph\nNew"},
    {CommandId::kOpen, "open", "&Open...\tCtrl+O", "Opens a graph file\nOpen"},
    {CommandId::kSave, "save", "&Save\tCtrl+S", "Writes the graphs into their file\nSave"},
    {CommandId::kSaveAs, "save_as", "Save &As...", "Writes the graphs into another file\nSave As"},
    {CommandId::kPrint, "print", "&Print...\tCtrl+P", "Prints the graphs\nPrint"},
    {CommandId::kPrintPreview, "print_preview", "Print Pre&view",
     "Shows the graphs as they are printed\nPrint Preview"},
    {CommandId::kPageSetup, "page_setup", "P&rint Setup...",
     "Chooses the printer and its paper\nPrint Setup"},
    {CommandId::kProperties, "properties", "Proper&ties",
     "Colours, font, scale lines and export of the graphs\nProperties"},
    {CommandId::kAdditionalText, "additional_text", "Add. &Text",
     "A line of text below the graphs\nAdditional text"},
    {CommandId::kRecentFile, "recent_file", "Recent &File", "Open this document"},
    {CommandId::kExit, "exit", "E&xit", "end wavo.\nexit", kShell},
    {CommandId::kToolBars, "tool_bars", "&Toolbars and Docking Windows",
     "Shows or hides the tool bars\nTool bars", kShell},
    {CommandId::kCustomize, "customize", "Customize...",
     "Chooses the buttons of the tool bars\nCustomize", kShell},
    {CommandId::kStatusBar, "status_bar", "&Status Bar", "Shows or hides this line\nStatus bar",
     kShell},
    {CommandId::kLookClassic, "look_classic", "Windows &2000",
     "Grey with raised edges\nWindows 2000", kShell},
    {CommandId::kLookFlat, "look_flat", "Office &XP", "Flat and bluish grey\nOffice XP", kShell},
    {CommandId::kLookNative, "look_native", "&Windows XP", "Warm and rounded\nWindows XP", kShell},
    {CommandId::kLookBlueBars, "look_blue_bars", "Office 200&3",
     "Blue bars with orange buttons\nOffice 2003", kShell},
    {CommandId::kLookStudio, "look_studio", "Visual Studio.NET 200&5",
     "Bright bars on warm grey\nVisual Studio.NET 2005", kShell},
    {CommandId::kLookBlue, "look_blue", "&Blue Style", "Light blue\nBlue style", kShell},
    {CommandId::kLookBlack, "look_black", "B&lack Style", "Dark, for dim rooms\nBlack style",
     kShell},
    {CommandId::kLookSilver, "look_silver", "&Silver Style", "Silver\nSilver style", kShell},
    {CommandId::kLookAqua, "look_aqua", "&Aqua Style", "Bluish green\nAqua style", kShell},
    {CommandId::kShowGraphEditor, "graph_editor", "Graph Editor",
     "Shows the graph editor above the graphs\nGraph editor"},
    {CommandId::kConnect, "connect", "&Connect Machine data",
     "connecting machine data\nconnecting"},
    {CommandId::kStart, "start", "St&art\tCtrl+A", "start wavo.\nstart"},
    {CommandId::kStop, "stop", "Stop\tCtrl+H", "stop wavo.\nstop"},
    {CommandId::kStartAfterTrigger, "start_after_trigger", "Start after &trigger\tCtrl+T",
     "start after trigger event\n start after trigger"},
    {CommandId::kRecord, "record", "&Record...\tCtrl+R",
     "Records every line of the master to a file\nRecord", kRecording},
    {CommandId::kStopRecording, "stop_recording", "&Stop Recording\tCtrl+Shift+R",
     "Ends a recording; its file is complete then\nStop recording", kRecording},
    {CommandId::kOpenRecording, "open_recording", "&Open Recording...\tCtrl+Shift+O",
     "Shows a recording in place of the live values\nOpen recording", kRecorded},
    {CommandId::kCloseRecording, "close_recording", "&Close Recording\tCtrl+Shift+W",
     "Shows the live values again, with the graphs of before\nClose recording", kRecorded},
    {CommandId::kRecordingGraphs, "recording_graphs", "&Graphs of the Recording",
     "Shows the graphs that were in use when it was recorded\nGraphs of the recording", kRecorded},
    {CommandId::kFollow, "follow", "&Follow", "Stays at the end of a recording that grows\nFollow",
     kRecorded},
    {CommandId::kNextTrigger, "next_trigger", "&Next Trigger\tF3",
     "Goes to where a trigger of the selected graph fires next\nNext trigger", kRecorded},
    {CommandId::kPreviousTrigger, "previous_trigger", "&Previous Trigger\tShift+F3",
     "Goes to where a trigger of the selected graph fired before\nPrevious trigger", kRecorded},
    {CommandId::kNextEvent, "next_event", "Next E&vent\tCtrl+F3",
     "Goes to the next event or gap of the recording\nNext event", kRecorded},
    {CommandId::kPreviousEvent, "previous_event", "Previous Even&t\tCtrl+Shift+F3",
     "Goes to the event or gap before\nPrevious event", kRecorded},
    {CommandId::kNextFile, "next_file", "Next F&ile\tCtrl+PgDown",
     "Opens the recording behind this one, in the numbers of their names\nNext file", kRecorded},
    {CommandId::kPreviousFile, "previous_file", "Previous Fi&le\tCtrl+PgUp",
     "Opens the recording before this one\nPrevious file", kRecorded},
    {CommandId::kExportPart, "export_part", "E&xport Part...\tCtrl+Shift+E",
     "Writes a part of the recording to a file, as a recording or as a table\nExport part", kParts},
    {CommandId::kRecentRecording, "recent_recording", "Recent R&ecordings",
     "Opens this recording\nRecent recordings", kRecorded},
    {CommandId::kMeasurements, "measurements", "&Measurements\tCtrl+M",
     "Shows two cursors, and the figures at and between them\nMeasurements", kMeasure},
    {CommandId::kHideMeasurements, "hide_measurements", "&Hide at the Edge",
     "Lets the measurements hide at the edge of the window while they are not used\nHide at the "
     "edge",
     kMeasure},
    {CommandId::kSpectrum, "spectrum", "&Spectrum\tCtrl+Shift+M",
     "Shows which frequencies the selected curve holds\nSpectrum", kMeasure},
    {CommandId::kHideSpectrum, "hide_spectrum", "Hide Spectrum at the &Edge",
     "Lets the spectrum hide at the edge of the window while it is not used\nHide spectrum at the "
     "edge",
     kMeasure},
    {CommandId::kComputedAxes, "computed_axes", "C&omputed Axes...",
     "Axes whose values are computed of those of the machine\nComputed axes"},
    {CommandId::kCircleTest, "circle_test", "&Circle Test...\tCtrl+Shift+C",
     "Shows how round the machine moves, in the figures of ISO 230-4\nCircle test", kCircle},
    {CommandId::kAxisTest, "axis_test", "&Axis Test...\tCtrl+Shift+A",
     "Shows how well the axes follow what they are told\nAxis test", kAxis},
    {CommandId::kReference, "reference", "&Reference...\tCtrl+Shift+G",
     "Lays a good run behind the curves, and says where they differ\nReference", kReference},
    {CommandId::kLineStyles, "line_styles", "&Line Styles",
     "Tells the curves of a graph apart by their dashes, besides their colours\nLine styles",
     kMeasure},
    {CommandId::kDescribeGraph, "describe_graph", "&Describe Graph\tCtrl+Shift+D",
     "Says in words what the selected graph shows, also to what reads the screen aloud\n"
     "Describe graph",
     kMeasure},
    {CommandId::kAbout, "about", "&About Wavo...", "Version and copyright of the program\nAbout",
     kShell},
    {CommandId::kManual, "manual", "Manual\tF1",
     "Opens the manual at the place that tells of what has the keyboard\nManual", kShell},
    {CommandId::kNextPane, "next_pane", "Next Pane\tF6", "Goes to the next pane\nNext pane",
     kShell},
    {CommandId::kPreviousPane, "previous_pane", "Previous Pane\tShift+F6",
     "Goes to the previous pane\nPrevious pane", kShell},
};

constexpr CommandId kBasicCommands[] = {
    CommandId::kNew,          CommandId::kOpen,       CommandId::kSave,
    CommandId::kPrint,        CommandId::kExit,       CommandId::kConnect,
    CommandId::kStart,        CommandId::kStop,       CommandId::kStartAfterTrigger,
    CommandId::kAbout,        CommandId::kStatusBar,  CommandId::kToolBars,
    CommandId::kLookBlueBars, CommandId::kLookStudio, CommandId::kLookBlue,
    CommandId::kLookSilver,   CommandId::kLookBlack,  CommandId::kLookAqua,
};

constexpr CommandId kHarmlessCommands[] = {
    CommandId::kOpen,         CommandId::kSaveAs,         CommandId::kPrint,
    CommandId::kPageSetup,    CommandId::kPrintPreview,   CommandId::kProperties,
    CommandId::kCustomize,    CommandId::kAdditionalText, CommandId::kShowGraphEditor,
    CommandId::kAbout,        CommandId::kRecord,         CommandId::kOpenRecording,
    CommandId::kExportPart,   CommandId::kMeasurements,   CommandId::kSpectrum,
    CommandId::kComputedAxes, CommandId::kCircleTest,     CommandId::kAxisTest,
    CommandId::kManual,       CommandId::kReference,
};

QString Part(const char* text, QChar separator, int index) {
    return QString::fromLatin1(text).section(separator, index, index);
}

}  // namespace

std::span<const Command> Commands() {
    return kCommandTable;
}

const Command* FindCommand(CommandId id) {
    const auto* const found = std::find_if(std::begin(kCommandTable), std::end(kCommandTable),
                                           [id](const Command& row) { return row.id == id; });
    return found == std::end(kCommandTable) ? nullptr : found;
}

QString MenuText(const Command& command) {
    return Part(command.text, u'\t', 0);
}

QString ShortcutText(const Command& command) {
    return Part(command.text, u'\t', 1);
}

QString StatusPrompt(const Command& command) {
    return Part(command.status_text, u'\n', 0);
}

QString ToolTip(const Command& command) {
    return Part(command.status_text, u'\n', 1);
}

bool IsHarmless(CommandId id) {
    return std::find(std::begin(kHarmlessCommands), std::end(kHarmlessCommands), id) !=
           std::end(kHarmlessCommands);
}

std::span<const CommandId> BasicCommands() {
    return kBasicCommands;
}

}  // namespace wavo
