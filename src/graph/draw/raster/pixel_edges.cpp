#include "graph/draw/raster/pixel_edges.h"

#include <bit>
#include <cmath>
#include <limits>

namespace wavo {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Numbers in the order of the doubles, one apart for neighbours.
std::int64_t KeyOf(double value) {
    const auto bits = std::bit_cast<std::int64_t>(value);
    return bits >= 0 ? bits : std::numeric_limits<std::int64_t>::min() - bits;
}

double FromKey(std::int64_t key) {
    return std::bit_cast<double>(key >= 0 ? key : std::numeric_limits<std::int64_t>::min() - key);
}

/// The least value for which `reached` holds, which holds for all above it; `guess` is near it.
/// NaN when it holds nowhere.
template <typename Reached>
double LeastValue(double guess, Reached reached) {
    const std::int64_t least = KeyOf(-kInfinity);
    const std::int64_t most = KeyOf(kInfinity);
    std::int64_t below = least;  // not reached here
    std::int64_t above = most;   // reached here, or nowhere
    if (std::isfinite(guess)) {
        // Outward from the guess in steps that double, until the edge lies between.
        std::int64_t key = KeyOf(guess);
        const bool inside = reached(guess);
        (inside ? above : below) = key;
        for (std::int64_t distance = 1; distance < (std::int64_t{1} << 60); distance *= 2) {
            if (inside ? key < least + distance : key > most - distance) {
                break;
            }
            key += inside ? -distance : distance;
            const bool holds = reached(FromKey(key));
            (holds ? above : below) = key;
            if (holds != inside) {
                break;
            }
        }
    }
    while (above > below && above - 1 > below) {
        const std::int64_t middle =
            below +
            static_cast<std::int64_t>(
                (static_cast<std::uint64_t>(above) - static_cast<std::uint64_t>(below)) / 2);
        (reached(FromKey(middle)) ? above : below) = middle;
    }
    return above != most || reached(kInfinity) ? FromKey(above)
                                               : std::numeric_limits<double>::quiet_NaN();
}

/// The value where the scale lines reach a place between pixels.
double ValueAt(const ScaleLines& lines, Coordinate coordinate, double pixel) {
    for (std::size_t k = 0; k + 1 < lines.size(); ++k) {
        const double from = coordinate == Coordinate::kX ? lines[k].x1 : lines[k].y1;
        const double to = coordinate == Coordinate::kX ? lines[k + 1].x1 : lines[k + 1].y1;
        if (from != to && (pixel - from) * (pixel - to) <= 0.0) {
            return lines[k].value +
                   (lines[k + 1].value - lines[k].value) * ((pixel - from) / (to - from));
        }
    }
    return lines.empty() ? 0.0 : lines.back().value;
}

/// The first step at or after a time, at most `most`.
std::uint64_t StepAt(double time, double step, std::uint64_t most) {
    const auto reached = [&](std::uint64_t k) { return static_cast<double>(k) * step >= time; };
    std::uint64_t k = ToCount(std::ceil(time / step), most);
    for (int tried = 0; tried < 4 && k > 0 && reached(k - 1); ++tried) {
        --k;
    }
    for (int tried = 0; tried < 4 && k < most && !reached(k); ++tried) {
        ++k;
    }
    const bool right = (k == most || reached(k)) && (k == 0 || !reached(k - 1));
    if (right) {
        return k;
    }
    std::uint64_t below = 0;
    std::uint64_t above = most;
    while (below < above) {
        const std::uint64_t middle = below + (above - below) / 2;
        if (reached(middle)) {
            above = middle;
        } else {
            below = middle + 1;
        }
    }
    return above;
}

}  // namespace

void PixelEdges::Find(const AxisMapping& mapping, Coordinate coordinate, std::int32_t first,
                      std::int32_t pixels) {
    const ScaleLines& lines = mapping.Lines();
    const std::int32_t direction = coordinate == Coordinate::kX ? 1 : -1;
    m_edges.assign(static_cast<std::size_t>(pixels) + 1, -kInfinity);
    m_edges.back() = std::numeric_limits<double>::quiet_NaN();
    for (std::int32_t index = 1; index < pixels; ++index) {
        // Pixels are truncated: a row begins where the one below it ends.
        const std::int32_t pixel = first + direction * index;
        const double border = direction > 0 ? pixel : pixel + 1.0;
        m_edges[static_cast<std::size_t>(index)] = LeastValue(
            ValueAt(lines, coordinate, border),
            [&](double value) { return (mapping.MapForced(value) - first) * direction >= index; });
    }
    m_size = pixels;
    m_last = pixels - 1;
    m_origin = lines.empty() ? 0.0 : lines.front().value;
    const double span = lines.empty() ? 0.0 : lines.back().value - m_origin;
    const double scale = static_cast<double>(pixels - 1) / span;
    const bool even = std::isfinite(scale) && std::isfinite(span);
    m_pixels_per_unit = even ? scale : 0.0;
    // Without an estimate the search goes up from the first pixel: there may be edges that no
    // value reaches, and from above them it would find no way down.
    m_offset = even && direction < 0 ? 1.0 : 0.0;
}

void PixelEdges::IndicesOf(std::span<const double> values, std::int32_t* indices) const {
    for (std::size_t i = 0; i < values.size(); ++i) {
        indices[i] = static_cast<std::int32_t>(Estimate(values[i]));
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        indices[i] = Settle(indices[i], values[i]);
    }
}

void StepColumns::Find(const PixelEdges& columns, double step, std::uint64_t most) {
    m_first.assign(static_cast<std::size_t>(columns.Size()) + 1, most);
    m_first[0] = 0;
    for (std::int32_t column = 1; column < columns.Size(); ++column) {
        m_first[static_cast<std::size_t>(column)] = StepAt(columns.Edge(column), step, most);
    }
}

void SumColumns::Follow(const PixelEdges& columns, double step, std::uint64_t size) {
    if (size < m_size) {
        Restart();
    }
    m_first.resize(static_cast<std::size_t>(columns.Size()) + 1);
    for (; m_size < size; ++m_size) {
        while (m_column + 1 < columns.Size() && m_time >= columns.Edge(m_column + 1)) {
            ++m_column;
            m_first[static_cast<std::size_t>(m_column)] = m_size;
        }
        m_time += step;
    }
    for (std::size_t column = static_cast<std::size_t>(m_column) + 1; column < m_first.size();
         ++column) {
        m_first[column] = size;
    }
}

}  // namespace wavo
