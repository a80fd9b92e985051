// A channel to a master that notes what becomes of each message: who sends on his own need not.
#pragma once

#include <functional>
#include <utility>

#include "link/master_channel.h"

namespace wavo {

class WatchedChannel final : public MasterChannel {
 public:
    /// Told the window and what became of a message that was sent to it.
    using Outcome = std::function<void(platform::WindowHandle, platform::SendStatus)>;

    /// `channel` is not owned and outlives this object.
    WatchedChannel(MasterChannel& channel, Outcome outcome)
        : m_channel(channel), m_outcome(std::move(outcome)) {}

    bool Open(MasterMessages& messages) override { return m_channel.Open(messages); }
    [[nodiscard]] platform::WindowHandle OwnWindow() const override {
        return m_channel.OwnWindow();
    }
    bool Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) override {
        return m_channel.Post(master, number, w_param);
    }
    platform::SendStatus Send(platform::WindowHandle master, ToMaster number,
                              std::uint64_t w_param) override {
        const platform::SendStatus status = m_channel.Send(master, number, w_param);
        m_outcome(master, status);
        return status;
    }
    [[nodiscard]] bool IsSilent() const override { return m_is_silent; }
    void SetSilent(bool is_silent) { m_is_silent = is_silent; }
    [[nodiscard]] bool Exists(platform::WindowHandle master) const override {
        return m_channel.Exists(master);
    }

 private:
    MasterChannel& m_channel;
    const Outcome m_outcome;
    bool m_is_silent = false;
};

}  // namespace wavo
