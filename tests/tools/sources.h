// The sources of the programs, as the rules of the house look at them.
#pragma once

#include <map>
#include <string>

namespace wavo::testing {

/// All headers and sources below src, master and programs with their texts, by the paths that they
/// are included with. Read once.
const std::map<std::string, std::string>& Sources();

}  // namespace wavo::testing
