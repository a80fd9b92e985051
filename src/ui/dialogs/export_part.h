// The dialog that asks which part of a recording is written to a file of its own, and as what.
//
// Invariants:
// 1. A file that is there is written over only when the user agrees.
// 2. While the path has one of the extensions of the formats, it is that of the chosen one.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "tables/part_export.h"
#include "ui/dialogs/table_dialog.h"
#include "ui/prompts.h"

namespace wavo {

enum class ExportPartId {
    kOk = 1,
    kCancel = 2,
    kVisible = 1401,
    kMarked = 1402,
    kEverything = 1403,
    kFormat = 1404,
    kPath = 1405,
    kBrowse = 1406,
};

/// All controls, each once, in reading order.
std::span<const ControlRow> ExportPartControls();

/// The parts of a recording that can be chosen.
struct PartStretches {
    std::optional<recording::LineSpan> visible;
    std::optional<recording::LineSpan> marked;
    recording::LineSpan everything;
    double cycle_time = 0.001;  ///< seconds per line
};

class ExportPart : public TableDialog {
 public:
    /// `file` is what it begins with. The marked part is chosen where there is one, else the
    /// visible one. `prompts` is not owned and outlives the dialog.
    ExportPart(const PartStretches& stretches, const tables::PartFile& file, const Prompts& prompts,
               QWidget* parent);

    /// What is chosen.
    [[nodiscard]] recording::LineSpan Part() const;
    /// The file, with the settings that it began with.
    [[nodiscard]] tables::PartFile File() const;

    void accept() override;

 private:
    void ShowStretches();
    void LayOut();
    [[nodiscard]] tables::PartFormat Format() const;
    void ChangeExtension();
    /// The button "...".
    void ChoosePath();
    void Enable();

    const PartStretches m_stretches;
    const tables::PartFile m_initial;
    const Prompts& m_prompts;
};

}  // namespace wavo
