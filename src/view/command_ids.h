// Numbers of the commands; never reused.
#pragma once

namespace wavo {

enum class CommandId : int {
    kCustomize = 126,
    kLookClassic = 210,
    kLookFlat = 211,
    kLookNative = 212,
    kLookBlueBars = 213,
    kLookStudio = 214,
    kLookBlue = 215,
    kLookBlack = 216,
    kLookSilver = 217,
    kLookAqua = 218,
    kMeasurements = 32720,
    kHideMeasurements = 32721,
    kSpectrum = 32722,
    kHideSpectrum = 32723,
    kComputedAxes = 32730,
    kOpenRecording = 32740,
    kCloseRecording = 32741,
    kRecordingGraphs = 32742,
    kFollow = 32743,
    kNextTrigger = 32744,
    kPreviousTrigger = 32745,
    kNextEvent = 32746,
    kPreviousEvent = 32747,
    kExportPart = 32748,
    kCircleTest = 32750,
    kAxisTest = 32751,
    kNextFile = 32752,
    kPreviousFile = 32753,
    kRecord = 32760,
    kStopRecording = 32761,
    kConnect = 32773,
    kStop = 32777,
    kStartAfterTrigger = 32778,
    kStart = 32779,
    kProperties = 32781,
    kShowGraphEditor = 32782,
    kAdditionalText = 32786,
    kNew = 57600,
    kOpen = 57601,
    kSave = 57603,
    kSaveAs = 57604,
    kPageSetup = 57606,
    kPrint = 57607,
    kPrintPreview = 57609,
    kRecentFile = 57616,  ///< the newest; the numbers up to kLastRecentFile are older ones
    kLastRecentFile = 57631,
    kRecentRecording =
        57632,  ///< the newest; the numbers up to kLastRecentRecording are older ones
    kLastRecentRecording = 57647,
    kAbout = 57664,
    kExit = 57665,
    kNextPane = 57680,
    kPreviousPane = 57681,
    kToolBars = 59392,
    kStatusBar = 59393,
};

}  // namespace wavo
