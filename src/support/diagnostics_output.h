// Where the diagnostics write: log files with a size limit, standard error, and observers.
//
// Files: wavo_trace.log (trace and error trace) and wavo_error.log (error log) in the log folder.
// A file that has reached its limit becomes <name>.1, replacing the one before.
// A line: time, kind, source(line), text. Until a folder is set nothing is written to files.
//
// Messages of the error trace and entries of the error log that repeat themselves become a count
// (repeat_folder.h), in the files and on standard error. Observers get each of them.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace wavo::diagnostics {

enum class Service { kTrace, kErrorTrace, kErrorLog };

/// One report as it goes out.
struct Report {
    Service service;
    std::string_view source;  ///< path of the reporting source file, relative to the repository
    int line;
    std::string_view text;  ///< formatted, without a line end
};

/// Log files go to `folder` from now on (empty: no files), counts so far to the one before. The
/// folder is not created here.
void SetLogFolder(const std::string& folder);

/// Largest size in bytes of one log file before it is moved aside. Default 4 MiB.
void SetLogSizeLimit(std::size_t bytes);

/// Whether reports also go to standard error. Default: off.
void SetEcho(bool on);

/// Writes the counts of repeated reports that are due. To be called when there is nothing else to
/// do; what is still counted then is written at the end of the process.
void FlushRepeats() noexcept;

/// Called with each report as it goes out, after it was written or counted; null for none. Used by
/// tests and by the status bar.
using Observer = std::function<void(const Report&)>;
void SetObserver(Observer observer);

/// Called with the path of a log file when a line could not be written to it, and not again for
/// this file before one could. Set while lines are being lost, it is called at once. Null for none.
/// It may report itself.
using LogFaultHandler = std::function<void(const std::string& path)>;
void SetLogFaultHandler(LogFaultHandler handler);

/// Path of the error log while its entries are being lost; empty while they can be written.
std::string LostErrorLog();

}  // namespace wavo::diagnostics
