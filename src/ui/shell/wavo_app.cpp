#include "ui/shell/wavo_app.h"

#include <QAbstractEventDispatcher>
#include <QFile>
#include <QFileInfo>
#include <QPixmap>
#include <QSocketNotifier>
#include <QTextStream>
#include <clocale>
#include <cstdio>
#include <utility>

#include "platform/folders.h"
#include "platform/process.h"
#include "support/diagnostics.h"
#include "support/diagnostics_output.h"
#include "support/file_name.h"
#include "ui/bars/command_icons.h"
#include "ui/shell/context_help.h"
#include "ui/shell/first_start.h"
#include "ui/shell/headless_prompts.h"
#include "ui/shell/main_frame.h"
#include "ui/shell/report_texts.h"
#include "ui/shell/screen_fit.h"
#include "view/wavo_view.h"

namespace wavo {

CWavoApp::CWavoApp(int& argc, char** argv, Prompts prompts)
    : QApplication(argc, argv), m_prompts(std::move(prompts)) {
    // The toolkit has taken over the user's locale. Numbers are shown and stored with a point in
    // every country.
    std::setlocale(LC_NUMERIC, "C");
    setApplicationName(QStringLiteral("Wavo"));
    setOrganizationName(QStringLiteral("Velk machine tools wavo"));
    setApplicationVersion(QStringLiteral(WAVO_VERSION));
    setDesktopFileName(QStringLiteral("wavo"));
    setWindowIcon(ProgramIcon());
}

CWavoApp::~CWavoApp() = default;

bool CWavoApp::Print(const LastWords& words) {
    const bool asked_for = words.exit_code == 0;
    if (!(asked_for ? platform::HasStandardOutput() : platform::HasStandardError())) {
        return platform::WriteToConsoleOfStarter(words.text.toStdString());
    }
    QTextStream(asked_for ? stdout : stderr) << words.text;
    return true;
}

void CWavoApp::ShowInBox(const LastWords& words, const Prompts& prompts) {
    const std::string text = words.text.trimmed().toStdString();
    if (words.exit_code == 0) {
        prompts.box(nullptr, {text, "Wavo", BoxIcon::kInformation, BoxButtons::kOk});
    } else {
        prompts.ShowError(nullptr, text);
    }
}

void CWavoApp::InitInstance(const AppOptions& options) {
    MTRACE(4, shell_texts::kStarting);
    StartLogs();
    // A picture shows the same on every machine: nothing is remembered for it.
    if (options.screenshot.isEmpty()) {
        m_settings = std::make_unique<QSettings>();
    } else {
        m_prompts = HeadlessPrompts([this](const std::string& text) {
            m_has_failed = true;
            Print({QStringLiteral("wavo: %1\n").arg(QString::fromStdString(text)), 1});
        });
    }
    TableControl::RemoveLeftBehind();
    m_frame = std::make_unique<CMainFrame>(m_prompts, m_settings.get());
    WatchTermination();
    if (options.screenshot.isEmpty()) {
        if (!m_frame->HasStoredPlace()) {
            FitIntoScreen(*m_frame);
        }
    } else {
        connect(&m_frame->View().News(), &ViewNews::BatchShown, this,
                [this, options](quint64 total) {
                    if (total >= options.after_lines) {
                        TakeScreenshot(options.screenshot);
                    }
                });
    }
    m_frame->show();
    // In the event loop: a box that is shown meanwhile can then be left with the program's end.
    QMetaObject::invokeMethod(
        &m_frame->View(), [this, options] { OpenFiles(options); }, Qt::QueuedConnection);
}

void CWavoApp::OpenFiles(const AppOptions& options) {
    m_graph_file = FindGraphFile(options.graph_file, m_prompts, m_frame.get());
    if (m_settings != nullptr) {
        m_frame->ShowRecorders();
    }
    m_frame->View().OnInitialUpdate(m_graph_file);
    m_frame->Tables().SetCycleTime(options.cycle_time);
    const bool is_open =
        options.recording.isEmpty() ||
        m_frame->View().Past().Files().Open(platform::NativePath(options.recording.toStdString()));
    m_frame->Tables().SetCycleTime(std::nullopt);
    if (options.screenshot.isEmpty()) {
        m_first = std::make_unique<FirstStart>(
            *m_frame, m_prompts, FindDemo(),
            !ManualFolder(QCoreApplication::applicationDirPath()).isEmpty());
    }
    if (!options.screenshot.isEmpty()) {
        if (m_has_failed || !is_open) {
            End(1);
        } else if (!options.recording.isEmpty()) {
            TakeScreenshot(options.screenshot);
        }
    }
    MTRACE(4, shell_texts::kStarted);
}

std::string CWavoApp::FindGraphFile(const QString& name, const Prompts& prompts, QWidget* parent) {
    if (name.isEmpty()) {
        return {};
    }
    const std::string given = platform::NativePath(name.toStdString());
    for (const std::string& path : {given, "DATA" + platform::PathSeparator() + given}) {
        if (QFileInfo(QString::fromStdString(path)).isFile() &&
            QFile(QString::fromStdString(path)).open(QIODevice::ReadOnly)) {
            return platform::NativePath(
                QFileInfo(QString::fromStdString(path)).absoluteFilePath().toStdString());
        }
    }
    prompts.ShowError(parent, shell_texts::NoGraphFileBox(name.toStdString()));
    return {};
}

void CWavoApp::StartLogs() {
    diagnostics::SetLogFolder(platform::StateFolder());
    diagnostics::SetEcho(platform::StandardErrorIsTerminal());
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            [] { diagnostics::FlushRepeats(); });
}

void CWavoApp::WatchTermination() {
    const int descriptor = platform::WatchTerminationRequests();
    if (descriptor >= 0) {
        auto* const notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
            notifier->setEnabled(false);
            End(0);
        });
    }
}

void CWavoApp::TakeScreenshot(const QString& file) {
    disconnect(&m_frame->View().News(), &ViewNews::BatchShown, this, nullptr);
    (void)m_frame->grab();                     // everything gets its place
    (void)m_frame->View().Screen().Picture();  // exact, whatever it takes
    Navigator& overview = m_frame->View().Past().Overview();
    do {
        (void)overview.DrawEnvelope();
    } while (!overview.IsExact());
    const std::string path = file.toStdString();
    const bool saved = IsFileName(path) && m_frame->grab().save(file);
    if (!saved) {
        MERRLOG("CWavoApp::TakeScreenshot(): cannot write %s", path.c_str());
        Print({QStringLiteral("wavo: cannot write %1\n")
                   .arg(QString::fromStdString(path + FileNameFault(path))),
               1});
    }
    End(saved ? 0 : 1);
}

void CWavoApp::End(int exit_code) {
    m_frame->close();
    exit(exit_code);
}

}  // namespace wavo
