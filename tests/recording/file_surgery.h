// Cutting recordings open: where their records stand, and changing what a CRC keeps together.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "recording/checksum.h"
#include "recording/levels.h"
#include "recording/mcap.h"

namespace wavo::testing {

struct RecordPlace {
    recording::mcap::Opcode opcode{};
    std::size_t begin = 0;    ///< of its framing
    std::size_t content = 0;  ///< of its content
    std::size_t end = 0;
};

/// All whole records of a file, up to its Footer.
inline std::vector<RecordPlace> RecordsOf(const std::string& file) {
    using namespace recording;
    std::vector<RecordPlace> records;
    std::size_t at = mcap::kMagic.size();
    while (at + mcap::kFraming <= file.size()) {
        ByteReader reader(BytesOf(file).subspan(at));
        const mcap::Framing framing = mcap::TakeFraming(reader);
        if (framing.length > reader.Left().size()) {
            break;
        }
        const std::size_t content = at + mcap::kFraming;
        records.push_back(
            {framing.opcode, at, content, content + static_cast<std::size_t>(framing.length)});
        at = records.back().end;
        if (framing.opcode == mcap::Opcode::kFooter) {
            break;
        }
    }
    return records;
}

/// Where the first record of a kind stands; the end of the file when there is none.
inline std::size_t FirstOf(const std::string& file, recording::mcap::Opcode opcode) {
    for (const RecordPlace& record : RecordsOf(file)) {
        if (record.opcode == opcode) {
            return record.begin;
        }
    }
    return file.size();
}

/// The recording as it is before it is ended: up to its Data End.
inline std::string WithoutEnd(const std::string& file) {
    return file.substr(0, FirstOf(file, recording::mcap::Opcode::kDataEnd));
}

/// Lets `change` change the head of each record of levels, and sets its CRC anew.
inline void ChangeLevels(std::string& file,
                         const std::function<void(recording::LevelsHead&)>& change) {
    using namespace recording;
    for (const RecordPlace& record : RecordsOf(file)) {
        if (record.opcode != mcap::Opcode::kExtremes) {
            continue;
        }
        LevelsHead head;
        ASSERT_TRUE(ReadLevelsHead(BytesOf(file).subspan(record.content), head));
        change(head);
        ByteWriter changed;
        PutLevelsHead(changed, head);
        std::memcpy(file.data() + record.content, changed.data(), changed.size());
    }
}

}  // namespace wavo::testing
