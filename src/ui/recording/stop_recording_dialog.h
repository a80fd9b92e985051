// Which of several recorders are to end.
#pragma once

#include <QDialog>
#include <vector>

#include "ui/recording/recorder_watch.h"

class QListWidget;

namespace wavo {

class StopRecordingDialog : public QDialog {
    Q_OBJECT

 public:
    StopRecordingDialog(const std::vector<SeenRecorder>& running, QWidget* parent);

    /// The windows of those that the user ticked.
    [[nodiscard]] std::vector<platform::WindowHandle> Chosen() const;

 private:
    QListWidget* const m_list;  // child
    std::vector<platform::WindowHandle> m_windows;
};

}  // namespace wavo
