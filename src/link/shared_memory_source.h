// The master process as a source of values: its info block, its value FIFO in shared memory and the
// messages between its window and ours.
//
// State       meaning                                          values  Start offered
// kNoMaster   no master is known                               no (1)  yes
// kConnected  a master is known; its FIFO is opened by the     yes     no
//             first batch
// kOverrun    the master told of an overrun, the user is told  yes     no
// kBroken     the link cannot go on as it is: the FIFO ran     yes     yes
//             over or is damaged, the master wrote nonsense
// kRepaired   it broke, and yet values flow                    yes     yes
// kStopped    the end: messages are ignored                    no      no
//
// (1) But for what is left in a FIFO that is still open.
//
// Event                     from              to          what is done
// Start finds a master      any               kConnected  takes its axes over, announces the viewer
// Start finds none          any               kNoMaster
// batch with lines          kBroken           kRepaired   the text says Connected again
// overrun                   any               kOverrun    tells the master goodbye, shows the box;
//                                             kBroken     when that closes: closes the FIFO
// FIFO damaged, nonsense    any               kBroken     tells the master goodbye, closes the FIFO
// link ended, window gone   any               kNoMaster   closes the FIFO
// a master tells that it    kNoMaster, or     kConnected  as Start, but what is shown stays
// is here                   its master died
// Stop, quit                any               kStopped    tells the master goodbye, closes the FIFO
//
// Whether the master answers is another matter and its channel's (WatchedChannel): one that does
// not costs one waiting time, and until it is heard of again nothing is sent to it that would have
// to be waited for.
//
// Invariants:
// 1. Values are read of a master only that the viewer has announced itself to, once it has done so
//    to any.
// 2. A message box runs an event loop, so that any call can come while one waits for its box. Who
//    goes on behind a box looks whether the link is still the one of before (m_link_number).
// 3. Lines behind lines that were lost are told as a begin (ValuesBegin) before they are handed
//    out.
// 4. A link that was closed is answered nothing any more.
// 5. Whoever says that a master is here, and however often: the viewer looks at most once a second
//    whether its own master lives and what the info block says.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "link/ax_value_reader.h"
#include "link/capabilities.h"
#include "link/master_channel.h"
#include "link/master_info.h"
#include "link/watched_channel.h"
#include "source/value_source.h"

namespace wavo {

class SharedMemorySource : public ValueSource, public MasterMessages {
 public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// `channel` is not owned and outlives the source. `clock` only ever goes forward.
    explicit SharedMemorySource(MasterChannel& channel,
                                Clock clock = std::chrono::steady_clock::now);

    // ValueSource
    void SetEvents(ValueSourceEvents* events) override { m_events = events; }
    MaybeFault Start() override;
    void SetComesBack(bool comes_back) override { m_comes_back = comes_back; }
    void Hold() override;
    bool GoOn() override;
    void Stop() override;
    BatchOutcome Take(ValueBatch& batch) override;
    bool Answer() override;
    [[nodiscard]] const SourceDescription& Description() const override { return m_description; }
    [[nodiscard]] AxisLimitsSource& Limits() override { return m_capabilities; }
    [[nodiscard]] bool IsPresent() const override { return m_info.master_window != 0; }
    [[nodiscard]] bool CanStart() const override;
    [[nodiscard]] const std::string& StateText() const override { return m_text; }
    [[nodiscard]] SourceCounters Counters() const override;

    // MasterMessages
    std::int64_t OnMessage(const platform::Message& message) override;
    void OnPeerGone(platform::WindowHandle window) override;
    void OnPeerRefused(platform::WindowHandle window, const char* why) override;

    /// Reads the master's info block, takes over its axes and, with `post`, announces the viewer to
    /// the master. False when there is no master.
    bool Connect(bool post);

    /// The value FIFO is open.
    [[nodiscard]] bool IsReaderOpen() const { return m_reader.IsOpen(); }

 private:
    enum class State { kNoMaster, kConnected, kOverrun, kBroken, kRepaired, kStopped };
    struct FreeMemory {
        void operator()(double* memory) const { std::free(memory); }
    };

    void Enter(State state, const char* text);
    void Say(const char* text);
    /// What is said of a master that answers.
    [[nodiscard]] const char* LinkText() const;

    // A batch.
    bool Receive(ValueBatch& batch);
    /// Opens the FIFO. False when there is nothing to read: the link has ended, or the FIFO was not
    /// that of the master that runs.
    bool OpenReader();
    void AllocateInputBuffer();
    bool ReadWaitingLines(ValueBatch& batch);
    void NoteReadFault(bool is_short, std::uint64_t thrown_away_before);

    // What masters say.
    std::int64_t OnValues(std::uint64_t notice);
    std::int64_t OnLinkEnded();
    std::int64_t OnOverrun();
    std::int64_t OnQuit();
    std::int64_t OnMasterIsHere();
    [[nodiscard]] bool MayLook() const;

    // The end of a link.
    /// Lines that are left in the FIFO are counted.
    void CloseReader();
    void BreakLink(const char* why);
    void ForgetMaster(const char* why);
    /// Another master has taken the place of the one that the viewer had announced itself to.
    void LeaveFormerMaster();
    /// Tells a master that the viewer leaves; one that hangs is not waited for.
    void SayGoodbye(MasterChannel& channel, platform::WindowHandle master);
    void NoteOutcome(platform::WindowHandle master, platform::SendStatus status);

    MasterChannel& m_channel;
    WatchedChannel m_watched;
    SlaveGlobalCapabilities m_capabilities;
    const Clock m_clock;
    ValueSourceEvents* m_events = nullptr;

    State m_state = State::kNoMaster;
    const char* m_why_broken = nullptr;  // what is said in kOverrun and kBroken
    std::string m_text;

    MasterInfo m_info;
    SourceDescription m_description;
    AxValueReader m_reader;
    std::unique_ptr<double[], FreeMemory> m_input_buffer;
    std::size_t m_input_capacity = 0;  // bytes that the master told of; 0 = no buffer
    SourceCounters m_counters;
    std::uint64_t m_link_number = 0;            // another one whenever a link has ended
    std::uint64_t m_taken_link = 0;             // the link that the last batch came by
    std::uint64_t m_announcements = 0;          // of batches
    platform::WindowHandle m_announced_to = 0;  // the last master that was told of the viewer
    bool m_lines_lost = false;     // since the last batch that was taken, in a link that goes on
    bool m_overrun_shown = false;  // its box waits; the state may have gone on
    bool m_read_fault_shown = false;
    bool m_comes_back = false;  // a master that tells of itself is connected to
    bool m_by_itself = false;   // the link was made so, and its FIFO is not open yet
    std::optional<std::chrono::steady_clock::time_point> m_looked;  // last, without success
};

}  // namespace wavo
