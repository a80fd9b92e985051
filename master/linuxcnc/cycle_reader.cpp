#include "master/linuxcnc/cycle_reader.h"

#include <algorithm>
#include <utility>

namespace wavo::master {

namespace {

/// Lines that it takes to find out which of them belong together.
constexpr std::size_t kEnough = CycleReader::kRun + 2 * CycleReader::kMostApart;

/// How far a count is ahead of another one, also where one of them has passed over to 0.
std::int32_t Ahead(std::uint32_t count, std::uint32_t other) {
    return static_cast<std::int32_t>(count - other);
}

}  // namespace

CycleReader::CycleReader(const std::vector<SampleChannel*>& channels, bool have_fingerprint)
    : m_have_fingerprint(have_fingerprint) {
    std::size_t columns = 0;
    for (SampleChannel* const source : channels) {
        m_channels.push_back({source, 0, std::nullopt, 0, {}});
        columns += source->Columns() - (have_fingerprint ? 1 : 0);
    }
    m_line.resize(columns);
    Restart();
}

CycleReader::Outcome CycleReader::Poll(const Take& take) {
    Outcome outcome;
    if (!ReadAll()) {
        const std::uint64_t lost = std::max<std::uint64_t>(Restart(), 1);
        outcome.lost = std::exchange(m_has_given, false) ? lost : 0;
        return outcome;
    }
    if (!m_is_aligned && !Align()) {
        constexpr std::size_t kPlenty = 2 * kEnough;
        outcome.is_apart = std::ranges::all_of(
            m_channels, [](const Channel& channel) { return channel.waiting.size() > kPlenty; });
        if (outcome.is_apart) {
            Restart();
        }
        return outcome;
    }
    Give(take, &outcome);
    return outcome;
}

/// Reads what has come. False when something was lost before or among it.
bool CycleReader::ReadAll() {
    bool is_sound = true;
    for (Channel& channel : m_channels) {
        is_sound = ReadNew(&channel) && is_sound;
    }
    // Asked last: a line behind a loss is written after the loss was counted.
    return is_sound && std::ranges::all_of(m_channels, [](const Channel& channel) {
               return channel.source->Overruns() == channel.overruns;
           });
}

/// False when the numbers have a gap: somebody else reads, too.
bool CycleReader::ReadNew(Channel* channel) {
    bool is_sound = true;
    std::vector<double> values(channel->source->Columns());
    for (std::uint32_t number = 0; channel->source->Read(values, &number);) {
        is_sound = is_sound && (!channel->last_number || number == *channel->last_number + 1);
        channel->last_number = number;
        channel->waiting.push_back({number + channel->overruns, values});
    }
    return is_sound;
}

/// Drops all that waits and begins anew behind the last loss. Returns how many lines that were.
std::uint64_t CycleReader::Restart() {
    std::uint64_t most = 0;
    for (Channel& channel : m_channels) {
        std::uint64_t lost = 0;
        for (bool is_stable = false; !is_stable;) {
            const std::uint32_t overruns = channel.source->Overruns();
            lost += overruns - channel.overruns;
            channel.overruns = overruns;
            channel.last_number.reset();
            ReadNew(&channel);
            lost += channel.waiting.size();
            channel.waiting.clear();
            is_stable = channel.source->Overruns() == overruns;
        }
        most = std::max(most, lost);
    }
    m_is_aligned = !m_have_fingerprint;
    return most;
}

void CycleReader::Give(const Take& take, Outcome* outcome) {
    while (std::ranges::none_of(m_channels,
                                [](const Channel& channel) { return channel.waiting.empty(); })) {
        if (!IsWhole()) {
            outcome->lost = std::exchange(m_has_given, false) ? 1 : 0;
            m_is_aligned = false;
            return;
        }
        auto place = m_line.begin();
        for (Channel& channel : m_channels) {
            const std::vector<double>& values = channel.waiting.front().values;
            const auto end = values.end() - (m_have_fingerprint ? 1 : 0);
            place = std::copy(values.begin(), end, place);
            channel.waiting.pop_front();
        }
        take(m_line);
        ++outcome->lines;
        m_has_given = true;
    }
}

/// Whether the oldest lines of all channels are of one cycle.
bool CycleReader::IsWhole() const {
    const Sample& first = m_channels.front().waiting.front();
    return std::ranges::all_of(m_channels, [&](const Channel& channel) {
        const Sample& sample = channel.waiting.front();
        return Ahead(sample.cycle, first.cycle) == channel.shift &&
               (!m_have_fingerprint || sample.values.back() == first.values.back());
    });
}

/// Finds out which lines belong together, as soon as there are enough. False when it could not.
bool CycleReader::Align() {
    for (const Channel& channel : m_channels) {
        if (channel.waiting.size() < kEnough) {
            return false;
        }
    }
    for (Channel& channel : m_channels) {
        if (!FindShift(&channel)) {
            return false;
        }
    }
    // From the first cycle on that all of them have.
    const std::uint32_t first = m_channels.front().waiting.front().cycle;
    std::int32_t latest = 0;
    for (const Channel& channel : m_channels) {
        latest = std::max(latest, Ahead(channel.waiting.front().cycle, first) - channel.shift);
    }
    DropBefore(first + static_cast<std::uint32_t>(latest));
    m_is_aligned = true;
    return true;
}

/// The smallest shift with which the fingerprints agree.
bool CycleReader::FindShift(Channel* channel) const {
    const Channel& first = m_channels.front();
    const std::uint32_t begin = first.waiting.front().cycle + kMostApart;
    const auto agree = [&](std::int32_t shift) {
        for (std::uint32_t i = 0; i < kRun; ++i) {
            const Sample* const one = Find(first, begin + i);
            const Sample* const other =
                Find(*channel, begin + i + static_cast<std::uint32_t>(shift));
            if (one == nullptr || other == nullptr || one->values.back() != other->values.back()) {
                return false;
            }
        }
        return true;
    };
    for (std::int32_t apart = 0; apart <= kMostApart; ++apart) {
        for (const std::int32_t shift : {apart, -apart}) {
            if (agree(shift)) {
                channel->shift = shift;
                return true;
            }
        }
    }
    return false;
}

/// The line of a cycle, where it waits.
const CycleReader::Sample* CycleReader::Find(const Channel& channel, std::uint32_t cycle) {
    const std::int32_t place = Ahead(cycle, channel.waiting.front().cycle);
    return place >= 0 && static_cast<std::size_t>(place) < channel.waiting.size()
               ? &channel.waiting[static_cast<std::size_t>(place)]
               : nullptr;
}

/// Drops what is older than a cycle of the first channel.
void CycleReader::DropBefore(std::uint32_t cycle) {
    for (Channel& channel : m_channels) {
        const std::uint32_t own = cycle + static_cast<std::uint32_t>(channel.shift);
        while (!channel.waiting.empty() && Ahead(channel.waiting.front().cycle, own) < 0) {
            channel.waiting.pop_front();
        }
    }
}

}  // namespace wavo::master
