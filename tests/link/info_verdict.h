// What reading an info block came to, in one word.
#pragma once

#include <optional>

#include "link/master_info.h"

namespace wavo::testing {

enum class InfoVerdict { kPresent, kAbsent, kRefused };

inline InfoVerdict VerdictOf(const Expected<std::optional<MasterInfo>>& found) {
    if (!found) {
        return InfoVerdict::kRefused;
    }
    return found->has_value() ? InfoVerdict::kPresent : InfoVerdict::kAbsent;
}

}  // namespace wavo::testing
