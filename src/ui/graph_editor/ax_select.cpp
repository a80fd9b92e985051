#include "ui/graph_editor/ax_select.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <utility>

#include "support/number_text.h"
#include "ui/controls/color_field.h"
#include "ui/dialogs/message_boxes.h"
#include "ui/dialogs/trigger_condition.h"
#include "ui/graph_editor/curve_palette.h"
#include "ui/graph_editor/report_texts.h"

namespace wavo {

namespace {

using enum EditorControl;

bool ShowTriggerDialog(TriggerEntry& trigger, QWidget* parent) {
    return CTriggerCondition(trigger, parent).exec() == QDialog::Accepted;
}

}  // namespace

CAxSelect::CAxSelect(QObject* view, QWidget* parent)
    : EditorStrip(parent),
      m_view(view),
      m_trigger_dialog(ShowTriggerDialog),
      m_picked_color(FirstCurveColor(m_background)) {
    ConnectControls();
    ConnectTexts();
    SetEnabled(kSaveValues, false);  // values flow from the start
    ShowNoGraph();
}

CAxSelect::~CAxSelect() {
    // Controls that go may still tell that they lose the focus.
    for (QObject* const child : findChildren<QObject*>()) {
        child->disconnect(this);
    }
}

void CAxSelect::OnClick(EditorControl id, void (CAxSelect::*handler)()) {
    connect(static_cast<QAbstractButton*>(Control(id)), &QAbstractButton::clicked, this, handler);
}

void CAxSelect::OnEdit(EditorControl id, void (CAxSelect::*handler)()) {
    auto* const edit = static_cast<QLineEdit*>(Control(id));
    connect(edit, &QLineEdit::textEdited, this, [this, id, handler] {
        const Typing typing(*this, id);
        (this->*handler)();
    });
    connect(edit, &QLineEdit::editingFinished, this, [this, id] { ShowTaken(id); });
}

// A combo tells an entry once more when it is left, and Enter tells what was typed before.
void CAxSelect::OnCombo(EditorControl id, void (CAxSelect::*handler)()) {
    connect(Combo(id), &QComboBox::activated, this, [this, id, handler] {
        if (!IsTaken(id)) {
            (this->*handler)();
            NoteTaken(id);
        }
    });
    QLineEdit* const edit = Combo(id)->lineEdit();
    connect(edit, &QLineEdit::textEdited, this, [this, id, handler] {
        const Typing typing(*this, id);
        (this->*handler)();
        NoteTaken(id);
    });
    connect(edit, &QLineEdit::editingFinished, this, [this, id] { ShowTaken(id); });
}

void CAxSelect::ConnectControls() {
    OnClick(kClose, &CAxSelect::Close);
    OnClick(kDeleteGraph, &CAxSelect::DeleteGraph);
    OnClick(kSaveValues, &CAxSelect::SaveValues);
    OnClick(kZoomOut, &CAxSelect::ZoomOut);
    OnClick(kXIsTime, &CAxSelect::OnXIsTime);
    OnClick(kXIsAxis, &CAxSelect::OnXIsAxis);
    OnClick(kAddYAxis, &CAxSelect::OnAddYAxis);
    OnClick(kDeleteYAxis, &CAxSelect::OnDeleteYAxis);
    OnClick(kColor, &CAxSelect::OnColor);
    OnClick(kTrigger, &CAxSelect::OnTrigger);
    OnClick(kXTime, &CAxSelect::OnXTime);
    OnClick(kXAutomatic, &CAxSelect::OnXAutomatic);
    OnClick(kXManual, &CAxSelect::OnXManual);
    OnClick(kAllGraphs, &CAxSelect::OnAllGraphs);
    OnClick(kYAutomatic, &CAxSelect::OnYAutomatic);
    OnClick(kYManual, &CAxSelect::OnYManual);
    OnClick(kAutoCircle, &CAxSelect::OnAutoCircle);
    OnClick(kZeroLines, &CAxSelect::OnZeroLines);
    const auto on_choice = [this](EditorControl id, auto handler) {
        connect(static_cast<QAbstractButton*>(Control(id)), &QAbstractButton::clicked, this,
                handler);
    };
    on_choice(kClassic, [this] { SetMode(GraphMode::kClassic); });
    on_choice(kContinuity, [this] { SetMode(GraphMode::kContinuity); });
    on_choice(kLines, [this] { SetModeAx(AxisDrawMode::kLines); });
    on_choice(kPoints, [this] { SetModeAx(AxisDrawMode::kPoints); });
}

void CAxSelect::ConnectTexts() {
    OnCombo(kGraphNumber, &CAxSelect::SelectGraph);
    OnCombo(kXAxis, &CAxSelect::OnXAxis);
    OnCombo(kYAxis, &CAxSelect::OnYAxis);
    OnEdit(kDerivation, &CAxSelect::OnYAxis);
    OnEdit(kTimeRange, &CAxSelect::OnTimeRange);
    OnEdit(kFadeOutTime, &CAxSelect::OnFadeOutTime);
    const auto on_number = [this](EditorControl id, void (CAxSelect::*handler)(EditorControl)) {
        auto* const edit = static_cast<QLineEdit*>(Control(id));
        connect(edit, &QLineEdit::textEdited, this, [this, id, handler] {
            const Typing typing(*this, id);
            (this->*handler)(id);
        });
        connect(edit, &QLineEdit::editingFinished, this, [this, id] { ShowTaken(id); });
    };
    on_number(kXMinimum, &CAxSelect::OnXBound);
    on_number(kXMaximum, &CAxSelect::OnXBound);
    on_number(kYMinimum, &CAxSelect::OnYBound);
    on_number(kYMaximum, &CAxSelect::OnYBound);
    on_number(kInnerCircle, &CAxSelect::OnCircle);
    on_number(kOuterCircle, &CAxSelect::OnCircle);
}

bool CAxSelect::Init(GraphList& graphs, const std::vector<std::string>& axis_names) {
    m_graphs = &graphs;
    m_axis_names = axis_names;
    FillCombos();
    m_initialised = !graphs.IsEmpty();
    m_notify = !graphs.IsEmpty();
    if (graphs.IsEmpty()) {
        ShowNoGraph();
        PostAppMessage(m_view, AppMessage::kGraphChanged, 0, kNoGraph);
    } else {
        const WavoGraph& first = graphs.Graphs().front();
        Show(first, 0);
        Announce(first.GraphNumber);
    }
    return true;
}

void CAxSelect::FillCombos() {
    for (const EditorControl id : {kGraphNumber, kXAxis, kYAxis}) {
        Combo(id)->clear();
    }
    for (const WavoGraph& graph : m_graphs->Graphs()) {
        Combo(kGraphNumber)->addItem(QString::number(graph.GraphNumber));
    }
    for (const std::string& name : m_axis_names) {
        Combo(kXAxis)->addItem(QString::fromStdString(name));
        Combo(kYAxis)->addItem(QString::fromStdString(name));
    }
    for (const EditorControl id : {kGraphNumber, kXAxis, kYAxis}) {
        NoteTaken(id);
    }
}

void CAxSelect::ResetSelection() {
    SetZooms({});
    Q_EMIT SelectionReset();
}

void CAxSelect::SetCycleTime(double cycle_time) {
    Control(kTimeRange)
        ->setToolTip(QString::fromUtf8(FindEditorRow(kTimeRange).tip) +
                     QStringLiteral("\nThe master sends a value every %1 s.").arg(cycle_time));
}

void CAxSelect::SetAcquisitionRuns(bool runs) {
    SetEnabled(kSaveValues, !runs);
}

void CAxSelect::SetBackground(ColorRef background) {
    if (background == m_background) {
        return;
    }
    m_background = background;
    m_picked_color = FirstCurveColor(background);
    ShowColor();
}

void CAxSelect::SetZooms(std::map<std::uint32_t, double> spans) {
    const bool shows_another_span = spans.count(m_shown_graph) + m_zooms.count(m_shown_graph) > 0;
    m_zooms = std::move(spans);
    const WavoGraph* const graph = Find(m_shown_graph);
    if (shows_another_span && graph != nullptr) {
        ShowTimeRange(*graph);
    }
    EnableTimeRange();
}

void CAxSelect::SetTriggerDialog(TriggerDialog dialog) {
    m_trigger_dialog = dialog ? std::move(dialog) : ShowTriggerDialog;
}

bool CAxSelect::event(QEvent* event) {
    if (event->type() == AppMessageEvent::EventType()) {
        auto* const message = static_cast<AppMessageEvent*>(event);
        message->SetResult(OnMessage(message->number(), message->lParam()));
        return true;
    }
    const bool handled = EditorStrip::event(event);
    if (event->type() == QEvent::Show || event->type() == QEvent::WindowActivate) {
        m_shown = isVisible();
    }
    return handled;
}

std::int64_t CAxSelect::OnMessage(AppMessage number, std::int64_t l_param) {
    switch (number) {
        case AppMessage::kCloseEditor:
            Close();
            return 1;
        case AppMessage::kSelectGraph:
            if (m_graphs != nullptr && m_graphs->Graphs().size() >= 2) {
                SelectByMessage(static_cast<std::uint32_t>(l_param));
            }
            return 1;
        case AppMessage::kSelectGraphAndTime: {
            // NOLINTNEXTLINE(performance-no-int-to-ptr): what a message carries is a number
            const auto* const chosen = reinterpret_cast<const GraphAndTime*>(l_param);
            if (chosen != nullptr && Find(chosen->graph_number) != nullptr) {
                SelectByMessage(chosen->graph_number);
                SetNumber(kTimeRange, chosen->time, 3);
            }
            return 1;
        }
        case AppMessage::kEditorClosed:
        case AppMessage::kGraphChanged:
        case AppMessage::kSaveValues:
        case AppMessage::kZoomOut:
        case AppMessage::kRecordingEnded:
            break;  // not meant for the editor
    }
    return 0;
}

void CAxSelect::SelectByMessage(std::uint32_t graph_number) {
    if (Find(graph_number) != nullptr) {
        SetText(kGraphNumber, QString::number(graph_number));
        SelectGraph();
    }
}

void CAxSelect::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        Close();
        return;
    }
    EditorStrip::keyPressEvent(event);
}

void CAxSelect::Close() {
    SendAppMessage(m_view, AppMessage::kEditorClosed, 0, 0);
    m_shown = false;
}

std::uint32_t CAxSelect::SelectedNumber() const {
    return ReadUnsigned(Text(kGraphNumber));
}

const WavoGraph* CAxSelect::Find(std::uint32_t graph_number) const {
    return m_graphs == nullptr || graph_number == 0 ? nullptr : m_graphs->Find(graph_number);
}

void CAxSelect::Announce(std::int64_t graph_number) {
    if (m_notify) {
        PostAppMessage(m_view, AppMessage::kGraphChanged, 0, graph_number);
    }
}

bool CAxSelect::Change(const std::function<bool(WavoGraph&)>& change, bool announce) {
    const WavoGraph* const graph = Selected();
    if (graph == nullptr) {
        ShowAgain();
        return false;
    }
    WavoGraph copy = *graph;
    if (!change(copy)) {
        return false;
    }
    const std::uint32_t number = copy.GraphNumber;
    m_graphs->Put(std::move(copy), GraphList::Telling::kSilent);
    if (announce) {
        Announce(number);
    }
    return true;
}

void CAxSelect::SelectGraph() {
    const std::uint32_t number = SelectedNumber();
    if (number == 0 || m_graphs == nullptr) {
        return;
    }
    if (const WavoGraph* const graph = Find(number)) {
        Show(*graph, 0);
    } else if (number != kNoGraph) {
        CreateGraph(number);
    }
}

void CAxSelect::CreateGraph(std::uint32_t number) {
    WavoGraph graph;
    graph.InitGraph(number, nullptr, m_background, m_limits);
    graph.UpdateGuidingCircles();
    m_graphs->Add(graph, GraphList::Telling::kSilent);
    m_initialised = true;
    m_notify = true;
    Combo(kGraphNumber)->addItem(QString::number(number));
    Show(graph, 0);
    Announce(number);
}

void CAxSelect::DeleteGraph() {
    const WavoGraph* const graph = Selected();
    if (graph == nullptr) {
        return;
    }
    QComboBox& combo = *Combo(kGraphNumber);
    combo.removeItem(combo.findText(QString::number(graph->GraphNumber)));
    m_graphs->Remove(graph->GraphNumber, GraphList::Telling::kSilent);
    if (m_graphs->IsEmpty()) {
        combo.setEditText({});
        ShowNoGraph();
        Announce(kNoGraph);
        return;
    }
    combo.setCurrentIndex(0);
    combo.setEditText(combo.itemText(0));
    SelectGraph();
    Announce(SelectedNumber());
}

void CAxSelect::SaveValues() {
    const WavoGraph* const graph = Selected();
    if (graph == nullptr) {
        ShowBox(this, {editor_texts::kNoGraphBox, editor_texts::kNoGraphCaption,
                       BoxIcon::kExclamation, BoxButtons::kOk});
        return;
    }
    // A copy: saving may show dialogs, and the list may change meanwhile.
    const WavoGraph copy = *graph;
    SendAppMessage(m_view, AppMessage::kSaveValues, 0, reinterpret_cast<std::int64_t>(&copy));
}

void CAxSelect::ZoomOut() {
    if (const WavoGraph* const graph = Selected()) {
        SendAppMessage(m_view, AppMessage::kZoomOut, 0, graph->GraphNumber);
    }
}

}  // namespace wavo
