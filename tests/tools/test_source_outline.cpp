// What is read out of a source: on samples that hold what is easily misread.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "source_outline.h"

namespace wavo::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> Texts(const std::string& source) {
    std::vector<std::string> texts;
    for (const Token& token : Tokens(source)) {
        texts.push_back(token.text);
    }
    return texts;
}

TEST(SourceTokens, CommentsTextsAndThePreprocessorSayNothing) {
    EXPECT_THAT(Texts("a; // b {\n/* c {\n */ d"), ElementsAre("a", ";", "d"));
    EXPECT_THAT(
        Texts(R"(f("{ \" }", '{', '\'', u'"');)"),
        ElementsAre("f", "(", "\"\"", ",", "\"\"", ",", "\"\"", ",", "u", "\"\"", ")", ";"));
    EXPECT_THAT(Texts("R\"x({ \" )\" )x\" + u8\"{\" b"), ElementsAre("\"\"", "+", "\"\"", "b"));
    EXPECT_THAT(Texts("#define A { \\\n { \\\n {\nb\n  # if 0 /* x\n */ {\nc"),
                ElementsAre("b", "c"));
    EXPECT_THAT(Texts("1'000 + 0x1Fu - 1.5e3"), ElementsAre("1'000", "+", "0x1Fu", "-", "1.5e3"));
    EXPECT_THAT(Texts("a::b->c"), ElementsAre("a", "::", "b", "->", "c"));
}

TEST(SourceTokens, EachKnowsItsLine) {
    const std::vector<Token> tokens = Tokens("a\n/*\n\n*/ b \"x\\\ny\"\nc R\"(\n\n)\" d");
    ASSERT_EQ(tokens.size(), 6U);
    EXPECT_EQ(tokens[1].line, 4);  // b
    EXPECT_EQ(tokens[3].line, 6);  // c
    EXPECT_EQ(tokens[5].line, 8);  // d
}

ClassOutline OneClass(const std::string& source) {
    const SourceOutline outline = OutlineOf(source);
    EXPECT_TRUE(outline.is_whole);
    EXPECT_EQ(outline.classes.size(), 1U);
    return outline.classes.empty() ? ClassOutline() : outline.classes.front();
}

TEST(SourceOutlines, AClassHasItsBasesAndWhatItDeclares) {
    const ClassOutline outline = OneClass(R"(
class B;
class [[nodiscard]] A final : public Base<void(int)>, private detail::Other {
    Q_OBJECT
    Q_PROPERTY(int a READ a)
 public:
    A();  // not this: C();
    explicit A(int a) : m_a{a}, m_b(a > 0 ? a : 1) { Start(); }
    ~A() override;
    A(const A&) = delete;
    int F() const { return g() + (h > 0 ? h : 1); }
    template <typename T, typename = std::enable_if_t<(sizeof(T) > 2)>>
    [[nodiscard]] auto G(std::map<int, int> m = {{1, 2}}) const noexcept(true) -> decltype(m.x());
    bool operator==(const A& other) const = default;
    std::function<void(int)> m_handler = [](int i) { Run(i); };
 Q_SIGNALS:
    void Told();

 protected:
    void H();

 private:
    friend void Stranger();
    friend bool operator<(const A&, const A&) { return false; }
    using Call = void(int);
    static_assert(sizeof(int) == 4);
    enum class Kind { kOne, kTwo };
    void operator()(int i) const;
    explicit operator bool() const;
    int (*m_pointer)(int) = nullptr;
    alignas(64) std::atomic<bool> m_flag{false};
    int m_bits : 3;
    int h = Count(0);
};
class C;
)");
    EXPECT_EQ(outline.name, "A");
    EXPECT_THAT(outline.bases, ElementsAre("Base", "detail::Other"));
    EXPECT_THAT(outline.public_ones, ElementsAre("A", "A", "~A", "F", "G", "Told"));
    EXPECT_THAT(outline.functions,
                ElementsAre("A", "A", "~A", "F", "G", "Told", "H", "operator()", "operatorbool"));
}

TEST(SourceOutlines, ClassesInClassesCountForThemselves) {
    const SourceOutline outline = OutlineOf(R"(
namespace a::b {
struct Outer {
    void F();
    class Inner {
        void G();
     public:
        void H() {}
    } m_inner;
    void I();
};
extern "C" {
struct Plain { int a; };
}
}
)");
    EXPECT_TRUE(outline.is_whole);
    ASSERT_EQ(outline.classes.size(), 3U);
    EXPECT_EQ(outline.classes[0].name, "Outer::Inner");
    EXPECT_THAT(outline.classes[0].functions, ElementsAre("G", "H"));
    EXPECT_THAT(outline.classes[0].public_ones, ElementsAre("H"));
    EXPECT_EQ(outline.classes[1].name, "Outer");
    EXPECT_THAT(outline.classes[1].public_ones, ElementsAre("F", "I"));
    EXPECT_THAT(outline.classes[2].functions, IsEmpty());
}

TEST(SourceOutlines, AFunctionReachesFromItsDeclarationToItsBrace) {
    const SourceOutline outline = OutlineOf(R"(
constexpr Row kRows[] = {
    {1, "}"},
};

template <typename T>
void First(T t) {
    if (t) {
    }
}

Thing::Thing(int a)
    : Base<int>{a},
      m_a{a},
      m_b(a) {
}

const auto kLambda = [](int a) {
    return a;
};
void Declared(int a);
)");
    EXPECT_TRUE(outline.is_whole);
    ASSERT_EQ(outline.functions.size(), 2U);
    EXPECT_EQ(outline.functions[0].name, "First");
    EXPECT_EQ(outline.functions[0].line, 6);
    EXPECT_EQ(outline.functions[0].lines, 5);
    EXPECT_EQ(outline.functions[1].name, "Thing");
    EXPECT_EQ(outline.functions[1].lines, 5);
}

TEST(SourceOutlines, ASourceWhoseBracesDoNotMatchIsNotWhole) {
    EXPECT_FALSE(OutlineOf("namespace a {\nvoid F() {\n").is_whole);
    EXPECT_FALSE(OutlineOf("namespace a {\n").is_whole);
    EXPECT_FALSE(OutlineOf("void F() {}\n}\nvoid G() {}\n").is_whole);
    EXPECT_TRUE(OutlineOf("").is_whole);
}

}  // namespace
}  // namespace wavo::testing
