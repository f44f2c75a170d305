#pragma once

#include "../HttpHelper.h"

#include <quorvex/Results.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace quorvex::netdisk
{

/// The network disk's connection: its response reader and its transfers. Every operation returns 0, a negative
/// result code, or the HTTP status of a refused request.
class CNetDiskHttpHelper : public CHttpHelper
{
public:
    using CHttpHelper::CHttpHelper;

    int GetResponse(Platform::Request& request, std::string& response) override;

    /// Uploads a file as the form field "upfile".
    /// @param objectPath    path below the base URL
    /// @param localFolder   folder of the file
    /// @param fileName      the file's name there
    /// @param announcedName the name to send for it; cut at 255 bytes of UTF-8
    /// @param response      receives the answer
    int FileUpload(const wchar_t* objectPath, const wchar_t* localFolder, const wchar_t* fileName,
                   const wchar_t* announcedName, std::string& response);

    /// Creates a large file.
    /// @param fileName  cut at 64 bytes of UTF-8
    /// @param totalSize bytes
    /// @param md5       of the whole content, in hexadecimal
    /// @param response  receives the answer
    int FileCreate(const wchar_t* fileName, std::uint32_t totalSize, const char* md5, std::string& response);

    /// Uploads a block of a large file.
    /// @param fileKey  cut at 32 bytes of UTF-8
    /// @param position offset of the block in the file
    /// @param block    its bytes
    /// @param response receives the answer
    int FileCreate(const wchar_t* fileKey, std::uint32_t position, std::span<const char> block, std::string& response);

    /// Downloads into a file of a folder.
    /// @param objectPath  path below the base URL
    /// @param localFolder the folder
    /// @param fileName    the file's name, or null for the one that the server gives
    /// @param statusCode  receives the HTTP status, or 0 when none was received
    int FileDownload(const wchar_t* objectPath, const wchar_t* localFolder, const wchar_t* fileName,
                     std::uint32_t& statusCode);

    /// Asks for a file's size and name.
    /// @param objectPath  path below the base URL
    /// @param totalSize   receives the size
    /// @param fileName    receives the name
    /// @param secondValue receives the second value of Content-Disposition, empty when there is none
    int GetFileInfo(const wchar_t* objectPath, std::uint32_t& totalSize, std::wstring& fileName,
                    std::wstring& secondValue);

    /// Downloads one range.
    /// @param objectPath   path below the base URL
    /// @param start        offset of its first byte
    /// @param transferSize in: bytes wanted; out: bytes received, never more than wanted
    /// @param buffer       room for the bytes wanted
    int BufferDownload(const wchar_t* objectPath, std::uint32_t start, std::uint32_t& transferSize, void* buffer);

private:
    /// @param longest bytes that the response may have
    /// @return as GetResponse
    static int ReadResponse(Platform::Request& request, std::string& response, std::size_t longest);

    // A request that could not be sent cannot be received either, and that is what ends it.
    static constexpr RangeFailures kRangeFailures = {.send = Result::Ok, .receive = Result::ReceiveFailed};
};

} // namespace quorvex::netdisk
