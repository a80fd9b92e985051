// Text form of characters.
#include "settings/character_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace wavo {
namespace {

using ::testing::Eq;
using ::testing::Optional;

TEST(CharacterText, CharactersAboveTheBlankStandForThemselves) {
    for (int code = 0; code < 256; ++code) {
        const std::string text = FormatCharacter(static_cast<char>(code));
        if (code > 32) {
            EXPECT_EQ(text, std::string(1, static_cast<char>(code)));
        } else {
            char expected[8];
            std::snprintf(expected, sizeof expected, "0x%02x", static_cast<unsigned>(code));
            EXPECT_EQ(text, expected);
        }
        EXPECT_THAT(ParseCharacters(text), Optional(std::string(1, static_cast<char>(code))));
    }
}

TEST(CharacterText, ListsAreJoinedByCommas) {
    EXPECT_EQ(FormatCharacters("\r\n"), "0x0d,0x0a");
    EXPECT_EQ(FormatCharacters(""), "");
    EXPECT_EQ(FormatCharacters(";\n"), ";,0x0a");
    EXPECT_EQ(FormatCharacters(std::string_view("\0 ", 2)), "0x00,0x20");
}

TEST(CharacterText, OnlyCodesAreReadInLists) {
    for (const char* const bad : {"", "ab", ";,0x0a", "0x0a,;", "0x", "0x,0x0a", "0x0a,", ",0x0a",
                                  "0x0a,,0x0d", "0x0a 0x0d", "0xg", "0x0a ", "0X0A", "10"}) {
        EXPECT_THAT(ParseCharacters(bad), Eq(std::nullopt)) << bad;
    }
    EXPECT_EQ(ParseCharacters(","), ",");
    EXPECT_EQ(ParseCharacters("0x3b,0x0A"), ";\n");
    EXPECT_EQ(ParseCharacters("0x10000000000000000000009"), "\t");
    EXPECT_EQ(ParseCharacters("0x1,0x00"), std::string("\1\0", 2));
}

}  // namespace
}  // namespace wavo
