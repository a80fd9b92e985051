// The real viewer in the test process, with message boxes that are recorded instead of shown.
#pragma once

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QTest>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "demo_master_process.h"
#include "real_prompts.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo::testing {

class Viewer : public ::testing::Test {
 protected:
    Viewer();
    ~Viewer() override;

    /// Makes a frame with a graph of each axis (derivation 0) that holds `time_range` seconds, and
    /// does its first update.
    void Open(const std::vector<std::string>& axes, double time_range = 10.0);
    /// The same with these graphs.
    void OpenWith(const std::vector<WavoGraph>& graphs);
    void Close() { m_frame.reset(); }

    CWavoView& View() { return m_frame->View(); }
    const Acquisition& Cycle() { return m_frame->View().Work().Values(); }

    /// Keeps the events going until the condition holds.
    static bool WaitFor(const std::function<bool()>& condition, int milliseconds = 60000) {
        return QTest::qWaitFor(condition, milliseconds);
    }
    ::testing::AssertionResult WaitForLines(std::uint64_t lines, int milliseconds = 60000) {
        if (WaitFor([this, lines] { return Cycle().TotalLines() >= lines; }, milliseconds)) {
            return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << Cycle().TotalLines() << " lines of " << lines
                                             << ", boxes: " << ::testing::PrintToString(m_boxes);
    }

    /// What the status bar says of the link.
    std::string Message() { return m_frame->PaneText(StatusPane::kMessage).toStdString(); }
    bool WaitForMessage(const std::string& text) {
        return WaitFor([&] { return Message() == text; });
    }

    /// Writes a graph file into the test's folder and returns its path.
    std::string WriteGraphFile(const std::vector<WavoGraph>& graphs);

    /// What the buffer of an axis holds, oldest first.
    std::vector<double> Held(const std::string& axis);

    std::vector<std::string> TakeBoxes() { return std::exchange(m_boxes, {}); }

    QTemporaryDir m_folder;
    Prompts m_prompts = RealPrompts();
    std::unique_ptr<CMainFrame> m_frame;
    std::vector<std::string> m_boxes;
};

}  // namespace wavo::testing
