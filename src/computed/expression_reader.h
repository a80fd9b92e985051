// Reads the text of an expression: checks its syntax, notes what it takes of axes, and writes it
// anew for muParser, in which variables are called v0, v1, ...
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "computed/expression.h"
#include "support/fault.h"

namespace wavo::computed {

struct Function;

class ExpressionReader {
 public:
    explicit ExpressionReader(std::string_view text) : m_text(text) {}

    /// The fault is that of Expression::Compile. To be called once.
    MaybeFault Read();

    [[nodiscard]] std::vector<Reference>& References() { return m_references; }
    /// What muParser gets.
    [[nodiscard]] const std::string& Written() const { return m_written; }

 private:
    /// What is open: the whole, a bracket, or the arguments of a function.
    struct Open {
        std::size_t place = 0;
        const Function* function = nullptr;
        std::size_t arguments = 1;
        int questions = 0;  ///< "?" that wait for their ":"
    };

    MaybeFault ReadOperand();
    MaybeFault ReadOperator();
    MaybeFault ReadNumber();
    MaybeFault ReadWord();
    MaybeFault ReadCall(std::string_view name, std::size_t place);
    /// The axis between the brackets of d() and prev().
    MaybeFault ReadLookBack(Use use, std::size_t place);
    MaybeFault ReadAxis(std::string& name);
    MaybeFault OpenBracket(std::size_t place, const Function* function);
    MaybeFault CloseBracket();
    MaybeFault NextArgument();
    MaybeFault Finish();
    /// Before a bracket closes, an argument or the whole ends.
    [[nodiscard]] MaybeFault CheckQuestions() const;

    void SkipBlanks();
    [[nodiscard]] bool AtEnd() const { return m_place >= m_text.size(); }
    [[nodiscard]] char Next() const { return AtEnd() ? '\0' : m_text[m_place]; }
    /// Takes a text if it stands here.
    bool Take(std::string_view text);
    void WriteVariable(const std::string& name, Use use);
    [[nodiscard]] static Fault Wrong(std::string text, std::size_t place);
    [[nodiscard]] Fault Unexpected(const char* wanted) const;

    const std::string_view m_text;
    std::size_t m_place = 0;
    bool m_wants_operand = true;
    bool m_had_sign = false;  ///< just before: a second one is a slip of the pen
    std::vector<Open> m_open{1};
    std::vector<Reference> m_references;
    std::string m_written;
};

}  // namespace wavo::computed
