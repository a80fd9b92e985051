#include "ui/panes/reference_control.h"

#include <QMainWindow>

#include "ui/panes/pane_dock.h"
#include "ui/panes/reference_pane.h"
#include "view/wavo_view.h"

namespace wavo {

ReferenceControl::ReferenceControl(QMainWindow& frame, CWavoView& view, const Prompts& prompts,
                                   QSettings* settings, const QString& made_by)
    : m_view(view),
      m_watch(view.Work(), view.Board(), view.Past().Window(), view.Cursors(),
              [&view] { return view.Zooms().Selected(); }),
      m_pane(new ReferencePane(
          m_watch, prompts, settings, made_by,
          [&view](const LineRange& lines) { return view.Past().Window().Show(lines); }, nullptr)),
      m_dock(new PaneDock(QStringLiteral("Reference"), m_pane, frame)) {
    m_dock->setObjectName(QStringLiteral("reference"));
    connect(m_dock, &PaneDock::OpenChanged, this, &ReferenceControl::OnOpenChanged);
    for (const auto changed : {&ViewNews::MeasureChanged, &ViewNews::CommandsChanged}) {
        connect(&view.News(), changed, this, [this] { m_watch.OnChanged(); });
    }
    connect(&view.News(), &ViewNews::CommandsChanged, m_pane, &ReferencePane::Refresh);
    connect(&m_watch, &ReferenceWatch::BehindChanged, this, &ReferenceControl::DrawGraphs);
    view.Board().SetBehind([this](const GraphDraw& graph) { return m_watch.BehindOf(graph); });
}

ReferenceControl::~ReferenceControl() {
    m_view.Board().SetBehind(nullptr);
    m_watch.disconnect();
    m_dock->disconnect(this);
}

bool ReferenceControl::IsChecked(CommandId id) const {
    return id == CommandId::kReference && m_dock->IsOpen();
}

void ReferenceControl::Execute(CommandId id) {
    if (id == CommandId::kReference) {
        m_dock->setVisible(!m_dock->IsOpen());
    }
}

void ReferenceControl::OnOpenChanged() {
    m_watch.SetActive(m_dock->IsOpen());
    m_pane->Refresh();
    Q_EMIT CommandsChanged();
}

void ReferenceControl::DrawGraphs() {
    if (!m_view.Screen().IsDrawing()) {
        m_view.Screen().DrawAndShow();
    }
}

}  // namespace wavo
