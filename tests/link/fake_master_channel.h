// A master channel that records what the viewer says and answers as the test wants.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "link/master_channel.h"

namespace wavo::testing {

class FakeMasterChannel : public MasterChannel {
 public:
    static constexpr platform::WindowHandle kViewer = 4711;
    static constexpr platform::WindowHandle kMaster = 815;

    bool Open(MasterMessages&) override { return true; }
    [[nodiscard]] platform::WindowHandle OwnWindow() const override { return kViewer; }

    bool Post(platform::WindowHandle master, ToMaster number, std::uint64_t w_param) override {
        Record("post", master, number, w_param);
        if (on_post) {
            on_post();
        }
        return Exists(master);
    }

    platform::SendStatus Send(platform::WindowHandle master, ToMaster number,
                              std::uint64_t w_param) override {
        Record("send", master, number, w_param);
        if (on_send) {
            on_send(number, w_param);
        }
        return Exists(master) ? send_status : platform::SendStatus::kGone;
    }

    [[nodiscard]] bool IsSilent() const override { return silent; }

    [[nodiscard]] bool Exists(platform::WindowHandle master) const override {
        return alive.contains(master);
    }

    /// Everything said so far, as "post 815 52c 2", and forgets it.
    std::vector<std::string> Take() { return std::exchange(said, {}); }

    std::set<platform::WindowHandle> alive{kMaster};
    bool silent = false;
    platform::SendStatus send_status = platform::SendStatus::kDone;
    std::function<void(ToMaster, std::uint64_t)> on_send;
    std::function<void()> on_post;
    std::vector<std::string> said;

 private:
    void Record(const char* how, platform::WindowHandle master, ToMaster number,
                std::uint64_t w_param) {
        char text[80];
        std::snprintf(text, sizeof text, "%s %llu %x %llu", how,
                      static_cast<unsigned long long>(master), static_cast<unsigned>(number),
                      static_cast<unsigned long long>(w_param));
        said.emplace_back(text);
    }
};

}  // namespace wavo::testing
