// The status bar's pane of recorders: a red mark, time and size while one runs. Hidden when there
// is nothing to be told.
#pragma once

#include <QString>
#include <vector>

#include "ui/controls/roomy_label.h"
#include "ui/recording/recorder_watch.h"

namespace wavo {

class RecordingPane : public RoomyLabel {
 public:
    explicit RecordingPane(QWidget* parent);

    /// Shows the first of them, and how many others there are; a tool tip names them all. Behind
    /// them stands what is remembered.
    void Show(const std::vector<SeenRecorder>& running);

    /// Remembers that one ended with losses or failed, until the pane is clicked or another one
    /// begins.
    void Remember(const SeenRecorder& ended);

 protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

 private:
    enum class Mark { kFull, kHollow, kCross };

    void Renew();

    std::vector<SeenRecorder> m_running;
    Mark m_mark = Mark::kFull;
    QString m_remembered;  // empty: nothing
    QString m_remembered_tip;
};

}  // namespace wavo
