#include "ui/panes/axis_control.h"

#include <QMainWindow>

#include "ui/panes/axis_pane.h"
#include "ui/panes/pane_dock.h"
#include "view/wavo_view.h"

namespace wavo {

AxisControl::AxisControl(QMainWindow& frame, CWavoView& view, const Prompts& prompts,
                         QSettings* settings, const QString& made_by)
    : m_watch(view.Work(), view.Past().Window()),
      m_pane(new AxisPane(
          m_watch, prompts, settings, made_by,
          [&view](const LineRange& lines) { return view.Past().Window().Show(lines); }, nullptr)),
      m_dock(new PaneDock(QStringLiteral("Axis Test"), m_pane, frame)) {
    m_dock->setObjectName(QStringLiteral("axis_test"));
    connect(m_dock, &PaneDock::OpenChanged, this, &AxisControl::OnOpenChanged);
    for (const auto changed : {&ViewNews::MeasureChanged, &ViewNews::CommandsChanged}) {
        connect(&view.News(), changed, this, [this] { m_watch.OnChanged(); });
    }
}

AxisControl::~AxisControl() {
    m_watch.disconnect();
    m_dock->disconnect(this);
}

bool AxisControl::IsChecked(CommandId id) const {
    return id == CommandId::kAxisTest && m_dock->IsOpen();
}

void AxisControl::Execute(CommandId id) {
    if (id == CommandId::kAxisTest) {
        m_dock->setVisible(!m_dock->IsOpen());
    }
}

void AxisControl::OnOpenChanged() {
    m_watch.SetActive(m_dock->IsOpen());
    m_pane->Refresh();
    Q_EMIT CommandsChanged();
}

}  // namespace wavo
