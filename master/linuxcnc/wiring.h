// How the chosen pins come to the samplers: the lines that a machine's HAL files need.
//
// A sampler takes 21 pins. More are shared out to several, which run one behind the other in the
// servo thread; each of them then has a fingerprint of the cycle as its last column, by which the
// parts of a line are found to be of one and the same cycle.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "master/linuxcnc/chosen_pins.h"
#include "master/linuxcnc/hal_listing.h"

namespace wavo::master {

/// Begins the names of the signals that the wiring makes.
inline constexpr std::string_view kOwnSignals = "wavo-";

/// Lines that a sampler holds.
inline constexpr int kSamplerDepth = 8000;
inline constexpr std::size_t kMostSamplerPins = 21;
inline constexpr std::size_t kMostSamplers = 8;

/// Which columns a sampler has.
struct SampledChannel {
    std::size_t channel = 0;       ///< its number
    std::vector<ChosenPin> pins;   ///< its columns that are shown
    bool has_fingerprint = false;  ///< a further column, the last
};

/// Shares the pins out to samplers from `first` on. Nothing when they are too many; `*error` says
/// so.
std::optional<std::vector<SampledChannel>> ShareOut(const std::vector<ChosenPin>& pins,
                                                    std::size_t first, std::string* error);

/// All columns of a sampler: the pins, and the fingerprint.
std::vector<std::string> ColumnPins(const SampledChannel& channel);

/// Why these pins cannot be sampled from this controller: one that does not exist, or of a type
/// that cannot be sampled. Empty when they can.
std::string WhyNotSampled(const std::vector<ChosenPin>& pins, const HalListing& hal);

/// Why these samplers do not have these columns; empty when they have.
std::string WhyNotWired(const std::vector<SampledChannel>& channels, const HalListing& hal);

/// The number of the first sampler for the pins: that of our own wiring where it is there already,
/// else behind those of others.
std::size_t FirstChannel(const HalListing& hal);

struct WiringText {
    std::string machine;   ///< path of the INI file
    std::string program;   ///< path of wavo_linuxcnc
    std::string own_pins;  ///< value of --pins; empty when the default is shown
};

/// Begins the first line of the wiring.
inline constexpr std::string_view kWiringMark = "# Wavo: made by wavo_linuxcnc --setup";

/// The lines. Nothing when one is longer than halcmd can read; `*error` says so.
std::optional<std::string> MakeWiring(const std::vector<SampledChannel>& channels,
                                      const HalListing& hal, const WiringText& text,
                                      std::string* error);

}  // namespace wavo::master
