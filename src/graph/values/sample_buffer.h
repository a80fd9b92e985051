// The samples of a stream with the pyramid over them, which all who look at the samples share.
#pragma once

#include <cstdint>
#include <utility>

#include "graph/values/min_max_pyramid.h"
#include "graph/values/sample_ring.h"

namespace wavo {

class SampleBuffer final : public SampleRing {
 public:
    SampleBuffer() = default;
    ~SampleBuffer() { EndHolds(); }
    SampleBuffer(const SampleBuffer& other) : SampleRing(other) {}
    SampleBuffer& operator=(const SampleBuffer& other) {
        SampleRing::operator=(other);
        return *this;
    }
    SampleBuffer(SampleBuffer&& other) noexcept : SampleRing(std::move(other)) {}
    SampleBuffer& operator=(SampleBuffer&& other) noexcept {
        SampleRing::operator=(std::move(other));
        return *this;
    }

    /// The pyramid over the samples as they are now. It is made when somebody asks for it.
    [[nodiscard]] const MinMaxPyramid& Pyramid() const {
        m_pyramid.Update(*this);
        return m_pyramid;
    }
    /// There is a pyramid that nobody has asked for since all samples that can be read were
    /// replaced.
    [[nodiscard]] bool HasOldPyramid() const { return m_pyramid.HasMissedAllOf(*this); }
    /// Frees such a pyramid: it is of no use any more.
    void FreeOldPyramid() {
        if (HasOldPyramid()) {
            m_pyramid.Clear();
        }
    }

 private:
    mutable MinMaxPyramid m_pyramid;
};

/// Where samples that were taken out of a buffer stand there, one behind the other.
struct SampleOrigin {
    const SampleBuffer* buffer = nullptr;  ///< null: nowhere
    std::uint64_t sequence = 0;            ///< of the first of them
    bool all_follow = false;               ///< who takes these takes all that come after them, too
};

}  // namespace wavo
