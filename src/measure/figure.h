// A figure that can be told, or the reason why it cannot.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace wavo::measure {

template <typename T>
struct Told {
    std::optional<T> value;
    std::string reason;  ///< in words of the user, no full stop; empty where there is a value

    Told() = default;
    // A value is a told one.
    Told(T told) : value(std::move(told)) {}  // NOLINT(google-explicit-constructor)

    static Told Not(const std::string& why) {
        Told told;
        told.reason = why;
        return told;
    }

    explicit operator bool() const { return value.has_value(); }
    const T& operator*() const { return *value; }
    const T* operator->() const { return &*value; }
};

using Figure = Told<double>;

}  // namespace wavo::measure
