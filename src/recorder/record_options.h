// Command line of wavo_record.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace wavo::recorder {

struct RecordOptions {
    std::string out = "recording";  ///< name of the recordings; ".mcap" may be left out
    std::string graphs;             ///< graph file whose triggers arm it; empty: records at once
    std::string attach;             ///< graph file that goes with the recordings and arms nothing
    double duration = 0.0;          ///< seconds from the first line on; 0: no such end
    std::uint64_t lines = 0;        ///< lines to be written; 0: no such end
    std::optional<double> before;   ///< seconds of history; nothing: as the graph has it
    std::optional<double> after;    ///< seconds behind the trigger; nothing: as the graph has it
    bool repeat = false;            ///< waits for the trigger again
    std::uint64_t keep = 0;         ///< bytes that all recordings of this name may take; 0: any
    double split = 0.0;             ///< seconds per file; 0: one file
    std::optional<double> wait =
        10;                  ///< seconds to wait for a master at the start; nothing: for ever
    std::uint64_t tell = 0;  ///< a window that is told how it goes; 0: none
    bool quiet = false;
    bool json = false;
    std::string verify;  ///< a recording to be checked instead
};

enum class OptionsOutcome { kRun, kVerify, kHelp, kVersion, kError };

/// Reads the arguments after the program's name. kError: `*error` tells what is wrong with them.
OptionsOutcome ParseRecordOptions(std::span<const std::string> arguments, RecordOptions* options,
                                  std::string* error);

/// "60s", "5m", "1.5h", "2d", "250ms"; a bare number is seconds. Nothing when it is no time of 0 to
/// 1000 days.
std::optional<double> ParseDuration(std::string_view text);

/// "20GB", "500MB", "1.5GiB", "100kB"; a bare number is bytes. Nothing when it is none.
std::optional<std::uint64_t> ParseSize(std::string_view text);

/// The text of --help.
std::string RecordHelp();

}  // namespace wavo::recorder
