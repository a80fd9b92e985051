#include "graph/values/graph_value.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <limits>
#include <span>
#include <utility>

#include "graph/values/derivative_run.h"
#include "graph/values/report_texts.h"
#include "source/derivation.h"
#include "support/diagnostics.h"

// Times and positions come from the very rounding of each single operation.
#if defined(__FAST_MATH__)
#error "the value buffers need exact IEEE arithmetic: build without -ffast-math"
#endif

namespace wavo {

namespace {

/// Dropped samples that can still be read: a curve holds one or two more than the buffer, and does
/// not drop its oldest before it has taken the new ones.
constexpr std::uint64_t kLeastKept = 512;
constexpr std::uint64_t kKeptOfCapacity = 512;  // one of so many

/// Truncates toward zero; 0 for negative numbers and what is not a number, the largest count for
/// numbers beyond it.
template <typename Count>
Count TruncateToCount(double number) {
    if (!(number >= 1.0)) {
        return 0;
    }
    // The first number that does not fit; the largest count itself is no double of 64 bit.
    const double end = std::ldexp(1.0, std::numeric_limits<Count>::digits);
    return number < end ? static_cast<Count>(number) : std::numeric_limits<Count>::max();
}

}  // namespace

GraphValue::GraphValue(std::string name, double cycle_time, double time_range,
                       std::int32_t derivation_order)
    : m_name(std::move(name)),
      m_cycle_time(cycle_time),
      m_time_range(time_range),
      m_derivation_order(derivation_order),
      m_divisor(DerivationDivisor(cycle_time, derivation_order)),
      m_capacity(ComputeCapacity()) {
    ExpectCapacity();
}

std::uint64_t GraphValue::ComputeCapacity() const {
    return TruncateToCount<std::uint64_t>(m_time_range / m_cycle_time);
}

void GraphValue::ExpectCapacity() {
    m_values.SetExpectedSize(m_capacity, std::max(kLeastKept, m_capacity / kKeptOfCapacity));
}

std::uint64_t GraphValue::StoredCount() const {
    if (m_stored_base >= m_capacity) {
        return m_stored_base;
    }
    const std::uint64_t appended = m_values.Appended() - m_stored_base_appended;
    return m_stored_base + std::min(appended, m_capacity - m_stored_base);
}

bool GraphValue::Full() const {
    const std::uint64_t stored = StoredCount();
    return stored >= m_capacity && stored != 0;
}

void GraphValue::SetEnabled(bool enabled) {
    m_enabled = enabled;
    if (!enabled) {
        m_values.CloseRun();
    }
}

void GraphValue::ForgetHistory() {
    m_values.CloseRun();  // a run of a derived stream needs the history
    m_history.clear();
    BeginDerivation();
}

void GraphValue::BeginDerivation() {
    if (m_derivation_order >= 1) {
        m_lines.BeginDerivation(m_values.Appended());
    }
}

void GraphValue::ExpectLine(std::int64_t line) {
    if (!m_enabled) {
        return;
    }
    m_lines.Expect(m_values.Appended(), line);
    m_lines.ForgetBefore(std::min(m_values.FirstSequence(), m_new_begin));
}

void GraphValue::SetValueAtRunEnd(double sample) {
    if (!m_enabled) {
        return;
    }
    const double value = m_derivation_order < 1 ? sample : DeriveAtStart(sample);
    if (!Full() && !m_values.MakeRoom()) {
        CapacityBecomesSize();
    }
    KeepNewValue(value);
    if (Full()) {
        m_values.Replace(value);
    } else if (!m_values.PushBack(value)) {
        return;
    }
    OpenRun();
}

void GraphValue::SetValues(const double* samples, std::size_t count, std::size_t stride) {
    std::size_t done = 0;
    while (m_enabled && done < count) {
        if (!m_values.RunOpen()) {
            SetValueAtRunEnd(samples[done * stride]);
            ++done;
            continue;
        }
        const std::span<double> room = m_values.RunRoom();
        const std::size_t filled = std::min(room.size(), count - done);
        FillRun(room.data(), samples + done * stride, filled, stride);
        m_values.Advance(filled);
        done += filled;
    }
}

void GraphValue::FillRun(double* out, const double* samples, std::size_t count,
                         std::size_t stride) {
    if (m_derivation_order < 1) {
        for (std::size_t i = 0; i < count; ++i) {
            out[i] = samples[i * stride];
        }
        return;
    }
    if (m_derivation_order > 2) {
        for (std::size_t i = 0; i < count; ++i) {
            out[i] = DeriveHigher(samples[i * stride]);
        }
        return;
    }
    DeriveRun(out, samples, count, stride);
}

void GraphValue::DeriveRun(double* out, const double* samples, std::size_t count,
                           std::size_t stride) {
    // The raw samples of a stretch one behind the other, the last ones before it in front.
    constexpr std::size_t kStretch = 256;
    const auto order = static_cast<std::size_t>(m_derivation_order);
    std::array<double, 2 + kStretch> raw;
    double* const first = raw.data() + order;
    const auto derive = [&](const double* from, std::size_t length, std::size_t done) {
        if (order == 1) {
            DeriveOnce(from, length, m_divisor, out + done);
        } else {
            DeriveTwice(from, length, m_divisor, out + done);
        }
    };
    std::copy(m_history.begin(), m_history.end(), raw.data());
    // Samples that lie so already are copied only where they follow the ones before.
    const std::size_t copied = stride == 1 ? std::min(order, count) : count;
    for (std::size_t done = 0; done < copied;) {
        const std::size_t length = std::min(kStretch, copied - done);
        for (std::size_t i = 0; i < length; ++i) {
            first[i] = samples[(done + i) * stride];
        }
        derive(first, length, done);
        std::copy_n(first + length - order, order, raw.data());
        done += length;
    }
    if (copied < count) {
        derive(samples + copied, count - copied, copied);
        std::copy_n(samples + count - order, order, raw.data());
    }
    std::copy_n(raw.data(), order, m_history.begin());
}

void GraphValue::OpenRun() {
    if (!m_enabled || m_new_values_aside || !HistoryFull()) {
        m_values.CloseRun();
        return;
    }
    const std::uint64_t new_count = NewCount();
    // The new values may number one more than this; that one goes the long way.
    std::uint64_t count = m_capacity - std::min(m_capacity, new_count);
    if (Full()) {
        count = std::min(count, m_values.Size() - new_count);
        m_values.OpenRun(SampleRing::RunKind::kReplace, count);
        return;
    }
    count = std::min(count, m_capacity - StoredCount());
    m_values.OpenRun(SampleRing::RunKind::kGrow, count);
}

void GraphValue::KeepNewValue(double value) {
    const std::uint64_t new_count = NewCount();
    if (new_count > m_capacity) {
        CopyNewValuesAside();
        MERRLOG(values_texts::kNewValuesOverrun);
        return;
    }
    if (Full() && new_count == m_values.Size()) {
        CopyNewValuesAside();
    }
    if (m_new_values_aside) {
        m_new_values.push_back(value);
    }
}

void GraphValue::CopyNewValuesAside() {
    if (m_new_values_aside) {
        return;
    }
    const auto count = static_cast<std::size_t>(NewCount());
    wavo::CopyOut(m_values, m_new_values, m_values.Size() - count, count);
    m_new_values_aside = true;
}

void GraphValue::CapacityBecomesSize() {
    m_capacity = m_values.Size();
    m_stored_base = m_capacity;
    m_stored_base_appended = m_values.Appended();
    MERRLOG("GraphValue::SetValue(): out of memory, holding %" PRIu64 " values", m_capacity);
}

void GraphValue::Reset() {
    m_values.Clear();
    m_capacity = ComputeCapacity();
    ExpectCapacity();
    m_stored_base = 0;
    m_stored_base_appended = 0;
    ForgetNewValues();
    m_history.clear();
    m_lines.Clear();
}

void GraphValue::GrowTimeRange(double time_range) {
    m_values.CloseRun();
    m_stored_base = StoredCount();
    m_stored_base_appended = m_values.Appended();
    m_time_range = time_range;
    m_capacity = ComputeCapacity();
    ExpectCapacity();
    ForgetNewValues();
    m_history.clear();
    BeginDerivation();
}

void GraphValue::ForgetNewValues() {
    m_new_values.clear();
    m_new_values_aside = false;
    m_new_begin = m_values.Appended();
    m_first_new_index = 0.0;
}

std::uint64_t GraphValue::NewCount() const {
    return m_new_values_aside ? m_new_values.size() : m_values.Appended() - m_new_begin;
}

double GraphValue::FirstNewIndex() const {
    return NewCount() == 0 ? m_first_new_index : static_cast<double>(m_new_begin);
}

void GraphValue::GetNewValues(std::vector<double>& out, double& start_time) const {
    start_time = FirstNewIndex() * m_cycle_time;
    if (m_new_values_aside) {
        out = m_new_values;
        return;
    }
    const auto count = static_cast<std::size_t>(NewCount());
    wavo::CopyOut(m_values, out, m_values.Size() - count, count);
}

void GraphValue::EmptyNewValues() {
    m_first_new_index = FirstNewIndex();
    m_new_begin = m_values.Appended();
    m_new_values_aside = false;
    m_new_values.clear();
    m_values.FreeOldPyramid();
    OpenRun();
}

double GraphValue::StartOfSpan(double span) const {
    const double newest = m_cycle_time * PushedCount();
    const double oldest = m_cycle_time * DroppedCount();
    return span > newest - oldest ? oldest : newest - span;
}

std::uint64_t GraphValue::CountOfSpan(double span) const {
    const double newest = m_cycle_time * PushedCount();
    const auto wanted = TruncateToCount<std::uint32_t>((newest - StartOfSpan(span)) / m_cycle_time);
    // The quotient is rounded and may exceed what is held.
    return std::min<std::uint64_t>(wanted, m_values.Size());
}

void GraphValue::GetTimeRangeValues(std::vector<double>& out, double span,
                                    double& start_time) const {
    const auto count = static_cast<std::size_t>(CountOfSpan(span));
    wavo::CopyOut(m_values, out, m_values.Size() - count, count);
    start_time = StartOfSpan(span);
}

void GraphValue::GetDefineTimeRangeValue(std::vector<double>& out, double from, double to,
                                         double now) {
    const std::optional<SampleStretch> found = FindDefineTimeRange(from, to, now);
    if (!found.has_value()) {
        out = m_range_result;
        return;
    }
    wavo::CopyOut(m_values, out, found->position, found->count);
    m_range_result = out;
}

std::optional<SampleStretch> GraphValue::FindDefineTimeRange(double from, double to, double now,
                                                             std::uint64_t held) {
    if (m_first_range_request) {
        m_reference_time = now;
        m_first_range_request = false;
        m_range_result.clear();
    }
    if (to < 0.0 || from < 0.0 || to - from < 0.0) {
        MERRLOG(values_texts::kBadTimeRange);
        return std::nullopt;
    }
    const double count_exact = (to - from) / m_cycle_time;
    // Not `to`: it is measured back from the reference time, with the rounding that this brings.
    const double end_time = m_reference_time - (m_reference_time - to);
    if (end_time < 0.0) {
        return std::nullopt;
    }
    double end_exact = end_time / m_cycle_time;
    const auto size = static_cast<double>(held);
    if (size - end_exact < 0.0) {
        end_exact = size - 1.0;
    }
    const auto end = TruncateToCount<std::uint64_t>(end_exact);
    const auto count = TruncateToCount<std::uint64_t>(count_exact);
    const std::uint64_t first = end >= count ? end - count : 0;
    return SampleStretch{first, std::min(end - first, held - std::min(first, held))};
}

bool GraphValue::HistoryFull() const {
    return m_derivation_order < 1 ||
           m_history.size() == static_cast<std::size_t>(m_derivation_order);
}

double GraphValue::DeriveAtStart(double sample) {
    if (!HistoryFull()) {
        // There are no earlier samples to difference yet.
        m_history.push_back(sample);
        return 0.0;
    }
    return Derive(sample);
}

double GraphValue::DeriveHigher(double sample) {
    m_history.push_back(sample);
    const double derived = wavo::Derive(m_history, m_divisor);
    m_history.erase(m_history.begin());
    return derived;
}

}  // namespace wavo
