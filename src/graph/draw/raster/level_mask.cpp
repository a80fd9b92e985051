#include "graph/draw/raster/level_mask.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#ifdef WAVO_AVX2
#include <immintrin.h>
#endif

namespace wavo {

namespace {

/// Bytes of the mask that are looked at in one go.
constexpr std::size_t kWord = sizeof(std::uint64_t);

/// Pixels by which a place that is half way between two pixels goes to the second; more than the
/// numbers are inexact, so that a line looks the same whatever part of it is drawn.
constexpr double kTie = 1e-8;

/// A line seen along its longer side: `along` goes by one from pixel to pixel, `across` follows.
/// Coordinates count from the corner of the area.
struct Walk {
    Walk(std::int64_t from_along, std::int64_t from_across, std::int64_t to_along,
         std::int64_t to_across)
        : along(from_along),
          direction(to_along < from_along ? -1 : 1),
          length(std::abs(to_along - from_along)),
          across(static_cast<double>(from_across) + 0.5 + kTie),
          slope(static_cast<double>(to_across - from_across) / static_cast<double>(length)) {}

    /// The pixel across the line after a number of steps, before it is cut to a whole number.
    [[nodiscard]] double Across(std::int64_t step) const {
        return across + slope * static_cast<double>(step);
    }

    /// Restricts first and last to the steps inside an area of these sizes; first > last when there
    /// are none.
    void Clip(std::int64_t along_size, std::int64_t across_size) {
        first = std::max<std::int64_t>(0, direction > 0 ? -along : along - (along_size - 1));
        last = std::min(length, direction > 0 ? along_size - 1 - along : along);
        const auto outside = [this, across_size](std::int64_t step) {
            const double pixel = Across(step);
            return pixel < 0.0 || pixel >= static_cast<double>(across_size);
        };
        while (first <= last && outside(first)) {
            ++first;
        }
        while (first <= last && outside(last)) {
            --last;
        }
    }

    std::int64_t along;
    std::int64_t direction;
    std::int64_t length;
    double across;  ///< with half a pixel, so that cutting it rounds
    double slope;
    std::int64_t first = 0;
    std::int64_t last = -1;
};

#ifdef WAVO_AVX2

/// BlendPixel of eight pixels with a colour.
WAVO_AVX2 void BlendEight(QRgb* pixels, QRgb over, const std::uint8_t* levels) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i under = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
    const __m256i color = _mm256_unpacklo_epi8(_mm256_set1_epi32(static_cast<int>(over)), zero);
    std::uint64_t word = 0;
    std::memcpy(&word, levels, kWord);
    // Each level to the four components of its pixel.
    const __m256i all = _mm256_set1_epi64x(static_cast<std::int64_t>(word));
    const __m256i spread =
        _mm256_shuffle_epi8(all, _mm256_setr_epi8(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4,
                                                  4, 4, 4, 5, 5, 5, 5, 6, 6, 6, 6, 7, 7, 7, 7));
    const auto half = [&](__m256i below, __m256i level) WAVO_AVX2 {
        const __m256i rest = _mm256_sub_epi16(_mm256_set1_epi16(255), level);
        __m256i sum =
            _mm256_add_epi16(_mm256_mullo_epi16(below, rest), _mm256_mullo_epi16(color, level));
        sum = _mm256_add_epi16(sum, _mm256_set1_epi16(128));
        sum = _mm256_add_epi16(sum, _mm256_srli_epi16(sum, 8));
        return _mm256_srli_epi16(sum, 8);
    };
    const __m256i low = half(_mm256_unpacklo_epi8(under, zero), _mm256_unpacklo_epi8(spread, zero));
    const __m256i high =
        half(_mm256_unpackhi_epi8(under, zero), _mm256_unpackhi_epi8(spread, zero));
    const __m256i blended = _mm256_or_si256(_mm256_packus_epi16(low, high),
                                            _mm256_set1_epi32(static_cast<int>(0xFF000000U)));
    // A level of 0 leaves a pixel as it is, to its last bit.
    const __m256i none = _mm256_cmpeq_epi32(spread, zero);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels),
                        _mm256_blendv_epi8(blended, under, none));
}

#endif

}  // namespace

void LevelMask::Begin(const QRect& area) {
    BeginArea(area);
    m_direct = false;
    if (m_levels.size() < m_stride * m_height) {
        m_levels.resize(m_stride * m_height);
    }
}

void LevelMask::BeginOn(const QRect& area, const PixelColumns& target, QRgb color) {
    BeginArea(area);
    m_direct = true;
    m_target = target;
    m_color = color;
    const auto under = [&](int part) {
        return target.Under(target.top_row + area.height() * part / 16)[area.width() * part / 16];
    };
    // Two of three places that are hardly all on lines of the scale.
    const int often = under(5) == under(7) ? 5 : 11;
    m_often = under(often);
    m_often_row = target.top_row + area.height() * often / 16;
    for (std::uint32_t level = 0; level < m_over_often.size(); ++level) {
        m_over_often[level] = level == 0 ? m_often : BlendPixel(m_often, color, level);
    }
}

void LevelMask::BeginArea(const QRect& area) {
    m_left = static_cast<std::uint32_t>(area.left());
    m_top = static_cast<std::uint32_t>(area.top());
    m_width = static_cast<std::uint32_t>(area.width());
    m_height = static_cast<std::uint32_t>(area.height());
    m_stride = (std::size_t{m_width} + kWord - 1) / kWord * kWord;
}

bool LevelMask::Misses(const Spot& from, const Spot& to) const noexcept {
    const auto left = static_cast<std::int32_t>(m_left);
    const auto top = static_cast<std::int32_t>(m_top);
    const std::int64_t right = std::int64_t{left} + m_width - 1;
    const std::int64_t bottom = std::int64_t{top} + m_height - 1;
    return std::max(from.x, to.x) < left || std::min(from.x, to.x) > right ||
           std::max(from.y, to.y) < top || std::min(from.y, to.y) > bottom;
}

void LevelMask::Lines(std::span<const Place> places, const Level* levels) {
    const auto spot = [&](std::size_t i) { return Spot{places[i].x, places[i].y, levels[i]}; };
    for (std::size_t i = 0; i < places.size();) {
        if (places[i].x == kGap) {
            ++i;
            continue;
        }
        // Of two ends that are near each other nothing is between: the first was drawn before, or
        // ended a long line, whose levels are rounded.
        if (i != 0 && places[i - 1].x != kGap && !AreNear(places[i - 1], places[i])) {
            LongLine(spot(i - 1), spot(i));
            const bool goes_on_near = i + 1 < places.size() && AreNear(places[i], places[i + 1]);
            if (!goes_on_near) {
                ++i;
                continue;
            }
        }
        i = m_direct ? NearPlaces<true>(places, levels, i) : NearPlaces<false>(places, levels, i);
    }
}

template <bool kDirect>
std::size_t LevelMask::NearPlaces(std::span<const Place> places, const Level* levels,
                                  std::size_t first) {
    std::size_t i = first;
    do {
        // From one place to the next one it is a pixel at most: so many of them are inside, too.
        const std::size_t inside = std::min<std::size_t>(Margin(places[i]), places.size() - i);
        if (inside != 0) {
            i = kDirect ? NearPlacesOnPicture(places.first(i + inside), levels, i)
                        : NearPlacesOnMask(places.first(i + inside), levels, i);
        } else {
            ++i;
        }
    } while (i < places.size() && AreNear(places[i - 1], places[i]));
    return i;
}

std::size_t LevelMask::Margin(const Place& place) const noexcept {
    const std::uint32_t column = static_cast<std::uint32_t>(place.x) - m_left;
    const std::uint32_t row = static_cast<std::uint32_t>(place.y) - m_top;
    return column < m_width && row < m_height
               ? std::min({column, row, m_width - 1 - column, m_height - 1 - row}) + std::size_t{1}
               : 0;
}

std::size_t LevelMask::NearPlacesOnMask(std::span<const Place> places, const Level* levels,
                                        std::size_t first) {
    // What is written might change members, for all the compiler knows.
    const auto stride = static_cast<std::ptrdiff_t>(m_stride);
    const auto left = static_cast<std::int32_t>(m_left);
    const auto top = static_cast<std::int32_t>(m_top);
    std::uint8_t* const mask = m_levels.data();
    std::size_t i = first;
    do {
        const Place& place = places[i];
        mask[(place.y - top) * stride + (place.x - left)] = Byte(levels[i]);
        ++i;
    } while (i < places.size() && AreNear(places[i - 1], places[i]));
    return i;
}

std::size_t LevelMask::NearPlacesOnPicture(std::span<const Place> places, const Level* levels,
                                           std::size_t first) {
    const auto left = static_cast<std::int32_t>(m_left);
    const std::int32_t to_row = m_target.top_row - static_cast<std::int32_t>(m_top);
    const int* const under_rows = m_target.under_rows;
    const std::ptrdiff_t stride = m_target.stride;
    QRgb* const pixels = m_target.Row(m_target.top_row);
    const QRgb* const under_often = m_target.Under(m_often_row);
    const int often_row = m_target.under_rows[m_often_row];
    const QRgb often = m_often;
    const QRgb* const over_often = m_over_often.data();
    std::size_t i = first;
    do {
        const Place& place = places[i];
        const std::int32_t column = place.x - left;
        if (under_rows[place.y + to_row] == often_row && under_often[column] == often) {
            const std::ptrdiff_t row = place.y - static_cast<std::int32_t>(m_top);
            pixels[row * stride + column] = over_often[Byte(levels[i])];
        } else {
            Set({place.x, place.y, levels[i]});
        }
        ++i;
    } while (i < places.size() && AreNear(places[i - 1], places[i]));
    return i;
}

void LevelMask::LongLine(const Spot& from, const Spot& to) {
    if (Misses(from, to)) {
        return;
    }
    const std::int64_t left = static_cast<std::int32_t>(m_left);
    const std::int64_t top = static_cast<std::int32_t>(m_top);
    const std::int64_t from_x = from.x - left;
    const std::int64_t from_y = from.y - top;
    const std::int64_t to_x = to.x - left;
    const std::int64_t to_y = to.y - top;
    const bool steep = std::abs(to_y - from_y) > std::abs(to_x - from_x);
    Walk walk = steep ? Walk(from_y, from_x, to_y, to_x) : Walk(from_x, from_y, to_x, to_y);
    walk.Clip(steep ? m_height : m_width, steep ? m_width : m_height);

    const double level_slope =
        (static_cast<double>(to.level) - from.level) / static_cast<double>(walk.length);
    auto level = static_cast<Level>(from.level + level_slope * static_cast<double>(walk.first));
    const auto level_step = static_cast<Level>(level_slope);
    std::int64_t along = walk.along + walk.direction * walk.first;
    for (std::int64_t i = walk.first; i <= walk.last; ++i, along += walk.direction) {
        const auto across = static_cast<std::size_t>(walk.Across(i));
        Set(steep ? across : static_cast<std::size_t>(along),
            steep ? static_cast<std::size_t>(along) : across, Byte(level));
        level += level_step;
    }
}

void LevelMask::Square(const Spot& centre, std::int32_t side) {
    const std::int64_t x = std::int64_t{centre.x} - side / 2 - static_cast<std::int32_t>(m_left);
    const std::int64_t y = std::int64_t{centre.y} - side / 2 - static_cast<std::int32_t>(m_top);
    const std::int64_t first_column = std::max<std::int64_t>(x, 0);
    const std::int64_t end_column = std::min<std::int64_t>(x + side, m_width);
    const std::int64_t first_row = std::max<std::int64_t>(y, 0);
    const std::int64_t end_row = std::min<std::int64_t>(y + side, m_height);
    if (first_column >= end_column) {
        return;
    }
    const auto columns = static_cast<std::size_t>(end_column - first_column);
    for (std::int64_t row = first_row; row < end_row; ++row) {
        std::uint8_t* const start = m_levels.data() + static_cast<std::size_t>(row) * m_stride +
                                    static_cast<std::size_t>(first_column);
        std::fill_n(start, columns, Byte(centre.level));
    }
}

void LevelMask::Cut(const DashPattern& pattern, Coordinate along, const QPoint& origin) {
    const std::int32_t column = static_cast<std::int32_t>(m_left) - origin.x();
    const std::int32_t row = static_cast<std::int32_t>(m_top) - origin.y();
    std::uint8_t* levels = m_levels.data();
    for (std::uint32_t y = 0; y < m_height; ++y, levels += m_stride) {
        if (along == Coordinate::kX) {
            for (std::uint32_t x = 0; x < m_width; ++x) {
                levels[x] = pattern.Paints(column + static_cast<std::int32_t>(x)) ? levels[x] : 0;
            }
        } else if (!pattern.Paints(row + static_cast<std::int32_t>(y))) {
            std::memset(levels, 0, m_width);
        }
    }
}

void LevelMask::BlendInto(QImage& picture, QRgb color, PixelRuns* touched, Instructions use) {
    const auto left = static_cast<std::int32_t>(m_left);
    const auto top = static_cast<std::int32_t>(m_top);
    const auto blend = [use](QRgb* pixels, QRgb over, const std::uint8_t* levels,
                             std::size_t count) {
#ifdef WAVO_AVX2
        if (use == Instructions::kWide && count == kWord) {
            BlendEight(pixels, over, levels);
            return;
        }
#endif
        (void)use;
        for (std::size_t i = 0; i < count; ++i) {
            if (levels[i] != 0) {
                pixels[i] = BlendPixel(pixels[i], over, levels[i]);
            }
        }
    };
    PixelRun run{-1, 0, 0};
    std::uint8_t* levels = m_levels.data();
    for (std::uint32_t row = 0; row < m_height; ++row, levels += m_stride) {
        const int y = top + static_cast<int>(row);
        auto* const pixels = reinterpret_cast<QRgb*>(picture.scanLine(y)) + left;
        for (std::size_t column = 0; column < m_stride; column += kWord) {
            std::uint64_t word = 0;
            std::memcpy(&word, levels + column, kWord);
            if (word == 0) {
                continue;
            }
            const std::size_t count = std::min<std::size_t>(kWord, m_width - column);
            blend(pixels + column, color, levels + column, count);
            std::memset(levels + column, 0, kWord);
            const int first = left + static_cast<int>(column);
            if (touched != nullptr && run.row == y && run.end == first) {
                run.end += static_cast<int>(count);
                touched->back().end = run.end;
            } else if (touched != nullptr) {
                run = {y, first, first + static_cast<int>(count)};
                touched->push_back(run);
            }
        }
    }
}

}  // namespace wavo
