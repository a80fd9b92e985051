// The sources of values that the viewer can show. A new one is a class behind ValueSource and a
// line in the table of value_sources.cpp.
#pragma once

#include <memory>
#include <string_view>

#include "source/value_source.h"

namespace wavo {

/// The master process beside us, through shared memory and window messages.
inline constexpr std::string_view kMasterSource = "master";

/// Makes the source of that name; null for a name that is not known.
std::unique_ptr<ValueSource> MakeSource(std::string_view name);

}  // namespace wavo
