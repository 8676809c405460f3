#pragma once

#include <zlib.h>

#include <cstdlib>
#include <string>

namespace halvex::test {

/// One gzip member that holds `text`.
inline std::string gzip(const std::string& text) {
    constexpr int kGzip = 16;
    z_stream stream{};
    if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, MAX_WBITS + kGzip, 8, Z_DEFAULT_STRATEGY) != Z_OK) std::abort();
    std::string packed(deflateBound(&stream, text.size()) + 32, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    if (deflate(&stream, Z_FINISH) != Z_STREAM_END) std::abort();
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

}  // namespace halvex::test
