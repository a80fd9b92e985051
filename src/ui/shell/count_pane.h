// The status bar's count of lines; a click shows what became of every line and every batch.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "session/link_counters.h"
#include "ui/controls/roomy_label.h"

class QFrame;

namespace wavo {

class CountPane : public RoomyLabel {
 public:
    /// `counters` is asked whenever the details are shown or brought up to date.
    CountPane(std::function<LinkCounters()> counters, QWidget* parent);
    ~CountPane() override;

    /// Shows the details above the pane, until the user clicks elsewhere or presses Esc.
    void ShowDetails();
    /// Brings details that are shown up to date.
    void Refresh();

    /// The details, a line for each counter: "Lines read\t12". Empty while they are not shown.
    [[nodiscard]] std::string DetailsText() const;

 protected:
    void mousePressEvent(QMouseEvent* event) override;

 private:
    const std::function<LinkCounters()> m_counters;
    std::unique_ptr<QFrame> m_details;  // null before they were first shown
};

}  // namespace wavo
