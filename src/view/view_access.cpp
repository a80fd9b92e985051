#include "view/view_access.h"

#include <QAccessibleWidget>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "graph/draw/graph_draw.h"
#include "graph/model/wavo_graph.h"
#include "ui/graph_editor/graph_edits.h"
#include "view/told_graph.h"
#include "view/wavo_view.h"

namespace wavo {

namespace {

/// Set when a view is made: before, none of its parts may be asked.
constexpr char kIsMade[] = "graphs_can_be_asked";

bool IsMade(const CWavoView& view) {
    return view.property(kIsMade).toBool();
}

GraphListener& Listener() {
    static GraphListener listener;
    return listener;
}

/// What a graph is called: "graph 1".
QString NameOf(const WavoGraph& graph) {
    return QStringLiteral("graph %1").arg(graph.GraphNumber);
}

std::string Joined(const std::string& first, const std::string& second) {
    return first.empty() || second.empty() ? first + second : first + "; " + second;
}

/// The trigger of a graph and the cursors in it: what is told anew when it changes.
std::string StateOf(CWavoView& view, const GraphDraw& graph) {
    const std::string cursors =
        view.Cursors().IsShown()
            ? CursorsInWords(graph, view.Measured().Renew(), view.Work().Computed().Units())
            : std::string();
    return Joined(StateInWords(graph), cursors);
}

QString DescriptionOf(CWavoView& view, const WavoGraph& graph) {
    const GraphDraw* const drawer = view.Board().Find(graph.GraphNumber);
    return QString::fromStdString(
        drawer == nullptr ? YAxesText(graph)
                          : Joined(ScalesInWords(*drawer, view.Work().Computed().Units()),
                                   StateOf(view, *drawer)));
}

/// A graph of a view, by its number: it may be drawn anew meanwhile, or be gone.
class GraphAccess final : public QAccessibleInterface {
 public:
    GraphAccess(CWavoView& view, std::uint32_t number) : m_view(view), m_number(number) {}

    [[nodiscard]] bool isValid() const override { return Graph() != nullptr; }
    [[nodiscard]] QObject* object() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* child(int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    [[nodiscard]] QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(&m_view);
    }
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::Chart; }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        state.readOnly = true;
        state.selectable = true;
        state.selected = IsSelected();
        state.focusable = true;
        state.focused = state.selected && m_view.hasFocus();
        state.invisible = !m_view.isVisible();
        return state;
    }
    [[nodiscard]] QRect rect() const override {
        const GraphDraw* const drawer = m_view.Board().Find(m_number);
        return drawer == nullptr ? QRect()
                                 : QRect(m_view.mapToGlobal(drawer->Rectangle().topLeft()),
                                         drawer->Rectangle().size());
    }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        const WavoGraph* const graph = Graph();
        if (graph == nullptr) {
            return {};
        }
        switch (kind) {
            case QAccessible::Name:
                return NameOf(*graph);
            case QAccessible::Description:
                return DescriptionOf(m_view, *graph);
            case QAccessible::Value: {
                const GraphDraw* const drawer = m_view.Board().Find(m_number);
                return drawer == nullptr ? QString()
                                         : QString::fromStdString(StateOf(m_view, *drawer));
            }
            default:
                return {};
        }
    }
    void setText(QAccessible::Text, const QString&) override {}

 private:
    [[nodiscard]] const WavoGraph* Graph() const { return m_view.Work().Graphs().Find(m_number); }
    [[nodiscard]] bool IsSelected() const { return m_view.Zooms().Selected() == m_number; }

    CWavoView& m_view;
    const std::uint32_t m_number;
};

/// A view: its widgets, and behind them its graphs.
class ViewAccess final : public QAccessibleWidget {
 public:
    explicit ViewAccess(CWavoView& view)
        : QAccessibleWidget(&view, QAccessible::Pane),
          m_view(view),
          // None of these comes with a batch, unless a trigger has fired.
          m_moved(QObject::connect(&view.News(), &ViewNews::MeasureChanged, &view,
                                   [this] { TellChange(); })),
          m_fired(QObject::connect(&view.News(), &ViewNews::CommandsChanged, &view,
                                   [this] { TellChange(); })) {}
    ~ViewAccess() override {
        QObject::disconnect(m_moved);
        QObject::disconnect(m_fired);
        for (const auto& [number, id] : m_graphs) {
            QAccessible::deleteAccessibleInterface(id);
        }
    }
    ViewAccess(const ViewAccess&) = delete;
    ViewAccess& operator=(const ViewAccess&) = delete;

    [[nodiscard]] int childCount() const override {
        return QAccessibleWidget::childCount() + static_cast<int>(Count());
    }
    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        const int graph = index - QAccessibleWidget::childCount();
        if (graph < 0) {
            return QAccessibleWidget::child(index);
        }
        return static_cast<std::size_t>(graph) < Count()
                   ? Access(Graphs()[static_cast<std::size_t>(graph)].GraphNumber)
                   : nullptr;
    }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface* wanted) const override {
        for (int i = QAccessibleWidget::childCount(); i < childCount(); ++i) {
            if (child(i) == wanted) {
                return i;
            }
        }
        return QAccessibleWidget::indexOfChild(wanted);
    }
    [[nodiscard]] QAccessibleInterface* childAt(int x, int y) const override {
        for (int i = QAccessibleWidget::childCount(); i < childCount(); ++i) {
            if (child(i)->rect().contains(x, y)) {
                return child(i);
            }
        }
        return QAccessibleWidget::childAt(x, y);
    }
    [[nodiscard]] QAccessibleInterface* focusChild() const override {
        const std::optional<int> selected = m_view.hasFocus() ? IndexOfSelected() : std::nullopt;
        return selected ? child(*selected) : QAccessibleWidget::focusChild();
    }

 private:
    /// What was told last.
    struct Told {
        std::uint32_t graph = 0;
        std::string state;

        friend bool operator==(const Told&, const Told&) = default;
    };

    [[nodiscard]] const std::vector<WavoGraph>& Graphs() const {
        return m_view.Work().Graphs().Graphs();
    }
    [[nodiscard]] std::size_t Count() const { return IsMade(m_view) ? Graphs().size() : 0; }
    [[nodiscard]] std::optional<int> IndexOfSelected() const {
        for (std::size_t i = 0; i < Count(); ++i) {
            if (Graphs()[i].GraphNumber == m_view.Zooms().Selected()) {
                return QAccessibleWidget::childCount() + static_cast<int>(i);
            }
        }
        return std::nullopt;
    }
    /// The one of a graph, made when it is first asked for.
    [[nodiscard]] QAccessibleInterface* Access(std::uint32_t number) const {
        const auto known = m_graphs.find(number);
        if (known != m_graphs.end()) {
            return QAccessible::accessibleInterface(known->second);
        }
        auto* const access =
            new GraphAccess(m_view, number);  // owned by the toolkit's list of them
        m_graphs[number] = QAccessible::registerAccessibleInterface(access);
        return access;
    }
    /// Tells that another graph is selected, or what has changed in the one that is.
    void TellChange() {
        const bool is_heard = QAccessible::isActive() || Listener();
        const std::optional<int> selected = is_heard ? IndexOfSelected() : std::nullopt;
        const GraphDraw* const graph =
            selected ? m_view.Board().Find(m_view.Zooms().Selected()) : nullptr;
        if (graph == nullptr) {
            return;
        }
        const Told now{graph->Graph().GraphNumber, StateOf(m_view, *graph)};
        const bool is_other_graph = now.graph != m_told.graph;
        if (now == std::exchange(m_told, now)) {
            return;
        }
        const auto type = is_other_graph && m_view.hasFocus() ? QAccessible::Focus
                                                              : QAccessible::DescriptionChanged;
        if (Listener()) {
            Listener()(type, *child(*selected));
            return;
        }
        QAccessibleEvent event(&m_view, type);
        event.setChild(*selected);
        QAccessible::updateAccessibility(&event);
    }

    CWavoView& m_view;
    const QMetaObject::Connection m_moved;
    const QMetaObject::Connection m_fired;
    mutable std::map<std::uint32_t, QAccessible::Id> m_graphs;
    Told m_told;
};

QAccessibleInterface* AccessOf(const QString& class_name, QObject* object) {
    const bool is_view = class_name == QLatin1String(CWavoView::staticMetaObject.className());
    auto* const view = is_view ? qobject_cast<CWavoView*>(object) : nullptr;
    return view == nullptr ? nullptr : new ViewAccess(*view);
}

}  // namespace

QWidget* WithAccessibleGraphs(QWidget* parent) {
    [[maybe_unused]] static const bool installed = (QAccessible::installFactory(AccessOf), true);
    return parent;
}

void MakeGraphsAccessible(CWavoView& view) {
    view.setProperty(kIsMade, true);
}

void SetGraphListener(GraphListener listener) {
    Listener() = std::move(listener);
}

QString SelectedGraphInWords(CWavoView& view) {
    const WavoGraph* const graph = view.Work().Graphs().Find(view.Zooms().Selected());
    return graph == nullptr ? QStringLiteral("no graph is selected")
                            : NameOf(*graph) + QStringLiteral(": ") + DescriptionOf(view, *graph);
}

}  // namespace wavo
