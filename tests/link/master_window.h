// The side of a master in tests with the shared memory of the test process: a window that takes
// every message, and the info block that names it.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <future>
#include <string>
#include <thread>

#include "fake_shared_memory.h"
#include "link/wire_format.h"
#include "platform/message_window.h"

namespace wavo::testing {

/// The window of a master that takes every message, in a thread of its own.
class MasterWindow {
 public:
    MasterWindow() {
        std::promise<platform::WindowHandle> made;
        m_thread = std::thread([this, &made] {
            std::string error;
            const auto window = platform::MessageWindow::Create(
                [](const platform::Message&) { return std::int64_t{1}; }, &error);
            EXPECT_NE(window, nullptr) << error;
            made.set_value(window == nullptr ? 0 : window->handle());
            while (window != nullptr && !m_ended) {
                window->WaitAndDispatch(std::chrono::milliseconds(5));
            }
        });
        m_handle = made.get_future().get();
    }
    ~MasterWindow() {
        m_ended = true;
        m_thread.join();
    }
    MasterWindow(const MasterWindow&) = delete;
    MasterWindow& operator=(const MasterWindow&) = delete;

    [[nodiscard]] platform::WindowHandle Handle() const { return m_handle; }

    /// Publishes the info block: one axis, X1, a line each 4 ms, a FIFO of 8 lines.
    void Publish() const {
        MasterInfoBlock block{};
        block.master_window = m_handle;
        block.cycle_time = 0.004;
        block.axis_count = 1;
        block.fifo_lines = 8;
        std::memcpy(block.axis_names, "X1", 3);
        std::memcpy(AddFakeSegment("MachineTools_InfoData", sizeof block), &block, sizeof block);
    }

 private:
    std::atomic<bool> m_ended = false;
    platform::WindowHandle m_handle = 0;
    std::thread m_thread;
};

}  // namespace wavo::testing
