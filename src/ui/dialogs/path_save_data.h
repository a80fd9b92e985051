// The dialog that asks where the values of a graph are saved.
//
// Invariants:
// 1. Only OK changes the path that the dialog gives back.
// 2. A file that is there already goes into the edit only when the user agrees to replace it. What
//    the user types is taken as it is, without a question.
#pragma once

#include <QDialog>
#include <array>
#include <string>
#include <vector>

class QLineEdit;

namespace wavo {

enum class PathSaveDataId {
    kOk = 1,
    kCancel = 2,
    kBrowse = 1027,
    kPath = 1035,
    kAxes = 1065,
};

struct PathSaveDataControl {
    PathSaveDataId id;
    const char* text;     ///< of a button; of an edit and a static: of the label in front of it
    const char* tooltip;  ///< empty: what does not fit
};

/// The controls in tab order.
inline constexpr std::array<PathSaveDataControl, 5> kPathSaveDataControls{{
    {PathSaveDataId::kAxes, "axis:", ""},
    {PathSaveDataId::kPath, "path for data file is:",
     "File that the values are written to, one column per axis and one line per cycle of the "
     "master"},
    {PathSaveDataId::kBrowse, "...", "Choose the file"},
    {PathSaveDataId::kOk, "OK", "Write the values of these axes to the file"},
    {PathSaveDataId::kCancel, "Cancel", "Write nothing"},
}};

class PathSaveData : public QDialog {
 public:
    /// `path` is the data file to begin with (UTF-8), `axis_names` are shown.
    PathSaveData(const std::string& path, const std::vector<std::string>& axis_names,
                 QWidget* parent);

    /// The path that OK took; that of the beginning before.
    [[nodiscard]] const std::string& Path() const { return m_path; }

    void accept() override;

 private:
    void LayOut();
    /// The button "...".
    void ChoosePath();

    std::string m_path;
    QLineEdit* m_path_edit;  // owned by the dialog, as all widgets
};

}  // namespace wavo
