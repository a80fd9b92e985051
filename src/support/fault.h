// The one way in which calls say that they failed and why, but for the published ones that have a
// form of their own.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace wavo {

/// Why something failed: in words for the user or the log, and a number for programs.
struct Fault {
    std::string text;
    int code = 0;  ///< of the operating system or of the one who reports it; 0 for none

    friend bool operator==(const Fault&, const Fault&) = default;
};

/// Nothing, or why there is a fault: what calls return that have no other result.
using MaybeFault = std::optional<Fault>;

/// A result, or why there is none.
template <typename Value>
class Expected {
 public:
    // NOLINTBEGIN(google-explicit-constructor): both are returned as they are
    Expected(Value value) : m_state(std::in_place_index<0>, std::move(value)) {}
    Expected(Fault fault) : m_state(std::in_place_index<1>, std::move(fault)) {}
    // NOLINTEND(google-explicit-constructor)

    [[nodiscard]] bool HasValue() const { return m_state.index() == 0; }
    explicit operator bool() const { return HasValue(); }

    /// REQUIRES: HasValue().
    [[nodiscard]] Value& operator*() { return std::get<0>(m_state); }
    [[nodiscard]] const Value& operator*() const { return std::get<0>(m_state); }
    [[nodiscard]] Value* operator->() { return &std::get<0>(m_state); }
    [[nodiscard]] const Value* operator->() const { return &std::get<0>(m_state); }

    /// REQUIRES: !HasValue().
    [[nodiscard]] const Fault& Why() const { return std::get<1>(m_state); }

 private:
    std::variant<Value, Fault> m_state;
};

}  // namespace wavo
