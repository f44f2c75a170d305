#pragma once

#include "../HttpHelper.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace quorvex
{

/// The shared file storage's connection: its response reader and its transfers. Every operation returns 0, a negative
/// result code, 1 or a zlib code for a body that cannot be trusted, or the HTTP status of a refused request.
class CShareFileStorageHttpHelper : public CHttpHelper
{
public:
    using CHttpHelper::CHttpHelper;

    int GetResponse(Platform::Request& request, std::string& response) override;

    /// Uploads a file as the form field "upfile".
    /// @param objectPath path below the base URL
    /// @param folder     folder of the file
    /// @param fileName   the file's name there
    /// @param serverName the name to send for it, at most 255 bytes in the OEM code page
    /// @param response   receives the answer
    int FileUpload(const wchar_t* objectPath, const wchar_t* folder, const wchar_t* fileName, const wchar_t* serverName,
                   std::string& response);

    /// Downloads into a file, which is emptied first when it is there already.
    /// @param objectPath path below the base URL
    /// @param folder     folder of the file
    /// @param fileName   the file's name there
    int FileDownload(const wchar_t* objectPath, const wchar_t* folder, const wchar_t* fileName);

    /// Uploads one chunk of a depot file.
    /// @param objectPath path below the base URL
    /// @param key        the file's key, at most 64 bytes in the OEM code page
    /// @param position   the chunk's place in the file
    /// @param response   receives the answer
    int BufferUpload(const wchar_t* objectPath, const wchar_t* key, std::uint32_t position, std::span<const char> chunk,
                     std::string& response);

    /// What a probe learns of a file.
    struct FileInfo
    {
        std::uint32_t totalSize = 0;
        std::wstring name;
        /// The second and third parameter of Content-Disposition; empty when there is none.
        std::wstring second;
        std::wstring third;
    };

    /// Asks for a file's size and name. It has always gone by this name, in the log too, although nothing is uploaded.
    /// @param objectPath path below the base URL
    int BufferUpload(const wchar_t* objectPath, FileInfo& info);

    /// Downloads one range.
    /// @param objectPath   path below the base URL
    /// @param start        offset of its first byte
    /// @param transferSize in: bytes wanted; out, on success: bytes received, never more than wanted
    /// @param buffer       room for the bytes wanted
    int BufferDownload(const wchar_t* objectPath, std::uint32_t start, std::uint32_t& transferSize, void* buffer);

private:
    /// @param longest bytes that the response may have
    /// @return as GetResponse
    static int ReadResponse(Platform::Request& request, std::string& response, std::size_t longest);
};

} // namespace quorvex
