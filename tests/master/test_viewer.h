// A small viewer for tests of masters: built on message windows and the wire formats only, with
// the reading end of a value FIFO written here once more, so that it checks what a master
// publishes independently.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "link/axis_capabilities.h"
#include "link/master_messages.h"
#include "link/wire_format.h"
#include "platform/message_window.h"
#include "platform/shared_memory.h"

namespace wavo::testing {

/// A segment that exists, mapped; released with the object.
class MappedSegment {
 public:
    explicit MappedSegment(const std::string& name);
    ~MappedSegment();
    MappedSegment(const MappedSegment&) = delete;
    MappedSegment& operator=(const MappedSegment&) = delete;

    explicit operator bool() const { return m_address != nullptr; }
    [[nodiscard]] std::uint64_t size() const { return m_size; }

    template <typename Value>
    [[nodiscard]] Value Get(std::size_t offset) const {
        Value value{};
        Copy(offset, &value, sizeof value);
        return value;
    }
    template <typename Value>
    void Set(std::size_t offset, Value value) {
        Store(offset, &value, sizeof value);
    }

 private:
    void Copy(std::size_t offset, void* to, std::size_t size) const;
    void Store(std::size_t offset, const void* from, std::size_t size);

    void* m_address = nullptr;
    std::uint64_t m_size = 0;
};

bool SegmentExists(const std::string& name);

/// The info block as a viewer sees it.
struct Info {
    std::uint64_t master_window = 0;
    double cycle_time = 0.0;
    std::uint64_t fifo_lines = 0;
    std::vector<std::string> axis_names;
};
std::optional<Info> ReadInfo();

class TestViewer {
 public:
    TestViewer();
    ~TestViewer();
    TestViewer(const TestViewer&) = delete;
    TestViewer& operator=(const TestViewer&) = delete;

    [[nodiscard]] platform::WindowHandle handle() const { return m_window->handle(); }
    [[nodiscard]] std::string FifoName() const;
    [[nodiscard]] std::string ModuleName() const;

    /// Reads the info block and posts the connect. False when there is no master.
    bool Connect();
    /// Sends the disconnect and detaches from the FIFO.
    void Disconnect();
    /// Detaches from the FIFO without telling the master.
    void Detach();
    void PostConnect();
    void SendDisconnect();
    void SendReady();
    void Send(ToMaster number);

    /// Handles what has come; waits for the first message up to `timeout`.
    void Serve(std::chrono::milliseconds timeout = std::chrono::milliseconds(0));

    /// Serves until `done`, at most for 20 seconds. Returns whether it is.
    bool ServeUntil(const std::function<bool()>& done);

    /// The records of the capability module, read between the two messages; nothing when there is
    /// no module.
    std::optional<std::map<std::string, AxisCapabilities>> ReadCapabilities();

    [[nodiscard]] bool attached() const { return m_fifo != nullptr; }

    // How it behaves.
    bool takes_batches = true;  ///< opens the FIFO and reads the lines at an announcement
    bool answers = true;        ///< ... and sends ready
    bool disconnects_on_overrun = true;

    // What it saw.
    Info info;
    std::vector<platform::Message> messages;  ///< all, in order
    std::vector<std::vector<double>> lines;
    int batches = 0;
    int failed_opens = 0;  ///< batches whose FIFO could not be opened
    int overruns = 0;
    int link_ends = 0;
    int quits = 0;
    int capability_changes = 0;
    int announcements = 0;  ///< of masters that are here
    bool master_gone = false;

 private:
    std::int64_t Handle(const platform::Message& message);
    void TakeBatch();
    bool Attach();
    void ReadLines();

    std::unique_ptr<platform::MessageWindow> m_window;
    std::unique_ptr<MappedSegment> m_fifo;
};

}  // namespace wavo::testing
