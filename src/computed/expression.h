// One expression of axes, compiled once and computed line by line.
//
//   X_cmd - X_act            names of axes; those with other characters than letters, digits, "_"
//   [Spindle 1] * 2          and "." stand in brackets
//   sqrt(d(X)^2 + d(Y)^2)    d(axis): derivative per second; prev(axis): its value a line before
//   X > 0 ? X : -X           also < <= >= == != && ||
//
// The syntax is checked here, in words for who types; muParser compiles what is left, in which
// names are numbered variables and numbers are written anew. So nothing of it depends on what axes
// are called or on the locale, and only functions of functions.h can be called.
//
// Where one of the values that an expression names is missing (NaN), so is the result, comparisons
// and the like included.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "computed/computed_axis.h"
#include "support/fault.h"

namespace wavo::computed {

/// What an expression takes of an axis.
enum class Use { kValue, kPrevious, kDerivative };

struct Reference {
    std::string name;
    Use use = Use::kValue;

    friend bool operator==(const Reference&, const Reference&) = default;
};

/// The values of an axis in successive lines.
struct Column {
    const double* values = nullptr;
    std::size_t stride = 1;  ///< from line to line
    double before = 0.0;     ///< in the line before the first one
};

class Expression {
 public:
    /// The fault says in words what is wrong; its code is the place in `text` in bytes, from 1 on.
    static Expected<Expression> Compile(std::string_view text);

    Expression(Expression&& other) noexcept;
    Expression& operator=(Expression&& other) noexcept;
    ~Expression();

    /// What it takes, each once, in the order in which it is named.
    [[nodiscard]] const std::vector<Reference>& References() const { return m_references; }
    /// Whether it takes anything of the line before.
    [[nodiscard]] bool LooksBack() const;

    /// Computes `count` lines into out[0], out[stride], ...; kNoValue where there is none.
    /// `cycle_time` in seconds. REQUIRES: a column for each reference.
    void Compute(std::span<const Column> columns, double cycle_time, std::size_t count, double* out,
                 std::size_t stride);

 private:
    class Compiled;

    Expression(std::vector<Reference> references, std::unique_ptr<Compiled> compiled);

    std::vector<Reference> m_references;
    std::unique_ptr<Compiled> m_compiled;
};

/// A name as it stands in an expression: in brackets where it has to.
std::string InExpression(std::string_view name);

/// Whether a text can be the name of a computed axis, for its characters: it stands in expressions
/// without brackets, and reads back from graph files.
bool IsPlainName(std::string_view text);

}  // namespace wavo::computed
