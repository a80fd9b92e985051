// The pane "Axis Test": figures with their limits, moves, following error, contour error and
// frequency response of the axes, and the report.
#pragma once

#include <QWidget>
#include <optional>

#include "measure/verdict.h"
#include "report/axis_report.h"
#include "ui/prompts.h"
#include "view/axis_watch.h"

class QSettings;
class QTabWidget;

namespace wavo {

class ChartView;

enum class AxisPaneId {
    kState = 1601,
    kAxis = 1602,
    kResponse = 1603,
    kRotary = 1604,
    kTarget = 1605,
    kSettled = 1606,
    kWindow = 1607,
    kDwell = 1608,
    kMachine = 1609,
    kProgram = 1610,
    kFigures = 1611,
    kMoves = 1612,
    kNotes = 1613,
    kLimits = 1614,
    kReport = 1615,
};

class AxisPane : public QWidget {
    Q_OBJECT

 public:
    /// Shows lines of the past in the graphs; false when they are not there.
    using ShowLines = std::function<bool(const LineRange&)>;

    /// `watch` and `prompts` are not owned and outlive the pane. Without settings nothing is
    /// remembered. `made_by`: what reports say of the program.
    AxisPane(AxisWatch& watch, const Prompts& prompts, QSettings* settings, const QString& made_by,
             ShowLines show_lines, QWidget* parent);

    /// Shows the state and the outcome of the watch.
    void Refresh();

    void EditLimits();
    /// Asks for a file and writes the report: PDF, or JSON where the name says so.
    void SaveReport();

    /// The pages: "Figures", "Moves", "Following Error", "Contour Error", "Frequency Response".
    [[nodiscard]] QTabWidget& Pages() { return *m_pages; }

 private:
    /// A move of the table: its axis, and its place among the moves of that.
    struct ShownMove {
        std::size_t axis = 0;
        std::size_t move = 0;
    };

    template <typename Widget = QWidget>
    [[nodiscard]] Widget& Control(AxisPaneId id) const;
    void MakeControls();
    void LayOut();
    void Load();
    void Store();
    void TakeQuestion();
    /// The axes to choose from.
    void ShowAxes();
    void ShowMoves();
    void ShowCharts();
    void ShowNotes(const report::AxisVerdict& verdict);
    void OnMoveClicked(int row);
    [[nodiscard]] report::AxisReport Report() const;
    [[nodiscard]] QString StateText() const;

    AxisWatch& m_watch;
    const Prompts& m_prompts;
    QSettings* const m_settings;
    const QString m_made_by;
    const ShowLines m_show_lines;
    // Children.
    QTabWidget* m_pages = nullptr;
    ChartView* m_following = nullptr;
    ChartView* m_contour = nullptr;
    ChartView* m_response = nullptr;
    bool m_is_loading = false;  ///< what changes is not the user's doing
    measure::Limits m_limits;
    std::vector<ShownMove> m_moves;  ///< by row
};

}  // namespace wavo
