#include "tables/temporary_recording.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/data_file.h"
#include "platform/folders.h"
#include "recording/recording_fault.h"
#include "recording/recording_names.h"

namespace wavo::tables {

namespace {

using recording::kExtension;

constexpr std::string_view kPrefix = "import-";
constexpr std::string_view kLockExtension = ".lock";
/// More than anybody has open at a time.
constexpr int kMostNames = 100'000;

std::string InFolder(const std::string& folder, std::string_view name) {
    return folder + platform::PathSeparator() + std::string(name);
}

std::string LockOf(const std::string& path) {
    return path.substr(0, path.size() - kExtension.size()) + std::string(kLockExtension);
}

}  // namespace

TemporaryRecording::TemporaryRecording(std::string path, recording::RecordingFile lock)
    : m_path(std::move(path)), m_lock(std::move(lock)) {}

TemporaryRecording::TemporaryRecording(TemporaryRecording&& other) noexcept
    : m_path(std::exchange(other.m_path, {})), m_lock(std::move(other.m_lock)) {}

TemporaryRecording& TemporaryRecording::operator=(TemporaryRecording&& other) noexcept {
    if (this != &other) {
        Remove();
        m_path = std::exchange(other.m_path, {});
        m_lock = std::move(other.m_lock);
    }
    return *this;
}

TemporaryRecording::~TemporaryRecording() {
    Remove();
}

void TemporaryRecording::Remove() {
    if (!m_path.empty()) {
        platform::DataFiles().RemoveUnused(m_path);
        m_lock.Close();
        platform::DataFiles().RemoveUnused(LockOf(m_path));
    }
}

Expected<TemporaryRecording> TemporaryRecording::TakeName(const std::string& folder) {
    for (int number = 1;; ++number) {
        std::string path = InFolder(folder, std::string(kPrefix) + std::to_string(number)) +
                           std::string(kExtension);
        bool exists = false;
        recording::RecordingFile lock(platform::DataFiles().CreateNew(LockOf(path), exists));
        if (lock.IsOpen()) {
            return TemporaryRecording(std::move(path), std::move(lock));
        }
        if (!exists || number == kMostNames) {
            return recording::SystemFault(recording::RecordingFault::kCannotWrite, "cannot make",
                                          LockOf(path));
        }
    }
}

void TemporaryRecording::RemoveLeftBehind(const std::string& folder) {
    std::vector<platform::FolderFile> files;
    platform::DataFiles().List(folder, files);
    for (const platform::FolderFile& file : files) {
        if (!file.name.starts_with(kPrefix) || !file.name.ends_with(kLockExtension)) {
            continue;
        }
        const std::string lock = InFolder(folder, file.name);
        const std::string path =
            lock.substr(0, lock.size() - kLockExtension.size()) + std::string(kExtension);
        // The lock goes first: while it is there, nobody takes the name.
        if (platform::DataFiles().RemoveUnused(lock)) {
            platform::DataFiles().RemoveUnused(path);
        }
    }
}

}  // namespace wavo::tables
