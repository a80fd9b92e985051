// A flag that is set for the life of an object.
#pragma once

namespace wavo {

class FlagScope {
 public:
    /// `flag` is not owned and outlives this object.
    explicit FlagScope(bool& flag) : m_flag(flag) { m_flag = true; }
    ~FlagScope() { m_flag = false; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;

 private:
    bool& m_flag;
};

}  // namespace wavo
