// The pane "Reference": which good runs there are, how a run is laid over them, what became of each
// axis, differences within their tolerance, and the file of the result.
#pragma once

#include <QWidget>
#include <functional>

#include "report/comparison_report.h"
#include "ui/prompts.h"
#include "view/reference_watch.h"

class QSettings;
class QTabWidget;

namespace wavo {

class ChartView;

enum class ReferencePaneId {
    kState = 1701,
    kRuns = 1702,
    kChoose = 1703,
    kAdd = 1704,
    kTake = 1705,
    kForget = 1706,
    kAlignment = 1707,
    kAxes = 1708,
    kTolerance = 1709,
    kSpread = 1710,
    kTable = 1711,
    kNotes = 1712,
    kSave = 1713,
};

class ReferencePane : public QWidget {
    Q_OBJECT

 public:
    /// Shows lines of the past in the graphs; false when they are not there.
    using ShowLines = std::function<bool(const LineRange&)>;

    /// `watch` and `prompts` are not owned and outlive the pane. Without settings nothing is
    /// remembered. `made_by`: what results say of the program.
    ReferencePane(ReferenceWatch& watch, const Prompts& prompts, QSettings* settings,
                  const QString& made_by, ShowLines show_lines, QWidget* parent);

    /// Shows the state and the outcome of the watch.
    void Refresh();

    /// Asks for a recording to compare with; `add`: beside those that there are.
    void ChooseRun(bool add);
    /// Takes what is seen of the recording that is open.
    void TakeSeen();
    /// Asks for a file and writes the result: XML of test cases, or JSON where the name says so.
    void SaveResult();

    /// The pages: "Axes", "Difference".
    [[nodiscard]] QTabWidget& Pages() { return *m_pages; }

 private:
    template <typename Widget = QWidget>
    [[nodiscard]] Widget& Control(ReferencePaneId id) const;
    void MakeControls();
    void LayOut();
    void Load();
    void Store();
    void TakeQuestion();
    void Use(const MaybeFault& fault);
    /// The axes to choose from.
    void ShowAxes();
    void ShowRuns();
    void ShowTable();
    void ShowCharts();
    void ShowNotes();
    void OnRowClicked(int row);
    [[nodiscard]] report::ComparisonReport Report() const;
    [[nodiscard]] QString StateText() const;

    ReferenceWatch& m_watch;
    const Prompts& m_prompts;
    QSettings* const m_settings;
    const QString m_made_by;
    const ShowLines m_show_lines;
    // Children.
    QTabWidget* m_pages = nullptr;
    ChartView* m_difference = nullptr;
    bool m_is_loading = false;  ///< what changes is not the user's doing
};

}  // namespace wavo
