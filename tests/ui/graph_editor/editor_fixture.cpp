#include "editor_fixture.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <cstdio>
#include <sstream>

namespace wavo::testing {

namespace {

std::string Describe(const ScaleDefinition& scale) {
    std::ostringstream text;
    text << static_cast<int>(scale.ScaleType) << ' ' << scale.TimeRange << "s "
         << static_cast<int>(scale.ScaleAx) << ' ' << scale.Minimum << ".." << scale.Maximum;
    return text.str();
}

QLineEdit& EditOf(QWidget& control) {
    auto* const combo = qobject_cast<QComboBox*>(&control);
    return combo == nullptr ? dynamic_cast<QLineEdit&>(control) : *combo->lineEdit();
}

}  // namespace

std::string Describe(const WavoGraph& graph) {
    std::ostringstream text;
    text.precision(12);
    text << "graph " << graph.GraphNumber << " mode " << static_cast<int>(graph.Mode) << " ax "
         << static_cast<int>(graph.ModeAx) << " circle " << graph.AutoCircle << " zero "
         << graph.ZeroLines << " fade " << graph.FadeOutTime << "\nx "
         << static_cast<int>(graph.XCoorType) << " [" << graph.XCoorAxName << "] "
         << Describe(graph.XScale) << '\n';
    for (const std::string& name : graph.YCoorAxName) {
        text << "y " << name << '\n';
    }
    for (const ColorRef color : graph.YCoorAxColor) {
        text << "color " << std::hex << color << std::dec << '\n';
    }
    for (const std::int32_t derivation : graph.YCoorAxDerivation) {
        text << "derivation " << derivation << '\n';
    }
    for (const TriggerEntry& trigger : graph.Triggers) {
        text << "trigger " << static_cast<int>(trigger.TriggerType) << ' ' << trigger.TriggerValue
             << " [" << trigger.AxName << "]\n";
    }
    for (const ScaleDefinition& scale : graph.YScales) {
        text << "scale " << Describe(scale) << '\n';
    }
    text << "circles " << graph.InnerGuidingCircleDX << ' ' << graph.OuterGuidingCircleDX << '\n';
    return text.str();
}

WavoGraph TimeGraph(std::uint32_t number) {
    WavoGraph graph;
    graph.InitGraph(number, "X", 0, nullptr);
    graph.YCoorAxName = {"X", "X", "Y"};
    graph.YCoorAxColor = {0x0000FF, 0x00FF00, 0xFF0000};
    graph.YCoorAxDerivation = {0, 1, 0};
    graph.Triggers.assign(3, {TriggerTypeCode::kNone, 0.0, {}});
    graph.YScales = {{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -50.0, 50.0},
                     {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -200.0, 200.0},
                     {ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kAutomatic, 0.0, 0.0}};
    return graph;
}

WavoGraph AxisGraph(std::uint32_t number) {
    WavoGraph graph;
    graph.InitGraph(number, "X", 0, nullptr);
    graph.XCoorType = CoorType::kAxis;
    graph.XCoorAxName = "Y";
    graph.XScale = {ScaleTypeCode::kAxis, 10.0, ScaleAxCode::kManual, -10.0, 30.0};
    graph.YScales = {{ScaleTypeCode::kAxis, 0.0, ScaleAxCode::kManual, -5.0, 5.0}};
    return graph;
}

bool RecordingView::event(QEvent* event) {
    if (event->type() != AppMessageEvent::EventType()) {
        return QObject::event(event);
    }
    const auto* const message = static_cast<AppMessageEvent*>(event);
    EXPECT_EQ(message->wParam(), 0U);
    std::ostringstream text;
    text << std::hex << static_cast<unsigned>(message->number());
    if (message->number() == AppMessage::kSaveValues) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): what a message carries is a number
        const auto* const graph = reinterpret_cast<const WavoGraph*>(message->lParam());
        text << ' ' << std::dec << graph->GraphNumber;
    } else if (message->number() == AppMessage::kEditorClosed) {
        EXPECT_EQ(message->lParam(), 0);
    } else {
        text << ' ' << std::dec << message->lParam();
    }
    m_messages.push_back(text.str());
    return true;
}

std::vector<std::string> RecordingView::Take() {
    QApplication::sendPostedEvents(this);
    return std::exchange(m_messages, {});
}

std::optional<AxisCapabilities> KnownLimits::FindAxis(const std::string& name) {
    const auto found = axes.find(name);
    return found == axes.end() ? std::nullopt : std::optional(found->second);
}

EditorFixture::EditorFixture() {
    m_prompts.box = [this](QWidget*, const Box& box) {
        m_boxes.push_back(box);
        return BoxAnswer::kOk;
    };
    m_editor->SetAxisLimits(&m_limits);
    m_editor->SetPlotSizes([this](std::uint32_t number) {
        const auto found = m_plots.find(number);
        return found == m_plots.end() ? PlotSize() : found->second;
    });
    m_editor->show();
    m_editor->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(m_editor.get()));
}

void EditorFixture::Begin(std::vector<WavoGraph> graphs) {
    m_plots.clear();
    for (const WavoGraph& graph : graphs) {
        if (graph.XCoorType == CoorType::kAxis) {
            m_plots[graph.GraphNumber] = {400, 100};
        }
    }
    m_list.Replace(std::move(graphs));
    ASSERT_TRUE(m_editor->Init(m_list, {"X", "Y", "Z"}));
    m_view.Take();
}

void EditorFixture::Click(EditorControl id) {
    QWidget& control = Get(id);
    // Near the left border: where the mark of a check box or radio is.
    QTest::mouseClick(&control, Qt::LeftButton, {}, QPoint(8, control.height() / 2));
}

void EditorFixture::Type(EditorControl id, const std::string& text) {
    TypeAndStay(id, text);
    Leave(id);
}

void EditorFixture::Leave(EditorControl id) {
    ASSERT_TRUE(Get(id).hasFocus());
    Get(id).clearFocus();
}

void EditorFixture::TypeAndStay(EditorControl id, const std::string& text) {
    QLineEdit& edit = EditOf(Get(id));
    ASSERT_TRUE(edit.isEnabled());
    Get(id).setFocus();
    edit.selectAll();
    if (text.empty()) {
        QTest::keyClick(&edit, Qt::Key_Backspace);
        return;
    }
    QApplication::clipboard()->setText(QString::fromStdString(text));
    QTest::keyClick(&edit, Qt::Key_V, Qt::ControlModifier);
}

void EditorFixture::Choose(EditorControl id, const std::string& text) {
    auto& combo = Get<QComboBox>(id);
    const int index = combo.findText(QString::fromStdString(text));
    ASSERT_GE(index, 0);
    combo.setCurrentIndex(index == 0 ? combo.count() - 1 : index - 1);
    if (combo.count() > 1) {
        QTest::keyClick(&combo, index == 0 ? Qt::Key_Home : Qt::Key_Down);
    } else {
        Q_EMIT combo.activated(0);
    }
}

void EditorFixture::ChooseYAxis(const std::string& name, int derivation) {
    Type(EditorControl::kYAxis, name);
    Type(EditorControl::kDerivation, std::to_string(derivation));
}

std::vector<std::string> EditorFixture::Entries(EditorControl id) {
    std::vector<std::string> entries;
    const auto& combo = Get<QComboBox>(id);
    entries.reserve(static_cast<std::size_t>(combo.count()));
    for (int i = 0; i < combo.count(); ++i) {
        entries.push_back(combo.itemText(i).toStdString());
    }
    return entries;
}

}  // namespace wavo::testing
