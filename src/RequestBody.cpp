#include "RequestBody.h"

#include "Platform/File.h"
#include "Platform/LastError.h"
#include "Platform/WinHttp.h"

#include <algorithm>
#include <memory>

namespace quorvex
{

void WriteBody(Platform::Request& request, std::string_view piece)
{
    request.Write(piece.data(), static_cast<std::uint32_t>(piece.size()));
}

bool WriteFileBody(Platform::Request& request, const Platform::File& file, std::uint32_t size)
{
    static constexpr std::uint32_t kChunk = 65536;

    const auto chunk = std::make_unique_for_overwrite<char[]>(kChunk);
    while (size != 0)
    {
        std::uint32_t read = 0;
        if (!file.Read(chunk.get(), std::min(size, kChunk), read))
        {
            return false;
        }
        if (read == 0)
        {
            Platform::SetLastError(Platform::kEndOfFile);
            return false;
        }
        if (!request.Write(chunk.get(), read))
        {
            return true;
        }
        size -= read;
    }
    return true;
}

} // namespace quorvex
