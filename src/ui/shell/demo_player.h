// The demo: demo_master plays the circle recording as long as the viewer runs.
//
// It is a child that ends with the viewer, however that ends, so that it never stands in the way of
// a machine's master.
#pragma once

#include <QString>
#include <QStringList>
#include <memory>

#include "platform/child_process.h"

namespace wavo {

/// Paths of what the demo is made of.
struct DemoFiles {
    QString program;
    QString recording;
    QString graphs;

    /// All of them were found.
    [[nodiscard]] bool AreThere() const {
        return !program.isEmpty() && !recording.isEmpty() && !graphs.isEmpty();
    }
};

/// Looks for the demo beside this program, else on the path; for its data where they are installed
/// for either. What is not found is empty.
DemoFiles FindDemo();
/// The same beside programs in `folders`, the nearest first; an empty list: on the path.
DemoFiles FindDemoIn(const QStringList& folders);

class DemoPlayer {
 public:
    explicit DemoPlayer(DemoFiles files) : m_files(std::move(files)) {}

    [[nodiscard]] const DemoFiles& Files() const { return m_files; }

    /// Starts it and waits until it can be connected to. Else why not, in words; empty when it can.
    QString Start();
    void End() { m_process.reset(); }
    /// Lets it go on when it has said much.
    [[nodiscard]] bool IsRunning();

 private:
    const DemoFiles m_files;
    std::unique_ptr<platform::ChildProcess> m_process;
};

}  // namespace wavo
