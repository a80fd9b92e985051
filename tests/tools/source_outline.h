// What a source declares: its classes with their functions, and the lines of each function that has
// a body. Enough of the language is read for that, from tokens: comments, texts and lines of the
// preprocessor are passed over, templates and nested braces are followed.
#pragma once

#include <string>
#include <vector>

namespace wavo::testing {

struct Token {
    std::string text;  ///< an identifier, a number, or one punctuator
    int line = 0;      ///< from 1
};

/// The tokens of a source. A text or a character is one token, `""`; lines of the preprocessor have
/// none.
std::vector<Token> Tokens(const std::string& source);

struct ClassOutline {
    std::string name;                ///< with the classes around it: "Outer::Inner"
    std::vector<std::string> bases;  ///< as they are written
    std::vector<std::string>
        functions;  ///< by name, once per declaration; without deleted and defaulted ones
    std::vector<std::string> public_ones;  ///< those of them that are public; signals too
};

struct FunctionOutline {
    std::string name;
    int line = 0;   ///< where its declaration begins
    int lines = 0;  ///< from there to the closing brace
};

struct SourceOutline {
    std::vector<ClassOutline> classes;
    std::vector<FunctionOutline> functions;  ///< those with a body, of classes too
    bool is_whole = true;  ///< false: braces do not match, and what follows them was not read
};

SourceOutline OutlineOf(const std::string& source);

}  // namespace wavo::testing
