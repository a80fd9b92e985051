// A recording as another program may write it: chunks with other records among the lines, no
// levels. One axis, X.
#pragma once

#include <cstdint>
#include <string_view>

#include "recording/checksum.h"
#include "recording/layout.h"
#include "recording/mcap.h"
#include "sample_recording.h"

namespace wavo::testing {

class OthersRecording {
 public:
    OthersRecording() {
        using namespace recording;
        m_out.PutBytes(mcap::kMagic.data(), mcap::kMagic.size());
        RecordingHead head = MakeHead(1);
        head.axis_names = {"X"};
        layout::PutMetadata(m_out, layout::kMetadataName, ToMetadata(head));
    }
    void PutLine(std::uint64_t number, double value, bool is_numbered = true) {
        using namespace recording;
        const LineClock clock(0.001, MakeHead(1).start_time);
        const mcap::RecordScope message(m_records, mcap::Opcode::kMessage);
        m_records.Put(layout::kLinesChannel);
        m_records.Put(static_cast<std::uint32_t>(is_numbered ? number : 0));
        m_records.Put(clock.TimeOf(number) + (is_numbered ? 0 : 200'000));
        m_records.Put(clock.TimeOf(number));
        m_records.PutBytes(mcap::kCdrHead.data(), mcap::kCdrHead.size());
        m_records.Put(value);
    }
    void PutSchemas() {
        recording::layout::PutSchemas(m_records, {"X"});
        recording::layout::PutChannels(m_records);
    }
    void EndChunk(std::string_view compression = "") {
        using namespace recording;
        const mcap::RecordScope chunk(m_out, mcap::Opcode::kChunk);
        m_out.Put(std::uint64_t{0});
        m_out.Put(std::uint64_t{0});
        m_out.Put(static_cast<std::uint64_t>(m_records.size()));
        m_out.Put(Crc32(m_records.View()));
        m_out.PutText(compression);
        m_out.Put(static_cast<std::uint64_t>(m_records.size()));
        m_out.PutBytes(m_records.View());
        m_records.Clear();
    }

    [[nodiscard]] recording::ByteWriter& Out() { return m_out; }
    /// Of the chunk that is not ended yet.
    [[nodiscard]] recording::ByteWriter& Records() { return m_records; }

 private:
    recording::ByteWriter m_out;
    recording::ByteWriter m_records;
};

}  // namespace wavo::testing
