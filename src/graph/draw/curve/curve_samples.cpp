#include "graph/draw/curve/curve_samples.h"

#include <algorithm>

#include "support/diagnostics.h"

namespace wavo {

namespace {

constexpr char kOutOfMemory[] = "LinesDrawAxis::DrawLinesXIsTime(): out of memory for the curve";

}  // namespace

CurveSamples::CurveSamples(std::uint64_t max_points) : m_max_points(max_points) {
    m_own.SetExpectedSize(max_points);
}

CurveSamples::~CurveSamples() {
    LeaveStream();
}

void CurveSamples::Clear() {
    LeaveStream();
    m_own.Clear();
    m_own.SetExpectedSize(m_max_points);
    m_numbers_used += m_appended;
    m_appended = 0;
}

void CurveSamples::LeaveStream() {
    if (m_stream != nullptr) {
        m_stream->Release(*this);
    }
    m_stream = nullptr;
    m_shares = false;
}

void CurveSamples::BeforeOverwrite() {
    TakeOver();
    m_stream->Hold(*this, SampleRing::kNoSequence);
}

void CurveSamples::BeforeEnd() {
    if (m_shares) {
        TakeOver();
    }
    m_stream = nullptr;
}

void CurveSamples::Follow(const SampleOrigin& origin) {
    if (origin.buffer == m_stream && InStream(m_appended) == origin.sequence) {
        return;
    }
    if (m_shares) {
        TakeOver();
    }
    LeaveStream();
    if (origin.buffer != nullptr) {
        m_stream = origin.buffer;
        m_stream_offset = origin.sequence - m_appended;
        m_same_from = m_appended;
        m_stream->Hold(*this, SampleRing::kNoSequence);
    }
}

std::uint64_t CurveSamples::SizeWith(std::uint64_t count) const {
    return std::min(Size() + count, m_max_points);
}

bool CurveSamples::CanShareWith(std::uint64_t count) const {
    const std::uint64_t end = m_appended + count;
    const std::uint64_t begin = end - SizeWith(count);
    return m_stream != nullptr && begin >= m_same_from &&
           InStream(begin) >= m_stream->FirstKept() && InStream(end) <= m_stream->Appended();
}

void CurveSamples::Push(std::span<const double> samples, const SampleOrigin& origin) {
    Follow(origin);
    if (CanShareWith(samples.size())) {
        m_size = SizeWith(samples.size());
        m_appended += samples.size();
        if (!m_shares) {
            m_own = SampleBuffer();
            m_own.SetExpectedSize(m_max_points);
            m_shares = true;
        }
        m_stream->Hold(*this, origin.all_follow ? SampleRing::kNoSequence : Begin());
        return;
    }
    if (m_shares) {
        BeforeOverwrite();
    }
    PushOwn(samples);
}

void CurveSamples::PushOwn(std::span<const double> samples) {
    const std::uint64_t before = m_own.Appended();
    if (!m_own.Push(samples, m_max_points)) {
        MERRLOG(kOutOfMemory);
        m_max_points = std::max<std::uint64_t>(1, m_own.Size());
        if (m_own.Size() > 0) {
            // The others take the place of the oldest, which asks for no memory.
            (void)m_own.Push(samples.subspan(m_own.Appended() - before), m_max_points);
        }
    }
    m_appended += m_own.Appended() - before;
}

void CurveSamples::TakeOver() {
    const auto size = static_cast<std::size_t>(Size());
    const SampleRing::Parts parts = m_stream->RangeOf(Begin(), size);
    m_shares = false;
    if (!m_own.Reserve(size)) {
        MERRLOG(kOutOfMemory);
        return;
    }
    // What was reserved holds all of them.
    (void)m_own.Push(parts.first, m_max_points);
    (void)m_own.Push(parts.second, m_max_points);
}

void CurveSamples::Replace(std::span<const double> samples) {
    Clear();
    m_own = SampleBuffer();
    m_own.SetExpectedSize(samples.size());
    if (!samples.empty() && !m_own.Push(samples, samples.size())) {
        MERRLOG("LinesDrawAxis::KeepWindow(): out of memory for the curve");
    }
    m_appended = m_own.Appended();
}

}  // namespace wavo
