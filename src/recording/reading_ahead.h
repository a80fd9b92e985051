// Tells the system what a reader will read, so that the device can work on several places at once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "recording/recording_reader.h"

namespace wavo::recording {

class ReadingAhead {
 public:
    /// `reader` is not owned and outlives this object.
    explicit ReadingAhead(RecordingReader& reader) : m_reader(reader) {}

    /// Has the system read what Extent will read for these lines, as far as it is not here yet;
    /// returns at once. REQUIRES: as RecordingReader::Extent, with an order that has levels.
    void Announce(std::size_t axis, LineSpan lines, Detail detail);

 private:
    void AnnounceLevels(const ChunkEntry& entry, std::size_t axis);
    void AnnounceBlock(const ChunkEntry& entry, std::uint64_t line);

    RecordingReader& m_reader;
};

}  // namespace wavo::recording
