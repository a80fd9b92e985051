#include "computed/expression_reader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "computed/functions.h"
#include "computed/quoted.h"
#include "support/mini_data_text.h"
#include "support/number_text.h"

namespace wavo::computed {

namespace {

/// Brackets in brackets.
constexpr std::size_t kDeepest = 50;
/// Digits after which a number reads back as the same.
constexpr int kNumberDigits = 17;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Letters, "_", and whatever is not ASCII.
bool BeginsName(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool GoesOnName(char c) {
    return BeginsName(c) || IsDigit(c) || c == '.';
}

/// The whole character of UTF-8 at a place.
std::string_view CharacterAt(std::string_view text, std::size_t place) {
    std::size_t length = 1;
    while (place + length < text.size() &&
           (static_cast<unsigned char>(text[place + length]) & 0xC0U) == 0x80U) {
        ++length;
    }
    return text.substr(place, length);
}

/// Longer ones before those that they begin with.
constexpr std::array<std::string_view, 13> kOperators{"<=", ">=", "==", "!=", "&&", "||", "+",
                                                      "-",  "*",  "/",  "^",  "<",  ">"};

}  // namespace

bool IsPlainName(std::string_view text) {
    return !text.empty() && BeginsName(text.front()) && std::ranges::all_of(text, GoesOnName);
}

std::string InExpression(std::string_view name) {
    return IsPlainName(name) && name != kPiName ? std::string(name) : '[' + std::string(name) + ']';
}

Fault ExpressionReader::Wrong(std::string text, std::size_t place) {
    return {std::move(text), static_cast<int>(place + 1)};
}

Fault ExpressionReader::Unexpected(const char* wanted) const {
    if (AtEnd()) {
        return Wrong(std::string("Something is missing at the end: ") + wanted, m_place);
    }
    return Wrong(Quoted(CharacterAt(m_text, m_place)) + " stands where " + wanted + " is expected",
                 m_place);
}

void ExpressionReader::SkipBlanks() {
    while (Next() == ' ' || Next() == '\t') {
        ++m_place;
    }
}

bool ExpressionReader::Take(std::string_view text) {
    if (!m_text.substr(m_place).starts_with(text)) {
        return false;
    }
    m_place += text.size();
    return true;
}

MaybeFault ExpressionReader::Read() {
    if (m_text.size() > kLongestExpression) {
        return Wrong("The expression is too long", kLongestExpression);
    }
    SkipBlanks();
    if (AtEnd()) {
        return Wrong("The expression is missing", 0);
    }
    while (!AtEnd()) {
        if (MaybeFault fault = m_wants_operand ? ReadOperand() : ReadOperator()) {
            return fault;
        }
        SkipBlanks();
    }
    return Finish();
}

MaybeFault ExpressionReader::Finish() {
    if (m_wants_operand) {
        return Unexpected("a value");
    }
    if (m_open.size() > 1) {
        return Wrong("A \")\" is missing: this \"(\" is not closed", m_open.back().place);
    }
    return CheckQuestions();
}

MaybeFault ExpressionReader::CheckQuestions() const {
    if (m_open.back().questions > 0) {
        return Wrong("A \":\" is missing: condition ? value : other value", m_place);
    }
    return std::nullopt;
}

// ---- operands ----

MaybeFault ExpressionReader::ReadOperand() {
    const char next = Next();
    if (next == '+' || next == '-') {
        if (m_had_sign) {
            return Wrong("Two signs stand in a row", m_place);
        }
        m_had_sign = true;
        m_written += next;
        ++m_place;
        return std::nullopt;
    }
    m_had_sign = false;
    if (IsDigit(next) || next == '.') {
        return ReadNumber();
    }
    if (next == '(') {
        return OpenBracket(m_place, nullptr);
    }
    if (BeginsName(next) || next == '[') {
        return ReadWord();
    }
    return Unexpected("a value");
}

MaybeFault ExpressionReader::ReadNumber() {
    const std::size_t begin = m_place;
    const auto take_digits = [this] {
        while (IsDigit(Next())) {
            ++m_place;
        }
    };
    take_digits();
    if (Next() == '.') {
        ++m_place;
        take_digits();
    }
    if ((Next() == 'e' || Next() == 'E') && m_place > begin) {
        const std::size_t before = m_place++;
        m_place += Next() == '+' || Next() == '-' ? 1 : 0;
        if (!IsDigit(Next())) {
            m_place = before;
        }
        take_digits();
    }
    const std::optional<double> number = FindWholeDouble(m_text.substr(begin, m_place - begin));
    if (!number) {
        return Wrong(Quoted(m_text.substr(begin, m_place - begin)) + " is no number", begin);
    }
    if (BeginsName(Next()) || Next() == '.') {
        return Wrong("A number and a name stand together: names begin with a letter", begin);
    }
    m_written += ini::NumberText(*number, kNumberDigits);
    m_wants_operand = false;
    return std::nullopt;
}

MaybeFault ExpressionReader::ReadAxis(std::string& name) {
    const std::size_t begin = m_place;
    if (Take("[")) {
        const std::size_t end = m_text.find(']', m_place);
        if (end == std::string_view::npos) {
            return Wrong("A \"]\" is missing behind the name of an axis", begin);
        }
        name = ini::Trim(m_text.substr(m_place, end - m_place));
        m_place = end + 1;
        return name.empty() ? MaybeFault(Wrong("The name of an axis is missing", begin))
                            : std::nullopt;
    }
    while (GoesOnName(Next())) {
        ++m_place;
    }
    name = m_text.substr(begin, m_place - begin);
    return std::nullopt;
}

MaybeFault ExpressionReader::ReadWord() {
    const std::size_t begin = m_place;
    const bool in_brackets = Next() == '[';
    std::string name;
    if (MaybeFault fault = ReadAxis(name)) {
        return fault;
    }
    SkipBlanks();
    if (Next() == '(' && !in_brackets) {
        return ReadCall(name, begin);
    }
    if (name == kPiName && !in_brackets) {
        m_written += "3.1415926535897931";
    } else {
        WriteVariable(name, Use::kValue);
    }
    m_wants_operand = false;
    return std::nullopt;
}

void ExpressionReader::WriteVariable(const std::string& name, Use use) {
    const Reference reference{name, use};
    const auto found = std::ranges::find(m_references, reference);
    m_written += 'v' + std::to_string(found - m_references.begin());
    if (found == m_references.end()) {
        m_references.push_back(reference);
    }
}

MaybeFault ExpressionReader::ReadCall(std::string_view name, std::size_t place) {
    if (name == kDerivativeName || name == kPreviousName) {
        return ReadLookBack(name == kDerivativeName ? Use::kDerivative : Use::kPrevious, place);
    }
    const Function* const function = FindFunction(name);
    if (function == nullptr) {
        return Wrong("There is no function " + Quoted(name), place);
    }
    m_written += name;
    return OpenBracket(place, function);
}

MaybeFault ExpressionReader::ReadLookBack(Use use, std::size_t place) {
    const std::string_view name = use == Use::kDerivative ? kDerivativeName : kPreviousName;
    const auto wrong = [name, place] {
        return Wrong(std::string(name) + "() takes the name of one axis and nothing else", place);
    };
    ++m_place;
    SkipBlanks();
    if (!BeginsName(Next()) && Next() != '[') {
        return wrong();
    }
    std::string axis;
    if (MaybeFault fault = ReadAxis(axis)) {
        return fault;
    }
    SkipBlanks();
    if (!Take(")")) {
        return AtEnd() ? Wrong("A \")\" is missing", m_place) : wrong();
    }
    WriteVariable(axis, use);
    m_wants_operand = false;
    return std::nullopt;
}

// ---- brackets ----

MaybeFault ExpressionReader::OpenBracket(std::size_t place, const Function* function) {
    if (m_open.size() > kDeepest) {
        return Wrong("There are too many brackets in brackets", m_place);
    }
    m_open.push_back({place, function});
    m_written += '(';
    ++m_place;
    return std::nullopt;
}

MaybeFault ExpressionReader::CloseBracket() {
    if (m_open.size() == 1) {
        return Wrong("A \"(\" is missing: this \")\" closes none", m_place);
    }
    if (MaybeFault fault = CheckQuestions()) {
        return fault;
    }
    const Open& open = m_open.back();
    if (open.function != nullptr && open.arguments < open.function->least) {
        return Wrong(std::string(open.function->name) + "() takes " +
                         std::to_string(open.function->least) + " values",
                     open.place);
    }
    m_open.pop_back();
    m_written += ')';
    ++m_place;
    return std::nullopt;
}

MaybeFault ExpressionReader::NextArgument() {
    Open& open = m_open.back();
    if (open.function == nullptr) {
        return Wrong(
            "A comma stands between the values of a function; the decimals of a number "
            "stand behind a point",
            m_place);
    }
    if (open.arguments == open.function->most) {
        return Wrong(std::string(open.function->name) + "() takes no more than " +
                         std::to_string(open.function->most) +
                         (open.function->most == 1 ? " value" : " values"),
                     open.place);
    }
    if (MaybeFault fault = CheckQuestions()) {
        return fault;
    }
    ++open.arguments;
    m_written += ',';
    ++m_place;
    m_wants_operand = true;
    return std::nullopt;
}

// ---- operators ----

MaybeFault ExpressionReader::ReadOperator() {
    if (Next() == ')') {
        return CloseBracket();
    }
    if (Next() == ',') {
        return NextArgument();
    }
    for (const std::string_view text : kOperators) {
        if (Take(text)) {
            // Set apart from a sign that may follow: several characters can be an operator of
            // muParser.
            m_written.append(1, ' ').append(text).append(1, ' ');
            m_wants_operand = true;
            return std::nullopt;
        }
    }
    if (Next() == '=') {
        return Wrong(R"("=" gives no value; what is equal is asked with "==")", m_place);
    }
    if (Next() == ':' && m_open.back().questions == 0) {
        return Wrong("A \"?\" is missing: condition ? value : other value", m_place);
    }
    if (Next() == '?' || Next() == ':') {
        const bool asks = Next() == '?';
        m_open.back().questions += asks ? 1 : -1;
        m_written += asks ? " ? " : " : ";
        ++m_place;
        m_wants_operand = true;
        return std::nullopt;
    }
    return Unexpected("an operator");
}

}  // namespace wavo::computed
