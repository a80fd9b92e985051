// Recordings that are there only as long as a program looks at them.
//
// Beside each one stands a file that its owner holds open, so that others can tell what is left
// behind: import-12.mcap and import-12.lock.
#pragma once

#include <string>

#include "recording/recording_file.h"
#include "support/fault.h"

namespace wavo::tables {

class TemporaryRecording {
 public:
    /// Takes a name in a folder that is there. No file has this name; who writes it makes it.
    static Expected<TemporaryRecording> TakeName(const std::string& folder);

    /// Removes the recording, if there is one. Whoever reads it still may go on, on systems that
    /// keep what is open; its readers are closed before.
    ~TemporaryRecording();
    TemporaryRecording(TemporaryRecording&& other) noexcept;
    TemporaryRecording& operator=(TemporaryRecording&& other) noexcept;

    /// Where the recording is or will be.
    [[nodiscard]] const std::string& Path() const { return m_path; }

    /// Removes the recordings of programs that have ended without doing so.
    static void RemoveLeftBehind(const std::string& folder);

 private:
    TemporaryRecording(std::string path, recording::RecordingFile lock);
    void Remove();

    std::string m_path;  // empty: moved away
    recording::RecordingFile m_lock;
};

}  // namespace wavo::tables
