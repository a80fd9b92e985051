// The command line of the viewer, read without the toolkit's windows: what it asks for can be told
// on a machine without a display.
#pragma once

#include <QString>
#include <optional>
#include <string>
#include <vector>

namespace wavo {

/// What the command line asks for.
struct AppOptions {
    QString screenshot;       ///< file for a picture of the window; empty for none
    quint64 after_lines = 0;  ///< lines to receive before the picture is taken
    QString recording;        ///< as named on the command line; empty for none
    QString graph_file;       ///< the same
    /// Seconds from line to line of the recording, a table; nothing: as the table tells or the
    /// user.
    std::optional<double> cycle_time;
};

/// What the program has to say in place of its work, and then ends.
struct LastWords {
    QString text;       ///< lines, the last one ended too
    int exit_code = 0;  ///< 0: the text was asked for; 2: it tells what is wrong
};

/// A command line that was read.
struct CommandLine {
    AppOptions options;
    std::optional<LastWords> last_words;  ///< with these the options mean nothing
};

/// Reads the arguments behind the program's name, UTF-8. The toolkit's own options (-platform and
/// the like) are left to the toolkit.
CommandLine ReadCommandLine(const std::vector<std::string>& arguments);

}  // namespace wavo
