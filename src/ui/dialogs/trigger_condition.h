// The dialog "Trigger condition": the trigger of one y axis.
//
// Invariants:
// 1. The entry changes with OK alone, and only in its type and its value.
// 2. Nothing is refused: a text that is no number is 0. Whether the graph may have this trigger
//    beside those of its other axes is the caller's question.
#pragma once

#include "graph/model/wavo_graph.h"
#include "ui/dialogs/table_dialog.h"

namespace wavo {

class CTriggerCondition : public TableDialog {
 public:
    /// Shows `entry`, which is not owned and outlives the dialog.
    explicit CTriggerCondition(TriggerEntry& entry, QWidget* parent = nullptr);

    void accept() override;

 private:
    void LayOut();
    void ShowEntry();

    TriggerEntry& m_entry;
};

}  // namespace wavo
