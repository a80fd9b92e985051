#include "ui/panes/axis_pane.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cmath>

#include "measure/words.h"
#include "ui/controls/control_table.h"
#include "ui/controls/controls.h"
#include "ui/panes/chart_view.h"
#include "ui/panes/figure_table.h"
#include "ui/panes/limits_dialog.h"
#include "ui/panes/move_table.h"
#include "ui/panes/report_file.h"

namespace wavo {

namespace {

constexpr int AxisNumber(AxisPaneId id) {
    return static_cast<int>(id);
}

constexpr std::array<ControlRow, 15> kAxisPaneRows{{
    {AxisNumber(AxisPaneId::kState), ControlKind::kElidedStatic, "state", ""},
    {AxisNumber(AxisPaneId::kAxis), ControlKind::kCombo, "a&xis",
     "The axis that is tested; of two or three together the contour error is told too"},
    {AxisNumber(AxisPaneId::kTarget), ControlKind::kCombo, "steps end &at",
     "What the overshoot and the settling of a step are measured against"},
    {AxisNumber(AxisPaneId::kSettled), ControlKind::kEdit, "s&ettled, %",
     "A step has settled within so many percent of its height about its end"},
    {AxisNumber(AxisPaneId::kWindow), ControlKind::kEdit, "&window, mm",
     "A move has settled within so many mm of its commanded end"},
    {AxisNumber(AxisPaneId::kDwell), ControlKind::kEdit, "&dwell, s",
     "A move is one that so much standstill follows"},
    {AxisNumber(AxisPaneId::kMachine), ControlKind::kEdit, "&machine",
     "Name of the machine, for the report"},
    {AxisNumber(AxisPaneId::kProgram), ControlKind::kEdit, "&program",
     "Name of the program that the machine runs, for the report"},
    {AxisNumber(AxisPaneId::kResponse), ControlKind::kCheck, "&frequency response",
     "Also the closed loop's frequency response: needs commanded values that hold all frequencies"},
    {AxisNumber(AxisPaneId::kRotary), ControlKind::kCheck, "r&otary",
     "Axes in degrees: no gain in (m/min)/mm"},
    {AxisNumber(AxisPaneId::kFigures), ControlKind::kTable, "figures",
     "The figures of the axes, with what became of their limits"},
    {AxisNumber(AxisPaneId::kMoves), ControlKind::kTable, "moves",
     "All moves with their figures; a click shows one in the graphs"},
    {AxisNumber(AxisPaneId::kNotes), ControlKind::kStatic, "notes", ""},
    {AxisNumber(AxisPaneId::kLimits), ControlKind::kButton, "&Limits...",
     "What the figures may be"},
    {AxisNumber(AxisPaneId::kReport), ControlKind::kButton, "&Save Report...",
     "Saves pages that can be signed as PDF, or the figures as JSON"},
}};

constexpr char kAxisSettings[] = "AxisTest/";
constexpr int kAxisMargin = 4;
/// Kept as texts that tell themselves; the usual ones stand in the setup.
struct NumberField {
    AxisPaneId id;
    const char* setting;
    double measure::StepSetup::*number;
};
constexpr std::array<NumberField, 3> kNumberFields{{
    {AxisPaneId::kSettled, "Settled", &measure::StepSetup::settled},
    {AxisPaneId::kWindow, "Window", &measure::StepSetup::move_window},
    {AxisPaneId::kDwell, "Dwell", &measure::StepSetup::dwell},
}};

}  // namespace

template <typename Widget>
Widget& AxisPane::Control(AxisPaneId id) const {
    return *FindControl<Widget>(*this, AxisNumber(id));
}

AxisPane::AxisPane(AxisWatch& watch, const Prompts& prompts, QSettings* settings,
                   const QString& made_by, ShowLines show_lines, QWidget* parent)
    : QWidget(parent),
      m_watch(watch),
      m_prompts(prompts),
      m_settings(settings),
      m_made_by(made_by),
      m_show_lines(std::move(show_lines)) {
    setObjectName(QStringLiteral("axis_pane"));
    SetAccessibleTexts(*this, QStringLiteral("Axis Test"),
                       QStringLiteral("How well the axes follow what they are told"));
    MakeControls();
    LayOut();
    Load();
    connect(&m_watch, &AxisWatch::Changed, this, &AxisPane::Refresh);
}

void AxisPane::MakeControls() {
    for (const ControlRow& row : kAxisPaneRows) {
        InitControl(*MakeControl(row, this), row);
    }
    Control(AxisPaneId::kState)
        .setAccessibleDescription(QStringLiteral("The lines that were taken"));
    auto& notes = Control<QLabel>(AxisPaneId::kNotes);
    InitNotes(notes);
    MakeFigureTable(Control<QTableWidget>(AxisPaneId::kFigures));
    auto& moves = Control<QTableWidget>(AxisPaneId::kMoves);
    MakeMoveTable(moves);
    connect(&moves, &QTableWidget::cellClicked, this, [this](int row) { OnMoveClicked(row); });
    connect(&moves, &QTableWidget::itemActivated, this,
            [this](const QTableWidgetItem* item) { OnMoveClicked(item->row()); });
    auto& target = Control<QComboBox>(AxisPaneId::kTarget);
    target.addItems({QStringLiteral("reached value"), QStringLiteral("commanded value")});
    for (const AxisPaneId id : {AxisPaneId::kAxis, AxisPaneId::kTarget}) {
        connect(&Control<QComboBox>(id), &QComboBox::currentIndexChanged, this,
                [this] { TakeQuestion(); });
    }
    for (const NumberField& field : kNumberFields) {
        connect(&Control<QLineEdit>(field.id), &QLineEdit::textChanged, this,
                [this] { TakeQuestion(); });
    }
    for (const AxisPaneId id : {AxisPaneId::kResponse, AxisPaneId::kRotary}) {
        connect(&Control<QCheckBox>(id), &QCheckBox::toggled, this, [this] { TakeQuestion(); });
    }
    for (const AxisPaneId id : {AxisPaneId::kMachine, AxisPaneId::kProgram}) {
        connect(&Control<QLineEdit>(id), &QLineEdit::editingFinished, this, [this] { Store(); });
    }
    connect(&Control<QPushButton>(AxisPaneId::kLimits), &QPushButton::clicked, this,
            [this] { EditLimits(); });
    connect(&Control<QPushButton>(AxisPaneId::kReport), &QPushButton::clicked, this,
            [this] { SaveReport(); });
}

void AxisPane::LayOut() {
    const auto chart = [this](const char* name, const char* description) {
        auto* const view = new ChartView(this);
        SetAccessibleTexts(*view, QLatin1String(name), QLatin1String(description));
        return view;
    };
    m_following = chart("Following Error", "Commanded less actual value, over time");
    m_contour = chart("Contour Error", "Distance from the commanded path, over time");
    m_response = chart("Frequency Response", "Magnitude, phase and coherence over the frequency");
    m_pages = new QTabWidget(this);
    m_pages->setObjectName(QStringLiteral("axis_pages"));
    SetAccessibleTexts(*m_pages, QStringLiteral("Pages of the axis test"),
                       QStringLiteral("Figures, moves and curves"));
    m_pages->setUsesScrollButtons(false);
    m_pages->setElideMode(Qt::ElideRight);
    for (QToolButton* const button : m_pages->tabBar()->findChildren<QToolButton*>()) {
        SetAccessibleTexts(*button, QStringLiteral("Scroll"), QStringLiteral("More pages"));
    }
    m_pages->addTab(&Control(AxisPaneId::kFigures), QStringLiteral("Figures"));
    m_pages->addTab(&Control(AxisPaneId::kMoves), QStringLiteral("Moves"));
    m_pages->addTab(m_following, QStringLiteral("Following Error"));
    m_pages->addTab(m_contour, QStringLiteral("Contour Error"));
    m_pages->addTab(m_response, QStringLiteral("Frequency Response"));
    auto* const fields = new QGridLayout;
    int place = 0;
    for (const AxisPaneId id :
         {AxisPaneId::kAxis, AxisPaneId::kTarget, AxisPaneId::kSettled, AxisPaneId::kWindow,
          AxisPaneId::kDwell, AxisPaneId::kMachine, AxisPaneId::kProgram}) {
        auto& field = Control(id);
        if (id != AxisPaneId::kTarget) {  // that one's texts are known
            field.setMinimumWidth(field.fontMetrics().averageCharWidth() * 6);
        }
        fields->addWidget(MakeLabel(FindRow(kAxisPaneRows, AxisNumber(id)), field), place / 4,
                          2 * (place % 4));
        fields->addWidget(&field, place / 4, 2 * (place % 4) + 1);
        ++place;
    }
    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(&Control(AxisPaneId::kResponse));
    buttons->addWidget(&Control(AxisPaneId::kRotary));
    buttons->addStretch();
    buttons->addWidget(&Control(AxisPaneId::kLimits));
    buttons->addWidget(&Control(AxisPaneId::kReport));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(kAxisMargin, kAxisMargin, kAxisMargin, kAxisMargin);
    column->addWidget(&Control(AxisPaneId::kState));
    column->addLayout(fields);
    column->addWidget(m_pages, 1);
    column->addWidget(&Control(AxisPaneId::kNotes));
    column->addLayout(buttons);
}

void AxisPane::Load() {
    m_is_loading = true;
    const auto text = [this](const char* name, const QString& usual) {
        return m_settings == nullptr
                   ? usual
                   : m_settings->value(QLatin1String(kAxisSettings) + QLatin1String(name), usual)
                         .toString();
    };
    const measure::StepSetup usual;
    for (const NumberField& field : kNumberFields) {
        Control<QLineEdit>(field.id).setText(
            text(field.setting, QString::number(usual.*field.number)));
    }
    Control<QLineEdit>(AxisPaneId::kMachine).setText(text("Machine", {}));
    Control<QLineEdit>(AxisPaneId::kProgram).setText(text("Program", {}));
    Control<QComboBox>(AxisPaneId::kTarget)
        .setCurrentIndex(text("Target", {}) == u"commanded" ? 1 : 0);
    Control<QCheckBox>(AxisPaneId::kRotary).setChecked(text("Rotary", {}) == u"true");
    Control<QCheckBox>(AxisPaneId::kResponse).setChecked(text("Response", {}) == u"true");
    if (auto limits = measure::ParseLimits(text("Limits", {}).toStdString())) {
        m_limits = std::move(*limits.value);
    }
    m_is_loading = false;
    TakeQuestion();
}

void AxisPane::Store() {
    if (m_settings == nullptr || m_is_loading) {
        return;
    }
    const auto store = [this](const char* name, const QString& text) {
        m_settings->setValue(QLatin1String(kAxisSettings) + QLatin1String(name), text);
    };
    const auto flag = [this](AxisPaneId id) {
        return Control<QCheckBox>(id).isChecked() ? QStringLiteral("true")
                                                  : QStringLiteral("false");
    };
    for (const NumberField& field : kNumberFields) {
        store(field.setting, Control<QLineEdit>(field.id).text());
    }
    store("Machine", Control<QLineEdit>(AxisPaneId::kMachine).text());
    store("Program", Control<QLineEdit>(AxisPaneId::kProgram).text());
    store("Target", Control<QComboBox>(AxisPaneId::kTarget).currentIndex() == 1
                        ? QStringLiteral("commanded")
                        : QStringLiteral("reached"));
    store("Rotary", flag(AxisPaneId::kRotary));
    store("Response", flag(AxisPaneId::kResponse));
    store("Limits", QString::fromStdString(measure::LimitsText(m_limits)));
}

void AxisPane::TakeQuestion() {
    if (m_is_loading) {
        return;
    }
    AxisQuestion question;
    const auto& axis = Control<QComboBox>(AxisPaneId::kAxis);
    question.axis = axis.currentIndex() > 0 ? axis.currentText().toStdString() : std::string();
    for (const NumberField& field : kNumberFields) {
        if (const auto number = PositiveNumberIn(Control<QLineEdit>(field.id))) {
            question.setup.step.*field.number = *number;
        }
    }
    question.setup.step.target = Control<QComboBox>(AxisPaneId::kTarget).currentIndex() == 1
                                     ? measure::StepTarget::kCommanded
                                     : measure::StepTarget::kReached;
    question.setup.rotary = Control<QCheckBox>(AxisPaneId::kRotary).isChecked();
    question.setup.response = Control<QCheckBox>(AxisPaneId::kResponse).isChecked();
    Store();
    m_watch.Ask(question);
}

void AxisPane::ShowAxes() {
    auto& axes = Control<QComboBox>(AxisPaneId::kAxis);
    QStringList names{QStringLiteral("all")};
    for (const measure::AxisPair& pair : m_watch.Pairs()) {
        names << QString::fromStdString(pair.axis);
    }
    if (Offer(axes, names)) {
        TakeQuestion();
    }
}

report::AxisReport AxisPane::Report() const {
    const AxisOutcome& outcome = *m_watch.Outcome();
    report::AxisReport report;
    report.header = ReportHeaderOf(outcome.data, Control<QLineEdit>(AxisPaneId::kMachine).text(),
                                   Control<QLineEdit>(AxisPaneId::kProgram).text(), m_made_by);
    report.setup = outcome.setup;
    for (const AxisOutcome::Axis& axis : outcome.axes) {
        report.parts.push_back({axis.names, axis.commanded, axis.actual, axis.result});
    }
    report.contour = outcome.contour_figures;
    report.contour_reach = outcome.contour_reach;
    report.limits = m_limits;
    return report;
}

QString AxisPane::StateText() const {
    switch (m_watch.Now()) {
        case AxisWatch::State::kNoPairs:
            return QStringLiteral(
                "No axis has commanded and actual values: X_cmd beside X, X_act "
                "or X_fb");
        case AxisWatch::State::kFlowing:
            return QStringLiteral("Gathering: move the axes, then stop");
        case AxisWatch::State::kNoValues:
            return QStringLiteral("No values yet");
        case AxisWatch::State::kTooMany:
            return QStringLiteral("Too many lines are shown; zoom to the moves");
        case AxisWatch::State::kWorking:
            return QStringLiteral("Evaluating...");
        case AxisWatch::State::kDone:
            break;
    }
    const AxisOutcome* const outcome = m_watch.Outcome();
    if (outcome == nullptr || outcome->axes.empty()) {
        return QStringLiteral("No values yet");
    }
    QString axes;
    for (const AxisOutcome::Axis& axis : outcome->axes) {
        axes += axes.isEmpty() ? QString() : QStringLiteral(", ");
        axes += QString::fromStdString(axis.names.axis);
    }
    const auto lines = static_cast<long long>(outcome->axes.front().actual.size());
    const auto first = static_cast<long long>(outcome->first_line);
    return axes +
           QString::fromStdString(measure::Words(": lines %lld to %lld", first, first + lines - 1));
}

void AxisPane::Refresh() {
    ShowAxes();
    auto& state = Control<QLabel>(AxisPaneId::kState);
    state.setText(StateText());
    state.setAccessibleName(StateText());
    const AxisOutcome* const outcome = m_watch.Outcome();
    Control(AxisPaneId::kReport).setEnabled(outcome != nullptr && !outcome->axes.empty());
    if (m_watch.Now() == AxisWatch::State::kWorking && outcome != nullptr) {
        return;  // what is shown stays until there is something newer
    }
    report::AxisVerdict verdict;
    if (outcome != nullptr) {
        verdict = report::JudgeAxes(Report());
    }
    ShowFigures(Control<QTableWidget>(AxisPaneId::kFigures), verdict.figures, verdict.judgement);
    ShowMoves();
    ShowCharts();
    ShowNotes(verdict);
}

void AxisPane::ShowMoves() {
    auto& table = Control<QTableWidget>(AxisPaneId::kMoves);
    m_moves.clear();
    const AxisOutcome* const outcome = m_watch.Outcome();
    for (std::size_t axis = 0; outcome != nullptr && axis < outcome->axes.size(); ++axis) {
        for (std::size_t i = 0; i < outcome->axes[axis].result.motion.moves.size(); ++i) {
            m_moves.push_back({axis, i});
        }
    }
    table.setRowCount(static_cast<int>(m_moves.size()));
    for (std::size_t row = 0; row < m_moves.size(); ++row) {
        const AxisOutcome::Axis& axis = outcome->axes[m_moves[row].axis];
        ShowMove(table, static_cast<int>(row), axis.names.axis,
                 axis.result.motion.moves[m_moves[row].move], outcome->cycle_time);
    }
    table.resizeColumnsToContents();
}

void AxisPane::ShowCharts() {
    const AxisOutcome* const outcome = m_watch.Outcome();
    std::vector<report::Chart> following;
    std::vector<report::Chart> contour;
    std::vector<report::Chart> response;
    QString no_response = QStringLiteral("not asked for");
    if (outcome != nullptr) {
        const report::AxisReport report = Report();
        for (const report::AxisPart& part : report.parts) {
            following.push_back(
                report::AxisChart(part, report.setup, report::AxisPicture::kFollowing));
        }
        if (!report.parts.empty()) {
            const report::AxisPart& first = report.parts.front();
            no_response = QString::fromStdString(first.result.response.reason);
            for (const report::AxisPicture picture :
                 {report::AxisPicture::kMagnitude, report::AxisPicture::kPhase,
                  report::AxisPicture::kCoherence}) {
                if (first.result.response) {
                    response.push_back(report::AxisChart(first, report.setup, picture));
                }
            }
        }
        if (!outcome->contour.empty()) {
            contour.push_back(report::ContourChart(outcome->contour, outcome->cycle_time));
        }
    }
    m_following->Show(std::move(following), StateText());
    m_contour->Show(std::move(contour),
                    QStringLiteral("The contour error is that of two or three axes together"));
    m_response->Show(std::move(response), no_response);
}

void AxisPane::ShowNotes(const report::AxisVerdict& verdict) {
    QStringList notes;
    if (const AxisOutcome* const outcome = m_watch.Outcome()) {
        for (const AxisOutcome::Axis& axis : outcome->axes) {
            for (const std::string& note : axis.result.notes) {
                notes << QString::fromStdString(axis.names.axis + ": " + note);
            }
        }
        notes << QString::fromStdString(measure::DefinitionsOf(outcome->setup.step));
        for (const std::string& key : verdict.judgement.unknown) {
            notes << QString::fromStdString("there is a limit on \"" + key +
                                            "\", but no such figure");
        }
    }
    ShowNoteTexts(Control<QLabel>(AxisPaneId::kNotes), notes);
}

void AxisPane::OnMoveClicked(int row) {
    const AxisOutcome* const outcome = m_watch.Outcome();
    if (outcome == nullptr || row < 0 || row >= static_cast<int>(m_moves.size())) {
        return;
    }
    const ShownMove shown = m_moves[static_cast<std::size_t>(row)];
    const measure::Move& move = outcome->axes[shown.axis].result.motion.moves[shown.move];
    const auto line = [&](std::size_t place) {
        return outcome->first_line + static_cast<std::int64_t>(place);
    };
    // The move with its dwell, and a tenth of them before.
    const auto before = static_cast<std::int64_t>((move.end - move.first) / 10 + 1);
    m_show_lines({line(move.first) - before, line(move.end)});
}

void AxisPane::EditLimits() {
    std::vector<measure::NamedFigure> figures;
    if (m_watch.Outcome() != nullptr) {
        figures = report::JudgeAxes(Report()).figures;
    }
    if (LimitsDialog::Edit(figures, &m_limits, m_prompts, m_settings, window())) {
        Store();
        Refresh();
        FitFigureColumns(Control<QTableWidget>(AxisPaneId::kFigures));
    }
}

void AxisPane::SaveReport() {
    if (m_watch.Outcome() == nullptr) {
        return;
    }
    // As it is now: something else may be evaluated while the user is asked.
    const AxisOutcome outcome = *m_watch.Outcome();
    report::AxisReport report = Report();
    for (std::size_t i = 0; i < report.parts.size(); ++i) {
        report.parts[i].commanded = outcome.axes[i].commanded;
        report.parts[i].actual = outcome.axes[i].actual;
    }
    SaveReportFile(
        this, m_prompts, m_settings, QStringLiteral("axis.pdf"),
        [&](const QString& path) { return report::WriteAxisPdf(path, report); },
        [&] { return report::AxisJson(report); });
}

}  // namespace wavo
