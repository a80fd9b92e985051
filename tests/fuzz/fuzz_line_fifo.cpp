// A value FIFO whose header holds any bytes and changes between the reads as the input wants: no
// line comes from outside of the ring, and none that the header does not tell of. The same through
// the viewer's reader, with any length of lines and capacity of its buffer.
//
// Input: 64 bytes of header, a byte with the size of the data area in eights, then steps of 10
// bytes: a byte that chooses header word or read, a byte, and 8 bytes for the word or, of a read
// through the viewer's reader, length, number of lines and capacity.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "fake_shared_memory.h"
#include "link/ax_value_reader.h"
#include "link/line_fifo.h"

namespace wavo {
namespace {

constexpr std::size_t kStep = 10;
constexpr std::size_t kWords = sizeof(LineFifoHeader) / sizeof(std::uint64_t);

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void Read(LineFifo& fifo, std::uint8_t amount) {
    const std::uint64_t waiting = MMemLineFifo_Waiting(fifo);
    Require(waiting < fifo.line_count);
    const auto length =
        static_cast<std::size_t>(std::min<std::uint64_t>(fifo.line_size, amount % 64));
    const std::uint64_t wanted = amount % 8;
    // Exactly as large as promised: one byte more is found.
    std::vector<std::byte> lines(length * wanted);
    const std::uint64_t read = MMemLineFifo_Read(fifo, lines.data(), length, wanted);
    Require(read <= std::min(wanted, waiting));
    Require(fifo.read_index < fifo.line_count);
}

void TestOne(std::span<const std::uint8_t> input) {
    if (input.size() < sizeof(LineFifoHeader) + 1) {
        return;
    }
    const std::size_t size = sizeof(LineFifoHeader) + 8 * std::size_t{input[64]};
    // Words, for their alignment; exactly as many as the segment has.
    const auto segment = std::make_unique<std::uint64_t[]>(size / sizeof(std::uint64_t));
    std::memcpy(segment.get(), input.data(), sizeof(LineFifoHeader));
    LineFifo fifo;
    if (!MMemLineFifo_Link(segment.get(), size, fifo)) {
        return;
    }
    Require(segment[2] != 0);
    Require(fifo.line_count >= 2 && fifo.line_size * fifo.line_count <= size - 64);
    for (auto steps = input.subspan(65); steps.size() >= kStep; steps = steps.subspan(kStep)) {
        if (steps[0] % 16 < kWords) {
            std::memcpy(&segment[steps[0] % 16], &steps[2], sizeof(std::uint64_t));
        } else {
            Read(fifo, steps[1]);
        }
    }
    MMemLineFifo_Release(fifo);
}

void Read(AxValueReader& reader, std::span<const std::uint8_t> how) {
    const std::uint64_t waiting = reader.LinesWaiting();
    const bool was_damaged = reader.IsDamaged();
    const std::uint64_t thrown_away = reader.LinesThrownAway();
    const std::size_t length = how[0];
    // As the viewer asks, or any number, also one that overflows.
    std::uint64_t wanted = waiting;
    if (how[1] % 4 != 0) {
        wanted = how[1] == 0xFF ? ~std::uint64_t{0} / (1U + how[3] % 16U) : how[2];
    }
    const std::size_t capacity = std::size_t{how[4]} * (how[5] % 16U);
    std::vector<std::byte> buffer(capacity);  // exactly: one byte more is found
    const bool read = reader.Read(buffer.data(), length, wanted, capacity);
    Require(reader.LinesThrownAway() >= thrown_away);
    if (read) {
        Require(!was_damaged && !reader.IsDamaged());
        Require(length == 0 || wanted <= capacity / length);
        Require(reader.LinesThrownAway() == thrown_away);
    }
    Require(!was_damaged || (reader.IsDamaged() && reader.LinesThrownAway() == thrown_away));
}

void TestReader(std::span<const std::uint8_t> input) {
    if (input.size() < sizeof(LineFifoHeader) + 1) {
        return;
    }
    testing::ResetFakeSharedMemory();
    std::byte* const segment =
        testing::AddFakeSegment("MValues_1", sizeof(LineFifoHeader) + 8 * std::size_t{input[64]});
    std::memcpy(segment, input.data(), sizeof(LineFifoHeader));
    AxValueReader reader;
    if (!reader.Open("MValues_1")) {
        Require(!reader.IsOpen() && reader.LinesWaiting() == 0);
        return;
    }
    for (auto steps = input.subspan(65); steps.size() >= kStep; steps = steps.subspan(kStep)) {
        const std::size_t word = steps[0] % 16;
        if (word < kWords) {
            std::memcpy(segment + word * sizeof(std::uint64_t), &steps[2], sizeof(std::uint64_t));
        } else if (word == 15 && steps[1] == 0xFF) {
            testing::SetFakeState("MValues_1",
                                  steps[2] % 2 == 0 ? platform::SegmentState::kResized
                                                    : platform::SegmentState::kRemoved,
                                  steps[3] % 4);
        } else {
            Read(reader, steps.subspan(2, 8));
        }
    }
}

}  // namespace
}  // namespace wavo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    wavo::TestOne({data, size});
    wavo::TestReader({data, size});
    return 0;
}
