// A locale with a decimal comma, in which numbers are written and read as ever.
#pragma once

#include <string>

namespace wavo::testing {

/// Sets the locale for a scope: the one that the build made, or one of the machine.
class CommaLocale {
 public:
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    /// False when neither is there.
    [[nodiscard]] static bool IsSet();

 private:
    const std::string m_previous;
};

}  // namespace wavo::testing
