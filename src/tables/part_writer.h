// The kinds of files that a part of a recording is written as.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "recording/recording_event.h"
#include "recording/recording_reader.h"
#include "support/fault.h"
#include "tables/part_export.h"

namespace wavo::tables {

class PartWriter {
 public:
    PartWriter() = default;
    virtual ~PartWriter() = default;
    PartWriter(const PartWriter&) = delete;
    PartWriter& operator=(const PartWriter&) = delete;

    /// The next line, a value per axis.
    virtual MaybeFault PutLine(std::uint64_t line, std::span<const double> values) = 0;
    /// An event before the next line.
    virtual void PutEvent(const recording::Event& event) = 0;
    /// Writes what is left and closes the file.
    virtual MaybeFault Finish() = 0;
};

/// Makes the file `path`, which must not be there: the fault's code is then that of
/// RecordingFault::kExists.
Expected<std::unique_ptr<PartWriter>> MakePartWriter(recording::RecordingReader& reader,
                                                     const PartFile& file, const std::string& path);

}  // namespace wavo::tables
