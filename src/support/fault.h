// One way to fail: a function returns what it was asked for, or a fault that says why not.
//
//   Expected<Recording> recording = Recording::Open(path);
//   if (!recording) {
//       Show(recording.fault().text);
//   }
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace wavo {

/// Why something could not be done.
struct Fault {
    int code = 0;      ///< of the part that failed, for those who tell faults apart
    std::string text;  ///< for the user, without a full stop

    friend bool operator==(const Fault&, const Fault&) = default;
};

/// A value, or the fault that kept it from being there.
template <class T>
class [[nodiscard]] Expected {
 public:
    Expected(T value) : m_content(std::in_place_index<0>, std::move(value)) {}
    Expected(Fault fault) : m_content(std::in_place_index<1>, std::move(fault)) {}

    [[nodiscard]] bool HasValue() const { return m_content.index() == 0; }
    explicit operator bool() const { return HasValue(); }

    /// REQUIRES: HasValue().
    [[nodiscard]] T& operator*() { return *std::get_if<0>(&m_content); }
    [[nodiscard]] const T& operator*() const { return *std::get_if<0>(&m_content); }
    [[nodiscard]] T* operator->() { return std::get_if<0>(&m_content); }
    [[nodiscard]] const T* operator->() const { return std::get_if<0>(&m_content); }

    /// REQUIRES: !HasValue().
    [[nodiscard]] const Fault& fault() const { return *std::get_if<1>(&m_content); }

 private:
    std::variant<T, Fault> m_content;
};

}  // namespace wavo
