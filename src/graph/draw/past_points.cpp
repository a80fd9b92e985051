#include "graph/draw/past_points.h"

#include <algorithm>
#include <span>
#include <utility>

#include "graph/values/missing_value.h"

namespace wavo {

namespace {

/// Lines that are read at a time.
constexpr std::int64_t kPiece = 1024;

/// Where the piece of a line begins.
std::int64_t PieceOf(std::int64_t line) {
    return (line >= 0 ? line : line - (kPiece - 1)) / kPiece * kPiece;
}

}  // namespace

bool PastPoints::IsComplete() const {
    return m_read == m_lines && WhatHolds(m_lines) == m_lines;
}

LineRange PastPoints::WhatHolds(const LineRange& lines) const {
    const LineRange nothing{lines.end, lines.end};
    for (std::size_t i = 0; i < m_streams.size(); ++i) {
        if (m_streams[i] != nullptr && !m_since[i].Holds(*m_streams[i], m_read.end)) {
            return nothing;
        }
    }
    const LineRange kept{std::max(m_read.begin, lines.begin), std::min(m_read.end, lines.end)};
    return kept.Count() > 0 ? kept : nothing;
}

bool PastPoints::Read(const std::vector<History*>& streams, const LineRange& lines) {
    const bool are_others = streams != m_streams;
    const LineRange kept = are_others ? LineRange{lines.end, lines.end} : WhatHolds(lines);
    const bool is_moved = are_others || lines != m_lines || kept != m_read;
    if (!is_moved && kept == lines) {
        return false;
    }
    m_streams = streams;
    if (is_moved) {
        MoveTo(lines, kept);
    }
    m_since.clear();
    for (const History* const stream : streams) {
        m_since.push_back(stream != nullptr ? HistoryMoment(*stream) : HistoryMoment());
    }
    // Pieces begin at the same lines in every window: what stands together is read once.
    bool may_read = true;
    while (may_read && m_read.end < lines.end) {
        const std::int64_t end = std::min(lines.end, PieceOf(m_read.end) + kPiece);
        may_read = ReadPiece({m_read.end, end});
        m_read.end = may_read ? end : m_read.end;
    }
    while (may_read && m_read.begin > lines.begin) {
        const std::int64_t begin = std::max(lines.begin, PieceOf(m_read.begin - 1));
        may_read = ReadPiece({begin, m_read.begin});
        m_read.begin = may_read ? begin : m_read.begin;
    }
    return is_moved || m_read != kept;
}

void PastPoints::MoveTo(const LineRange& lines, const LineRange& kept) {
    std::vector<std::vector<double>> values(m_streams.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i].assign(static_cast<std::size_t>(lines.Count()), NoSample());
        if (kept.Count() > 0) {
            std::copy_n(m_values[i].begin() + (kept.begin - m_lines.begin), kept.Count(),
                        values[i].begin() + (kept.begin - lines.begin));
        }
    }
    m_values = std::move(values);
    m_lines = lines;
    m_read = kept;
}

bool PastPoints::ReadPiece(const LineRange& piece) {
    bool is_allowed = false;
    for (std::size_t i = 0; i < m_streams.size(); ++i) {
        if (m_streams[i] == nullptr) {
            continue;
        }
        const std::span<double> values =
            std::span(m_values[i])
                .subspan(static_cast<std::size_t>(piece.begin - m_lines.begin),
                         static_cast<std::size_t>(piece.Count()));
        // A piece that is begun is read to its end: else one of many streams might never be.
        if (is_allowed) {
            m_streams[i]->Values(piece.begin, values);
        } else if (m_streams[i]->ValuesToDraw(piece.begin, values) != HistoryAnswer::kAll) {
            std::ranges::fill(values, NoSample());
            return false;
        }
        is_allowed = true;
    }
    return true;
}

}  // namespace wavo
