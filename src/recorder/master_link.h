// The recorder's link to the master: attaches like a viewer, with a window of its own, and takes
// and answers each batch as soon as it is announced. Behind whatever ends a link it looks for the
// next.
//
// One thread makes all calls; the listener is called from Serve.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "link/shared_memory_source.h"
#include "link/window_channel.h"

namespace wavo::recorder {

/// Why lines may be missing before the next ones.
enum class Interruption {
    kOverrun,     ///< the value FIFO ran over
    kDamaged,     ///< it cannot be relied on
    kThrownAway,  ///< a batch had no room in the buffer
    kLinkEnded,   ///< the master ended the link
    kGone,        ///< the master vanished
    kReplaced,    ///< another master took its place
};

class LinkListener {
 public:
    virtual ~LinkListener() = default;
    /// Lines begin to come: before the first of them, and behind each interruption.
    virtual void LinkBegan(const SourceDescription& lines, AxisLimitsSource& limits) = 0;
    /// Successive lines, a value per axis each.
    virtual void LinesCame(std::vector<double> values, std::size_t lines) = 0;
    virtual void Interrupted(Interruption why) = 0;
    /// Somebody tells this program to quit: the master, or a viewer.
    virtual void ToldToQuit() = 0;
};

/// A message window in the loop of a program without an event loop.
class ServedChannel final : public WindowChannel, private MasterMessages {
 public:
    bool Open(MasterMessages& messages) override;

    /// Called before a master that tells of an overrun, or has vanished, is left: what it has
    /// written until then can still be read.
    void SetBeforeLeaving(std::function<void()> handler) { m_before_leaving = std::move(handler); }

    /// Gets messages that no master sends. REQUIRES: before Open.
    void SetOthersHandler(std::function<void(const platform::Message&)> handler) {
        m_others = std::move(handler);
    }

    /// Sends a message with the own window as lParam and waits until it was handled. False when
    /// there is no such window.
    bool TellAndWait(platform::WindowHandle window, std::uint32_t number);

    /// Handles what comes within `timeout`. REQUIRES: Open.
    void Serve(std::chrono::milliseconds timeout);

 private:
    // MasterMessages
    std::int64_t OnMessage(const platform::Message& message) override;
    void OnPeerGone(platform::WindowHandle window) override;
    void OnPeerRefused(platform::WindowHandle window, const char* why) override;

    MasterMessages* m_messages = nullptr;  // who gets them behind the channel
    std::function<void()> m_before_leaving;
    std::function<void(const platform::Message&)> m_others;
};

class MasterLink final : private ValueSourceEvents {
 public:
    /// `listener` is not owned and outlives this object.
    explicit MasterLink(LinkListener& listener);
    ~MasterLink() override;
    MasterLink(const MasterLink&) = delete;
    MasterLink& operator=(const MasterLink&) = delete;

    /// Makes the window and looks for a master. False when there can be no window, with the reason.
    bool Open(std::string* error);

    /// Waits up to `timeout` for messages and handles them; looks for a master where there is none.
    void Serve(std::chrono::milliseconds timeout);

    /// Tells the master that the recorder leaves.
    void Close();

    [[nodiscard]] bool IsMasterKnown() const { return m_source.IsPresent(); }
    /// The recorder's window, for what does not concern masters.
    [[nodiscard]] ServedChannel& Channel() { return m_channel; }
    [[nodiscard]] platform::WindowHandle window() const { return m_channel.OwnWindow(); }

 private:
    using Clock = std::chrono::steady_clock;

    bool BatchReady() override;
    void Described(bool /*by_itself*/) override {}
    void StateChanged() override {}
    void ValuesBegin(bool by_itself) override;
    void Closed() override;
    void Ended() override { m_has_ended = true; }
    void Quit() override { m_listener.ToldToQuit(); }
    void ShowFault(const std::string& /*text*/) override {}
    void ShowBatchFault(const std::string& /*text*/) override {}

    void LookForMaster();
    /// Takes the lines that wait, if there are any, and hands them on.
    void TakeRest();
    bool Take(bool is_answered);
    /// Tells of an interruption, once it is known what it was.
    void TellInterruption();
    [[nodiscard]] Interruption WhyInterrupted() const;

    LinkListener& m_listener;
    ServedChannel m_channel;
    SharedMemorySource m_source;
    SourceCounters m_seen;     // what the source had counted when the link began
    bool m_is_linked = false;  // lines come
    bool m_is_interrupted = false;
    bool m_has_ended = false;  // in order
    bool m_taking_batch = false;
    bool m_batch_waits = false;  // announced while the one before is answered
    Clock::time_point m_next_look{};
};

}  // namespace wavo::recorder
