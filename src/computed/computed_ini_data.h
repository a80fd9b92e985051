// Computed axes in an INI store: the section "COMPUTED" of graph files.
//
//   [COMPUTED]
//   Axes=err,v
//   Expression1=X_cmd - X_act
//   Unit1=mm
//   Expression2=sqrt(d(X_act)^2 + d(Y_act)^2)
//   Unit2=mm/s
//
// Invariants:
// 1. Without computed axes there is no such section.
// 2. What is written reads back the same. Axes without a name, and those beyond the largest number,
//    are not written.
#pragma once

#include <vector>

#include "computed/computed_axis.h"
#include "support/mini_data.h"

namespace wavo::computed {

/// Puts the axes into the store, which the caller saves. False when it refused a value.
bool PutComputedAxes(MIniData& store, const std::vector<ComputedAxis>& axes);

/// The axes of the store; none when it has no such section.
[[nodiscard]] std::vector<ComputedAxis> TakeComputedAxes(const MIniData& store);

}  // namespace wavo::computed
