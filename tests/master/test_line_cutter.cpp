// Bytes in pieces of any size become the same lines.
#include "master/pipe/line_cutter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace wavo::master {
namespace {

using ::testing::ElementsAre;

/// The lines of a text that comes in pieces of this size; "..." for one that is too long.
std::vector<std::string> LinesOf(std::string_view text, std::size_t piece) {
    LineCutter cutter;
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::span<char> room = cutter.Room();
        const std::size_t count = std::min({piece, text.size(), room.size()});
        std::copy_n(text.data(), count, room.data());
        cutter.Add(count);
        text.remove_prefix(count);
        std::string_view line;
        for (auto next = cutter.Next(&line); next != LineCutter::Piece::kNone;
             next = cutter.Next(&line)) {
            lines.emplace_back(next == LineCutter::Piece::kTooLong ? "..." : line);
        }
    }
    if (const auto rest = cutter.TakeRest()) {
        lines.push_back("rest " + std::string(*rest));
    }
    return lines;
}

TEST(LineCutter, PiecesMakeTheSameLines) {
    for (const std::size_t piece : {1U, 2U, 3U, 5U, 100U}) {
        EXPECT_THAT(LinesOf("a\n\nbcd\n", piece), ElementsAre("a", "", "bcd"));
        EXPECT_THAT(LinesOf("a\nb", piece), ElementsAre("a", "rest b"));
    }
}

TEST(LineCutter, ALineThatIsTooLongIsGivenOnceAndTheNextIsWhole) {
    for (const std::size_t piece : {1000U, 65536U}) {
        for (const std::size_t size :
             {LineCutter::kLongestLine + 1, LineCutter::kLongestLine * 5}) {
            const std::string text = "a\n" + std::string(size, 'x') + "\nb\n";
            EXPECT_THAT(LinesOf(text, piece), ElementsAre("a", "...", "b"));
            EXPECT_THAT(LinesOf(text.substr(0, size), piece), ElementsAre("a", ::testing::_))
                << "without its end";
        }
        const std::string longest(LineCutter::kLongestLine, 'x');
        EXPECT_THAT(LinesOf(longest + "\nb\n", piece), ElementsAre(longest, "b"));
    }
}

TEST(LineCutter, ClearForgetsTheHalfLine) {
    LineCutter cutter;
    cutter.Room()[0] = 'x';
    cutter.Add(1);
    cutter.Clear();
    EXPECT_FALSE(cutter.TakeRest());
}

}  // namespace
}  // namespace wavo::master
