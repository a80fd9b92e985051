#include "master/gzip.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>

namespace wavo::master {

bool IsGzip(std::string_view data) {
    return data.size() >= 2 && data[0] == '\x1f' && data[1] == '\x8b';
}

bool Gunzip(std::string_view data, std::string* unpacked) {
    constexpr int kGzipOnly = 16 + MAX_WBITS;
    z_stream stream{};
    if (inflateInit2(&stream, kGzipOnly) != Z_OK) {
        return false;
    }
    std::array<char, 1U << 16U> chunk{};
    int state = Z_OK;
    while (true) {
        if (stream.avail_in == 0) {
            const std::size_t piece =
                std::min<std::size_t>(data.size(), std::numeric_limits<uInt>::max());
            // zlib does not write to its input.
            stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
            stream.avail_in = static_cast<uInt>(piece);
            data.remove_prefix(piece);
        }
        if (state == Z_STREAM_END) {
            if (stream.avail_in == 0) {
                break;
            }
            inflateReset(&stream);
        }
        stream.next_out = reinterpret_cast<Bytef*>(chunk.data());
        stream.avail_out = static_cast<uInt>(chunk.size());
        state = inflate(&stream, Z_NO_FLUSH);
        unpacked->append(chunk.data(), chunk.size() - stream.avail_out);
        if (state != Z_OK && state != Z_STREAM_END) {
            break;  // damaged, or no input left before the end
        }
    }
    inflateEnd(&stream);
    return state == Z_STREAM_END;
}

}  // namespace wavo::master
