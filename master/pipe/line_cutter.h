// Cuts bytes that come in pieces into lines.
//
//   const std::span<char> room = cutter.Room();
//   cutter.Add(Read(room.data(), room.size()));
//   for (std::string_view line; cutter.Next(&line) != LineCutter::Piece::kNone;) ...
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace wavo::master {

class LineCutter {
 public:
    /// Longest line, bytes.
    static constexpr std::size_t kLongestLine = std::size_t{256} << 10U;
    /// Bytes that fit into Room() at least.
    static constexpr std::size_t kRoom = std::size_t{64} << 10U;

    enum class Piece {
        kNone,     ///< no line is whole
        kLine,     ///< without its line feed
        kTooLong,  ///< the beginning of a line that is too long; the rest of it is skipped
    };

    LineCutter() : m_buffer(kLongestLine + kRoom) {}

    /// Where the next bytes go. Ends the lines that Next gave.
    std::span<char> Room();
    /// So many bytes were put there.
    void Add(std::size_t count) { m_end += count; }

    Piece Next(std::string_view* line);

    /// The bytes behind the last line feed, as a line: the input has ended. Nothing when there are
    /// none.
    std::optional<std::string_view> TakeRest();

    /// Forgets what is there.
    void Clear();

 private:
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;     ///< of what was not given yet
    std::size_t m_end = 0;       ///< of what was read
    bool m_is_skipping = false;  ///< the rest of a line that was too long
};

}  // namespace wavo::master
