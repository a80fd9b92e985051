// What `halcmd -s show` tells of the pins and threads of a running controller.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavo::master {

struct HalPin {
    std::string type;    ///< "float", "bit", "s32", "u32", or one that cannot be sampled
    std::string signal;  ///< empty: it is on none
};

class HalListing {
 public:
    /// `pins` and `threads` are what halcmd wrote; lines that look different are skipped.
    static HalListing Parse(std::string_view pins, std::string_view threads);

    /// The pin of this name; null when there is none.
    [[nodiscard]] const HalPin* Find(const std::string& pin) const;

    /// Whether a pin of this name is on a signal that begins so.
    [[nodiscard]] bool IsOnSignal(const std::string& pin, std::string_view beginning) const;

    /// Number of columns of a sampler; 0: there is no such sampler.
    [[nodiscard]] std::size_t SamplerColumns(std::size_t channel) const;

    /// The thread in which the motion controller runs; nothing when none does.
    [[nodiscard]] std::optional<std::string> ServoThread() const { return m_servo_thread; }

    /// Its time from one cycle to the next, seconds; 0 when there is none.
    [[nodiscard]] double ServoPeriod() const { return m_servo_period; }

 private:
    std::map<std::string, HalPin> m_pins;
    std::optional<std::string> m_servo_thread;
    double m_servo_period = 0.0;
};

/// Name of a column of a sampler.
std::string SamplerPin(std::size_t channel, std::size_t column);

}  // namespace wavo::master
