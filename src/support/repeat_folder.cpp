#include "support/repeat_folder.h"

#include <algorithm>

namespace wavo::diagnostics {

namespace {

constexpr std::chrono::seconds kShortestWait{1};

/// Whether `duration` has passed. A clock that was set back counts as passed time.
bool HasPassed(std::chrono::seconds duration, RepeatFolder::Clock::time_point since,
               RepeatFolder::Clock::time_point now) {
    return now < since || now - since >= duration;
}

/// "149,899".
std::string Grouped(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t end = digits.size(); end > 3; end -= 3) {
        digits.insert(end - 3, 1, ',');
    }
    return digits;
}

}  // namespace

std::vector<RepeatFolder::Line> RepeatFolder::Add(std::string_view source, int line,
                                                  std::string_view text, Clock::time_point time) {
    Repeated* const known = Find(source, line, text);
    if (known != nullptr && !known->is_over && !HasPassed(kQuiet, known->last, time)) {
        ++known->count;
        ++m_counted;
        known->last = time;
        if (HasPassed(std::max(known->wait, kShortestWait), known->told, time)) {
            return {Tell(*known, time)};
        }
        return {};
    }
    std::vector<Line> lines = FlushAll();  // they came before
    if (known != nullptr) {
        known->last = time;
        known->told = time;
        known->wait = {};
        known->is_over = false;
    } else {
        DropOldest();
        m_remembered.push_back({std::string(source), line, std::string(text), 0, time, time});
    }
    lines.push_back({std::string(source), line, std::string(text), time});
    return lines;
}

std::vector<RepeatFolder::Line> RepeatFolder::Flush(Clock::time_point now) {
    std::vector<Line> lines;
    for (Repeated& repeated : m_remembered) {
        if (repeated.count > 0 && HasPassed(repeated.wait, repeated.told, now)) {
            lines.push_back(Tell(repeated, now));
        }
    }
    return lines;
}

std::vector<RepeatFolder::Line> RepeatFolder::FlushAll() {
    std::vector<Line> lines;
    if (!HasCounts()) {
        return lines;
    }
    for (Repeated& repeated : m_remembered) {
        if (repeated.count > 0) {
            lines.push_back(Tell(repeated, repeated.last));
        }
    }
    return lines;
}

void RepeatFolder::BeginAnew() {
    for (Repeated& repeated : m_remembered) {
        repeated.is_over = true;
    }
}

RepeatFolder::Repeated* RepeatFolder::Find(std::string_view source, int line,
                                           std::string_view text) {
    const auto found =
        std::find_if(m_remembered.begin(), m_remembered.end(), [&](const Repeated& repeated) {
            return repeated.line == line && repeated.text == text && repeated.source == source;
        });
    return found == m_remembered.end() ? nullptr : &*found;
}

void RepeatFolder::DropOldest() {
    if (m_remembered.size() >= kMostRemembered) {
        m_remembered.erase(
            std::min_element(m_remembered.begin(), m_remembered.end(),
                             [](const Repeated& a, const Repeated& b) { return a.last < b.last; }));
    }
}

RepeatFolder::Line RepeatFolder::Tell(Repeated& repeated, Clock::time_point now) {
    Line line{repeated.source, repeated.line,
              repeated.text + " ... " + Grouped(repeated.count) +
                  (repeated.count == 1 ? " time more" : " times more"),
              repeated.last};
    m_counted -= repeated.count;
    repeated.count = 0;
    repeated.told = now;
    repeated.wait = std::clamp(2 * repeated.wait, kShortestWait, kLongestWait);
    return line;
}

}  // namespace wavo::diagnostics
