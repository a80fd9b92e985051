// The pane "Circle Test": the polar picture, the figures with their limits, what the user should
// know, and the report.
#pragma once

#include <QWidget>
#include <optional>

#include "measure/verdict.h"
#include "report/circle_report.h"
#include "ui/prompts.h"
#include "view/circle_watch.h"

class QBoxLayout;
class QSettings;

namespace wavo {

class PolarView;

enum class CirclePaneId {
    kState = 1501,
    kRadius = 1502,
    kFeed = 1503,
    kZone = 1504,
    kMachine = 1505,
    kProgram = 1506,
    kFiner = 1507,
    kAutomatic = 1508,
    kCoarser = 1509,
    kFigures = 1510,
    kNotes = 1511,
    kLimits = 1512,
    kReport = 1513,
};

class CirclePane : public QWidget {
    Q_OBJECT

 public:
    /// `watch` and `prompts` are not owned and outlive the pane. Without settings nothing is
    /// remembered. `made_by`: what reports say of the program.
    CirclePane(CircleWatch& watch, const Prompts& prompts, QSettings* settings,
               const QString& made_by, QWidget* parent);

    /// Shows the state and the outcome of the watch.
    void Refresh();

    void EditLimits();
    /// Asks for a file and writes the report: PDF, or JSON where the name says so.
    void SaveReport();

 protected:
    void resizeEvent(QResizeEvent* event) override;

 private:
    template <typename Widget = QWidget>
    [[nodiscard]] Widget& Control(CirclePaneId id) const;
    void MakeControls();
    void LayOut();
    void Load();
    void Store();
    /// Takes radius and feed from their edits; one that is none is marked.
    void TakeQuestion();
    void ShowStep(std::optional<double> step);
    void ShowNotes(const report::CircleVerdict& verdict);
    [[nodiscard]] report::CircleReport Report() const;
    [[nodiscard]] QString StateText() const;

    CircleWatch& m_watch;
    const Prompts& m_prompts;
    QSettings* const m_settings;
    const QString m_made_by;
    PolarView* m_polar = nullptr;    // child
    QBoxLayout* m_layout = nullptr;  // owned by the pane
    bool m_is_loading = false;       ///< what changes is not the user's doing
    measure::Limits m_limits;
    std::optional<double> m_step;  ///< um per grid circle; else chosen
    double m_shown_step = 1.0;     ///< that the picture has
};

}  // namespace wavo
