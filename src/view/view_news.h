// What the view tells the frame.
#pragma once

#include <QObject>
#include <QString>

#include "session/session_observer.h"

namespace wavo {

class ViewNews : public QObject {
    Q_OBJECT

 public:
    using QObject::QObject;

 Q_SIGNALS:
    /// A status bar pane has a new text.
    void PaneTextChanged(wavo::StatusPane pane, const QString& text);
    /// The frame has a new title.
    void FrameTitleChanged(const QString& title);
    /// What can be commanded may have changed.
    void CommandsChanged();
    /// A graph file was opened that belongs into the list of recent files.
    void RecentFileOpened(const QString& path);
    /// The user has opened a recording.
    void RecordingOpened(const QString& path);
    /// A batch was drawn and answered; `total` lines have been received.
    void BatchShown(quint64 total);
    /// Cursors, graphs or their selection are others than those that were measured.
    void MeasureChanged();
    /// The master told the viewer to end.
    void QuitRequested();
};

}  // namespace wavo
