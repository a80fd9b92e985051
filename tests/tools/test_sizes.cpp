// How large things may become: classes, functions and files. What is larger has its reason here.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "source_outline.h"
#include "sources.h"

namespace wavo {
namespace {

using testing::ClassOutline;
using ::testing::ElementsAre;
using testing::FunctionOutline;
using ::testing::IsEmpty;
using testing::OutlineOf;
using ::testing::SizeIs;
using testing::SourceOutline;
using testing::Sources;

constexpr std::size_t kMostFunctions = 40;
constexpr std::size_t kMostPublicFunctions = 25;
constexpr int kLongestFunction = 60;
constexpr std::ptrdiff_t kLongestFile = 500;

/// Classes that have more functions, each with the reason.
const std::map<std::string, std::string>& LargeClasses() {
    static const std::map<std::string, std::string> classes = {
        {"GraphDraw", "the published calls of a graph, and what its owners ask of its pieces"},
        {"LinesDrawAxis", "the published calls of a curve, and what its graph asks of it"},
        {"GraphValue",
         "the published calls of a stream, what its curves ask of it, and the path of each value"},
        {"SampleRing",
         "samples by position, by sequence and as they lie in memory, and each way to add them"},
    };
    return classes;
}

std::string Violation(const std::string& path, const std::string& what, std::size_t count) {
    return path + ": " + what + ": " + std::to_string(count);
}

/// What is too large in a source, in words.
std::vector<std::string> TooLarge(const std::string& path, const std::string& text) {
    std::vector<std::string> violations;
    const auto lines = std::count(text.begin(), text.end(), '\n');
    if (lines > kLongestFile) {
        violations.push_back(Violation(path, "lines", static_cast<std::size_t>(lines)));
    }
    const SourceOutline outline = OutlineOf(text);
    if (!outline.is_whole) {
        violations.push_back(path + ": its braces do not match");
    }
    for (const ClassOutline& found : outline.classes) {
        if (LargeClasses().contains(found.name)) {
            continue;
        }
        if (found.functions.size() > kMostFunctions) {
            violations.push_back(
                Violation(path, "functions of " + found.name, found.functions.size()));
        }
        if (found.public_ones.size() > kMostPublicFunctions) {
            violations.push_back(
                Violation(path, "public functions of " + found.name, found.public_ones.size()));
        }
    }
    for (const FunctionOutline& function : outline.functions) {
        if (function.lines > kLongestFunction) {
            violations.push_back(Violation(path, "lines of " + function.name,
                                           static_cast<std::size_t>(function.lines)));
        }
    }
    return violations;
}

TEST(Sizes, ClassesFunctionsAndFilesKeepWithinTheirBounds) {
    std::vector<std::string> violations;
    for (const auto& [path, text] : Sources()) {
        const std::vector<std::string> found = TooLarge(path, text);
        violations.insert(violations.end(), found.begin(), found.end());
    }
    EXPECT_THAT(violations, IsEmpty());
}

TEST(Sizes, WhatIsReadIsTheWholeHouse) {
    std::size_t classes = 0;
    std::size_t functions = 0;
    std::set<std::string> names;
    for (const auto& [path, text] : Sources()) {
        const SourceOutline outline = OutlineOf(text);
        functions += outline.functions.size();
        for (const ClassOutline& found : outline.classes) {
            ++classes;
            names.insert(found.name);
        }
    }
    EXPECT_GT(classes, 300U);
    EXPECT_GT(functions, 1500U);
    for (const char* const known :
         {"CWavoView", "CAxSelect", "GraphDraw", "MIniDataT", "GraphList"}) {
        EXPECT_TRUE(names.contains(known)) << known;
    }
}

TEST(Sizes, TheGraphEditorIsManySmallClasses) {
    std::size_t classes = 0;
    for (const auto& [path, text] : Sources()) {
        if (!path.starts_with("ui/graph_editor/")) {
            continue;
        }
        for (const ClassOutline& found : OutlineOf(text).classes) {
            ++classes;
            EXPECT_LE(found.functions.size(), kMostPublicFunctions) << found.name;
        }
    }
    EXPECT_GT(classes, 8U);
}

TEST(Sizes, AnExceptionIsForAClassThatIsThereAndTooLarge) {
    std::set<std::string> large;
    for (const auto& [path, text] : Sources()) {
        for (const ClassOutline& found : OutlineOf(text).classes) {
            if (found.functions.size() > kMostFunctions ||
                found.public_ones.size() > kMostPublicFunctions) {
                large.insert(found.name);
            }
        }
    }
    for (const auto& [name, reason] : LargeClasses()) {
        EXPECT_TRUE(large.contains(name)) << name << " needs no exception";
        EXPECT_FALSE(reason.empty()) << name;
    }
}

std::string Repeated(const std::string& line, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) {
        text += line;
    }
    return text;
}

TEST(Sizes, WhatIsTooLargeIsFound) {
    const std::string call = "    void F();\n";
    EXPECT_THAT(TooLarge("a.h", "class A {\n" + Repeated(call, 41) + "};\n"),
                ElementsAre("a.h: functions of A: 41"));
    EXPECT_THAT(TooLarge("a.h", "class A {\n" + Repeated(call, 40) + "};\n"), IsEmpty());
    EXPECT_THAT(TooLarge("a.h", "struct A {\n" + Repeated(call, 26) + "};\n"),
                ElementsAre("a.h: public functions of A: 26"));
    EXPECT_THAT(TooLarge("a.h", "struct A {\n" + Repeated("    int m_f = F();\n", 50) + "};\n"),
                IsEmpty());
    EXPECT_THAT(TooLarge("a.cpp", "void F() {\n" + Repeated("\n", 59) + "}\n"),
                ElementsAre("a.cpp: lines of F: 61"));
    EXPECT_THAT(TooLarge("a.cpp", "void F() {\n" + Repeated("\n", 58) + "}\n"), IsEmpty());
    EXPECT_THAT(TooLarge("a.cpp", Repeated("// line\n", 501)), ElementsAre("a.cpp: lines: 501"));
    EXPECT_THAT(TooLarge("a.cpp", "void F() {\n"), SizeIs(1));
}

}  // namespace
}  // namespace wavo
