// The publishing side of the link: what a program needs to be a master.
//
// A publisher owns the info block, the window that viewers talk to, and for each viewer that
// connects a value FIFO and a capability module. docs/master-protocol.md describes all of it.
//
// Invariants:
// 1. Never waits for a viewer: messages to viewers are posted, a full FIFO is an overrun.
// 2. At most one batch per viewer is announced and not yet answered. (A viewer that connects again
//    without having answered gets batch_grace for it; after that the batch counts as lost.)
// 3. Lines reach a viewer in the order of publishing, without a gap between its connect and its
//    disconnect or overrun.
// 4. Connect and disconnect may come in any order and any number of times: a disconnect is sent
//    and can overtake a connect that was posted before it.
// 5. A FIFO that its viewer holds, or may be about to open because a batch was announced, is never
//    replaced while it is intact: the viewer would go on reading the old one for ever.
// 6. One machine, one master: the info block exists once.
// 7. One thread makes all calls. Messages are handled in Serve only.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "link/master_messages.h"
#include "master/capability_module.h"
#include "master/line_fifo_writer.h"
#include "platform/message_window.h"
#include "platform/shared_memory.h"

namespace wavo::master {

/// How long a batch may stay unanswered after its viewer connected again, unless the options say
/// otherwise.
inline constexpr std::chrono::milliseconds kBatchGrace{1000};

struct PublisherOptions {
    std::vector<std::string> axis_names;  ///< one double of each in every line, in this order
    double cycle_time = 0.001;            ///< seconds per line
    std::uint64_t fifo_lines = 10000;     ///< slots of each value FIFO; one less can wait
    std::vector<AxisLimits> limits;       ///< empty: none are announced
    /// Least time between two announcements to a viewer, unless its FIFO is more than half full.
    /// Zero: a viewer that is ready gets what there is at once, and draws as often as it can.
    std::chrono::nanoseconds announce_interval{0};
    /// How long a batch may stay unanswered after its viewer connected again.
    std::chrono::nanoseconds batch_grace = kBatchGrace;
};

struct Counters {
    std::uint64_t lines_sent = 0;         ///< lines written into the FIFO
    std::uint64_t batches_announced = 0;  ///< new-values messages posted
    std::uint64_t batches_answered = 0;   ///< of these, answered with ready
    std::uint64_t overruns = 0;           ///< times that the FIFO was full

    Counters& operator+=(const Counters& other);
    friend bool operator==(const Counters&, const Counters&) = default;
};

/// A viewer that the publisher knows. It stays known after a disconnect, until its window is gone.
struct ViewerState {
    platform::WindowHandle window = 0;
    bool connected = false;
    Counters counters;  ///< since the window first connected
};

/// What a program may want to hear of. Called from Serve or Publish; from there the publisher may
/// be asked, but not told to do anything. Any of them may be empty.
struct PublisherEvents {
    std::function<void(const ViewerState&)> connected;
    std::function<void(const ViewerState&)> disconnected;
    std::function<void(const ViewerState&)> overrun;
    std::function<void(const ViewerState&)> gone;  ///< its window vanished; the last report of it
};

class MasterPublisher {
 public:
    /// Starts publishing, and tells the viewers that are there already. Returns null on failure and
    /// the reason in words in `*error`: another master runs, options that cannot be published, or a
    /// failure of the system. What a dead master left behind is replaced.
    static std::unique_ptr<MasterPublisher> Start(PublisherOptions options, PublisherEvents events,
                                                  std::string* error);

    /// Ends as End() does.
    ~MasterPublisher();
    MasterPublisher(const MasterPublisher&) = delete;
    MasterPublisher& operator=(const MasterPublisher&) = delete;

    /// The window that viewers send to; 0 after End.
    [[nodiscard]] platform::WindowHandle window() const;

    /// What is published.
    [[nodiscard]] const PublisherOptions& options() const { return m_options; }

    /// Descriptor that is readable while Serve has work; -1 where there is none (Windows: the
    /// thread's messages tell).
    [[nodiscard]] int PollDescriptor() const;

    /// Writes one line for every connected viewer and announces it where the viewer is ready.
    /// A viewer without room is told of the overrun once and gets nothing until it connects again.
    /// REQUIRES: `line` has one value per axis.
    void Publish(std::span<const double> line);

    /// Lines that every viewer being filled could take now; kNoViewer when there is none.
    [[nodiscard]] std::uint64_t Room() const;
    static constexpr std::uint64_t kNoViewer = ~std::uint64_t{0};

    /// The source of the lines has lost some: ends the stream of every viewer that is being filled
    /// as a full FIFO does. Each of them goes on when it connects again.
    void LinesLost();

    /// Handles messages; waits up to `timeout` for the first one. With zero only what is there.
    void Serve(std::chrono::nanoseconds timeout);

    /// Serves until every viewer being filled has taken and answered all lines, at most `timeout`.
    /// Returns whether they have.
    bool WaitUntilTaken(std::chrono::milliseconds timeout);

    /// Replaces the limits of the axes and tells the viewers. A viewer that is just reading its
    /// module gets the new one when it has finished. Returns false, and changes nothing, when a
    /// name is too long.
    bool CapabilitiesChanged(std::vector<AxisLimits> limits);

    /// Tells all connected viewers to quit.
    void Quit();

    /// Tells the viewers that the link ends and removes everything that was published. Nothing is
    /// published any more afterwards; the counters stay.
    void End();

    /// For trying out viewers: answers of viewers are not taken from now on, so no further batch
    /// is announced and the FIFOs run over.
    void IgnoreAnswers() { m_ignore_answers = true; }

    /// The viewers that are known, by window.
    [[nodiscard]] std::vector<ViewerState> Viewers() const;

    /// Viewers that are connected.
    [[nodiscard]] std::size_t ConnectedCount() const;

    /// Sums over all viewers that ever connected.
    [[nodiscard]] Counters Total() const;

 private:
    using Clock = std::chrono::steady_clock;

    struct Viewer {
        LineFifoWriter fifo;
        platform::SharedSegment capabilities;
        Counters counters;
        bool connected = false;
        bool batch_out = false;             ///< announced and not answered
        bool overrun = false;               ///< gets no lines until it connects again
        bool overrun_told = false;          ///< the overrun message was posted
        bool told_anything = false;         ///< its vanishing will be noticed
        bool reading_capabilities = false;  ///< between its two capability messages
        bool capabilities_stale = false;    ///< to be replaced when it has finished reading
        bool capabilities_due = false;      ///< the news of them is still to be posted
        std::optional<Clock::time_point> batch_lost_at;
        std::optional<Clock::time_point> announced_at;  ///< the last time, where that is paced
    };
    using ViewerMap = std::map<platform::WindowHandle, Viewer>;

    MasterPublisher(PublisherOptions options, PublisherEvents events);
    bool PublishInfoBlock(std::string* error);

    std::int64_t Handle(const platform::Message& message);
    void Connect(platform::WindowHandle window);
    void Disconnect(ViewerMap::iterator viewer);
    void Answer(ViewerMap::iterator viewer);
    void CapabilitiesRead(ViewerMap::iterator viewer);

    void Fill(ViewerMap::value_type& viewer, std::span<const double> line);
    void RunOver(ViewerMap::value_type& viewer);
    void Announce();
    bool Tend(ViewerMap::value_type& viewer);
    void TendAll();
    bool Tell(ViewerMap::value_type& viewer, FromMaster number, std::uint64_t w_param = 0);
    bool RenewFifo(ViewerMap::value_type& viewer);
    void RenewCapabilities(ViewerMap::value_type& viewer);
    void TellCapabilities(ViewerMap::value_type& viewer);
    ViewerMap::iterator Forget(ViewerMap::iterator viewer);

    PublisherOptions m_options;
    PublisherEvents m_events;
    std::unique_ptr<platform::MessageWindow> m_window;
    platform::SharedSegment m_info;
    ViewerMap m_viewers;
    /// Windows that are still to be told that this master is here.
    std::vector<platform::WindowHandle> m_untold;
    Counters m_forgotten;  ///< of viewers that are not known any more
    bool m_ignore_answers = false;
};

/// Window of the master that the info block names, if that window exists; else 0.
platform::WindowHandle RunningMaster();

}  // namespace wavo::master
