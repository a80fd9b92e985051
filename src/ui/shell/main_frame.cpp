#include "ui/shell/main_frame.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>

#include "ui/dialogs/elided_label.h"
#include "ui/shell/commands.h"
#include "view/wavo_view.h"

namespace wavo {

CMainFrame::CMainFrame() : m_view(new CWavoView(this)) {
    setWindowTitle(QStringLiteral("Wavo"));
    setCentralWidget(m_view);
    CreateMenus();
    CreateStatusBar();
    connect(m_view, &CWavoView::PaneTextChanged, this,
            [this](StatusPane pane, const QString& text) {
                m_panes[static_cast<int>(pane)]->setText(text);
            });
    connect(m_view, &CWavoView::FrameTitleChanged, this, &QWidget::setWindowTitle);
    connect(m_view, &CWavoView::CommandsChanged, this, &CMainFrame::UpdateCommands);
    connect(m_view, &CWavoView::QuitRequested, this, [] { QCoreApplication::exit(0); });
    resize(1100, 700);
    UpdateCommands();
}

QAction* CMainFrame::AddCommand(QMenu& menu, CommandId id, const std::function<void()>& handler) {
    const Command& command = FindCommand(id);
    const QStringList text = QString::fromLatin1(command.text).split(u'\t');
    const QStringList status = QString::fromLatin1(command.status_text).split(u'\n');
    QAction* const action = menu.addAction(text.value(0));
    action->setObjectName(QString::fromLatin1(command.object_name));
    action->setShortcut(QKeySequence(text.value(1)));
    action->setStatusTip(status.value(0));
    action->setToolTip(status.value(1).trimmed());
    connect(action, &QAction::triggered, this, handler);
    return action;
}

void CMainFrame::CreateMenus() {
    QMenu* const file = menuBar()->addMenu(QStringLiteral("&File"));
    AddCommand(*file, CommandId::kProperties, [this] { m_view->EditProperties(); });
    AddCommand(*file, CommandId::kAdditionalText, [this] { m_view->EditAdditionalText(); });
    file->addSeparator();
    AddCommand(*file, CommandId::kExit, [this] { close(); });
    QMenu* const machine = menuBar()->addMenu(QStringLiteral("&Machine Data"));
    AddCommand(*machine, CommandId::kConnect, [this] { m_view->ConnectMachineData(); });
    QMenu* const run = menuBar()->addMenu(QStringLiteral("&Run control"));
    AddCommand(*run, CommandId::kStart, [this] { m_view->Start(); });
    AddCommand(*run, CommandId::kStop, [this] { m_view->Stop(); });
}

void CMainFrame::CreateStatusBar() {
    m_panes[0] = new ElidedLabel(this);
    m_panes[1] = new QLabel(this);
    m_panes[2] = new QLabel(this);
    for (QLabel* const pane : m_panes) {
        pane->setMargin(2);
        pane->setTextFormat(Qt::PlainText);
    }
    m_panes[0]->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    statusBar()->addWidget(m_panes[0], 1);
    for (const int index : {1, 2}) {
        m_panes[index]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_panes[index]->setMinimumWidth(
            fontMetrics().horizontalAdvance(QStringLiteral("cycl. time=0.00000s")));
        statusBar()->addPermanentWidget(m_panes[index]);
    }
    m_panes[1]->setToolTip(
        QStringLiteral("Lines received from the master since it started the link"));
    m_panes[2]->setToolTip(QStringLiteral("Cycle time of the master, seconds per line"));
}

void CMainFrame::UpdateCommands() {
    const AcquisitionCycle& cycle = m_view->Acquisition();
    Action(CommandId::kConnect)->setEnabled(cycle.CanConnect());
    Action(CommandId::kStart)->setEnabled(!cycle.IsRunning());
    Action(CommandId::kStop)->setEnabled(cycle.IsRunning());
}

QAction* CMainFrame::Action(CommandId id) const {
    return findChild<QAction*>(QString::fromLatin1(FindCommand(id).object_name));
}

QString CMainFrame::PaneText(StatusPane pane) const {
    return m_panes[static_cast<int>(pane)]->text();
}

void CMainFrame::closeEvent(QCloseEvent* event) {
    m_view->OnClose();
    event->accept();
}

}  // namespace wavo
