// The past of computed axes, asked as a history: computed of the past of other axes when it is
// asked for, and exact.
//
// Lines are computed in blocks of 4096. What a block covers is kept as long as the streams are (40
// bytes), its values as long as there is room: memory does not grow with the lines but for that,
// and no block that is only looked at from far is computed twice.
//
// Nothing is known from far before the blocks of a column were computed: who draws looks closer as
// far as the owner lets it in one drawing, and goes on with the next.
//
// Before a value that looks back there must be a line: at the beginning and behind a gap it is
// missing, as derivatives of recorded axes are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "computed/computed_program.h"
#include "source/history.h"

namespace wavo::computed {

class ComputedHistory;

class ComputedStreams {
 public:
    static constexpr std::int64_t kBlockLines = 4096;

    /// Where the values come from.
    struct Origin {
        /// The values of an axis of the source themselves; with NoSample() for lines that are not
        /// there. It outlives the streams.
        std::function<History*(std::size_t axis)> axis;
        double cycle_time = 0.0;  ///< seconds
        /// Another number whenever lines were lost that had been there.
        std::function<std::uint64_t()> losses = [] { return std::uint64_t{0}; };
        /// Whether there are some of these lines, none of them before 0.
        std::function<bool(const LineRange& lines)> has_lines = [](const LineRange&) {
            return true;
        };
        /// Whether a drawing may compute a block; counts it.
        std::function<bool()> may_compute = [] { return true; };
    };

    /// `program` is for the axes of the source, of which there is one at least.
    ComputedStreams(ComputedProgram program, Origin origin);
    ~ComputedStreams();
    ComputedStreams(const ComputedStreams&) = delete;
    ComputedStreams& operator=(const ComputedStreams&) = delete;

    [[nodiscard]] const ComputedProgram& Program() const { return m_program; }
    /// The past of a computed axis with an order of derivation; stays as long as the streams.
    /// REQUIRES: the program has the axis; order >= 0.
    [[nodiscard]] History& StreamOf(std::size_t axis, std::int32_t order);

    /// Gives back the memory that was taken for values.
    void ForgetValues();

 private:
    friend class ComputedHistory;
    using BlockKey = std::pair<const ComputedHistory*, std::int64_t>;
    struct BlockValues {
        BlockKey key;
        std::vector<double> values;
    };

    /// Values of blocks that are kept, of all streams.
    static constexpr std::size_t kBlocksKept = 1024;

    /// The values of a block; null when they are not there. Valid until the next Keep.
    const std::vector<double>* Find(const BlockKey& key);
    const std::vector<double>& Keep(const BlockKey& key, std::vector<double> values);
    /// Forgets the values of a stream from a block on.
    void Forget(const ComputedHistory& stream, std::int64_t first_block);

    ComputedProgram m_program;
    const Origin m_origin;
    std::map<std::pair<std::size_t, std::int32_t>, std::unique_ptr<ComputedHistory>> m_streams;
    std::list<BlockValues> m_values;  ///< used last in front
    std::map<BlockKey, std::list<BlockValues>::iterator> m_places;
};

}  // namespace wavo::computed
