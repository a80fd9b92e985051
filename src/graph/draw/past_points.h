// The values of some streams in a window of lines, for points of one axis over another.
//
// There is no coarser picture of points: those that a drawing may not read yet are missing, the
// oldest of them longest. All streams are read together, since their values stand together, and
// what another window also shows is not read again.
#pragma once

#include <cstddef>
#include <vector>

#include "source/history.h"

namespace wavo {

class PastPoints {
 public:
    /// Reads the values of lines, as far as the histories let a drawing. True when there are others
    /// than before. `streams` are not owned and outlive the points; null: none of its values is
    /// known.
    bool Read(const std::vector<History*>& streams, const LineRange& lines);
    /// The last Read had all, and nothing was lost since.
    [[nodiscard]] bool IsComplete() const;

    /// The values of a stream, one per line; NoSample() for those that are not there. REQUIRES:
    /// Read was called.
    [[nodiscard]] const std::vector<double>& Values(std::size_t stream) const {
        return m_values[stream];
    }

 private:
    /// Of what was read, the part of `lines` that still holds.
    [[nodiscard]] LineRange WhatHolds(const LineRange& lines) const;
    /// Makes room for other lines; those of `kept` stay.
    void MoveTo(const LineRange& lines, const LineRange& kept);
    /// Reads the values of lines of the window. False when that may not be.
    bool ReadPiece(const LineRange& piece);

    std::vector<History*> m_streams;
    std::vector<HistoryMoment> m_since;         ///< when what was read was last found to hold
    std::vector<std::vector<double>> m_values;  ///< per stream, of m_lines
    LineRange m_lines;
    LineRange m_read;  ///< those of them that were
};

}  // namespace wavo
