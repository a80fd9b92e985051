#include "source_outline.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>
#include <utility>

namespace wavo::testing {

namespace {

bool IsWordBegin(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_';
}

bool IsWord(char c) {
    return IsWordBegin(c) || std::isdigit(static_cast<unsigned char>(c)) != 0;
}

/// Cuts a source into tokens.
class Tokenizer {
 public:
    explicit Tokenizer(const std::string& source) : m_source(source) {}

    std::vector<Token> Run() {
        bool line_begins = true;
        while (m_place < m_source.size()) {
            const char c = m_source[m_place];
            if (c == '\n') {
                line_begins = true;
                Step();
            } else if (std::isspace(static_cast<unsigned char>(c)) != 0) {
                Step();
            } else if (Sees("//") || (c == '#' && line_begins)) {
                SkipLine();
            } else if (Sees("/*")) {
                SkipTo("*/");
            } else {
                line_begins = false;
                TakeToken();
            }
        }
        return std::move(m_tokens);
    }

 private:
    [[nodiscard]] bool Sees(std::string_view text) const {
        return m_source.compare(m_place, text.size(), text) == 0;
    }

    void Step() {
        m_line += m_source[m_place] == '\n' ? 1 : 0;
        ++m_place;
    }

    /// To the end of the line; a backslash there takes the next line with it.
    void SkipLine() {
        while (m_place < m_source.size() && m_source[m_place] != '\n') {
            if (Sees("/*")) {  // it may end some lines below
                SkipTo("*/");
                continue;
            }
            const bool goes_on = Sees("\\\n");
            Step();
            if (goes_on) {
                Step();
            }
        }
    }

    /// Behind `end`.
    void SkipTo(const std::string& end) {
        const std::size_t found = m_source.find(end, m_place + 2);
        const std::size_t last = found == std::string::npos ? m_source.size() : found + end.size();
        while (m_place < last) {
            Step();
        }
    }

    void TakeToken() {
        const int line = m_line;
        const char c = m_source[m_place];
        std::string text;
        if (IsWordBegin(c)) {
            text = TakeWhile(IsWord);
            const bool is_quoted = m_place < m_source.size() && m_source[m_place] == '"';
            if (is_quoted && (text == "R" || text == "u8R" || text == "LR" || text == "uR")) {
                SkipRawText();
                text = "\"\"";
            } else if (is_quoted && (text == "u8" || text == "L" || text == "u" || text == "U")) {
                SkipQuoted('"');
                text = "\"\"";
            }
        } else if (std::isdigit(static_cast<unsigned char>(c)) != 0) {
            // 1'000 and 1e-5 too; a sign that is no part of the number does not matter here.
            text = TakeWhile([](char d) { return IsWord(d) || d == '\'' || d == '.'; });
        } else if (c == '"' || c == '\'') {
            SkipQuoted(c);
            text = "\"\"";
        } else if (Sees("::") || Sees("->")) {
            text = m_source.substr(m_place, 2);
            m_place += 2;
        } else {
            text = c;
            Step();
        }
        m_tokens.push_back({text, line});
    }

    template <typename Predicate>
    std::string TakeWhile(Predicate is_part) {
        const std::size_t begin = m_place;
        while (m_place < m_source.size() && is_part(m_source[m_place])) {
            ++m_place;
        }
        return m_source.substr(begin, m_place - begin);
    }

    void SkipQuoted(char quote) {
        Step();
        while (m_place < m_source.size() && m_source[m_place] != quote) {
            if (m_source[m_place] == '\\') {
                Step();
            }
            Step();
        }
        Step();
    }

    void SkipRawText() {
        const std::size_t open = m_source.find('(', m_place);
        SkipTo(")" + m_source.substr(m_place + 1, open - m_place - 1) + "\"");
    }

    const std::string& m_source;
    std::size_t m_place = 0;
    int m_line = 1;
    std::vector<Token> m_tokens;
};

using Statement = std::vector<Token>;

bool IsName(const std::string& text) {
    return !text.empty() && IsWordBegin(text.front());
}

bool IsOneOf(const std::string& text, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), text) != words.end();
}

/// The place behind the bracket that closes the one at `open`; the end where none does.
std::size_t BehindBracket(const Statement& tokens, std::size_t open, const char* opening,
                          const char* closing) {
    int depth = 0;
    for (std::size_t i = open; i < tokens.size(); ++i) {
        depth += tokens[i].text == opening ? 1 : tokens[i].text == closing ? -1 : 0;
        if (depth == 0) {
            return i + 1;
        }
    }
    return tokens.size();
}

/// The place behind the angle that closes the one at `open`. Brackets inside are passed over, so
/// that comparisons in them close nothing.
std::size_t BehindAngle(const Statement& tokens, std::size_t open) {
    int depth = 0;
    for (std::size_t i = open; i < tokens.size();) {
        const std::string& text = tokens[i].text;
        if (text == "(") {
            i = BehindBracket(tokens, i, "(", ")");
            continue;
        }
        depth += text == "<" ? 1 : text == ">" ? -1 : 0;
        ++i;
        if (depth == 0) {
            return i;
        }
    }
    return tokens.size();
}

/// The statement without what stands in front of a declaration or among it and looks like calls:
/// template parameters, attributes, alignas(...), noexcept(...), decltype(...), requires ....
Statement Plain(const Statement& tokens) {
    Statement plain;
    for (std::size_t i = 0; i < tokens.size();) {
        const std::string& text = tokens[i].text;
        const bool has_next = i + 1 < tokens.size();
        if (text == "template" && has_next && tokens[i + 1].text == "<") {
            i = BehindAngle(tokens, i + 1);
        } else if (text == "[" && has_next && tokens[i + 1].text == "[") {
            i = BehindBracket(tokens, i, "[", "]");
        } else if (IsOneOf(text, {"alignas", "noexcept", "decltype", "explicit", "requires",
                                  "__attribute__", "__declspec"}) &&
                   has_next && tokens[i + 1].text == "(") {
            i = BehindBracket(tokens, i + 1, "(", ")");
        } else {
            plain.push_back(tokens[i]);
            ++i;
        }
    }
    return plain;
}

/// The function that a statement declares or begins.
struct Declarator {
    std::string name;
    std::size_t parameters = 0;  ///< place of their bracket
    std::size_t behind = 0;      ///< place behind them
};

/// The name and parameters of an operator, which stands at `place`.
std::optional<Declarator> FindOperator(const Statement& plain, std::size_t place) {
    Declarator found{"operator", place + 1, 0};
    if (place + 2 < plain.size() && plain[place + 1].text == "(" && plain[place + 2].text == ")") {
        found = {"operator()", place + 3, 0};
    }
    while (found.parameters < plain.size() && plain[found.parameters].text != "(") {
        found.name += plain[found.parameters].text;
        ++found.parameters;
    }
    if (found.parameters >= plain.size()) {
        return std::nullopt;
    }
    found.behind = BehindBracket(plain, found.parameters, "(", ")");
    return found;
}

/// What a statement declares, where that is a function.
std::optional<Declarator> FindFunction(const Statement& plain) {
    if (plain.empty() || IsOneOf(plain.front().text, {"using", "typedef", "static_assert", "friend",
                                                      "return", "enum"})) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < plain.size();) {
        const std::string& text = plain[i].text;
        if (text == "operator") {
            return FindOperator(plain, i);
        }
        if (text == "=" || text == "{") {
            return std::nullopt;  // a variable with its value
        }
        if (text == "<") {
            i = BehindAngle(plain, i);
            continue;
        }
        if (text != "(") {
            ++i;
            continue;
        }
        const std::string before = i > 0 ? plain[i - 1].text : "";
        const bool is_pointer = i + 1 < plain.size() && IsOneOf(plain[i + 1].text, {"*", "&"});
        if (!IsName(before) || is_pointer) {  // "int (*f)(int)" is a variable
            return std::nullopt;
        }
        const bool destroys = i > 1 && plain[i - 2].text == "~";
        return Declarator{(destroys ? "~" : "") + before, i, BehindBracket(plain, i, "(", ")")};
    }
    return std::nullopt;
}

/// Whether the members' values stand between the parameters of a constructor and the end of the
/// statement, and it ends behind the name of one: the brace that follows is that one's.
bool EndsInMemberValue(const Statement& plain, const Declarator& function) {
    const auto behind = plain.begin() + static_cast<std::ptrdiff_t>(function.behind);
    const bool has_values =
        std::any_of(behind, plain.end(), [](const Token& token) { return token.text == ":"; });
    const std::string& last = plain.back().text;
    return has_values && (IsName(last) || last == ">");
}

/// Whether a declaration ends in "= delete" or "= default": it adds nothing to a class.
bool AddsNothing(const Statement& plain) {
    return plain.size() > 2 && plain[plain.size() - 2].text == "=" &&
           IsOneOf(plain.back().text, {"delete", "default"});
}

/// Where the word class, struct or union stands that a class begins with; nothing for another
/// statement.
std::optional<std::size_t> ClassWord(const Statement& plain) {
    std::size_t i = 0;
    while (i < plain.size() &&
           IsOneOf(plain[i].text, {"typedef", "static", "inline", "constexpr", "const"})) {
        ++i;
    }
    return i < plain.size() && IsOneOf(plain[i].text, {"class", "struct", "union"})
               ? std::optional(i)
               : std::nullopt;
}

/// Reads name and bases of a class.
ClassOutline ClassHead(const Statement& plain, std::size_t word) {
    ClassOutline head;
    std::size_t i = word + 1;
    for (; i < plain.size() && plain[i].text != ":"; ++i) {
        if (plain[i].text == "<") {
            i = BehindAngle(plain, i) - 1;  // a specialisation
        } else if (IsName(plain[i].text) && plain[i].text != "final") {
            head.name = plain[i].text;
        }
    }
    std::string base;
    for (++i; i < plain.size(); ++i) {
        const std::string& text = plain[i].text;
        if (text == "<") {
            i = BehindAngle(plain, i) - 1;
        } else if (text == ",") {
            head.bases.push_back(std::exchange(base, {}));
        } else if (!IsOneOf(text, {"public", "protected", "private", "virtual"})) {
            base += text;
        }
    }
    if (!base.empty()) {
        head.bases.push_back(base);
    }
    return head;
}

/// Reads a source, scope by scope.
class Reader {
 public:
    explicit Reader(const std::string& source) : m_tokens(Tokens(source)) {}

    SourceOutline Run() {
        ReadScope(nullptr, true);
        m_outline.is_whole = m_outline.is_whole && m_place == m_tokens.size();
        return std::move(m_outline);
    }

 private:
    /// Up to the brace that closes the scope, or to the end of the source. `owner`: the class whose
    /// scope it is; null for a namespace.
    void ReadScope(ClassOutline* owner, bool is_public) {
        Statement statement;
        while (m_place < m_tokens.size()) {
            const std::string& text = m_tokens[m_place].text;
            if (text == "}") {
                return;
            }
            if (text == ";") {
                ++m_place;
                EndDeclaration(owner, is_public, statement);
                statement.clear();
            } else if (text == "{") {
                if (ReadBlock(owner, is_public, statement)) {
                    statement.clear();
                }
            } else if (text == ":" && owner != nullptr && IsAccess(statement)) {
                is_public = statement.front().text == "public" ||
                            IsOneOf(statement.front().text, {"Q_SIGNALS", "signals"});
                statement.clear();
                ++m_place;
            } else {
                TakeWithBrackets(statement);
            }
        }
    }

    static bool IsAccess(const Statement& statement) {
        return !statement.empty() &&
               IsOneOf(statement.front().text,
                       {"public", "protected", "private", "Q_SIGNALS", "signals"});
    }

    /// Takes a token; all up to the closing one where it opens a bracket, braces and all.
    void TakeWithBrackets(Statement& statement) {
        if (statement.size() == 1 && statement.front().text == "Q_OBJECT") {
            statement.clear();
        }
        if (m_tokens[m_place].text != "(") {
            statement.push_back(m_tokens[m_place]);
            ++m_place;
            return;
        }
        const std::size_t behind = BehindBracket(m_tokens, m_place, "(", ")");
        while (m_place < behind) {
            statement.push_back(m_tokens[m_place]);
            ++m_place;
        }
        if (statement.front().text.starts_with("Q_")) {
            statement.clear();  // Q_PROPERTY(...) and the like end without a semicolon
        }
    }

    static void Declare(ClassOutline* owner, bool is_public, const std::string& name) {
        if (owner != nullptr) {
            owner->functions.push_back(name);
            if (is_public) {
                owner->public_ones.push_back(name);
            }
        }
    }

    static void EndDeclaration(ClassOutline* owner, bool is_public, const Statement& statement) {
        const Statement plain = Plain(statement);
        const std::optional<Declarator> function = FindFunction(plain);
        if (function.has_value() && !AddsNothing(plain)) {
            Declare(owner, is_public, function->name);
        }
    }

    /// The brace at the present place, behind `statement`. True when it ended the statement.
    bool ReadBlock(ClassOutline* owner, bool is_public, Statement& statement) {
        const Statement plain = Plain(statement);
        const std::string first = plain.empty() ? "" : plain.front().text;
        if (first == "namespace" || (first == "extern" && plain.size() == 2) ||
            (first == "inline" && plain.size() > 1 && plain[1].text == "namespace")) {
            ++m_place;
            ReadScope(nullptr, true);
            CloseScope();
            return true;
        }
        if (const std::optional<std::size_t> word = ClassWord(plain);
            word.has_value() && !FindFunction(plain).has_value()) {
            ReadClass(owner, plain, *word);
            statement.assign(1, {"class", 0});  // variables may follow
            return false;
        }
        const std::optional<Declarator> function = FindFunction(plain);
        const bool is_friend = first == "friend";
        if (!is_friend && (!function.has_value() || EndsInMemberValue(plain, *function))) {
            SkipBraces();  // a value, or the names of an enum
            statement.push_back({"}", 0});
            return false;
        }
        const int line = statement.front().line;
        const int last = SkipBraces();
        const std::string name = is_friend ? first : function->name;
        m_outline.functions.push_back({name, line, last - line + 1});
        if (!is_friend) {
            Declare(owner, is_public, name);
        }
        return true;
    }

    void ReadClass(const ClassOutline* owner, const Statement& plain, std::size_t word) {
        ClassOutline inner = ClassHead(plain, word);
        if (owner != nullptr) {
            inner.name.insert(0, owner->name + "::");
        }
        ++m_place;
        ReadScope(&inner, plain[word].text != "class");
        CloseScope();
        m_outline.classes.push_back(std::move(inner));
    }

    void CloseScope() {
        if (m_place < m_tokens.size()) {
            ++m_place;
        } else {
            m_outline.is_whole = false;
        }
    }

    /// Behind the brace that closes the one at the present place; its line.
    int SkipBraces() {
        const std::size_t behind = BehindBracket(m_tokens, m_place, "{", "}");
        m_outline.is_whole = m_outline.is_whole && m_tokens[behind - 1].text == "}";
        m_place = behind;
        return m_tokens[behind - 1].line;
    }

    const std::vector<Token> m_tokens;
    std::size_t m_place = 0;
    SourceOutline m_outline;
};

}  // namespace

std::vector<Token> Tokens(const std::string& source) {
    return Tokenizer(source).Run();
}

SourceOutline OutlineOf(const std::string& source) {
    return Reader(source).Run();
}

}  // namespace wavo::testing
