#include "wire/Compression.h"

#include <zlib.h>

#include <stdexcept>

namespace wire
{

std::string compress(std::string_view text, Encoding encoding)
{
    const int windowBits = encoding == Encoding::Gzip ? 15 + 16 : encoding == Encoding::Zlib ? 15 : -15;
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::runtime_error("deflate does not start");
    std::string packed(deflateBound(&stream, static_cast<uLong>(text.size())), '\0');
    std::string input(text);
    stream.next_in = reinterpret_cast<Bytef*>(input.data());
    stream.avail_in = static_cast<uInt>(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    const int result = deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    if (result != Z_STREAM_END)
        throw std::runtime_error("deflate does not end");
    return packed;
}

} // namespace wire
