#include "ui/panes/circle_control.h"

#include <QMainWindow>

#include "ui/panes/circle_pane.h"
#include "ui/panes/pane_dock.h"
#include "view/turn_marks.h"
#include "view/wavo_view.h"

namespace wavo {

CircleControl::CircleControl(QMainWindow& frame, CWavoView& view, const Prompts& prompts,
                             QSettings* settings, const QString& made_by)
    : m_view(view),
      m_watch(view.Work(), view.Board(), view.Past().Window(),
              [&view] { return view.Zooms().Selected(); }),
      m_pane(new CirclePane(m_watch, prompts, settings, made_by, nullptr)),
      m_dock(new PaneDock(QStringLiteral("Circle Test"), m_pane, frame)) {
    m_dock->setObjectName(QStringLiteral("circle_test"));
    frame.addDockWidget(Qt::RightDockWidgetArea, m_dock);
    m_dock->hide();
    connect(m_dock, &PaneDock::OpenChanged, this, &CircleControl::OnOpenChanged);
    connect(&view.News(), &ViewNews::BatchShown, this, [this] { m_watch.OnBatch(); });
    for (const auto changed : {&ViewNews::MeasureChanged, &ViewNews::CommandsChanged}) {
        connect(&view.News(), changed, this, [this] { m_watch.OnChanged(); });
    }
    // What was taken is marked in the graph.
    m_view.Screen().SetOver([this](QPainter& painter) {
        if (const CircleOutcome* const outcome = m_watch.Outcome()) {
            PaintTurns(painter, m_view.Board(), *outcome,
                       m_view.Work().Settings().Current().background);
        }
    });
    connect(&m_watch, &CircleWatch::Changed, &view, [&view] { view.update(); });
}

CircleControl::~CircleControl() {
    m_view.Screen().SetOver(nullptr);
    m_watch.disconnect();
    m_dock->disconnect(this);
}

bool CircleControl::IsEnabled(CommandId id) const {
    return id == CommandId::kCircleTest;
}

bool CircleControl::IsChecked(CommandId id) const {
    return id == CommandId::kCircleTest && m_dock->IsOpen();
}

void CircleControl::Execute(CommandId id) {
    if (id == CommandId::kCircleTest) {
        m_dock->setVisible(!m_dock->IsOpen());
    }
}

void CircleControl::OnOpenChanged() {
    m_watch.SetActive(m_dock->IsOpen());
    m_pane->Refresh();
    Q_EMIT CommandsChanged();
}

}  // namespace wavo
