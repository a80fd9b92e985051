#include "master/linuxcnc/hal_listing.h"

#include <algorithm>
#include <sstream>

#include "support/number_text.h"

namespace wavo::master {

namespace {

constexpr std::string_view kMotionController = "motion-controller";

/// The words of each line of a text.
std::vector<std::vector<std::string>> WordsOf(std::string_view text) {
    std::vector<std::vector<std::string>> lines;
    std::istringstream stream{std::string(text)};
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words(line);
        std::vector<std::string>& found = lines.emplace_back();
        for (std::string word; words >> word;) {
            found.push_back(word);
        }
    }
    return lines;
}

}  // namespace

HalListing HalListing::Parse(std::string_view pins, std::string_view threads) {
    HalListing listing;
    for (const std::vector<std::string>& words : WordsOf(pins)) {
        // owner, type, direction, value, name and, where it is on a signal, an arrow and its name
        if (words.size() == 5 || words.size() == 7) {
            listing.m_pins[words[4]] = {words[1], words.size() == 7 ? words[6] : ""};
        }
    }
    for (const std::vector<std::string>& words : WordsOf(threads)) {
        // period in nanoseconds, floating point, name, two times, the functions
        if (words.size() > 3 && std::ranges::find(words, kMotionController) != words.end()) {
            listing.m_servo_thread = words[2];
            listing.m_servo_period = ReadDouble(words[0]) / 1e9;
        }
    }
    return listing;
}

const HalPin* HalListing::Find(const std::string& pin) const {
    const auto found = m_pins.find(pin);
    return found != m_pins.end() ? &found->second : nullptr;
}

bool HalListing::IsOnSignal(const std::string& pin, std::string_view beginning) const {
    const HalPin* const found = Find(pin);
    return found != nullptr && found->signal.starts_with(beginning);
}

std::size_t HalListing::SamplerColumns(std::size_t channel) const {
    std::size_t columns = 0;
    while (m_pins.contains(SamplerPin(channel, columns))) {
        ++columns;
    }
    return columns;
}

std::string SamplerPin(std::size_t channel, std::size_t column) {
    return "sampler." + std::to_string(channel) + ".pin." + std::to_string(column);
}

}  // namespace wavo::master
