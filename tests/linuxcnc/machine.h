// The simulated mill of tools/linuxcnc, started and ended by tests.
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wavo::testing {

class Mill {
 public:
    /// `folder` is where it runs; it exists.
    explicit Mill(QString folder);
    ~Mill();
    Mill(const Mill&) = delete;
    Mill& operator=(const Mill&) = delete;

    [[nodiscard]] QString Path(const QString& name) const { return m_folder + '/' + name; }
    /// Writes a file into its folder.
    void Write(const QString& name, const std::string& text) const;
    /// The text of a file of its folder; empty when there is none.
    [[nodiscard]] std::string Read(const QString& name) const;

    /// Adds a file to the HAL files of its INI file.
    void AddHalFile(const QString& name) const;

    /// Starts it with these arguments of start.sh. Events go on meanwhile. False when it is not
    /// switched on and homed within a minute.
    bool Start(const QStringList& arguments);
    /// Waits until it has ended by itself. Events go on.
    bool WaitForEnd(int milliseconds = 60000);
    /// Ends it in order. Returns its exit status, -1 when it does not end.
    int Stop();

    [[nodiscard]] QString Output() const { return m_output; }

    /// The number of the process among those of the controller that runs this program; nothing when
    /// there is none.
    [[nodiscard]] std::optional<std::int64_t> Process(const std::string& program) const;

 private:
    const QString m_folder;
    QProcess m_process;
    QString m_output;
};

/// Processor time that a process has used so far, seconds.
double ProcessorTimeOf(std::int64_t process);

/// Sends SIGKILL.
void KillProcess(std::int64_t process);

}  // namespace wavo::testing
