// The pane "Spectrum": what is chosen, the picture, its peaks, and what it was made of.
#pragma once

#include <QImage>
#include <QWidget>

#include "measure/spectrum.h"
#include "ui/panes/spectrum_run.h"
#include "view/graph_printer.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QSettings;
class QSplitter;
class QTableWidget;

namespace wavo {

class CWavoView;
class SpectrumPlot;
struct SpectrumPage;
struct Prompts;

class SpectrumPane : public QWidget {
    Q_OBJECT

 public:
    /// `view` and `prompts` are not owned and outlive the pane. Without settings nothing is
    /// remembered.
    SpectrumPane(CWavoView& view, const Prompts& prompts, QSettings* settings, QWidget* parent);

    [[nodiscard]] SpectrumRun& Run() { return *m_run; }
    [[nodiscard]] SpectrumPlot& Plot() { return *m_plot; }
    /// The spectrum is that between the cursors of the graphs.
    [[nodiscard]] bool IsBetweenCursors() const { return m_run->Choice().between_cursors; }

    /// What is shown, with what it was made of, as it is saved and printed. `size` in logical
    /// pixels.
    [[nodiscard]] QImage PictureOf(const QSize& size, double device_ratio) const;

 Q_SIGNALS:
    /// IsBetweenCursors may be another than before.
    void ChoiceChanged();

 protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

 private:
    void MakeChoices(QLayout& layout);
    void MakeButtons(QLayout& layout);
    void MakePeaks();
    void LoadChoice();
    void OnChosen();
    void OnMade();
    void OnAdvanced();
    void ShowScene();
    void ShowPeaks();
    void ShowTexts();
    void OnPeakClicked(int row);
    [[nodiscard]] SpectrumPage Page() const;
    void CopyPeaks() const;
    void SaveCsv();
    void SavePicture();

    CWavoView& m_view;
    const Prompts& m_prompts;
    QSettings* const m_settings;
    measure::SpectrumHistory m_history;
    std::optional<LineRange> m_added;  ///< lines of the spectrum that m_history took last
    /// What spectra are averaged of, and how they were made.
    struct Averaged {
        CurveId curve;
        std::string label;
        SpectrumChoice choice;
        std::uint64_t recording = 0;    ///< its number; 0: live values
        std::uint64_t definitions = 0;  ///< number of those of the computed axes

        friend bool operator==(const Averaged&, const Averaged&) = default;
    };
    std::optional<Averaged> m_averaged;  ///< by m_history
    GraphPrinter m_printer;
    // Children.
    SpectrumRun* const m_run;
    SpectrumPlot* const m_plot;
    QLabel* m_title = nullptr;
    QComboBox* m_range = nullptr;
    QComboBox* m_window = nullptr;
    QComboBox* m_scale = nullptr;
    QComboBox* m_unit = nullptr;
    QComboBox* m_segment = nullptr;
    QCheckBox* m_average = nullptr;
    QCheckBox* m_hold = nullptr;
    QPushButton* m_restart = nullptr;
    QSplitter* m_splitter = nullptr;
    QTableWidget* m_peaks = nullptr;
    QLabel* m_description = nullptr;
    QLabel* m_cursors = nullptr;
    bool m_is_loading = false;  ///< what changes is not the user's doing
};

}  // namespace wavo
