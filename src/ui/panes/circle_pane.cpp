#include "ui/panes/circle_pane.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QResizeEvent>
#include <QSettings>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cmath>

#include "measure/polar_scale.h"
#include "measure/words.h"
#include "ui/controls/control_table.h"
#include "ui/controls/controls.h"
#include "ui/panes/figure_table.h"
#include "ui/panes/limits_dialog.h"
#include "ui/panes/polar_view.h"
#include "ui/panes/report_file.h"

namespace wavo {

namespace {

constexpr int CircleNumber(CirclePaneId id) {
    return static_cast<int>(id);
}

constexpr std::array<ControlRow, 13> kCirclePaneRows{{
    {CircleNumber(CirclePaneId::kState), ControlKind::kElidedStatic, "state", ""},
    {CircleNumber(CirclePaneId::kRadius), ControlKind::kEdit, "&radius, mm",
     "Nominal radius in mm; empty: that of the commanded circle, where there is one"},
    {CircleNumber(CirclePaneId::kFeed), ControlKind::kEdit, "&feed, mm/min",
     "Programmed feed in mm/min; turns at another feed are left out. Empty: any"},
    {CircleNumber(CirclePaneId::kMachine), ControlKind::kEdit, "m&achine",
     "Name of the machine, for the report"},
    {CircleNumber(CirclePaneId::kProgram), ControlKind::kEdit, "&program",
     "Name of the program that the machine runs, for the report"},
    {CircleNumber(CirclePaneId::kZone), ControlKind::kCheck, "minimum &zone",
     "Also evaluates the circular error about the centre for which it is least"},
    {CircleNumber(CirclePaneId::kFiner), ControlKind::kButton, "&+",
     "Magnifies the radial error more"},
    {CircleNumber(CirclePaneId::kAutomatic), ControlKind::kButton, "A&uto",
     "Magnifies the radial error as much as the picture has room for"},
    {CircleNumber(CirclePaneId::kCoarser), ControlKind::kButton, "&-",
     "Magnifies the radial error less"},
    {CircleNumber(CirclePaneId::kFigures), ControlKind::kTable, "figures",
     "The figures of the circle test, with what became of their limits"},
    {CircleNumber(CirclePaneId::kNotes), ControlKind::kStatic, "notes", ""},
    {CircleNumber(CirclePaneId::kLimits), ControlKind::kButton, "&Limits...",
     "What the figures may be"},
    {CircleNumber(CirclePaneId::kReport), ControlKind::kButton, "&Save Report...",
     "Saves a page that can be signed as PDF, or the figures as JSON"},
}};

constexpr char kSettings[] = "CircleTest/";
constexpr double kSecondsPerMinute = 60.0;
constexpr std::size_t kPointsOnScreen = 1440;
constexpr int kPaneMargin = 4;
/// From this ratio of its sides on the picture stands beside the figures, else above them.
constexpr double kIsWide = 1.2;

}  // namespace

template <typename Widget>
Widget& CirclePane::Control(CirclePaneId id) const {
    return *FindControl<Widget>(*this, CircleNumber(id));
}

CirclePane::CirclePane(CircleWatch& watch, const Prompts& prompts, QSettings* settings,
                       const QString& made_by, QWidget* parent)
    : QWidget(parent),
      m_watch(watch),
      m_prompts(prompts),
      m_settings(settings),
      m_made_by(made_by),
      m_polar(new PolarView(this)) {
    setObjectName(QStringLiteral("circle_pane"));
    SetAccessibleTexts(*this, QStringLiteral("Circle Test"),
                       QStringLiteral("How round the machine moves, and why not rounder"));
    m_polar->setObjectName(QStringLiteral("circle_polar"));
    MakeControls();
    LayOut();
    Load();
    connect(&m_watch, &CircleWatch::Changed, this, &CirclePane::Refresh);
}

void CirclePane::MakeControls() {
    for (const ControlRow& row : kCirclePaneRows) {
        InitControl(*MakeControl(row, this), row);
    }
    Control(CirclePaneId::kState)
        .setAccessibleDescription(QStringLiteral("The lines that were taken"));
    InitNotes(Control<QLabel>(CirclePaneId::kNotes));
    MakeFigureTable(Control<QTableWidget>(CirclePaneId::kFigures));
    for (const CirclePaneId id : {CirclePaneId::kRadius, CirclePaneId::kFeed}) {
        connect(&Control<QLineEdit>(id), &QLineEdit::textChanged, this, [this] { TakeQuestion(); });
    }
    connect(&Control<QCheckBox>(CirclePaneId::kZone), &QCheckBox::toggled, this,
            [this] { TakeQuestion(); });
    for (const CirclePaneId id : {CirclePaneId::kMachine, CirclePaneId::kProgram}) {
        connect(&Control<QLineEdit>(id), &QLineEdit::editingFinished, this, [this] { Store(); });
    }
    const auto on_click = [this](CirclePaneId id, const auto& handler) {
        connect(&Control<QPushButton>(id), &QPushButton::clicked, this, handler);
    };
    on_click(CirclePaneId::kFiner,
             [this] { ShowStep(measure::NextPolarStep(m_shown_step, false)); });
    on_click(CirclePaneId::kCoarser,
             [this] { ShowStep(measure::NextPolarStep(m_shown_step, true)); });
    on_click(CirclePaneId::kAutomatic, [this] { ShowStep(std::nullopt); });
    on_click(CirclePaneId::kLimits, [this] { EditLimits(); });
    on_click(CirclePaneId::kReport, [this] { SaveReport(); });
}

void CirclePane::LayOut() {
    const auto row_of = [](CirclePaneId id) -> const ControlRow& {
        return FindRow(kCirclePaneRows, CircleNumber(id));
    };
    auto* const picture = new QVBoxLayout;
    picture->addWidget(m_polar, 1);
    auto* const steps = new QHBoxLayout;
    steps->addStretch();
    for (const CirclePaneId id :
         {CirclePaneId::kCoarser, CirclePaneId::kAutomatic, CirclePaneId::kFiner}) {
        auto& button = Control<QPushButton>(id);
        button.setMaximumWidth(button.fontMetrics().horizontalAdvance(QStringLiteral("MAutoM")));
        steps->addWidget(&button);
    }
    steps->addStretch();
    picture->addLayout(steps);
    auto* const fields = new QGridLayout;
    int place = 0;
    for (const CirclePaneId id : {CirclePaneId::kRadius, CirclePaneId::kFeed,
                                  CirclePaneId::kMachine, CirclePaneId::kProgram}) {
        auto& edit = Control(id);
        fields->addWidget(MakeLabel(row_of(id), edit), place / 2, 2 * (place % 2));
        fields->addWidget(&edit, place / 2, 2 * (place % 2) + 1);
        ++place;
    }
    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(&Control(CirclePaneId::kZone));
    buttons->addStretch();
    buttons->addWidget(&Control(CirclePaneId::kLimits));
    buttons->addWidget(&Control(CirclePaneId::kReport));
    auto* const texts = new QVBoxLayout;
    texts->addLayout(fields);
    texts->addWidget(&Control(CirclePaneId::kFigures), 1);
    texts->addWidget(&Control(CirclePaneId::kNotes));
    texts->addLayout(buttons);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(kPaneMargin, kPaneMargin, kPaneMargin, kPaneMargin);
    column->addWidget(&Control(CirclePaneId::kState));
    m_layout = new QBoxLayout(QBoxLayout::TopToBottom);
    m_layout->addLayout(picture, 1);
    m_layout->addLayout(texts, 1);
    column->addLayout(m_layout, 1);
}

void CirclePane::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_layout->setDirection(width() > height() * kIsWide ? QBoxLayout::LeftToRight
                                                        : QBoxLayout::TopToBottom);
}

void CirclePane::Load() {
    if (m_settings == nullptr) {
        return;
    }
    m_is_loading = true;
    const auto text = [this](const char* name) {
        return m_settings->value(QLatin1String(kSettings) + QLatin1String(name)).toString();
    };
    Control<QLineEdit>(CirclePaneId::kRadius).setText(text("Radius"));
    Control<QLineEdit>(CirclePaneId::kFeed).setText(text("Feed"));
    Control<QLineEdit>(CirclePaneId::kMachine).setText(text("Machine"));
    Control<QLineEdit>(CirclePaneId::kProgram).setText(text("Program"));
    Control<QCheckBox>(CirclePaneId::kZone).setChecked(text("MinimumZone") == u"true");
    if (auto limits = measure::ParseLimits(text("Limits").toStdString())) {
        m_limits = std::move(*limits.value);
    }
    m_is_loading = false;
    TakeQuestion();
}

void CirclePane::Store() {
    if (m_settings == nullptr || m_is_loading) {
        return;
    }
    const auto store = [this](const char* name, const QString& text) {
        m_settings->setValue(QLatin1String(kSettings) + QLatin1String(name), text);
    };
    store("Radius", Control<QLineEdit>(CirclePaneId::kRadius).text());
    store("Feed", Control<QLineEdit>(CirclePaneId::kFeed).text());
    store("Machine", Control<QLineEdit>(CirclePaneId::kMachine).text());
    store("Program", Control<QLineEdit>(CirclePaneId::kProgram).text());
    store("MinimumZone", Control<QCheckBox>(CirclePaneId::kZone).isChecked()
                             ? QStringLiteral("true")
                             : QStringLiteral("false"));
    store("Limits", QString::fromStdString(measure::LimitsText(m_limits)));
}

void CirclePane::TakeQuestion() {
    if (m_is_loading) {
        return;
    }
    CircleQuestion question;
    for (const CirclePaneId id : {CirclePaneId::kRadius, CirclePaneId::kFeed}) {
        const auto number = PositiveNumberIn(Control<QLineEdit>(id));
        (id == CirclePaneId::kRadius ? question.radius : question.feed) = number;
    }
    if (question.feed) {
        *question.feed /= kSecondsPerMinute;
    }
    question.minimum_zone = Control<QCheckBox>(CirclePaneId::kZone).isChecked();
    Store();
    m_watch.SetQuestion(question);
}

void CirclePane::ShowStep(std::optional<double> step) {
    m_step = step;
    Refresh();
}

report::CircleReport CirclePane::Report() const {
    const CircleOutcome& outcome = *m_watch.Outcome();
    report::CircleReport report;
    report.header = ReportHeaderOf(outcome.data, Control<QLineEdit>(CirclePaneId::kMachine).text(),
                                   Control<QLineEdit>(CirclePaneId::kProgram).text(), m_made_by);
    report.first_axis = outcome.axes.first;
    report.second_axis = outcome.axes.second;
    report.path = outcome.path;
    report.setup = outcome.setup;
    report.result = outcome.result;
    report.limits = m_limits;
    report.polar_step = m_step;
    return report;
}

QString CirclePane::StateText() const {
    const PlaneAxes* const plane = m_watch.Plane();
    const QString axes = plane == nullptr
                             ? QString()
                             : QString::fromStdString(plane->first + ", " + plane->second + ": ");
    switch (m_watch.Now()) {
        case CircleWatch::State::kNoPlane:
            return QStringLiteral("No graph shows one axis over another");
        case CircleWatch::State::kNoValues:
            return axes + QStringLiteral("waiting for a full turn");
        case CircleWatch::State::kTooMany:
            return axes + QStringLiteral("too many lines are shown; zoom to the turns");
        case CircleWatch::State::kWorking:
            return axes + QStringLiteral("evaluating...");
        case CircleWatch::State::kDone:
            break;
    }
    const CircleOutcome* const outcome = m_watch.Outcome();
    if (outcome == nullptr || outcome->result.turns.empty()) {
        return axes + QStringLiteral("no full turn was found");
    }
    QString turns;
    for (const measure::CircleTurn& turn : outcome->result.turns) {
        turns += turns.isEmpty() ? QString() : QStringLiteral(", ");
        turns += turn.sense == measure::Sense::kCounterClockwise ? QStringLiteral("ccw")
                                                                 : QStringLiteral("cw");
        turns += QString::fromStdString(
            measure::Words(" lines %lld to %lld",
                           static_cast<long long>(outcome->first_line) +
                               static_cast<long long>(turn.stretch.first),
                           static_cast<long long>(outcome->first_line) +
                               static_cast<long long>(turn.stretch.end) - 1));
    }
    return axes + turns;
}

void CirclePane::Refresh() {
    auto& state = Control<QLabel>(CirclePaneId::kState);
    state.setText(StateText());
    state.setAccessibleName(StateText());
    const CircleOutcome* const outcome = m_watch.Outcome();
    Control(CirclePaneId::kReport).setEnabled(outcome != nullptr);
    if (m_watch.Now() == CircleWatch::State::kWorking && outcome != nullptr) {
        return;  // what is shown stays until there is something newer
    }
    report::CircleVerdict verdict;
    std::optional<report::PolarPicture> picture;
    if (outcome != nullptr) {
        const report::CircleReport report = Report();
        verdict = report::JudgeCircle(report);
        if (verdict.evaluation) {
            picture = report::PolarOf(report, verdict, kPointsOnScreen);
            m_shown_step = report::ScaleOf(*picture).step;
        }
    }
    for (const CirclePaneId id :
         {CirclePaneId::kFiner, CirclePaneId::kAutomatic, CirclePaneId::kCoarser}) {
        Control(id).setEnabled(picture.has_value());
    }
    const QString told =
        picture ? QStringLiteral("Radial errors of both senses, magnified") : StateText();
    m_polar->Show(std::move(picture), StateText());
    SetAccessibleTexts(*m_polar, QStringLiteral("Polar picture"), told);
    ShowFigures(Control<QTableWidget>(CirclePaneId::kFigures), verdict.figures, verdict.judgement);
    ShowNotes(verdict);
}

void CirclePane::ShowNotes(const report::CircleVerdict& verdict) {
    QStringList notes;
    const CircleOutcome* const outcome = m_watch.Outcome();
    if (outcome != nullptr) {
        for (const std::string& note : outcome->result.notes) {
            notes << QString::fromStdString(note);
        }
        for (const std::string& key : verdict.judgement.unknown) {
            notes << QString::fromStdString("there is a limit on \"" + key +
                                            "\", but no such figure");
        }
        if (verdict.evaluation) {
            notes << QLatin1String(report::kFeedbackCaveat);
        }
    }
    ShowNoteTexts(Control<QLabel>(CirclePaneId::kNotes), notes);
}

void CirclePane::EditLimits() {
    std::vector<measure::NamedFigure> figures;
    if (m_watch.Outcome() != nullptr) {
        figures = report::JudgeCircle(Report()).figures;
    }
    if (LimitsDialog::Edit(figures, &m_limits, m_prompts, m_settings, window())) {
        Store();
        Refresh();
        FitFigureColumns(Control<QTableWidget>(CirclePaneId::kFigures));
    }
}

void CirclePane::SaveReport() {
    if (m_watch.Outcome() == nullptr) {
        return;
    }
    // As it is now: the machine turns on while the user is asked.
    report::CircleReport report = Report();
    const std::vector<double> x(report.path.x.begin(), report.path.x.end());
    const std::vector<double> y(report.path.y.begin(), report.path.y.end());
    report.path = {report.path.cycle_time, x, y, {}, {}};
    report.setup.others.clear();
    SaveReportFile(
        this, m_prompts, m_settings, QStringLiteral("circle.pdf"),
        [&](const QString& path) { return report::WriteCirclePdf(path, report); },
        [&] { return report::CircleJson(report); });
}

}  // namespace wavo
