#include "ui/shell/first_start.h"

#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QStatusBar>
#include <QToolButton>
#include <algorithm>
#include <utility>

#include "support/flag_scope.h"
#include "ui/controls/control_table.h"
#include "ui/prompts.h"
#include "ui/shell/first_page.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {

namespace {

constexpr char kDemoCaption[] = "Play the Demo";

}  // namespace

FirstStart::FirstStart(CMainFrame& frame, const Prompts& prompts, DemoFiles demo, bool has_manual)
    : m_frame(frame), m_view(frame.View()), m_prompts(prompts), m_demo(std::move(demo)) {
    FirstPage::Offers offers;
    offers.open_recording = [this] { m_frame.Action(CommandId::kOpenRecording)->trigger(); };
    if (m_demo.Files().AreThere()) {
        offers.play_demo = [this] { PlayDemo(); };
    }
    if (has_manual) {  // it opens where it tells of this page
        offers.open_manual = [this] { m_frame.Action(CommandId::kManual)->trigger(); };
    }
    m_page = new FirstPage(offers, &m_view);
    m_page->hide();
    m_end = new QToolButton(m_frame.statusBar());
    m_end->setText(QStringLiteral("End the Demo"));
    m_end->setFocusPolicy(Qt::StrongFocus);
    m_end->setToolTip(QStringLiteral("Ends the demo that plays; the graphs stay as they are"));
    SetAccessibleTexts(*m_end, m_end->text(), m_end->toolTip());
    m_end->hide();
    connect(m_end, &QToolButton::clicked, this, &FirstStart::EndDemo);
    const ViewNews& news = m_view.News();
    connect(&news, &ViewNews::CommandsChanged, this, &FirstStart::LookLater);
    connect(&news, &ViewNews::MeasureChanged, this, &FirstStart::LookLater);
    connect(&news, &ViewNews::PaneTextChanged, this, [this](StatusPane pane) {
        if (pane == StatusPane::kMessage) {
            LookLater();
        }
    });
    m_view.installEventFilter(this);
    LookLater();
}

FirstStart::~FirstStart() {
    delete m_page;
    delete m_end;
}

FirstPage& FirstStart::Page() {
    return *m_page;
}

QToolButton& FirstStart::EndButton() {
    return *m_end;
}

bool FirstStart::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize) {
        LookLater();  // the view has to find the place of the graphs first
    }
    return QObject::eventFilter(watched, event);
}

bool FirstStart::IsWanted() const {
    Session& session = m_view.Work();
    return session.Graphs().Graphs().empty() && !session.LiveSource().IsPresent() &&
           session.Recording() == nullptr;
}

/// That of the graphs. Where the editor leaves them next to nothing it takes what it needs of its
/// lower part: there is nothing to be edited.
QRect FirstStart::PlaceOfPage() const {
    constexpr double kMostOfView = 0.7;
    QRect place = m_view.Screen().GraphArea();
    const int needed = std::min(m_page->NeededHeight(m_view.width()),
                                static_cast<int>(kMostOfView * m_view.height()));
    place.setBottom(m_view.height() - 1);
    place.setTop(std::min(place.top(), m_view.height() - needed));
    return place;
}

void FirstStart::LookLater() {
    if (!std::exchange(m_looks_later, true)) {
        QMetaObject::invokeMethod(this, &FirstStart::Look, Qt::QueuedConnection);
    }
}

void FirstStart::Look() {
    m_looks_later = false;
    ShowEndButton(m_demo.IsRunning());
    const bool is_wanted = IsWanted();
    if (is_wanted) {
        m_page->Tell(QString::fromStdString(m_view.Work().LiveSource().StateText()),
                     m_view.Work().Settings().AutoConnect());
        m_page->setGeometry(PlaceOfPage());
    }
    if (is_wanted == m_page->isHidden()) {
        ShowPage(is_wanted);
    }
}

// A widget of the status bar takes its height there, hidden or not.
void FirstStart::ShowEndButton(bool show) {
    if (show && m_end->isHidden()) {
        m_frame.statusBar()->addPermanentWidget(m_end);
        m_end->show();
    } else if (!show && !m_end->isHidden()) {
        m_frame.statusBar()->removeWidget(m_end);
    }
}

void FirstStart::ShowPage(bool show) {
    if (show) {
        m_page->show();
        m_page->raise();
        if (m_frame.focusWidget() == &m_view) {
            m_page->FirstButton()->setFocus(Qt::OtherFocusReason);
        }
        return;
    }
    const QWidget* const focus = m_frame.focusWidget();
    if (focus != nullptr && (focus == m_page || m_page->isAncestorOf(focus))) {
        m_view.setFocus(Qt::OtherFocusReason);
    }
    m_page->hide();
}

bool FirstStart::ConnectsToAnother() {
    Session& session = m_view.Work();
    if (!session.LiveSource().IsPresent() && session.Source().Start()) {
        return false;
    }
    m_prompts.box(&m_frame, {"A master is running already, perhaps the demo of another viewer. "
                             "This viewer is connected to it and shows what it sends.",
                             kDemoCaption, BoxIcon::kInformation, BoxButtons::kOk});
    return true;
}

bool FirstStart::ShowGraphs() {
    QFile file(m_demo.Files().graphs);
    if (!file.open(QIODevice::ReadOnly)) {
        m_prompts.ShowError(&m_frame, "The graphs of the demo cannot be read: " +
                                          m_demo.Files().graphs.toStdString());
        return false;
    }
    // As text: what the user saves must not go to the file of the installation.
    return m_view.Work().Files().OpenText(
        file.readAll().toStdString(), QFileInfo(m_demo.Files().graphs).fileName().toStdString());
}

void FirstStart::EndDemo() {
    // Left first: what it has announced is not there any more once it has ended.
    if (m_view.Work().Recording() == nullptr) {
        m_view.Work().LiveSource().Hold();
    }
    m_demo.End();
    LookLater();
}

void FirstStart::PlayDemo() {
    if (m_is_starting || ConnectsToAnother()) {
        return;
    }
    const FlagScope starting(m_is_starting);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const QString fault = m_demo.Start();
    QApplication::restoreOverrideCursor();
    if (!fault.isEmpty()) {
        m_prompts.ShowError(&m_frame, "The demo cannot be played: " + fault.toStdString());
    } else if (!ShowGraphs()) {
        m_demo.End();
    } else {
        for (const CommandId id : {CommandId::kConnect, CommandId::kStart}) {
            if (m_view.Commands().IsEnabled(id)) {
                m_view.Commands().Execute(id);
            }
        }
    }
    LookLater();
}

}  // namespace wavo
