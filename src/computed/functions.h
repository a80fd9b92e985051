// The functions that expressions may call, but for d() and prev().
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace wavo::computed {

struct Function {
    std::string_view name;
    std::size_t least = 1;  ///< arguments
    std::size_t most = 1;   ///< kManyArguments: as many as there are
    double (*one)(double) = nullptr;
    double (*two)(double, double) = nullptr;
    double (*many)(const double* values, int count) = nullptr;
    std::string_view help;
};

inline constexpr std::size_t kManyArguments = 20;

/// All, in alphabetical order. Angles are in radians.
std::span<const Function> Functions();
/// The function of a name; null when there is none.
const Function* FindFunction(std::string_view name);

/// What takes the name of an axis in place of a value.
inline constexpr std::string_view kDerivativeName = "d";
inline constexpr std::string_view kPreviousName = "prev";
/// The number pi.
inline constexpr std::string_view kPiName = "pi";

}  // namespace wavo::computed
