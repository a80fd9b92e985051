#include "ui/panes/spectrum_pane.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>
#include <utility>

#include "support/file_name.h"
#include "ui/controls/control_table.h"
#include "ui/controls/flow_layout.h"
#include "ui/panes/pane_files.h"
#include "ui/panes/spectrum_output.h"
#include "ui/panes/spectrum_plot.h"
#include "ui/prompts.h"
#include "view/wavo_view.h"
#include "view/zoom_band.h"

namespace wavo {

namespace {

constexpr int kPaneMargin = 4;
constexpr std::size_t kMostPeaks = 8;
constexpr int kSegments[] = {0, 256, 1024, 4096, 16384, 65536};
constexpr QSize kPicture(900, 560);
constexpr double kPictureRatio = 2.0;

/// A choice of the pane: its control, what settings call it, and its texts.
struct ChoiceRow {
    const char* name;
    const char* setting;
    const char* title;
    const char* tool_tip;
    std::vector<QString> items;
};

QComboBox* MakeChoice(const ChoiceRow& row, QWidget* parent) {
    auto* const choice = new QComboBox(parent);
    choice->setObjectName(QLatin1String(row.name));
    choice->setProperty("setting", QLatin1String(row.setting));
    choice->setToolTip(QString::fromUtf8(row.tool_tip));
    SetAccessibleTexts(*choice, QLatin1String(row.title), choice->toolTip());
    for (const QString& item : row.items) {
        choice->addItem(item);
    }
    return choice;
}

std::vector<QString> SegmentItems() {
    std::vector<QString> items;
    for (const int length : kSegments) {
        items.push_back(length == 0 ? QStringLiteral("In one piece")
                                    : QStringLiteral("Pieces of %1").arg(length));
    }
    return items;
}

QColor ToColor(ColorRef color) {
    return {static_cast<int>(color & 0xFFU), static_cast<int>(color >> 8U & 0xFFU),
            static_cast<int>(color >> 16U & 0xFFU)};
}

QString CurveName(const MadeSpectrum& made) {
    return QStringLiteral("%1: %2").arg(made.curve.graph).arg(QString::fromStdString(made.label));
}

}  // namespace

SpectrumPane::SpectrumPane(CWavoView& view, const Prompts& prompts, QSettings* settings,
                           QWidget* parent)
    : QWidget(parent),
      m_view(view),
      m_prompts(prompts),
      m_settings(settings),
      m_printer({[this] { return PictureOf(kPicture, kPictureRatio); },
                 [] { return QRect(QPoint(), kPicture); },
                 [this] { return m_view.Work().Settings().Current().background; }},
                prompts),
      m_run(new SpectrumRun(view, this)),
      m_plot(new SpectrumPlot(this)) {
    setObjectName(QStringLiteral("spectrum_pane"));
    SetAccessibleTexts(*this, QStringLiteral("Spectrum"),
                       QStringLiteral("Amplitudes over frequency of the selected curve"));
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(kPaneMargin, kPaneMargin, kPaneMargin, kPaneMargin);
    auto* const head = new FlowLayout;
    head->setSpacing(kPaneMargin);
    layout->addLayout(head);
    MakeChoices(*head);
    MakeButtons(*head);
    MakePeaks();
    m_splitter = new QSplitter(Qt::Horizontal, this);
    SetAccessibleTexts(*m_splitter, QStringLiteral("Picture and peaks"),
                       QStringLiteral("The picture of the spectrum, and its highest peaks"));
    m_splitter->setChildrenCollapsible(false);
    m_splitter->addWidget(m_plot);
    m_splitter->addWidget(m_peaks);
    m_splitter->setStretchFactor(0, 1);
    layout->addWidget(m_splitter, 1);
    for (QLabel** const label : {&m_description, &m_cursors}) {
        *label = new QLabel(this);
        (*label)->setTextFormat(Qt::PlainText);
        (*label)->setTextInteractionFlags(Qt::TextSelectableByMouse);
        (*label)->setWordWrap(true);
        layout->addWidget(*label);
    }
    m_description->setObjectName(QStringLiteral("spectrum_description"));
    m_description->setAccessibleDescription(QStringLiteral("What the spectrum was made of"));
    m_cursors->setObjectName(QStringLiteral("spectrum_cursors"));
    m_cursors->setAccessibleDescription(QStringLiteral("What the cursors of the spectrum read"));
    connect(m_run, &SpectrumRun::Made, this, &SpectrumPane::OnMade);
    connect(m_run, &SpectrumRun::Advanced, this, &SpectrumPane::OnAdvanced);
    connect(m_plot, &SpectrumPlot::CursorsChanged, this, &SpectrumPane::ShowTexts);
    LoadChoice();
    ShowScene();
}

void SpectrumPane::MakeChoices(QLayout& layout) {
    m_title = new QLabel(this);
    m_title->setObjectName(QStringLiteral("spectrum_curve"));
    m_title->setToolTip(QStringLiteral("The curve that is selected"));
    m_title->setTextFormat(Qt::PlainText);
    layout.addWidget(m_title);
    const std::pair<QComboBox**, ChoiceRow> rows[] = {
        {&m_range,
         {"spectrum_range",
          "SpectrumRange",
          "Range",
          "Which values the spectrum is made of",
          {QStringLiteral("Shown range"), QStringLiteral("Between the cursors")}}},
        {&m_window,
         {"spectrum_window",
          "SpectrumWindow",
          "Window",
          "Hann for general use, flat top for amplitudes, none for whole periods only",
          {QStringLiteral("Hann window"), QStringLiteral("Flat top window"),
           QStringLiteral("No window")}}},
        {&m_scale,
         {"spectrum_scale",
          "SpectrumScale",
          "Amplitude",
          "Amplitudes of sines as their peak, or as root mean square",
          {QStringLiteral("Peak"), QStringLiteral("RMS")}}},
        {&m_unit,
         {"spectrum_unit",
          "SpectrumUnit",
          "Scale",
          "Units of the axis, or dB: 0 dB is 1 unit",
          {QStringLiteral("Linear"), QStringLiteral("dB")}}},
        {&m_segment,
         {"spectrum_segment", "SpectrumSegment", "Pieces",
          "Pieces of the range, which overlap by half, are averaged: less noise, wider lines",
          SegmentItems()}},
    };
    for (const auto& [choice, row] : rows) {
        *choice = MakeChoice(row, this);
        connect(*choice, &QComboBox::currentIndexChanged, this, &SpectrumPane::OnChosen);
        layout.addWidget(*choice);
    }
    const std::tuple<QCheckBox**, const char*, const char*, const char*, const char*> checks[] = {
        {&m_average, "spectrum_average", "SpectrumAverage", "Running average",
         "Averages the powers of all spectra since Restart"},
        {&m_hold, "spectrum_hold", "SpectrumHold", "Hold maximum",
         "Shows the largest amplitudes since Restart as a second curve"},
    };
    for (const auto& [check, name, setting, text, tool_tip] : checks) {
        *check = new QCheckBox(QLatin1String(text), this);
        (*check)->setObjectName(QLatin1String(name));
        (*check)->setProperty("setting", QLatin1String(setting));
        (*check)->setToolTip(QLatin1String(tool_tip));
        (*check)->setAccessibleDescription((*check)->toolTip());
        connect(*check, &QCheckBox::toggled, this, &SpectrumPane::OnChosen);
        layout.addWidget(*check);
    }
}

void SpectrumPane::MakeButtons(QLayout& layout) {
    const auto add = [this, &layout](const char* name, const char* text, const char* tool_tip,
                                     auto handler) {
        auto* const button = new QPushButton(QLatin1String(text), this);
        button->setObjectName(QLatin1String(name));
        button->setToolTip(QLatin1String(tool_tip));
        button->setAccessibleDescription(button->toolTip());
        connect(button, &QPushButton::clicked, this, handler);
        layout.addWidget(button);
        return button;
    };
    m_restart = add("spectrum_restart", "Restart", "Begins average and maximum anew", [this] {
        m_history.Clear();
        m_added.reset();
        OnMade();
    });
    add("spectrum_save", "Save as CSV...", "Saves the spectrum as comma separated values",
        [this] { SaveCsv(); });
    add("spectrum_save_picture", "Save Picture...", "Saves the picture with its peaks",
        [this] { SavePicture(); });
    add("spectrum_print", "Print...", "Prints the picture with its peaks",
        [this] { m_printer.Print(this); });
}

void SpectrumPane::MakePeaks() {
    m_peaks = new QTableWidget(0, 2, this);
    m_peaks->setObjectName(QStringLiteral("spectrum_peaks"));
    m_peaks->setHorizontalHeaderLabels(
        {QStringLiteral("Frequency (Hz)"), QStringLiteral("Amplitude")});
    m_peaks->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_peaks->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_peaks->setSelectionMode(QAbstractItemView::SingleSelection);
    m_peaks->setTabKeyNavigation(false);
    m_peaks->verticalHeader()->setDefaultSectionSize(m_peaks->fontMetrics().height() + kPaneMargin);
    m_peaks->horizontalHeader()->setHighlightSections(false);
    m_peaks->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_peaks->setMinimumWidth(
        m_peaks->fontMetrics().horizontalAdvance(QStringLiteral("00 Frequency (Hz) 0000000.0000")));
    SetAccessibleTexts(*m_peaks, QStringLiteral("Peaks"),
                       QStringLiteral("The highest peaks; a click takes the active cursor there"));
    m_peaks->setToolTip(
        QStringLiteral("The highest peaks, interpolated between the lines of the spectrum; a "
                       "click takes the active cursor there"));
    connect(m_peaks, &QTableWidget::cellClicked, this, [this](int row) { OnPeakClicked(row); });
    auto* const copy = new QAction(QStringLiteral("&Copy"), m_peaks);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &SpectrumPane::CopyPeaks);
    m_peaks->addAction(copy);
}

// ---- choices ----

void SpectrumPane::LoadChoice() {
    m_is_loading = true;
    if (m_settings != nullptr) {
        for (QComboBox* const choice : {m_range, m_window, m_scale, m_unit, m_segment}) {
            const int index = m_settings->value(choice->property("setting").toString()).toInt();
            choice->setCurrentIndex(std::clamp(index, 0, choice->count() - 1));
        }
        for (QCheckBox* const check : {m_average, m_hold}) {
            check->setChecked(m_settings->value(check->property("setting").toString()).toBool());
        }
    }
    m_is_loading = false;
    OnChosen();
}

void SpectrumPane::OnChosen() {
    if (m_is_loading) {
        return;
    }
    if (m_settings != nullptr) {
        for (const QComboBox* const choice : {m_range, m_window, m_scale, m_unit, m_segment}) {
            m_settings->setValue(choice->property("setting").toString(), choice->currentIndex());
        }
        for (const QCheckBox* const check : {m_average, m_hold}) {
            m_settings->setValue(check->property("setting").toString(), check->isChecked());
        }
    }
    constexpr measure::Window kWindows[] = {measure::Window::kHann, measure::Window::kFlatTop,
                                            measure::Window::kRectangular};
    SpectrumChoice choice;
    choice.between_cursors = m_range->currentIndex() == 1;
    choice.window = kWindows[m_window->currentIndex()];
    choice.scale =
        m_scale->currentIndex() == 1 ? measure::SpectrumScale::kRms : measure::SpectrumScale::kPeak;
    choice.segment = static_cast<std::size_t>(kSegments[m_segment->currentIndex()]);
    m_restart->setEnabled(m_average->isChecked() || m_hold->isChecked());
    m_run->SetChoice(choice);
    OnMade();
    Q_EMIT ChoiceChanged();
}

void SpectrumPane::OnMade() {
    const MadeSpectrum& made = m_run->Last();
    const bool collects = m_average->isChecked() || m_hold->isChecked();
    const OpenRecording* const recording = m_view.Work().Recording();
    const Averaged averaged{made.curve, made.label, made.choice,
                            recording == nullptr ? 0 : recording->Number(),
                            m_view.Work().Computed().Generation()};
    if (!collects || m_averaged != averaged) {
        m_history.Clear();
        m_added.reset();
    }
    m_averaged = averaged;
    if (collects && made.spectrum && m_added != made.lines) {
        m_history.Add(*made.spectrum);
        m_added = made.lines;
    }
    ShowScene();
}

void SpectrumPane::OnAdvanced() {
    m_description->setText(
        QStringLiteral("not complete yet: %1 %").arg(static_cast<int>(100.0 * m_run->Share())));
}

// ---- what is shown ----

void SpectrumPane::ShowScene() {
    const MadeSpectrum& made = m_run->Last();
    SpectrumScene scene;
    scene.reason = QString::fromStdString(made.spectrum.reason);
    scene.color = made.color;
    const ColorRef background = m_view.Work().Settings().Current().background;
    scene.background = ToColor(background);
    scene.ink = MarkColor(background);
    scene.is_decibel = m_unit->currentIndex() == 1;
    if (made.spectrum) {
        const bool has_history = m_history.Count() > 0;
        scene.spectrum =
            has_history && m_average->isChecked() ? m_history.Average() : *made.spectrum;
        if (has_history && m_hold->isChecked()) {
            scene.maximum = m_history.Maximum();
        }
        scene.peaks = measure::ClearPeaksOf(*scene.spectrum, kMostPeaks);
    }
    m_plot->Show(std::move(scene));
    ShowPeaks();
    ShowTexts();
}

void SpectrumPane::ShowPeaks() {
    const SpectrumScene& scene = m_plot->Scene();
    m_peaks->setRowCount(static_cast<int>(scene.peaks.size()));
    for (int row = 0; row < m_peaks->rowCount(); ++row) {
        const measure::SpectrumPeak& peak = scene.peaks[static_cast<std::size_t>(row)];
        const QString texts[] = {FrequencyOf(*scene.spectrum, peak.frequency),
                                 AmplitudeText(peak.amplitude, scene.is_decibel)};
        for (int column = 0; column < 2; ++column) {
            QTableWidgetItem* item = m_peaks->item(row, column);
            if (item == nullptr) {
                item = new QTableWidgetItem;
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                m_peaks->setItem(row, column, item);
            }
            item->setText(texts[column]);
        }
    }
}

void SpectrumPane::ShowTexts() {
    const MadeSpectrum& made = m_run->Last();
    const QString curve = made.spectrum ? CurveName(made) : QString();
    m_title->setText(made.spectrum ? curve : QStringLiteral("no curve"));
    m_title->setAccessibleName(QStringLiteral("Curve: ") + m_title->text());
    m_description->setText(
        DescriptionOf(made, m_view.Work().Values().CycleTime(), m_history.Count()));
    m_description->setAccessibleName(m_description->text().isEmpty() ? QStringLiteral("no spectrum")
                                                                     : m_description->text());
    m_cursors->setText(CursorsTextOf(m_plot->Scene()));
    m_cursors->setAccessibleName(m_cursors->text().isEmpty() ? QStringLiteral("no cursors")
                                                             : m_cursors->text());
    m_cursors->setVisible(!m_cursors->text().isEmpty());
    QString peaks =
        TextOfPeaks(m_plot->Scene()).replace(u'\t', u' ').replace(u'\n', QStringLiteral("; "));
    SetAccessibleTexts(*m_plot, QStringLiteral("Spectrum of %1").arg(m_title->text()),
                       made.spectrum ? peaks : m_plot->Scene().reason);
}

void SpectrumPane::OnPeakClicked(int row) {
    const SpectrumScene& scene = m_plot->Scene();
    if (row >= 0 && static_cast<std::size_t>(row) < scene.peaks.size()) {
        m_plot->JumpTo(scene.active.value_or(CursorName::kA),
                       scene.peaks[static_cast<std::size_t>(row)].frequency);
    }
}

// ---- out of the pane ----

SpectrumPage SpectrumPane::Page() const {
    return {m_title->text(), m_description->text(), m_cursors->text(), m_plot->Scene()};
}

QImage SpectrumPane::PictureOf(const QSize& size, double device_ratio) const {
    return wavo::PictureOf(Page(), size, device_ratio);
}

void SpectrumPane::CopyPeaks() const {
    QGuiApplication::clipboard()->setText(TextOfPeaks(m_plot->Scene()));
}

void SpectrumPane::SaveCsv() {
    const QString text =
        CsvOfSpectrum(m_plot->Scene());  // of now: values go on while the user is asked
    SaveAsCsv(this, m_prompts, m_settings, QStringLiteral("spectrum.csv"), text);
}

void SpectrumPane::SavePicture() {
    const QImage picture = PictureOf(kPicture, kPictureRatio);
    const auto chosen =
        AskWhereToSave(this, m_prompts, m_settings, QStringLiteral("spectrum.png"),
                       QStringLiteral("png"), QStringLiteral("PNG Files|*.png|All Files|*.*|"));
    const std::string path = QDir::toNativeSeparators(chosen.value_or(QString())).toStdString();
    if (chosen && !(IsFileName(path) && picture.save(*chosen, "PNG"))) {
        m_prompts.ShowError(this, "Can not write " + path + FileNameFault(path));
    }
}

// ---- events ----

void SpectrumPane::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_run->SetWatched(true);
}

void SpectrumPane::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    m_run->SetWatched(false);
}

void SpectrumPane::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_splitter->setOrientation(width() > height() ? Qt::Horizontal : Qt::Vertical);
}

}  // namespace wavo
