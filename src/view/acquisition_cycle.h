// The road of the values: from the master's announcement of a batch to the value buffers of the
// graphs, and the answer to the master.
//
// States: not connected (no master window); connected with the reader closed (until the first
// batch); connected with the reader open; link broken (after an overrun, when the value FIFO was
// found damaged, or when the master wrote what is no message: reader closed, master window kept).
//
// Invariants:
// 1. Each successful batch is answered by exactly one "ready for new values": after it was drawn
//    when running, at once when stopped. A refused or failed batch gets none.
// 2. Every line that was read is counted in TotalLines, running or not; Counters accounts for every
//    line and every batch.
// 3. Curves begin anew behind lines that were lost: nothing is joined across the gap.
// 4. A master that does not answer costs one waiting time (MessageWindow::kSendTimeout); until it
//    is heard of again nothing is sent to it that would have to be waited for.
// 5. Everything happens on the user interface thread. A message box runs an event loop, so that
//    any handler can be entered while another one waits for its box. Who goes on behind a box looks
//    whether the link is still the one of before (m_link_number).
// 6. A batch that is announced while another one waits for its box is taken and answered when that
//    closes; announced several times, it is one batch.
// 7. Values are read of a master only that the viewer has announced itself to, once it has done so
//    to any.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "link/ax_value_reader.h"
#include "link/capabilities.h"
#include "link/master_channel.h"
#include "link/master_info.h"
#include "platform/message_window.h"
#include "view/graph_board.h"
#include "view/link_counters.h"
#include "view/watched_channel.h"

namespace wavo {

class GraphEditor;

/// Panes of the status bar, by index.
enum class StatusPane { kMessage = 0, kTotalLines = 1, kCycleTime = 2 };

/// What the cycle needs of the view.
class AcquisitionHost {
 public:
    virtual ~AcquisitionHost() = default;
    /// Message box with caption "ERROR".
    virtual void ShowError(const std::string& text) = 0;
    virtual void SetPaneText(StatusPane pane, const std::string& text) = 0;
    /// Makes all graphs anew, draws and shows them.
    virtual void RebuildGraphs() = 0;
    /// Draws the new values into all graphs and shows them; ends with SendPendingReady.
    virtual void DrawNewValues() = 0;
    /// True while all graphs are being drawn.
    [[nodiscard]] virtual bool IsDrawing() const = 0;
    /// Frame title: document name and " - running" or " - stopped".
    virtual void ShowRunTitle() = 0;
    /// Background colour of the graphs; a new curve contrasts with it.
    [[nodiscard]] virtual ColorRef BackgroundColor() const = 0;
    /// The link to the master came or went: what can be commanded has changed.
    virtual void LinkChanged() = 0;
    /// Ends the process with exit code 0 as soon as the handlers that run have returned.
    virtual void EndProcess() = 0;
};

/// Where the time of a batch went.
struct BatchTimes {
    std::chrono::nanoseconds drawing{0};   ///< drawn, and shown where the view is visible
    std::chrono::nanoseconds to_ready{0};  ///< from the announcement until the answer was taken
};

class AcquisitionCycle {
 public:
    /// None of the references is owned; all outlive the cycle.
    AcquisitionCycle(MasterChannel& channel, GraphBoard& board, GraphEditor& editor,
                     AcquisitionHost& host, std::recursive_mutex& value_lock);

    /// Reads the master's info block, takes over its axes and, with `post`, announces the viewer
    /// to the master. False when there is no master.
    bool Connect(bool post);

    /// The command: Connect(true) with its box on failure.
    void ConnectByUser();

    /// Tells the master, when there is one, that the viewer leaves, and closes the reader.
    void LeaveMaster();

    /// Announces the viewer to the master. False when there is none.
    bool JoinMaster();

    /// Gives the graphs and the axes to the graph editor anew.
    void InitialiseEditor();

    /// The view's end: tells the master that the viewer goes, and closes the reader. Messages that
    /// come later are ignored.
    void End();

    /// Handles a message of the master and returns its result.
    std::int64_t OnMessage(const platform::Message& message);

    /// A window that the viewer has talked to has vanished without a word.
    void OnPeerGone(platform::WindowHandle window);

    /// A window that the viewer has talked to wrote what is no message, as `why` tells: no batch of
    /// it can be relied on any more.
    void OnPeerRefused(platform::WindowHandle window, const char* why);

    /// Sends the "ready for new values" that is owed, if any: the end of each drawing step.
    void SendPendingReady();

    /// True = values go into the graphs.
    void SetRunning(bool running) { m_running = running; }
    [[nodiscard]] bool IsRunning() const { return m_running; }

    [[nodiscard]] bool IsMasterKnown() const { return m_info.master_window != 0; }
    /// Whether Connect makes sense: no master, or the link broke.
    [[nodiscard]] bool CanConnect() const { return !IsMasterKnown() || m_link_broken; }
    [[nodiscard]] bool IsReaderOpen() const { return m_reader.IsOpen(); }
    [[nodiscard]] std::uint64_t TotalLines() const { return m_total_lines; }
    /// Ready messages that the master has taken, since the start of the program.
    [[nodiscard]] std::uint64_t BatchesAnswered() const { return m_counters.batches_answered; }
    [[nodiscard]] LinkCounters Counters() const;
    /// How long the batch took that was answered last.
    [[nodiscard]] const BatchTimes& LastBatchTimes() const { return m_batch_times; }
    /// Seconds per line; 0 before the first master.
    [[nodiscard]] double CycleTime() const { return m_info.cycle_time; }
    [[nodiscard]] const std::vector<std::string>& AxisNames() const { return m_axis_names; }
    [[nodiscard]] AxisLimitsSource& Capabilities() { return m_capabilities; }

 private:
    using Clock = std::chrono::steady_clock;

    std::int64_t OnMessageFromMainNewMValues(std::uint64_t notice);
    /// What stands in the input buffer: lines of one value per axis.
    struct Batch {
        std::uint64_t lines = 0;
        std::size_t axes = 0;
    };

    std::int64_t OnNewValues();
    /// All graphs are being drawn.
    std::int64_t RefuseBatch();
    std::int64_t TakeBatch(Clock::time_point announced);
    /// Reads and counts the lines that wait; afterwards they stand in the input buffer.
    bool ReceiveBatch(Batch& batch);
    /// Opens the FIFO and reads what the master says of itself anew. Returns false when there is
    /// nothing to read: the link has ended, or the FIFO was not that of the master that runs.
    bool OpenReader();
    /// Another master has taken the place of the one that the viewer had announced itself to.
    void LeaveFormerMaster();
    void AllocateInputBuffer();
    void StartCurvesAnew();
    bool ReadWaitingLines(Batch& batch);
    void InitEditor();
    void AddDefaultGraph();
    std::int64_t EndLink();
    std::int64_t OnOverrun();
    std::int64_t OnQuit();
    void Fault(const std::string& text);
    /// Shows a box, unless the user has just closed the same one: a batch that waited for it would
    /// else bring it back at once, again and again.
    void ShowBatchError(const std::string& text);
    /// What the status bar says of a link to a master that answers.
    [[nodiscard]] const char* LinkText() const;
    /// Sends to the master and takes note of what became of it. True when the master handled it.
    bool SendToMaster(ToMaster number, std::uint64_t w_param);
    bool NoteOutcome(platform::WindowHandle master, platform::SendStatus status);
    /// Tells the master that the viewer leaves, and takes note of what became of it.
    void SendDisconnect();
    /// Says so to any master; one that hangs is not waited for.
    platform::SendStatus Disconnect(platform::WindowHandle master, bool hangs);
    /// The value FIFO cannot be relied on any more.
    void BreakLink(const char* why);
    /// The end of a link: what was begun for it is void. Lines that are left in the FIFO are
    /// counted.
    void CloseReader();
    void SendReady();
    void ForgetMaster(const std::string& why);

    struct FreeMemory {
        void operator()(double* memory) const { std::free(memory); }
    };

    MasterChannel& m_channel;
    GraphBoard& m_board;
    GraphEditor& m_editor;
    AcquisitionHost& m_host;
    std::recursive_mutex& m_value_lock;

    MasterInfo m_info;
    std::vector<std::string> m_axis_names;  // column order; emptied when no master was found
    AxValueReader m_reader;
    std::unique_ptr<double[], FreeMemory> m_input_buffer;
    std::size_t m_input_capacity = 0;  // bytes that the master told of; 0 = no buffer
    std::uint64_t m_total_lines = 0;   // since the master last ended the link
    LinkCounters m_counters;
    std::uint64_t m_link_number = 0;            // another one whenever a link has ended
    platform::WindowHandle m_announced_to = 0;  // the last master that was told of the viewer
    const char* m_broken_why = nullptr;         // what the status bar says of a link without values
    bool m_link_broken = false;
    std::uint64_t m_ready_link = 0;  // the link that the last batch came by
    bool m_ready_pending = false;
    // The pending ready is being sent. Handlers run meanwhile: they may draw, and draw a new batch.
    bool m_ready_on_its_way = false;
    bool m_taking_batch = false;  // a batch is being taken, perhaps waiting for a message box
    std::optional<Clock::time_point> m_next_announced;  // when another one was meanwhile
    std::vector<std::string> m_boxes_closed;            // since the last batch from outside
    bool m_running = true;
    bool m_ended = false;
    bool m_read_error_shown = false;
    bool m_refusal_shown = false;  // the box that a batch came while drawing waits
    bool m_overrun_shown = false;  // the box of an overrun waits
    bool m_lines_lost = false;     // since the last batch that was taken, in a link that goes on
    bool m_master_hung = false;    // the last message sent was not answered in time
    BatchTimes m_batch_times;
    Clock::time_point m_batch_begin{};
    Clock::time_point m_draw_begin{};
    WatchedChannel m_watched_channel;
    SlaveGlobalCapabilities m_capabilities;
};

}  // namespace wavo
