// The recorder's link to the master: attaches like a viewer, with a window of its own, and takes
// each batch as soon as it is announced.
//
// States: no master; announced to a master, without a FIFO until its first batch; reading. After an
// overrun, and when the FIFO was found damaged, it announces itself again.
//
// Invariants:
// 1. Each batch that is read is answered at once, before anything is done with its lines.
// 2. A master that does not answer costs one waiting time; until it is heard of again it is
// answered
//    without waiting.
// 3. One thread makes all calls; the listener is called from Serve.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "link/ax_value_reader.h"
#include "link/capabilities.h"
#include "link/master_channel.h"
#include "link/master_info.h"
#include "platform/message_window.h"

namespace wavo::recorder {

/// Why lines may be missing before the next ones.
enum class Interruption {
    kOverrun,    ///< the value FIFO ran over
    kDamaged,    ///< it cannot be relied on
    kLinkEnded,  ///< the master ended the link
    kGone,       ///< the master vanished
    kReplaced,   ///< another master took its place
};

class LinkListener {
 public:
    virtual ~LinkListener() = default;
    /// Lines of a master begin to come. Before the first of them, after each interruption.
    virtual void LinkBegan(const MasterInfo& info, AxisLimitsSource& limits) = 0;
    /// Successive lines, a value per axis each.
    virtual void LinesCame(std::vector<double> values, std::size_t lines) = 0;
    virtual void Interrupted(Interruption why) = 0;
    /// Somebody tells this program to quit: the master, or a viewer.
    virtual void ToldToQuit() = 0;
};

class MasterLink final : private MasterChannel {
 public:
    /// `listener` is not owned and outlives this object.
    explicit MasterLink(LinkListener& listener);
    ~MasterLink() override;
    MasterLink(const MasterLink&) = delete;
    MasterLink& operator=(const MasterLink&) = delete;

    /// Makes the window. False on failure, with the reason in words.
    bool Open(std::string* error);

    /// Waits up to `timeout` for messages and handles them; looks for a master where there is none.
    void Serve(std::chrono::milliseconds timeout);

    /// Tells the master that the recorder leaves.
    void Close();

    [[nodiscard]] bool IsMasterKnown() const { return m_info.master_window != 0; }
    [[nodiscard]] platform::WindowHandle window() const { return OwnWindow(); }

 private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] platform::WindowHandle OwnWindow() const override;
    bool Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) override;
    platform::SendStatus Send(platform::WindowHandle master, ToMaster number,
                              std::uint64_t w_param) override;
    [[nodiscard]] bool IsSilent() const override { return m_is_hung; }
    [[nodiscard]] bool Exists(platform::WindowHandle master) const override;

    std::int64_t Handle(const platform::Message& message);
    void PeerGone(platform::WindowHandle window);
    /// Reads the info block; false when there is no master.
    bool ReadInfo(MasterInfo& info);
    void LookForMaster();
    void Announce();
    void TakeBatch();
    /// Reads and answers a batch. False when the FIFO cannot be relied on.
    bool TakeLines();
    bool OpenReader();
    void Disconnect();
    void Interrupt(Interruption why);
    void Break(Interruption why);

    LinkListener& m_listener;
    std::unique_ptr<platform::MessageWindow> m_window;
    MasterInfo m_info;  // of the master that is known
    AxValueReader m_reader;
    SlaveGlobalCapabilities m_capabilities;
    bool m_is_hung = false;       // the last message sent was not answered in time
    bool m_taking_batch = false;  // messages come meanwhile
    bool m_batch_waits = false;
    bool m_is_announced = false;
    std::optional<Interruption> m_deferred;  // to be told behind the lines
    Clock::time_point m_next_look{};
};

}  // namespace wavo::recorder
