#include "Inflate.h"

#include "CommonUtil.h"

#include <quorvex/Results.h>

#include <zlib.h>

#include <array>

namespace quorvex
{

namespace
{

// The interface of zlib that this code is written to.
constexpr char kZlibVersion[] = "1.2.5";

// The largest window, and the header, gzip's or zlib's own, found out by zlib.
constexpr int kDetectHeader = 15 + 32;

} // namespace

static_assert(Inflater::kStreamEnd == Z_STREAM_END);

Inflater::Inflater(std::uint32_t encoding) : m_stream(std::make_unique<z_stream>())
{
    m_initResult = (encoding & kEncodingGzip) != 0
                       ? inflateInit2_(m_stream.get(), kDetectHeader, kZlibVersion, sizeof(z_stream))
                       : inflateInit_(m_stream.get(), kZlibVersion, sizeof(z_stream));
}

Inflater::~Inflater()
{
    inflateEnd(m_stream.get());
}

void Inflater::SetInput(std::span<const char> data)
{
    // zlib only reads its input, whatever the field's type says.
    m_stream->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
    m_stream->avail_in = static_cast<uInt>(data.size());
}

int Inflater::Inflate(std::span<char, kInflateChunk> chunk, std::size_t& produced, Flush flush)
{
    m_stream->next_out = reinterpret_cast<Bytef*>(chunk.data());
    m_stream->avail_out = static_cast<uInt>(chunk.size());
    const int result = inflate(m_stream.get(), flush == Flush::Sync ? Z_SYNC_FLUSH : Z_NO_FLUSH);
    produced = chunk.size() - m_stream->avail_out;
    return result == Z_NEED_DICT ? Z_DATA_ERROR : result;
}

bool Inflater::IsFailure(int result)
{
    return result == Z_DATA_ERROR || result == Z_MEM_ERROR;
}

int InflateToString(std::string& out, std::span<const char> data, std::uint32_t encoding, std::size_t longest)
{
    // A stream that could not be set up makes the first step fail.
    Inflater inflater(encoding);
    inflater.SetInput(data);

    std::array<char, kInflateChunk> chunk;
    std::size_t produced = 0;
    int result = 0;
    do
    {
        result = inflater.Inflate(chunk, produced, Inflater::Flush::None);
        if (Inflater::IsFailure(result))
        {
            LOG_ERROR(L"GetResponse() inflate() ret=" << result);
            return result;
        }
        if (produced > longest - out.size())
        {
            LOG_ERROR(L"GetResponse() inflate() gives too long a response, limit=" << longest);
            out.clear();
            return Result::TransferFailed;
        }
        out.append(chunk.data(), produced);
    } while (produced == chunk.size());

    if (result == Inflater::kStreamEnd)
    {
        return 0;
    }
    LOG_ERROR(L"GetResponse() inflate() last return is not Z_STREAM_END, ret=" << result);
    return result;
}

} // namespace quorvex
