#include "ui/panes/reference_pane.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
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
#include <functional>
#include <limits>

#include "measure/words.h"
#include "support/fast_file.h"
#include "ui/controls/control_table.h"
#include "ui/controls/controls.h"
#include "ui/panes/chart_view.h"
#include "ui/panes/pane_files.h"
#include "ui/panes/report_file.h"

namespace wavo {

namespace {

constexpr int ReferenceNumber(ReferencePaneId id) {
    return static_cast<int>(id);
}

constexpr std::array<ControlRow, 13> kReferencePaneRows{{
    {ReferenceNumber(ReferencePaneId::kState), ControlKind::kElidedStatic, "state", ""},
    {ReferenceNumber(ReferencePaneId::kRuns), ControlKind::kElidedStatic, "good runs", ""},
    {ReferenceNumber(ReferencePaneId::kChoose), ControlKind::kButton, "&Choose...",
     "Takes a recording of a good run to compare with"},
    {ReferenceNumber(ReferencePaneId::kAdd), ControlKind::kButton, "A&dd...",
     "Takes one more good run, for the spread of several"},
    {ReferenceNumber(ReferencePaneId::kTake), ControlKind::kButton, "&Take What Is Seen",
     "Takes what the graphs show of the recording that is open; cursor A marks its place"},
    {ReferenceNumber(ReferencePaneId::kForget), ControlKind::kButton, "For&get",
     "Compares with nothing any more"},
    {ReferenceNumber(ReferencePaneId::kAlignment), ControlKind::kCombo, "a&lign at",
     "How a run is laid over the good one: where the curves are most alike, where the start "
     "triggers of a graph fire, or with the marked place of the good run at cursor A"},
    {ReferenceNumber(ReferencePaneId::kAxes), ControlKind::kCombo, "a&xes",
     "Which axes are compared"},
    {ReferenceNumber(ReferencePaneId::kTolerance), ControlKind::kEdit, "t&olerance",
     "How far values may lie beside the good run, in the unit of the axis; of a spread the least"},
    {ReferenceNumber(ReferencePaneId::kSpread), ControlKind::kEdit, "&times spread",
     "With several good runs: so many times their standard deviation; empty: the tolerance alone"},
    {ReferenceNumber(ReferencePaneId::kTable), ControlKind::kTable, "axes",
     "What became of each axis; a click shows the place of the worst deviation"},
    {ReferenceNumber(ReferencePaneId::kNotes), ControlKind::kStatic, "notes", ""},
    {ReferenceNumber(ReferencePaneId::kSave), ControlKind::kButton, "&Save Result...",
     "Saves the result as XML of test cases, or as JSON"},
}};

constexpr char kReferenceSettings[] = "Reference/";
constexpr int kReferenceMargin = 4;
constexpr char kUsualTolerance[] = "0.01";
/// So many axes are drawn below each other, those that stand out furthest.
constexpr std::size_t kMostDifferenceCharts = 4;

QString FileName(const std::string& path) {
    return QFileInfo(QString::fromStdString(path)).fileName();
}

/// The places of the axes that are drawn, in their order.
std::vector<std::size_t> WorstAxes(const measure::RunComparison& comparison) {
    std::vector<std::size_t> places(comparison.axes.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        places[i] = i;
    }
    const auto beyond = [&](std::size_t place) {
        const measure::AxisComparison& axis = comparison.axes[place];
        return axis.compared ? std::abs(axis.compared->worst) - axis.compared->worst_width
                             : -std::numeric_limits<double>::infinity();
    };
    std::ranges::stable_sort(places, std::greater(), beyond);
    places.resize(std::min(places.size(), kMostDifferenceCharts));
    std::ranges::sort(places);
    return places;
}

}  // namespace

template <typename Widget>
Widget& ReferencePane::Control(ReferencePaneId id) const {
    return *FindControl<Widget>(*this, ReferenceNumber(id));
}

ReferencePane::ReferencePane(ReferenceWatch& watch, const Prompts& prompts, QSettings* settings,
                             const QString& made_by, ShowLines show_lines, QWidget* parent)
    : QWidget(parent),
      m_watch(watch),
      m_prompts(prompts),
      m_settings(settings),
      m_made_by(made_by),
      m_show_lines(std::move(show_lines)) {
    setObjectName(QStringLiteral("reference_pane"));
    SetAccessibleTexts(*this, QStringLiteral("Reference"),
                       QStringLiteral("Whether the machine moves as in a good run"));
    MakeControls();
    LayOut();
    Load();
    connect(&m_watch, &ReferenceWatch::Changed, this, &ReferencePane::Refresh);
}

void ReferencePane::MakeControls() {
    for (const ControlRow& row : kReferencePaneRows) {
        InitControl(*MakeControl(row, this), row);
    }
    Control(ReferencePaneId::kState)
        .setAccessibleDescription(QStringLiteral("What is compared, and what came out"));
    Control(ReferencePaneId::kRuns)
        .setAccessibleDescription(QStringLiteral("The recordings that are compared with"));
    InitNotes(Control<QLabel>(ReferencePaneId::kNotes));
    auto& table = Control<QTableWidget>(ReferencePaneId::kTable);
    const QStringList titles{QStringLiteral("Axis"),    QStringLiteral("Verdict"),
                             QStringLiteral("Worst"),   QStringLiteral("Tolerance"),
                             QStringLiteral("At, s"),   QStringLiteral("Outside"),
                             QStringLiteral("Compared")};
    table.setColumnCount(static_cast<int>(titles.size()));
    table.setHorizontalHeaderLabels(titles);
    table.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setSelectionMode(QAbstractItemView::SingleSelection);
    table.setTabKeyNavigation(false);
    table.setWordWrap(false);
    table.verticalHeader()->hide();
    table.horizontalHeader()->setHighlightSections(false);
    table.verticalHeader()->setDefaultSectionSize(table.fontMetrics().height() + kReferenceMargin);
    connect(&table, &QTableWidget::cellClicked, this, [this](int row) { OnRowClicked(row); });
    connect(&table, &QTableWidget::itemActivated, this,
            [this](const QTableWidgetItem* item) { OnRowClicked(item->row()); });
    Control<QComboBox>(ReferencePaneId::kAlignment)
        .addItems(
            {QStringLiteral("best match"), QStringLiteral("trigger"), QStringLiteral("cursor A")});
    for (const ReferencePaneId id : {ReferencePaneId::kAlignment, ReferencePaneId::kAxes}) {
        connect(&Control<QComboBox>(id), &QComboBox::currentIndexChanged, this,
                [this] { TakeQuestion(); });
    }
    for (const ReferencePaneId id : {ReferencePaneId::kTolerance, ReferencePaneId::kSpread}) {
        connect(&Control<QLineEdit>(id), &QLineEdit::textChanged, this, [this] { TakeQuestion(); });
    }
    const auto on_click = [this](ReferencePaneId id, const auto& handler) {
        connect(&Control<QPushButton>(id), &QPushButton::clicked, this, handler);
    };
    on_click(ReferencePaneId::kChoose, [this] { ChooseRun(false); });
    on_click(ReferencePaneId::kAdd, [this] { ChooseRun(true); });
    on_click(ReferencePaneId::kTake, [this] { TakeSeen(); });
    on_click(ReferencePaneId::kForget, [this] { m_watch.Forget(); });
    on_click(ReferencePaneId::kSave, [this] { SaveResult(); });
}

void ReferencePane::LayOut() {
    m_difference = new ChartView(this);
    SetAccessibleTexts(*m_difference, QStringLiteral("Difference"),
                       QStringLiteral("Values less those of the good run, over time"));
    m_pages = new QTabWidget(this);
    m_pages->setObjectName(QStringLiteral("reference_pages"));
    SetAccessibleTexts(*m_pages, QStringLiteral("Pages of the comparison"),
                       QStringLiteral("What became of the axes, and the differences"));
    m_pages->setUsesScrollButtons(false);
    m_pages->setElideMode(Qt::ElideRight);
    for (QToolButton* const button : m_pages->tabBar()->findChildren<QToolButton*>()) {
        SetAccessibleTexts(*button, QStringLiteral("Scroll"), QStringLiteral("More pages"));
    }
    m_pages->addTab(&Control(ReferencePaneId::kTable), QStringLiteral("Axes"));
    m_pages->addTab(m_difference, QStringLiteral("Difference"));
    auto* const runs = new QHBoxLayout;
    runs->addWidget(&Control(ReferencePaneId::kRuns), 1);
    for (const ReferencePaneId id : {ReferencePaneId::kChoose, ReferencePaneId::kAdd,
                                     ReferencePaneId::kTake, ReferencePaneId::kForget}) {
        runs->addWidget(&Control(id));
    }
    auto* const fields = new QHBoxLayout;
    for (const ReferencePaneId id : {ReferencePaneId::kAlignment, ReferencePaneId::kAxes,
                                     ReferencePaneId::kTolerance, ReferencePaneId::kSpread}) {
        auto& field = Control(id);
        field.setMinimumWidth(field.fontMetrics().averageCharWidth() * 7);
        fields->addWidget(MakeLabel(FindRow(kReferencePaneRows, ReferenceNumber(id)), field));
        fields->addWidget(&field, 1);
    }
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(&Control(ReferencePaneId::kSave));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(kReferenceMargin, kReferenceMargin, kReferenceMargin,
                               kReferenceMargin);
    column->addWidget(&Control(ReferencePaneId::kState));
    column->addLayout(runs);
    column->addLayout(fields);
    column->addWidget(m_pages, 1);
    column->addWidget(&Control(ReferencePaneId::kNotes));
    column->addLayout(buttons);
}

void ReferencePane::Load() {
    m_is_loading = true;
    const auto text = [this](const char* name, const char* usual) {
        return m_settings == nullptr
                   ? QString::fromLatin1(usual)
                   : m_settings
                         ->value(QLatin1String(kReferenceSettings) + QLatin1String(name),
                                 QLatin1String(usual))
                         .toString();
    };
    Control<QLineEdit>(ReferencePaneId::kTolerance).setText(text("Tolerance", kUsualTolerance));
    Control<QLineEdit>(ReferencePaneId::kSpread).setText(text("Spread", ""));
    auto& alignment = Control<QComboBox>(ReferencePaneId::kAlignment);
    alignment.setCurrentIndex(std::max(0, alignment.findText(text("Alignment", ""))));
    m_is_loading = false;
    ShowAxes();
    TakeQuestion();
}

void ReferencePane::Store() {
    if (m_settings == nullptr) {
        return;
    }
    const auto store = [this](const char* name, const QString& text) {
        m_settings->setValue(QLatin1String(kReferenceSettings) + QLatin1String(name), text);
    };
    store("Tolerance", Control<QLineEdit>(ReferencePaneId::kTolerance).text());
    store("Spread", Control<QLineEdit>(ReferencePaneId::kSpread).text());
    store("Alignment", Control<QComboBox>(ReferencePaneId::kAlignment).currentText());
}

void ReferencePane::TakeQuestion() {
    if (m_is_loading) {
        return;
    }
    constexpr int kAllAxes = 1;
    ReferenceQuestion question;
    const auto& axes = Control<QComboBox>(ReferencePaneId::kAxes);
    question.all = axes.currentIndex() == kAllAxes;
    if (axes.currentIndex() > kAllAxes) {
        question.axis = axes.currentText().toStdString();
    }
    question.alignment = static_cast<ReferenceAlignment>(
        Control<QComboBox>(ReferencePaneId::kAlignment).currentIndex());
    question.tolerance.absolute =
        PositiveNumberIn(Control<QLineEdit>(ReferencePaneId::kTolerance)).value_or(0.0);
    question.tolerance.spread = PositiveNumberIn(Control<QLineEdit>(ReferencePaneId::kSpread));
    Store();
    m_watch.Ask(question);
}

void ReferencePane::Use(const MaybeFault& fault) {
    if (fault) {
        m_prompts.ShowError(window(), fault->text);
    }
}

void ReferencePane::ChooseRun(bool add) {
    const auto path = m_prompts.open_file(
        window(),
        {QStringLiteral("Good Run"),
         m_settings == nullptr ? QString()
                               : m_settings->value(QStringLiteral("Reference/Folder")).toString(),
         QStringLiteral("mcap"), QStringLiteral("Recordings|*.mcap|")});
    if (!path) {
        return;
    }
    if (m_settings != nullptr) {
        m_settings->setValue(QStringLiteral("Reference/Folder"), QFileInfo(*path).absolutePath());
    }
    ReferencePart part;
    part.recording.path = path->toStdString();
    Use(add ? m_watch.Add(part) : m_watch.Choose({part}));
}

void ReferencePane::TakeSeen() {
    if (const auto part = m_watch.Seen()) {
        Use(m_watch.Choose({*part}));
    }
}

void ReferencePane::ShowAxes() {
    if (m_watch.Now() == ReferenceWatch::State::kReading) {
        return;  // what the user has chosen may be in the next one, too
    }
    auto& axes = Control<QComboBox>(ReferencePaneId::kAxes);
    QStringList names{QStringLiteral("in graphs"), QStringLiteral("all")};
    for (const std::string& axis : m_watch.CommonAxes()) {
        names << QString::fromStdString(axis);
    }
    const bool is_first = axes.count() == 0;
    if (Offer(axes, names) && !is_first) {
        TakeQuestion();
    }
}

report::ComparisonReport ReferencePane::Report() const {
    const ReferenceOutcome& outcome = *m_watch.Outcome();
    return {ReportHeaderOf(outcome.data, {}, {}, m_made_by),
            outcome.references,
            outcome.run.front().size(),
            outcome.cycle_time,
            {},
            outcome.comparison};
}

QString ReferencePane::StateText() const {
    switch (m_watch.Now()) {
        case ReferenceWatch::State::kNoReference:
            return QStringLiteral("Choose a recording of a good run");
        case ReferenceWatch::State::kReading:
            return QStringLiteral("Reading the good run...");
        case ReferenceWatch::State::kNoAxes:
            return QStringLiteral("The good run has none of the axes that are compared");
        case ReferenceWatch::State::kNoTolerance:
            return QStringLiteral("Enter a tolerance above 0");
        case ReferenceWatch::State::kOtherTime:
            return QStringLiteral("The lines of the good run are another time apart");
        case ReferenceWatch::State::kFlowing:
            return QStringLiteral("Gathering: run the program, then stop");
        case ReferenceWatch::State::kNoValues:
            return QStringLiteral("No values yet");
        case ReferenceWatch::State::kTooMany:
            return QStringLiteral("Too many lines are shown; zoom to the run");
        case ReferenceWatch::State::kNotTold:
            return QStringLiteral("Not compared: ") + QString::fromStdString(m_watch.Reason());
        case ReferenceWatch::State::kWorking:
            return QStringLiteral("Comparing...");
        case ReferenceWatch::State::kDone:
            break;
    }
    const ReferenceOutcome& outcome = *m_watch.Outcome();
    const measure::RunComparison& comparison = outcome.comparison;
    std::string text = report::VerdictOf(comparison) + ": ";
    const auto begin = static_cast<double>(comparison.shift) * outcome.cycle_time;
    text += "the good run begins at " + measure::Decimals(begin, 3) + " s";
    if (comparison.likeness) {
        text += ", likeness " + measure::Decimals(*comparison.likeness, 4);
    }
    text += ", " + measure::CoverageOf(comparison);
    return QString::fromStdString(text);
}

void ReferencePane::Refresh() {
    ShowAxes();
    ShowRuns();
    const QString text = StateText();
    auto& state = Control<QLabel>(ReferencePaneId::kState);
    state.setText(text);
    state.setAccessibleName(text);
    const bool has_outcome = m_watch.Outcome() != nullptr;
    Control(ReferencePaneId::kSave).setEnabled(has_outcome);
    if (m_watch.Now() == ReferenceWatch::State::kWorking && has_outcome) {
        return;  // what is shown stays until there is something newer
    }
    ShowTable();
    ShowCharts();
    ShowNotes();
}

void ReferencePane::ShowRuns() {
    QStringList names;
    for (const auto& run : m_watch.Runs()) {
        names << FileName(run->Path());
    }
    const QString text = names.isEmpty() ? QStringLiteral("no good run")
                                         : (names.size() == 1 ? QStringLiteral("good run: ")
                                                              : QStringLiteral("good runs: ")) +
                                               names.join(QStringLiteral(", "));
    auto& runs = Control<QLabel>(ReferencePaneId::kRuns);
    runs.setText(text);
    runs.setAccessibleName(text);
    runs.setToolTip(text);
    Control(ReferencePaneId::kAdd).setEnabled(!names.isEmpty());
    Control(ReferencePaneId::kForget).setEnabled(!names.isEmpty());
    Control(ReferencePaneId::kTake).setEnabled(m_watch.Seen().has_value());
    Control(ReferencePaneId::kSpread).setEnabled(names.size() > 1);
}

void ReferencePane::ShowTable() {
    auto& table = Control<QTableWidget>(ReferencePaneId::kTable);
    const ReferenceOutcome* const outcome = m_watch.Outcome();
    table.setRowCount(outcome == nullptr ? 0 : static_cast<int>(outcome->comparison.axes.size()));
    QFont bold = table.font();
    bold.setBold(true);
    for (int row = 0; row < table.rowCount(); ++row) {
        const measure::AxisComparison& axis =
            outcome->comparison.axes[static_cast<std::size_t>(row)];
        std::vector<std::string> texts{axis.axis, "not told"};
        const bool is_wrong = !axis.compared || !axis.compared->passed;
        if (axis.compared) {
            const measure::Compared& c = *axis.compared;
            const auto place = static_cast<double>(c.worst_at + outcome->comparison.shift);
            texts = {axis.axis,
                     c.passed ? "pass" : "FAIL",
                     measure::Decimals(c.worst, 6),
                     measure::Decimals(c.worst_width, 6),
                     measure::Decimals(place * outcome->cycle_time, 3),
                     std::to_string(c.outside),
                     std::to_string(c.compared)};
        }
        for (int column = 0; column < table.columnCount(); ++column) {
            const auto place = static_cast<std::size_t>(column);
            auto* const item = new QTableWidgetItem(
                place < texts.size() ? QString::fromStdString(texts[place]) : QString());
            item->setTextAlignment((column < 2 ? Qt::AlignLeft : Qt::AlignRight) |
                                   Qt::AlignVCenter);
            item->setToolTip(QString::fromStdString(measure::TextOf(axis, outcome->cycle_time)));
            item->setFont(is_wrong ? bold : table.font());
            table.setItem(row, column, item);
        }
    }
    table.resizeColumnsToContents();
}

void ReferencePane::ShowCharts() {
    std::vector<report::Chart> charts;
    if (const ReferenceOutcome* const outcome = m_watch.Outcome()) {
        for (const std::size_t place : WorstAxes(outcome->comparison)) {
            charts.push_back(report::DifferenceChart(outcome->comparison.axes[place],
                                                     outcome->run[place], outcome->comparison.shift,
                                                     outcome->cycle_time));
        }
    }
    m_difference->Show(std::move(charts), StateText());
}

void ReferencePane::ShowNotes() {
    QStringList notes;
    if (const ReferenceOutcome* const outcome = m_watch.Outcome()) {
        const measure::RunComparison& comparison = outcome->comparison;
        for (const measure::AxisComparison& axis : comparison.axes) {
            if (!axis.compared) {
                notes << QString::fromStdString(axis.axis + ": " + axis.compared.reason);
            }
        }
        if (comparison.axes.size() > kMostDifferenceCharts) {
            notes << QString::fromStdString(
                measure::Words("the page Difference shows the %zu axes that stand out furthest",
                               kMostDifferenceCharts));
        }
    }
    ShowNoteTexts(Control<QLabel>(ReferencePaneId::kNotes), notes);
}

void ReferencePane::OnRowClicked(int row) {
    constexpr std::int64_t kBesideWorst = 500;  // lines
    const ReferenceOutcome* const outcome = m_watch.Outcome();
    if (outcome == nullptr || row < 0 || row >= static_cast<int>(outcome->comparison.axes.size())) {
        return;
    }
    const auto& compared = outcome->comparison.axes[static_cast<std::size_t>(row)].compared;
    if (compared) {
        const std::int64_t line = outcome->LineOf(compared->worst_at);
        m_watch.KeepCompared();
        m_show_lines({line - kBesideWorst, line + kBesideWorst + 1});
    }
}

void ReferencePane::SaveResult() {
    if (m_watch.Outcome() == nullptr) {
        return;
    }
    // As it is now: something else may be compared while the user is asked.
    const report::ComparisonReport report = Report();
    const auto path = AskWhereToSave(this, m_prompts, m_settings, QStringLiteral("comparison.xml"),
                                     QStringLiteral("xml"),
                                     QStringLiteral("Test Results|*.xml|JSON Files|*.json|"));
    if (!path) {
        return;
    }
    const bool is_json = path->endsWith(QStringLiteral(".json"), Qt::CaseInsensitive);
    const std::string native = QDir::toNativeSeparators(*path).toStdString();
    const std::string text =
        is_json ? report::ComparisonJson(report) : report::ComparisonJunit(report);
    if (MFastFile_WriteLinesAtOnce(native, text, kSaveSafe) == kWriteFailed) {
        m_prompts.ShowError(this, "Can not write " + native);
    }
}

}  // namespace wavo
