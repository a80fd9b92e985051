#include "computed/expression.h"

#include <muParser.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "computed/expression_reader.h"
#include "computed/functions.h"
#include "graph/values/missing_value.h"
#include "source/derivation.h"

namespace wavo::computed {

// A variable of muParser is a place in memory, which a line's value is put into before the bytecode
// runs. Its way to compute many lines at once is not used: as Debian builds it, it starts threads.
class Expression::Compiled {
 public:
    MaybeFault Compile(const std::string& text, std::size_t variables) {
        m_values.assign(variables, 1.0);
        try {
            for (std::size_t i = 0; i < variables; ++i) {
                m_parser.DefineVar('v' + std::to_string(i), &m_values[i]);
            }
            m_parser.SetExpr(text);
            m_parser.Eval();  // compiles it
        } catch (const mu::ParserError& error) {
            return Fault{"The expression cannot be computed: " + error.GetMsg(), 1};
        }
        return std::nullopt;
    }

    [[nodiscard]] double& Value(std::size_t variable) { return m_values[variable]; }
    [[nodiscard]] double Compute() const { return m_parser.Eval(); }

 private:
    /// muParser with no more than is allowed to expressions.
    class Parser final : public mu::Parser {
     public:
        Parser() {
            ClearFun();
            ClearConst();
            for (const Function& function : Functions()) {
                const std::string name(function.name);
                if (function.one != nullptr) {
                    DefineFun(name, function.one);
                } else if (function.two != nullptr) {
                    DefineFun(name, function.two);
                } else {
                    DefineFun(name, function.many);
                }
            }
        }
    };

    std::vector<double> m_values;
    Parser m_parser;
};

Expression::Expression(std::vector<Reference> references, std::unique_ptr<Compiled> compiled)
    : m_references(std::move(references)), m_compiled(std::move(compiled)) {}
Expression::Expression(Expression&& other) noexcept = default;
Expression& Expression::operator=(Expression&& other) noexcept = default;
Expression::~Expression() = default;

Expected<Expression> Expression::Compile(std::string_view text) {
    ExpressionReader reader(text);
    if (MaybeFault fault = reader.Read()) {
        return *fault;
    }
    auto compiled = std::make_unique<Compiled>();
    if (MaybeFault fault = compiled->Compile(reader.Written(), reader.References().size())) {
        return *fault;
    }
    return Expression(std::move(reader.References()), std::move(compiled));
}

bool Expression::LooksBack() const {
    return std::ranges::any_of(m_references,
                               [](const Reference& each) { return each.use != Use::kValue; });
}

void Expression::Compute(std::span<const Column> columns, double cycle_time, std::size_t count,
                         double* out, std::size_t stride) {
    for (std::size_t line = 0; line < count; ++line) {
        bool is_missing = false;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const Column& column = columns[i];
            const double* const now = column.values + line * column.stride;
            double value = *now;
            if (m_references[i].use != Use::kValue) {
                const double before = line == 0 ? column.before : *(now - column.stride);
                value = m_references[i].use == Use::kPrevious
                            ? before
                            : Derive(std::array{before, value}, cycle_time);
            }
            m_compiled->Value(i) = value;
            is_missing |= std::isnan(value);
        }
        const double result = is_missing ? kNoValue : m_compiled->Compute();
        // One NaN for all: those that come in have meanings of their own.
        out[line * stride] = std::isnan(result) ? kNoValue : result;
    }
}

}  // namespace wavo::computed
