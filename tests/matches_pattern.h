// Texts against regular expressions. GoogleTest's own ones know no sets of characters where the
// system has no regular expressions.
#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace wavo::testing {

MATCHER_P(MatchesPattern, pattern, "matches the pattern " + std::string(pattern)) {
    return std::regex_match(std::string(arg), std::regex(pattern));
}

MATCHER_P(ContainsPattern, pattern, "contains the pattern " + std::string(pattern)) {
    return std::regex_search(std::string(arg), std::regex(pattern));
}

}  // namespace wavo::testing
