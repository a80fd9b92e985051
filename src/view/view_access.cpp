#include "view/view_access.h"

#include <QAccessibleWidget>
#include <map>
#include <utility>

#include "graph/draw/graph_draw.h"
#include "graph/model/wavo_graph.h"
#include "ui/graph_editor/graph_edits.h"
#include "view/wavo_view.h"

namespace wavo {

namespace {

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
        return kind == QAccessible::Name          ? AccessibleName(*graph)
               : kind == QAccessible::Description ? AccessibleDescription(*graph)
                                                  : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}

 private:
    [[nodiscard]] const WavoGraph* Graph() const { return m_view.Work().Graphs().Find(m_number); }

    CWavoView& m_view;
    const std::uint32_t m_number;
};

/// A view: its widgets, and behind them its graphs.
class ViewAccess final : public QAccessibleWidget {
 public:
    explicit ViewAccess(CWavoView& view)
        : QAccessibleWidget(&view, QAccessible::Pane), m_view(view) {}
    ~ViewAccess() override {
        for (const auto& [number, id] : m_graphs) {
            QAccessible::deleteAccessibleInterface(id);
        }
    }
    ViewAccess(const ViewAccess&) = delete;
    ViewAccess& operator=(const ViewAccess&) = delete;

    [[nodiscard]] int childCount() const override {
        return QAccessibleWidget::childCount() + static_cast<int>(Graphs().size());
    }
    [[nodiscard]] QAccessibleInterface* child(int index) const override {
        const int graph = index - QAccessibleWidget::childCount();
        if (graph < 0) {
            return QAccessibleWidget::child(index);
        }
        return static_cast<std::size_t>(graph) < Graphs().size()
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

 private:
    [[nodiscard]] const std::vector<WavoGraph>& Graphs() const {
        return m_view.Work().Graphs().Graphs();
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

    CWavoView& m_view;
    mutable std::map<std::uint32_t, QAccessible::Id> m_graphs;
};

QAccessibleInterface* AccessOf(const QString& class_name, QObject* object) {
    const bool is_view = class_name == QLatin1String(CWavoView::staticMetaObject.className());
    auto* const view = is_view ? qobject_cast<CWavoView*>(object) : nullptr;
    return view == nullptr ? nullptr : new ViewAccess(*view);
}

}  // namespace

void MakeGraphsAccessible() {
    [[maybe_unused]] static const bool installed = (QAccessible::installFactory(AccessOf), true);
}

QString AccessibleName(const WavoGraph& graph) {
    return QStringLiteral("graph %1").arg(graph.GraphNumber);
}

QString AccessibleDescription(const WavoGraph& graph) {
    QString axes = QString::fromStdString(YAxesText(graph));
    if (axes.isEmpty()) {
        axes = QStringLiteral("no axes");
    }
    return graph.XCoorType == CoorType::kAxis
               ? QStringLiteral("%1 over %2").arg(axes, QString::fromStdString(graph.XCoorAxName))
               : QStringLiteral("%1 over time, %2 s").arg(axes).arg(graph.XScale.TimeRange);
}

}  // namespace wavo
