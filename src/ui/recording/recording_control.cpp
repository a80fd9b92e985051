#include "ui/recording/recording_control.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QWidget>
#include <algorithm>
#include <optional>
#include <utility>

#include "platform/process.h"
#include "support/diagnostics.h"
#include "ui/prompts.h"
#include "ui/recording/recording_pane.h"

namespace wavo {

namespace {

constexpr char kFolderSetting[] = "RecordingFolder";
constexpr char kExtension[] = "mcap";

/// Whether a recorder that was asked to record to `asked` writes `file`: that or, where it was
/// taken, the next free name.
bool IsFileOf(const std::string& asked, const std::string& file) {
    const std::string extension = std::string(".") + kExtension;
    const std::string stem =
        asked.ends_with(extension) ? asked.substr(0, asked.size() - extension.size()) : asked;
    return file == asked || file == stem + extension ||
           (file.starts_with(stem + "-") && file.ends_with(extension));
}

}  // namespace

RecordingControl::RecordingControl(QWidget& frame, const Prompts& prompts, RecordingPane& pane,
                                   QSettings* settings, WriteGraphs write_graphs)
    : m_frame(frame),
      m_prompts(prompts),
      m_pane(pane),
      m_settings(settings),
      m_write_graphs(std::move(write_graphs)),
      m_watch([this] { OnChanged(); }, [this](const SeenRecorder& ended) { OnEnded(ended); }) {}

RecordingControl::~RecordingControl() = default;

QString RecordingControl::FindRecorder() {
    const QString name = QStringLiteral("wavo_record");
    const QString beside =
        QStandardPaths::findExecutable(name, {QCoreApplication::applicationDirPath()});
    return beside.isEmpty() ? QStandardPaths::findExecutable(name) : beside;
}

bool RecordingControl::IsEnabled(CommandId id) const {
    return id == CommandId::kRecord || !m_watch.Running().empty();
}

void RecordingControl::Execute(CommandId id) {
    if (id == CommandId::kRecord) {
        Record();
    } else if (id == CommandId::kStopRecording) {
        Stop();
    }
}

QString RecordingControl::InitialPath() const {
    QString folder;
    if (m_settings != nullptr) {
        folder = m_settings->value(QLatin1String(kFolderSetting)).toString();
    }
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) {
        folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    }
    if (!QFileInfo(folder).isDir()) {
        folder = QDir::homePath();
    }
    return QDir::toNativeSeparators(QDir(folder).filePath(QStringLiteral("recording.mcap")));
}

std::string RecordingControl::GraphsToAttach() {
    m_attached = std::make_unique<QTemporaryDir>();
    m_attached->setAutoRemove(false);  // this program may end before the recorder has read it
    const std::string path =
        QDir::toNativeSeparators(m_attached->filePath(QStringLiteral("graphs.ini"))).toStdString();
    if (m_attached->isValid() && m_write_graphs(path)) {
        return path;
    }
    MERRLOG("RecordingControl::Record(): the graphs cannot go with the recording: %s not written",
            path.c_str());
    return {};
}

void RecordingControl::Record() {
    const QString program = FindRecorder();
    if (program.isEmpty()) {
        m_prompts.ShowError(
            &m_frame, "wavo_record, which records, is neither beside this program nor on the path");
        return;
    }
    const std::optional<QString> chosen =
        m_prompts.save_file(&m_frame, {QString(), InitialPath(), QLatin1String(kExtension),
                                       QStringLiteral("Recordings|*.mcap|All Files|*.*|")});
    if (!chosen) {
        return;
    }
    const std::string path = QDir::toNativeSeparators(*chosen).toStdString();
    if (m_settings != nullptr) {
        m_settings->setValue(QLatin1String(kFolderSetting), QFileInfo(*chosen).absolutePath());
    }
    std::vector<std::string> arguments{
        "--out", path, "--wait", "forever", "--quiet", "--tell", std::to_string(m_watch.Window())};
    if (const std::string graphs = GraphsToAttach(); !graphs.empty()) {
        arguments.insert(arguments.end(), {"--attach", graphs});
    }
    std::string error;
    if (!platform::StartDetached(QDir::toNativeSeparators(program).toStdString(), arguments,
                                 &error)) {
        m_prompts.ShowError(&m_frame, "wavo_record could not be started: " + error);
        return;
    }
    m_started.push_back(path);
}

void RecordingControl::Stop() {
    const std::vector<SeenRecorder> running = m_watch.Running();
    if (running.size() == 1) {
        m_watch.Finish(running.front().window);
        return;
    }
    SeveralQuestion question{QStringLiteral("Stop Recording"),
                             QStringLiteral("Which recordings are to end?"),
                             QStringLiteral("&Stop"),
                             {}};
    for (const SeenRecorder& one : running) {
        question.rows << QString::fromStdString(one.notice.file + "   " +
                                                recorder::TimeText(one.notice.seconds) + "  " +
                                                recorder::SizeText(one.notice.bytes));
    }
    for (const int row : m_prompts.choose_several(&m_frame, question)) {
        m_watch.Finish(running[static_cast<std::size_t>(row)].window);
    }
}

void RecordingControl::OnChanged() {
    const std::vector<SeenRecorder> running = m_watch.Running();
    m_pane.Show(running);
    Q_EMIT RecorderNoticed();
    if (m_attached != nullptr && std::ranges::any_of(running, [this](const SeenRecorder& one) {
            return IsFileOf(m_started.empty() ? "" : m_started.back(), one.notice.file);
        })) {
        m_attached->remove();  // it names a file: it has read what goes with it
        m_attached.reset();
    }
    if (running.size() != m_running) {
        m_running = running.size();
        Q_EMIT CommandsChanged();
    }
}

void RecordingControl::OnEnded(const SeenRecorder& ended) {
    m_pane.Remember(ended);
    const auto own = std::ranges::find_if(m_started, [&ended](const std::string& asked) {
        return IsFileOf(asked, ended.notice.file);
    });
    if (own == m_started.end()) {
        return;
    }
    m_started.erase(own);
    if (ended.notice.state == recorder::RecorderState::kFailed) {
        m_prompts.ShowError(
            &m_frame, "Recording to " + ended.notice.file + " has failed: " + ended.notice.reason);
    }
}

}  // namespace wavo
