#include "view/recording_files.h"

#include <QFileInfo>
#include <QString>
#include <algorithm>
#include <utility>

#include "platform/folders.h"
#include "ui/prompts.h"

namespace wavo {

namespace {

constexpr char kRecordingFilter[] = "Recordings|*.mcap|";
constexpr char kAllFilter[] = "All Files|*.*|";

QFileInfo InfoOf(const std::string& path) {
    return QFileInfo(QString::fromStdString(path));
}

}  // namespace

RecordingFiles::RecordingFiles(Session& session, PastView& past, const Prompts& prompts,
                               QWidget& parent, std::function<void(const std::string& path)> opened)
    : m_session(session),
      m_past(past),
      m_prompts(prompts),
      m_parent(parent),
      m_opened(std::move(opened)) {}

std::string RecordingFiles::RecentOf(CommandId id) const {
    const int index = static_cast<int>(id) - static_cast<int>(CommandId::kRecentRecording);
    const bool is_one = index >= 0 && id <= CommandId::kLastRecentRecording;
    return is_one && m_recent ? m_recent(index) : std::string();
}

bool RecordingFiles::IsEnabled(CommandId id) const {
    OpenRecording* const recording = m_session.Recording();
    switch (id) {
        case CommandId::kOpenRecording:
            return true;
        case CommandId::kCloseRecording:
            return recording != nullptr;
        case CommandId::kRecordingGraphs:
            return recording != nullptr && recording->GraphsInside().has_value();
        case CommandId::kFollow:
            return recording != nullptr && !recording->Reader().IsComplete();
        case CommandId::kPreviousFile:
            return recording != nullptr && !recording->Around().previous.empty();
        case CommandId::kNextFile:
            return recording != nullptr && !recording->Around().next.empty();
        default:
            return !RecentOf(id).empty();
    }
}

void RecordingFiles::Execute(CommandId id) {
    if (!IsEnabled(id)) {
        return;
    }
    switch (id) {
        case CommandId::kOpenRecording:
            return Ask();
        case CommandId::kCloseRecording:
            return m_session.Recordings().Close();
        case CommandId::kRecordingGraphs:
            return ShowAttachedGraphs();
        case CommandId::kFollow:
            m_follows = !m_follows;
            Refresh();
            if (m_follows) {
                m_past.MoveToEnd();
            }
            return;
        case CommandId::kPreviousFile:
            Open(m_session.Recording()->Around().previous);
            return;
        case CommandId::kNextFile:
            Open(m_session.Recording()->Around().next);
            return;
        default:
            Open(RecentOf(id));
    }
}

void RecordingFiles::Ask() {
    std::string all;
    for (const RecordingImporter& importer : m_importers) {
        all += importer.filter;
    }
    const OpenRecording* const recording = m_session.Recording();
    const std::string initial = recording != nullptr ? recording->Path()
                                : m_recent           ? m_recent(0)
                                                     : std::string();
    const std::optional<QString> chosen = m_prompts.open_file(
        &m_parent,
        {QStringLiteral("Open Recording"), QString::fromStdString(initial), QStringLiteral("mcap"),
         QString::fromStdString(kRecordingFilter + all + kAllFilter)});
    if (chosen) {
        Open(chosen->toStdString(), OpenedFrom::kDialog);
    }
}

bool RecordingFiles::IsRecording(const std::string& path) const {
    return QString::fromStdString(path).endsWith(QStringLiteral(".mcap"), Qt::CaseInsensitive) ||
           std::ranges::any_of(m_importers, [&path](const RecordingImporter& importer) {
               return importer.is_for(path);
           });
}

bool RecordingFiles::Open(const std::string& path, OpenedFrom from) {
    const std::string absolute =
        platform::NativePath(InfoOf(path).absoluteFilePath().toStdString());
    std::optional<RecordingToOpen> recording(RecordingToOpen{absolute});
    const auto importer = std::ranges::find_if(
        m_importers, [&](const RecordingImporter& each) { return each.is_for(absolute); });
    if (importer != m_importers.end()) {
        recording = importer->import(absolute, from);
    }
    if (!recording) {
        return false;
    }
    auto opened = OpenRecording::Open(std::move(*recording));
    if (!opened) {
        m_prompts.ShowError(&m_parent, opened.Why().text);
        return false;
    }
    if (m_prepare && !m_prepare(**opened)) {
        return false;
    }
    m_follows = false;
    m_session.Recordings().Show(std::move(*opened), InfoOf(absolute).fileName().toStdString());
    m_opened(absolute);
    return true;
}

void RecordingFiles::ShowAttachedGraphs() {
    const std::optional<recording::GraphFile>& graphs = m_session.Recording()->GraphsInside();
    if (m_session.Files().OpenText(graphs->text, graphs->name)) {
        m_session.Recordings().AddGraphIfNone();
        m_session.CommandsChanged();
    }
}

void RecordingFiles::Refresh() {
    OpenRecording* const recording = m_session.Recording();
    if (recording == nullptr) {
        return;
    }
    if (recording->LookAround()) {
        m_session.CommandsChanged();
    }
    m_past.Refresh(m_follows);
}

}  // namespace wavo
