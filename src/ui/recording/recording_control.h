// The commands of the menu Recording, and its pane.
//
// Recording is done by wavo_record, a program of its own, so that it survives the viewer.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/recording/recorder_watch.h"
#include "view/command_target.h"

class QSettings;
class QTemporaryDir;
class QWidget;

namespace wavo {

class RecordingPane;
struct Prompts;

class RecordingControl final : public QObject, public CommandTarget {
    Q_OBJECT

 public:
    /// Writes the graphs that are shown to a file; false when that failed.
    using WriteGraphs = std::function<bool(const std::string& path)>;

    /// What is asked stands over `frame`. No reference is owned; all outlive this object. Without
    /// settings no folder is remembered.
    RecordingControl(QWidget& frame, const Prompts& prompts, RecordingPane& pane,
                     QSettings* settings, WriteGraphs write_graphs);
    ~RecordingControl() override;

    /// Looks for recorders that run, and is told of others from now on.
    void Open() { m_watch.Open(); }

    // CommandTarget
    [[nodiscard]] bool IsEnabled(CommandId id) const override;
    void Execute(CommandId id) override;

    [[nodiscard]] const RecorderWatch& Watch() const { return m_watch; }

    /// The program that records: beside this one, else on the path. Empty when there is none.
    static QString FindRecorder();

 Q_SIGNALS:
    /// What can be commanded may have changed.
    void CommandsChanged();
    /// A recorder has told how far it is.
    void RecorderNoticed();

 private:
    void Record();
    void Stop();
    /// A copy of the graphs for the recorder to attach; empty when there can be none.
    std::string GraphsToAttach();
    [[nodiscard]] QString InitialPath() const;
    void OnChanged();
    void OnEnded(const SeenRecorder& ended);

    QWidget& m_frame;
    const Prompts& m_prompts;
    RecordingPane& m_pane;
    QSettings* const m_settings;
    const WriteGraphs m_write_graphs;
    RecorderWatch m_watch;
    std::vector<std::string> m_started;  // what this viewer asked to be recorded to, not ended yet
    std::unique_ptr<QTemporaryDir> m_attached;
    std::size_t m_running = 0;  // as the commands were last told
};

}  // namespace wavo
