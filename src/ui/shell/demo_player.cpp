#include "ui/shell/demo_player.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <string>
#include <utility>
#include <vector>

namespace wavo {

namespace {

constexpr std::chrono::seconds kStartPatience{20};
constexpr char kSays[] = "demo_master: ";
constexpr char kPublishes[] = "demo_master: window ";

/// Data that are installed for programs in `folder`.
QString FindData(const QStringList& folders, const QString& name) {
    for (const QString& folder : folders) {
        for (const char* const place : {"data/", "../share/wavo/"}) {
            const QFileInfo file(QDir(folder).filePath(QLatin1String(place) + name));
            if (file.isFile() && file.isReadable()) {
                return QDir::toNativeSeparators(QDir::cleanPath(file.absoluteFilePath()));
            }
        }
    }
    return {};
}

}  // namespace

DemoFiles FindDemoIn(const QStringList& folders) {
    DemoFiles files;
    files.program = QDir::toNativeSeparators(
        QStandardPaths::findExecutable(QStringLiteral("demo_master"), folders));
    if (files.program.isEmpty()) {
        return files;
    }
    QStringList places = folders;
    places << QFileInfo(files.program).absolutePath()
           << QFileInfo(QFileInfo(files.program).canonicalFilePath()).absolutePath();
    files.recording = FindData(places, QStringLiteral("recordings/circle_xy_r50.csv.gz"));
    files.graphs = FindData(places, QStringLiteral("graphs/circle.ini"));
    return files;
}

DemoFiles FindDemo() {
    DemoFiles beside = FindDemoIn({QCoreApplication::applicationDirPath()});
    if (beside.AreThere()) {
        return beside;
    }
    return FindDemoIn({});
}

QString DemoPlayer::Start() {
    std::string error;
    m_process = platform::ChildProcess::Start(
        m_files.program.toStdString(),
        {"--recording", m_files.recording.toStdString(), "--cycle", "0.001", "--loop", "0"},
        &error);
    if (m_process == nullptr) {
        return QString::fromStdString(error);
    }
    // What is linked to it may have something to say, too.
    const QDeadlineTimer patience(kStartPatience);
    std::string reason;
    while (!patience.hasExpired()) {
        const std::string said =
            m_process->ReadLine(std::chrono::milliseconds(patience.remainingTime()));
        if (said.starts_with(kPublishes)) {
            return {};
        }
        if (said.empty() && !m_process->IsRunning()) {
            break;
        }
        if (said.starts_with(kSays) || (!said.empty() && !reason.starts_with(kSays))) {
            reason = said;
        }
    }
    End();
    return reason.empty() ? QStringLiteral("demo_master does not say that it publishes")
           : reason.starts_with(kSays) ? QString::fromStdString(reason.substr(sizeof kSays - 1))
                                       : QString::fromStdString(reason);
}

bool DemoPlayer::IsRunning() {
    if (m_process == nullptr) {
        return false;
    }
    m_process->SkipOutput();
    return m_process->IsRunning();
}

}  // namespace wavo
