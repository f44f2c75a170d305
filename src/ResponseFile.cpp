#include "ResponseFile.h"

#include "CommonUtil.h"
#include "Inflate.h"
#include "LocalFile.h"
#include "Platform/LastError.h"
#include "Platform/WinHttp.h"

#include <quorvex/Results.h>

#include <array>
#include <memory>

namespace quorvex
{

using Platform::File;
using Platform::Request;

int WritePiece(const File& file, const char* data, std::size_t size, std::uint32_t read, std::uint32_t& written)
{
    const auto count = static_cast<std::uint32_t>(size);
    if (!file.Write(data, count, written) || written != count)
    {
        LOG_FAILED_CALL(L"write buffer to file fail, hFile=" << file.Handle() << L", dwRead=" << read << L", dwWrite="
                                                             << written);
        return Result::TransferFailed;
    }
    return Result::Ok;
}

namespace
{

int WriteFilePlain(Request& request, const File& file)
{
    static constexpr std::uint32_t kChunk = 65536;

    const auto chunk = std::make_unique_for_overwrite<char[]>(kChunk);
    for (;;)
    {
        std::uint32_t read = 0;
        if (!request.Read(chunk.get(), kChunk, read))
        {
            LOG_FAILED_CALL(L"FileDownload() InternetReadFile error");
            return Result::TransferFailed;
        }
        if (read == 0)
        {
            return Result::Ok;
        }
        std::uint32_t written = 0;
        if (const int result = WritePiece(file, chunk.get(), read, read, written); result != Result::Ok)
        {
            return result;
        }
    }
}

/// Inflates what one read has given and writes it.
/// @param inflated receives the inflater's last result
int WriteInflated(const File& file, Inflater& inflater, std::uint32_t read, int& inflated)
{
    std::array<char, kInflateChunk> chunk;
    std::size_t produced = 0;
    do
    {
        inflated = inflater.Inflate(chunk, produced, Inflater::Flush::Sync);
        if (Inflater::IsFailure(inflated))
        {
            LOG_ERROR(L"WriteFileDecompress() inflate() return ret=" << inflated);
            return inflated;
        }
        if (produced != 0)
        {
            std::uint32_t written = 0;
            if (const int result = WritePiece(file, chunk.data(), produced, read, written); result != Result::Ok)
            {
                return result;
            }
            LOG_DEBUG(L"write buffer to file successfully, dwRead=" << read << L", dwWrite=" << written);
        }
    } while (produced == chunk.size());
    return Result::Ok;
}

int WriteFileDecompress(Request& request, const File& file, std::uint32_t encoding)
{
    Inflater inflater(encoding);
    if (const int result = inflater.InitResult(); result != 0)
    {
        LOG_ERROR(L"WriteFileDecompress(), inflateInit() return ret=" << result);
        return result;
    }

    std::array<char, 4096> data;
    int inflated = 0;
    for (;;)
    {
        std::uint32_t read = 0;
        if (!request.Read(data.data(), static_cast<std::uint32_t>(data.size()), read))
        {
            LOG_FAILED_CALL(L"WriteFileDecompress() InternetReadFile error");
            return Result::TransferFailed;
        }
        if (read == 0)
        {
            break;
        }
        inflater.SetInput({data.data(), read});
        if (const int result = WriteInflated(file, inflater, read, inflated); result != Result::Ok)
        {
            return result;
        }
    }
    if (inflated == Inflater::kStreamEnd)
    {
        return Result::Ok;
    }
    LOG_ERROR(L"WriteFileDecompress() inflate() last return is not Z_STREAM_END, ret=" << inflated);
    return inflated;
}

} // namespace

int DownloadToFile(Request& request, const wchar_t* path, std::uint32_t encoding, DownloadRules rules)
{
    File file;
    if (path == nullptr)
    {
        Platform::SetLastError(Platform::kInvalidName);
    }
    if (path == nullptr || !file.OpenToWrite(path, rules.existing))
    {
        LOG_LAST_ERROR();
        return Result::LocalFileFailed;
    }
    LOG_DEBUG(L"File " << path << L" open successfully");

    const int result = encoding != 0 ? WriteFileDecompress(request, file, encoding) : WriteFilePlain(request, file);

    const bool isClosed = CloseLocalFile(file);
    return isClosed || !rules.isCloseFailureFatal ? result : Result::LocalFileFailed;
}

} // namespace quorvex
