// The computed axes of a source: which there are beside its own, in which order they are computed,
// and what is wrong with each.
//
// Invariants:
// 1. An axis whose name cannot be used is not there: it is no name, one of a function, one of an
//    earlier computed axis, or one of the source, whose own axis then is meant by everybody.
// 2. Any other is there, in the order of the definitions. It has no values where its expression
//    cannot be computed, names an axis that is not there, or leads back to itself.
// 3. What axes are computed of is computed before them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "computed/computed_axis.h"
#include "computed/expression.h"

namespace wavo::computed {

/// What is wrong with a definition.
struct Finding {
    enum class Kind {
        kNone,
        kName,        ///< the name cannot be used
        kTaken,       ///< an axis of the source has the name
        kExpression,  ///< the expression cannot be computed
        kUnknown,     ///< it names an axis that is not there; it may come yet
    };
    Kind kind = Kind::kNone;
    std::string text;       ///< in words, for the user
    std::size_t place = 0;  ///< in the expression, bytes from 1 on; 0: the whole

    friend bool operator==(const Finding&, const Finding&) = default;
};

class ComputedProgram {
 public:
    ComputedProgram() = default;
    /// For a source with these axes.
    ComputedProgram(std::span<const ComputedAxis> definitions,
                    std::span<const std::string> source_names);

    /// What is wrong with each definition.
    [[nodiscard]] const std::vector<Finding>& Findings() const { return m_findings; }

    /// The axes that are there, by name.
    [[nodiscard]] const std::vector<std::string>& Names() const { return m_names; }
    [[nodiscard]] bool IsEmpty() const { return m_names.empty(); }
    /// The place of a name in Names; nothing when it is not there.
    [[nodiscard]] std::optional<std::size_t> Find(const std::string& name) const;
    /// The unit that its definition has.
    [[nodiscard]] const std::string& UnitOf(std::size_t axis) const {
        return m_axes[axis].definition.unit;
    }
    /// Whether an axis gives the same values as one of another program of the same source.
    [[nodiscard]] bool IsSame(std::size_t axis, const ComputedProgram& other) const;

    /// All axes, each behind those that it is computed of.
    [[nodiscard]] const std::vector<std::size_t>& Order() const { return m_order; }

    /// What has to be known to compute one axis.
    struct Needs {
        std::vector<std::size_t> source;  ///< axes of the source, ascending
        std::vector<std::size_t> order;   ///< computed axes, in the order of computing; the last
                                          ///< one is the axis itself
        std::size_t lines_before = 0;     ///< that its value of a line depends on
    };
    [[nodiscard]] Needs NeedsOf(std::size_t axis) const;

    /// Computes an axis. `source` and `computed` have a column per axis of the source and per
    /// Names(); those that the axis is computed of are filled.
    void Compute(std::size_t axis, std::span<const Column> source, std::span<const Column> computed,
                 double cycle_time, std::size_t count, double* out, std::size_t stride);

 private:
    /// Where the values of a reference come from.
    struct Input {
        enum class From { kNowhere, kSource, kComputed };
        From from = From::kNowhere;
        std::size_t index = 0;
    };
    struct Axis {
        ComputedAxis definition;
        std::size_t number = 0;  ///< of its definition
        std::optional<Expression> expression;
        std::vector<Input> inputs;  ///< of its references
    };

    /// What the values of an axis depend on.
    [[nodiscard]] std::set<std::pair<std::string, std::string>> MeaningOf(std::size_t axis) const;

    void TakeNames(std::span<const ComputedAxis> definitions,
                   std::span<const std::string> source_names);
    void Connect(std::span<const std::string> source_names);
    void FindOrder();
    /// Puts an axis into the order behind those it is computed of. `path`: those that led here.
    void Visit(std::size_t axis, std::vector<std::size_t>& path, std::vector<bool>& is_done);
    void RefuseCycle(std::span<const std::size_t> cycle);

    std::vector<Finding> m_findings;
    std::vector<std::string> m_names;
    std::vector<Axis> m_axes;  ///< as m_names
    std::vector<std::size_t> m_order;
    std::vector<Column> m_columns;  ///< of the axis that is computed
};

}  // namespace wavo::computed
