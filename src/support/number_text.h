// Numbers in settings, graph files and edits: read tolerantly, as decimal readers do, and written,
// the same whatever the locale of the process.
//
// Reading takes the number that a text begins with: white space before it is skipped, what follows
// it is ignored ("12abc" is 12). Only decimal forms are numbers: "0x10" is 0, "inf" and "nan" are
// none. What lies beyond the largest value becomes that value, so every result is finite.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace wavo {

/// The integer that the text begins with; 0 when there is none.
std::int32_t ReadInteger(std::string_view text) noexcept;

/// The same for numbers without a sign; a negative one counts as 0.
std::uint32_t ReadUnsigned(std::string_view text) noexcept;

/// The integer that the text consists of, white space around it aside; nothing when anything else
/// stands there or there is none.
std::optional<std::int32_t> ReadWholeNumber(std::string_view text) noexcept;

/// The floating-point number that the text begins with ("1", "-.5", "2.5e-3"); 0 when there is
/// none.
double ReadDouble(std::string_view text) noexcept;

/// The same; nothing when there is none.
std::optional<double> FindDouble(std::string_view text) noexcept;

/// The floating-point number that the text consists of, white space around it aside; nothing when
/// anything else stands there or there is none.
std::optional<double> FindWholeDouble(std::string_view text) noexcept;

/// A number as "%.6f" writes it.
std::string FormatSixDecimals(double value);

/// Bytes that WriteSixDecimals needs: sign, 309 digits, point and decimals, and some that it writes
/// beyond the text.
inline constexpr std::size_t kSixDecimalsRoom = 328;

/// The same into memory, without a NUL; returns one past the last character. REQUIRES: there is
/// room for kSixDecimalsRoom bytes.
char* WriteSixDecimals(double value, char* to) noexcept;

}  // namespace wavo
