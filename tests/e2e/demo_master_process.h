// demo_master, or another master, as a process of its own, and the recordings that it plays.
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wavo::testing {

/// What demo_master says at its end.
struct MasterTotals {
    std::uint64_t lines_sent = 0;
    std::uint64_t batches_answered = 0;
    std::uint64_t overruns = 0;
};

class DemoMaster {
 public:
    /// Starts the program and waits until its info block is there.
    explicit DemoMaster(const QStringList& arguments);
    /// The same with another program, which says "<name>: window" then.
    DemoMaster(const QString& name, const QString& program, const QStringList& arguments);
    ~DemoMaster();
    DemoMaster(const DemoMaster&) = delete;
    DemoMaster& operator=(const DemoMaster&) = delete;

    /// Asks for an orderly end, keeping the viewer's events going, and returns what it said.
    std::optional<MasterTotals> End();
    /// Waits for the end that comes by itself.
    std::optional<MasterTotals> WaitForEnd(int milliseconds = 30000);
    void Kill();
    /// Stops and continues the process.
    void Freeze();
    void Thaw();

    [[nodiscard]] bool IsRunning() const { return m_process.state() != QProcess::NotRunning; }
    [[nodiscard]] QString Output() const { return m_output; }
    /// Waits until it has said so, while the viewer handles no event. False after 20 s.
    bool WaitForOutputAlone(const QString& text);

 private:
    void ReadOutput();

    QProcess m_process;
    QString m_output;
};

/// The columns of a recording, read without the master's own reader: column, row.
std::vector<std::vector<double>> ReadRecording(const std::string& name,
                                               const std::vector<std::string>& columns);

/// Path of a sample recording.
QString RecordingPath(const std::string& name);

}  // namespace wavo::testing
