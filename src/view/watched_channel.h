// A master channel for those who send on their own: what becomes of their messages is told to the
// acquisition cycle as that of its own ones.
#pragma once

#include <functional>
#include <utility>

#include "link/master_channel.h"

namespace wavo {

class WatchedChannel final : public MasterChannel {
 public:
    /// Told the window and what became of a message that was sent to it.
    using Outcome = std::function<void(platform::WindowHandle, platform::SendStatus)>;

    /// `channel` and `is_silent` are not owned and outlive this object; `is_silent` is true while
    /// the master does not answer.
    WatchedChannel(MasterChannel& channel, const bool& is_silent, Outcome outcome)
        : m_channel(channel), m_is_silent(is_silent), m_outcome(std::move(outcome)) {}

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
    [[nodiscard]] bool Exists(platform::WindowHandle master) const override {
        return m_channel.Exists(master);
    }

 private:
    MasterChannel& m_channel;
    const bool& m_is_silent;
    const Outcome m_outcome;
};

}  // namespace wavo
