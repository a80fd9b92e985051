// The dialog that asks where the values of a graph are saved.
//
// Invariants:
// 1. Only OK changes the path that the dialog gives back.
// 2. A file that is there already goes into the edit only when the user agrees to replace it. What
//    the user types is taken as it is, without a question.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "ui/dialogs/table_dialog.h"
#include "ui/prompts.h"

namespace wavo {

enum class PathSaveDataId {
    kOk = 1,
    kCancel = 2,
    kBrowse = 1027,
    kPath = 1035,
    kAxes = 1065,
};

/// All controls, each once, in reading order.
std::span<const ControlRow> PathSaveDataControls();

class PathSaveData : public TableDialog {
 public:
    /// `path` is the data file to begin with (UTF-8), `axis_names` are shown. `prompts` is not
    /// owned and outlives the dialog.
    PathSaveData(const std::string& path, const std::vector<std::string>& axis_names,
                 const Prompts& prompts, QWidget* parent);

    /// The path that OK took; that of the beginning before.
    [[nodiscard]] const std::string& Path() const { return m_path; }

    void accept() override;

 private:
    void LayOut();
    /// The button "...".
    void ChoosePath();

    const Prompts& m_prompts;
    std::string m_path;
};

}  // namespace wavo
