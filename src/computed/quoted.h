// Texts of the user in texts to the user.
#pragma once

#include <string>
#include <string_view>

namespace wavo::computed {

inline std::string Quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

}  // namespace wavo::computed
