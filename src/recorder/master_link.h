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

#include "link/master_channel.h"
#include "link/shared_memory_source.h"
#include "platform/message_window.h"

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
class WindowChannel final : public MasterChannel {
 public:
    bool Open(MasterMessages& messages) override;
    [[nodiscard]] platform::WindowHandle OwnWindow() const override;
    bool Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) override;
    platform::SendStatus Send(platform::WindowHandle master, ToMaster number,
                              std::uint64_t w_param) override;
    [[nodiscard]] bool Exists(platform::WindowHandle master) const override;

    /// Called before a master that tells of an overrun, or has vanished, is left: what it has
    /// written until then can still be read.
    void SetBeforeLeaving(std::function<void()> handler) { m_before_leaving = std::move(handler); }

    /// Handles what comes within `timeout`. REQUIRES: Open.
    void Serve(std::chrono::milliseconds timeout);
    /// Why Open failed.
    [[nodiscard]] const std::string& Error() const { return m_error; }

 private:
    [[nodiscard]] platform::Message MessageTo(ToMaster number, std::uint64_t w_param) const;

    std::unique_ptr<platform::MessageWindow> m_window;
    std::function<void()> m_before_leaving;
    std::string m_error;
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
    WindowChannel m_channel;
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
