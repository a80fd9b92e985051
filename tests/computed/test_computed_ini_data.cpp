// Computed axes in graph files.
#include "computed/computed_ini_data.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "computed/computed_program.h"

namespace wavo::computed {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char kFile[] =
    "[GENERAL]\r\nGraphs=1\r\n"
    "[COMPUTED]\r\nAxes=err,v\r\n"
    "Expression1=X_cmd - X_act\r\nUnit1=mm\r\n"
    "Expression2=sqrt(d(X)^2 + d(Y)^2)\r\nUnit2=\r\n";

const std::vector<ComputedAxis> kAxes{{"err", "X_cmd - X_act", "mm"},
                                      {"v", "sqrt(d(X)^2 + d(Y)^2)", ""}};

TEST(ComputedIniData, IsASectionOfItsOwn) {
    MIniData store;
    ASSERT_TRUE(store.SetContent("[GENERAL]\r\nGraphs=1\r\n"));
    ASSERT_TRUE(PutComputedAxes(store, kAxes));
    EXPECT_EQ(store.Content(), kFile);
    MIniData read;
    ASSERT_TRUE(read.SetContent(kFile));
    EXPECT_EQ(TakeComputedAxes(read), kAxes);
}

TEST(ComputedIniData, LeavesNothingBehind) {
    const std::string before = "; mine\r\n[GENERAL]\r\nGraphs=1\r\n[7]\r\nMode=1\r\n";
    MIniData store;
    ASSERT_TRUE(store.SetContent(before));
    ASSERT_TRUE(PutComputedAxes(store, {}));
    EXPECT_EQ(store.Content(), before);
    EXPECT_THAT(TakeComputedAxes(store), IsEmpty());
    ASSERT_TRUE(PutComputedAxes(store, kAxes));
    ASSERT_TRUE(PutComputedAxes(store, {}));
    EXPECT_EQ(store.Content(), before);
}

TEST(ComputedIniData, KeepsWhatItDoesNotKnow) {
    MIniData store;
    ASSERT_TRUE(store.SetContent(std::string(kFile) + "; why\r\nColour3=red\r\nUnit7=mm\r\n"));
    ASSERT_TRUE(PutComputedAxes(store, {{"w", "Y", "mm"}}));
    EXPECT_EQ(store.Content(),
              "[GENERAL]\r\nGraphs=1\r\n"
              "[COMPUTED]\r\nAxes=w\r\nExpression1=Y\r\nUnit1=mm\r\n; why\r\nColour3=red\r\n");
}

TEST(ComputedIniData, ReadsWhatPeopleWrite) {
    MIniData store;
    ASSERT_TRUE(
        store.SetContent("[COMPUTED]\nAxes = a , b,, c,\nExpression1 = X == 1 \n"
                         "Expression3= Y\nExpression4=Z\nUnit4= mm/s \n"));
    EXPECT_THAT(TakeComputedAxes(store),
                ElementsAre(ComputedAxis{"a", "X == 1", ""}, ComputedAxis{"b", "", ""},
                            ComputedAxis{"c", "Z", "mm/s"}));
    ASSERT_TRUE(store.SetContent("[COMPUTED]\nExpression1=X\n"));
    EXPECT_THAT(TakeComputedAxes(store), IsEmpty());
}

TEST(ComputedIniData, ReadsBackWhatWasWritten) {
    const std::vector<ComputedAxis> axes{
        {"a", "x=#;*/ [b] == \"", "%"}, {"Größe", "", "\u00B5m"}, {"c.1", "1 +", ""}};
    MIniData store;
    ASSERT_TRUE(PutComputedAxes(store, axes));
    MIniData read;
    ASSERT_TRUE(read.SetContent(store.Content()));
    EXPECT_EQ(TakeComputedAxes(read), axes);
    ASSERT_TRUE(PutComputedAxes(read, {{"a", " X\r\n+ Y ", "m\nm"}, {"b,c", "X", ""}}));
    EXPECT_THAT(TakeComputedAxes(read), ElementsAre(ComputedAxis{"a", "X  + Y", "m m"}))
        << "one line; a name with a comma has no form";
}

TEST(ComputedIniData, EndsWhereAFileHasNoEnd) {
    std::string names = "Axes=a";
    for (int i = 0; i < 100000; ++i) {
        names += ",a";
    }
    MIniData store;
    ASSERT_TRUE(store.SetContent("[COMPUTED]\n" + names +
                                 "\nExpression1=" + std::string(1 << 19, '(') + "\n"));
    const std::vector<ComputedAxis> axes = TakeComputedAxes(store);
    ASSERT_THAT(axes, SizeIs(kMostComputedAxes));
    const ComputedProgram program(axes, std::vector<std::string>{"X"});
    EXPECT_EQ(program.Findings()[0].text, "The expression is too long");
}

}  // namespace
}  // namespace wavo::computed
