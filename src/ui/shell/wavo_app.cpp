#include "ui/shell/wavo_app.h"

#include <QAbstractEventDispatcher>
#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QPixmap>
#include <QScreen>
#include <QSocketNotifier>
#include <QTextStream>
#include <clocale>
#include <cstdio>

#include "platform/folders.h"
#include "platform/process.h"
#include "support/diagnostics.h"
#include "support/diagnostics_output.h"
#include "ui/dialogs/message_boxes.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo {

CWavoApp::CWavoApp(int& argc, char** argv) : QApplication(argc, argv) {
    // The toolkit has taken over the user's locale. Numbers are shown and stored with a point in
    // every country.
    std::setlocale(LC_NUMERIC, "C");
    setApplicationName(QStringLiteral("Wavo"));
    setOrganizationName(QStringLiteral("Velk machine tools wavo"));
    setApplicationVersion(QStringLiteral(WAVO_VERSION));
    setDesktopFileName(QStringLiteral("wavo"));
}

CWavoApp::~CWavoApp() = default;

AppOptions CWavoApp::ParseCommandLine() {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Live signal scope for machine tools: shows the axes of the master process as graphs."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this text and end."));
    const QCommandLineOption version({QStringLiteral("v"), QStringLiteral("version")},
                                     QStringLiteral("Show the version and end."));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QStringLiteral("Save a picture of the window to <file> and end."), QStringLiteral("file"));
    const QCommandLineOption after_lines(
        QStringLiteral("after-lines"),
        QStringLiteral("With --screenshot: wait until <lines> lines were shown (default 1000)."),
        QStringLiteral("lines"), QStringLiteral("1000"));
    parser.addOptions({help, version, screenshot, after_lines});
    parser.addPositionalArgument(QStringLiteral("graphs.ini"),
                                 QStringLiteral("Graph file to open (default: the settings file)."),
                                 QStringLiteral("[graphs.ini]"));
    parser.process(*this);
    bool is_number = false;
    const QStringList files = parser.positionalArguments();
    AppOptions options{parser.value(screenshot), parser.value(after_lines).toULongLong(&is_number),
                       files.value(0)};
    if (parser.isSet(help)) {
        parser.showHelp(0);
    }
    if (parser.isSet(version)) {
        parser.showVersion();
    }
    if (!is_number || files.size() > 1) {
        RefuseArguments(is_number ? "wavo: unexpected argument: " + files[1]
                                  : QStringLiteral("wavo: --after-lines needs a number"),
                        platform::HasStandardError());
        std::exit(2);
    }
    return options;
}

void CWavoApp::RefuseArguments(const QString& why, bool has_standard_error) {
    if (has_standard_error) {
        QTextStream(stderr) << why << "\n";
    } else {
        ShowErrorBox(nullptr, why.toStdString());
    }
}

void CWavoApp::InitInstance(const AppOptions& options) {
    MTRACE(4, "CWavoApp::InitInstance(): starting");
    StartLogs();
    // A picture shows the same on every machine: nothing is remembered for it.
    if (options.screenshot.isEmpty()) {
        m_settings = std::make_unique<QSettings>();
    }
    m_frame = std::make_unique<CMainFrame>(m_settings.get());
    WatchTermination();
    if (options.screenshot.isEmpty()) {
        FitIntoScreen(*m_frame);
    } else {
        connect(&m_frame->View(), &CWavoView::BatchShown, this, [this, options](quint64 total) {
            if (total >= options.after_lines) {
                TakeScreenshot(options.screenshot);
            }
        });
    }
    m_frame->show();
    // In the event loop: a box that is shown meanwhile can then be left with the program's end.
    QMetaObject::invokeMethod(
        &m_frame->View(),
        [this, name = options.graph_file] {
            m_graph_file = FindGraphFile(name);
            m_frame->View().OnInitialUpdate(m_graph_file);
            MTRACE(4, "CWavoApp::InitInstance(): done");
        },
        Qt::QueuedConnection);
}

std::string CWavoApp::FindGraphFile(const QString& name) {
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
    ShowErrorBox(activeWindow(), "Can not open file [" + name.toStdString() + "], not exist");
    return {};
}

void CWavoApp::FitIntoScreen(QWidget& window) {
    const QSize room = window.screen()->availableGeometry().size();
    window.resize(window.size().boundedTo(room));
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
            m_frame->close();
            exit(0);
        });
    }
}

void CWavoApp::TakeScreenshot(const QString& file) {
    disconnect(&m_frame->View(), &CWavoView::BatchShown, this, nullptr);
    const bool saved = m_frame->grab().save(file);
    if (!saved) {
        MERRLOG("CWavoApp::TakeScreenshot(): cannot write %s", file.toUtf8().constData());
    }
    m_frame->close();
    exit(saved ? 0 : 1);
}

}  // namespace wavo
