// The dialog that asks for a file to save values to. It goes through here, so that tests can answer
// and check it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

class QFileDialog;
class QWidget;

namespace wavo {

/// A line of the list of file types.
struct FileFilter {
    std::string name;     ///< "Data Files"
    std::string pattern;  ///< "*.txt"; "*.*" stands for every file

    friend bool operator==(const FileFilter&, const FileFilter&) = default;
};

/// What the dialog asks. Texts are UTF-8.
struct FileQuestion {
    std::string default_extension;  ///< of a name that is typed without one; no point
    std::string initial_path;
    std::vector<FileFilter> filters;

    friend bool operator==(const FileQuestion&, const FileQuestion&) = default;
};

/// Asks for a file to save to over `parent` and waits; messages are handled meanwhile. Returns the
/// absolute path, nothing when the dialog was left without one. A file that is there already is no
/// reason to ask: who saves does that.
std::optional<std::string> AskForFile(QWidget* parent, const FileQuestion& question);

/// Gives the columns of a dialog of the toolkit's own the widths that their texts need, and the
/// dialog a size that leaves room for long names.
void ShowWholeColumns(QFileDialog& dialog);

/// Answers all questions from now on instead of showing them; null shows them again.
using FileHandler = std::function<std::optional<std::string>(const FileQuestion&)>;
void SetFileHandler(FileHandler handler);

}  // namespace wavo
