#include "ui/shell/main_frame.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QSettings>
#include <QStatusBar>
#include <QUrl>

#include "platform/system_dialogs.h"
#include "ui/bars/command_icons.h"
#include "ui/bars/customize_dialog.h"
#include "ui/bars/tool_bars.h"
#include "ui/controls/control_table.h"
#include "ui/controls/elided_label.h"
#include "ui/controls/roomy_label.h"
#include "ui/messages.h"
#include "ui/recording/recording_pane.h"
#include "ui/shell/about_dlg.h"
#include "ui/shell/context_help.h"
#include "ui/shell/count_pane.h"
#include "ui/shell/looks.h"
#include "ui/shell/pane_cycle.h"
#include "ui/shell/version_data.h"
#include "view/wavo_view.h"

namespace wavo {

namespace {

constexpr int kLayoutVersion = 2;  // of stored layouts; other ones are not read

CommandId StoredLook(QSettings* settings) {
    const int number =
        settings == nullptr
            ? static_cast<int>(kDefaultLook)
            : settings->value(QStringLiteral("ApplicationLook"), static_cast<int>(kDefaultLook))
                  .toInt();
    return FindLook(number).id;
}

/// The path of the recording that is dropped; empty when it is something else.
std::string DroppedRecording(const QMimeData& dropped, const RecordingFiles& recordings) {
    const QList<QUrl> urls = dropped.urls();
    const std::string path = urls.size() == 1 && urls[0].isLocalFile()
                                 ? urls[0].toLocalFile().toStdString()
                                 : std::string();
    return recordings.IsRecording(path) ? path : std::string();
}

}  // namespace

CMainFrame::CMainFrame(const Prompts& prompts, QSettings* settings,
                       std::unique_ptr<ValueSource> source)
    : m_settings(settings),
      m_view(new CWavoView(prompts, this, std::move(source))),
      m_bars(LoadBarSetup(settings)),
      m_user_images(LoadUserImages(QStringLiteral("./UserImages.bmp"))),
      m_actions(*this, [this](CommandId id) { OnCommand(id); }),
      m_menu_dock(new MenuDock(*this)),
      m_menus(*this, *m_menu_dock, m_actions, m_bars, [this](CommandId id) { OnCommand(id); }),
      m_recent_files(settings),
      m_recent_recordings(settings, QStringLiteral("RecentRecordings")),
      m_look(StoredLook(settings)),
      m_tables(*this, *m_view, prompts, settings),
      m_help(new ContextHelp(*this, prompts)) {
    setWindowTitle(QStringLiteral("Wavo"));
    setWindowIcon(ProgramIcon());
    setCentralWidget(m_view);
    if (m_view->focusPolicy() == Qt::NoFocus) {
        m_view->setFocusPolicy(Qt::StrongFocus);
    }
    ApplyLook(FindLook(static_cast<int>(m_look)));
    CreateStatusBar();
    CreateRecording(prompts);
    CreateMeasure(prompts);
    m_customize_item = MakeCustomizeItem(*this, *Action(CommandId::kCustomize));
    RebuildToolBars();
    ConnectView();
    ShowRecentFiles(CommandId::kRecentFile, m_recent_files);
    ShowRecentFiles(CommandId::kRecentRecording, m_recent_recordings);
    setAcceptDrops(true);
    resize(1366, 768);  // the graph editor in one row
    RestoreLayout();
    UpdateCommands();
    qApp->installEventFilter(this);
}

CMainFrame::~CMainFrame() {
    m_view->disconnect(this);  // it goes after what shows its news
}

void CMainFrame::ConnectView() {
    m_view->Commands().SetRecentFiles(
        [this](int index) { return m_recent_files.Paths().value(index).toStdString(); });
    connect(&m_view->News(), &ViewNews::PaneTextChanged, this, &CMainFrame::ShowInPane);
    connect(&m_view->News(), &ViewNews::FrameTitleChanged, this, &QWidget::setWindowTitle);
    connect(&m_view->News(), &ViewNews::CommandsChanged, this, &CMainFrame::UpdateCommands);
    connect(&m_view->News(), &ViewNews::RecentFileOpened, this, [this](const QString& path) {
        m_recent_files.Add(QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()));
        ShowRecentFiles(CommandId::kRecentFile, m_recent_files);
    });
    m_view->Past().Files().SetRecent(
        [this](int index) { return m_recent_recordings.Paths().value(index).toStdString(); });
    connect(&m_view->News(), &ViewNews::RecordingOpened, this, [this](const QString& path) {
        m_recent_recordings.Add(path);
        ShowRecentFiles(CommandId::kRecentRecording, m_recent_recordings);
    });
    connect(&m_view->News(), &ViewNews::QuitRequested, this, [this] {
        m_tables.Cancel();
        StoreLayout();
        platform::CancelSystemDialogs();  // the toolkit ends its own ones only
        QCoreApplication::exit(0);
    });
}

void CMainFrame::CreateStatusBar() {
    m_panes[0] = new ElidedLabel(this);
    auto* const count = new CountPane([this] { return m_view->Work().Values().Counters(); }, this);
    connect(&m_view->News(), &ViewNews::PaneTextChanged, count, [count] { count->Refresh(); });
    count->setObjectName(QStringLiteral("count_pane"));
    m_panes[1] = count;
    auto* const cycle_time = new RoomyLabel(this);
    m_panes[2] = cycle_time;
    for (QLabel* const pane : m_panes) {
        pane->setMargin(2);
        pane->setTextFormat(Qt::PlainText);
    }
    m_panes[0]->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    statusBar()->addWidget(m_panes[0], 1);
    for (RoomyLabel* const pane : {static_cast<RoomyLabel*>(count), cycle_time}) {
        pane->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        pane->SetWidestText(QStringLiteral("cycl. time=0.00000s"));
        statusBar()->addPermanentWidget(pane);
    }
    m_panes[1]->setToolTip(
        QStringLiteral("Lines received from the master since it started the link; click for "
                       "what became of them"));
    m_panes[2]->setToolTip(QStringLiteral("Cycle time of the master, seconds per line"));
    m_panes[0]->setAccessibleDescription(QStringLiteral("What the viewer has told last"));
    for (const int pane : {1, 2}) {
        m_panes[pane]->setAccessibleDescription(m_panes[pane]->toolTip());
    }
    for (const StatusPane pane :
         {StatusPane::kMessage, StatusPane::kTotalLines, StatusPane::kCycleTime}) {
        ShowInPane(pane, {});
    }
    SetAccessibleTexts(*statusBar(), QStringLiteral("Status bar"),
                       QStringLiteral("Messages, lines received, cycle time"));
    statusBar()->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(statusBar(), &QWidget::customContextMenuRequested, this,
            [this](const QPoint& point) { LookMenu().popup(statusBar()->mapToGlobal(point)); });
}

void CMainFrame::CreateRecording(const Prompts& prompts) {
    auto* const pane = new RecordingPane(this);
    statusBar()->addPermanentWidget(pane);
    pane->hide();
    m_recording = std::make_unique<RecordingControl>(
        *this, prompts, *pane, m_settings,
        [this](const std::string& path) { return m_view->Work().Files().WriteCopy(path); });
    connect(m_recording.get(), &RecordingControl::CommandsChanged, this,
            &CMainFrame::UpdateCommands);
    // A recording that is looked at may be the one that grows.
    connect(m_recording.get(), &RecordingControl::RecorderNoticed, this,
            [this] { m_view->Past().Files().Refresh(); });
}

void CMainFrame::CreateMeasure(const Prompts& prompts) {
    m_measure = std::make_unique<MeasureControl>(*this, *m_view, prompts, m_settings);
    connect(m_measure.get(), &MeasureControl::CommandsChanged, this, &CMainFrame::UpdateCommands);
    const QString made_by = QString::fromStdString("Wavo " + OwnVersion().product_version);
    m_circle = std::make_unique<CircleControl>(*this, *m_view, prompts, m_settings, made_by);
    m_axis = std::make_unique<AxisControl>(*this, *m_view, prompts, m_settings, made_by);
    m_reference = std::make_unique<ReferenceControl>(*this, *m_view, prompts, m_settings, made_by);
    connect(m_reference.get(), &ReferenceControl::CommandsChanged, this,
            &CMainFrame::UpdateCommands);
    connect(m_axis.get(), &AxisControl::CommandsChanged, this, &CMainFrame::UpdateCommands);
    connect(m_circle.get(), &CircleControl::CommandsChanged, this, &CMainFrame::UpdateCommands);
}

void CMainFrame::ShowInPane(StatusPane pane, const QString& text) {
    static const QString names[] = {QStringLiteral("Message"), QStringLiteral("Lines received"),
                                    QStringLiteral("Cycle time")};
    const auto index = static_cast<std::size_t>(pane);
    m_panes[index]->setText(text);
    m_panes[index]->setAccessibleName(text.isEmpty() ? names[index] : names[index] + ": " + text);
}

void CMainFrame::RebuildToolBars() {
    m_actions.SetUserImages(m_bars.user_images, m_user_images);
    ShowToolBars(*this, *m_menu_dock, m_actions, m_bars, *m_customize_item);
}

void CMainFrame::SetBars(const BarSetup& bars) {
    m_bars = bars;
    Normalize(m_bars);
    RebuildToolBars();
    SaveBarSetup(m_settings, m_bars);
}

void CMainFrame::RestoreLayout() {
    if (m_settings != nullptr) {
        m_has_stored_place =
            restoreGeometry(m_settings->value(QStringLiteral("WindowPlace")).toByteArray());
        restoreState(m_settings->value(QStringLiteral("BarPlaces")).toByteArray(), kLayoutVersion);
        statusBar()->setVisible(m_settings->value(QStringLiteral("StatusBar"), true).toBool());
    }
    m_measure->Restore();
    m_circle->Restore();
    m_axis->Restore();
    m_reference->Restore();
}

void CMainFrame::StoreLayout() {
    if (m_settings != nullptr) {
        m_settings->setValue(QStringLiteral("WindowPlace"), saveGeometry());
        m_settings->setValue(QStringLiteral("BarPlaces"), saveState(kLayoutVersion));
        m_settings->setValue(QStringLiteral("StatusBar"), !statusBar()->isHidden());
        m_measure->Store();
        SaveBarSetup(m_settings, m_bars);
        m_settings->sync();
    }
}

void CMainFrame::UpdateCommands() {
    for (const Command& command : Commands()) {
        QAction* const action = Action(command.id);
        if (command.owner == CommandOwner::kView) {
            action->setEnabled(m_view->Commands().IsEnabled(command.id));
        } else if (command.owner == CommandOwner::kRecording) {
            action->setEnabled(m_recording->IsEnabled(command.id));
        } else if (command.owner == CommandOwner::kMeasure) {
            action->setEnabled(m_measure->IsEnabled(command.id));
            action->setChecked(m_measure->IsChecked(command.id));
        } else if (command.owner == CommandOwner::kCircle) {
            action->setEnabled(m_circle->IsEnabled(command.id));
            action->setChecked(m_circle->IsChecked(command.id));
        } else if (command.owner == CommandOwner::kAxis) {
            action->setEnabled(m_axis->IsEnabled(command.id));
            action->setChecked(m_axis->IsChecked(command.id));
        } else if (command.owner == CommandOwner::kReference) {
            action->setEnabled(m_reference->IsEnabled(command.id));
            action->setChecked(m_reference->IsChecked(command.id));
        } else if (command.owner == CommandOwner::kRecorded) {
            action->setEnabled(m_view->Past().IsEnabled(command.id));
            action->setChecked(m_view->Past().IsOn(command.id));
        } else if (command.owner == CommandOwner::kParts) {
            action->setEnabled(m_tables.IsEnabled(command.id));
        } else if (command.id == CommandId::kStatusBar) {
            action->setChecked(!statusBar()->isHidden());
        } else if (action->isCheckable()) {
            action->setChecked(command.id == m_look);
        }
    }
}

void CMainFrame::ShowRecentFiles(CommandId command, const RecentFiles& files) {
    QStringList texts;
    for (const QString& path : files.Paths()) {
        texts << RecentFiles::ItemText(static_cast<int>(texts.size()), path, QDir::currentPath());
    }
    m_menus.ShowRecentFiles(command, texts, files.Paths());
    UpdateCommands();
}

void CMainFrame::OnCommand(CommandId id) {
    const Command* const command = FindCommand(id);
    const bool is_recent_recording =
        id >= CommandId::kRecentRecording && id <= CommandId::kLastRecentRecording;
    if (command != nullptr) {
        m_bars.used_commands.insert(static_cast<int>(id));
    }
    if (is_recent_recording || (command != nullptr && command->owner == CommandOwner::kRecorded)) {
        m_view->Past().Execute(id);
    } else if (command == nullptr || command->owner == CommandOwner::kView) {
        m_view->Commands().Execute(id);
    } else if (command->owner == CommandOwner::kRecording) {
        m_recording->Execute(id);
    } else if (command->owner == CommandOwner::kMeasure) {
        m_measure->Execute(id);
    } else if (command->owner == CommandOwner::kCircle) {
        m_circle->Execute(id);
    } else if (command->owner == CommandOwner::kAxis) {
        m_axis->Execute(id);
    } else if (command->owner == CommandOwner::kReference) {
        m_reference->Execute(id);
    } else if (command->owner == CommandOwner::kParts) {
        m_tables.Execute(id);
    } else {
        ExecuteOwn(id);
    }
    UpdateCommands();
}

void CMainFrame::ExecuteOwn(CommandId id) {
    if (id >= CommandId::kLookClassic && id <= CommandId::kLookAqua) {
        SetLook(id);
    } else if (id == CommandId::kCustomize) {
        Customize();
    } else if (id == CommandId::kStatusBar) {
        statusBar()->setVisible(statusBar()->isHidden());
    } else if (id == CommandId::kAbout) {
        ShowAbout();
    } else if (id == CommandId::kManual) {
        m_help->Open();
    } else if (id == CommandId::kNextPane || id == CommandId::kPreviousPane) {
        GoToPane(*this, id == CommandId::kNextPane,
                 [this](const QAction& action) { return m_actions.IsHarmless(action); });
    } else if (id == CommandId::kExit) {
        close();
    }
}

void CMainFrame::SetLook(CommandId id) {
    m_look = id;
    ApplyLook(FindLook(static_cast<int>(id)));
    if (m_settings != nullptr) {
        m_settings->setValue(QStringLiteral("ApplicationLook"), static_cast<int>(id));
    }
}

void CMainFrame::Customize() {
    CustomizeDialog dialog(m_bars, m_user_images, this);
    if (dialog.exec() == QDialog::Accepted) {
        SetBars(dialog.Setup());
    }
}

void CMainFrame::ShowAbout() {
    CAboutDlg(AboutText(OwnVersion(), ReadServicePack(InstallRoot())), this).exec();
}

QString CMainFrame::PaneText(StatusPane pane) const {
    return m_panes[static_cast<int>(pane)]->text();
}

QMenu* CMainFrame::createPopupMenu() {
    auto* const menu = new QMenu(this);
    m_menus.FillBarsMenu(*menu);
    return menu;
}

bool CMainFrame::event(QEvent* event) {
    if (event->type() == AppMessageEvent::EventType()) {
        auto* const message = static_cast<AppMessageEvent*>(event);
        if (message->number() == AppMessage::kRecordingEnded) {
            UpdateCommands();
            message->SetResult(1);
        }
        return true;
    }
    return QMainWindow::event(event);
}

void CMainFrame::closeEvent(QCloseEvent* event) {
    m_tables.Cancel();
    m_view->OnClose();
    StoreLayout();
    event->accept();
}

void CMainFrame::dragEnterEvent(QDragEnterEvent* event) {
    if (!DroppedRecording(*event->mimeData(), m_view->Past().Files()).empty()) {
        event->acceptProposedAction();
    }
}

void CMainFrame::dropEvent(QDropEvent* event) {
    const std::string path = DroppedRecording(*event->mimeData(), m_view->Past().Files());
    if (path.empty()) {
        return;
    }
    event->acceptProposedAction();
    // Whoever drops waits for us: a box must not keep him.
    QMetaObject::invokeMethod(
        m_view, [this, path] { m_view->Past().Files().Open(path); }, Qt::QueuedConnection);
}

bool CMainFrame::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && watched->isWidgetType() &&
        static_cast<QWidget*>(watched)->window() == this) {
        // An edit would take Ctrl+A and the like for itself.
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (m_actions.FindShortcut(QKeySequence(key.keyCombination())) != nullptr) {
            event->ignore();
            return true;
        }
    }
    if (event->type() == QEvent::KeyPress && watched->isWidgetType() &&
        GoInBar(*this, static_cast<QWidget&>(*watched), static_cast<QKeyEvent*>(event)->key())) {
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

}  // namespace wavo
