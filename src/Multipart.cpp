#include "Multipart.h"

#include "Platform/CodePage.h"

#include <initializer_list>

namespace quorvex::Multipart
{

namespace
{

std::string Join(std::initializer_list<std::string_view> pieces)
{
    std::string text;
    for (const std::string_view piece : pieces)
    {
        text += piece;
    }
    return text;
}

} // namespace

std::wstring UploadContentType(const std::string& boundary)
{
    return Platform::ToWide(Join({"Content-Type:multipart/form-data;boundary=", boundary, "\r\n"}),
                            Platform::CodePage::Ansi);
}

std::wstring FormContentType(const std::string& boundary)
{
    return Platform::ToWide(Join({"Content-Type:multipart/form-data; boundary=", boundary, "\r\n"}),
                            Platform::CodePage::Ansi);
}

std::string UploadHead(const std::string& boundary, std::string_view fileName)
{
    return Join({"--", boundary, "\r\nContent-Disposition: form-data; name=\"upfile\";filename=\"", fileName,
                 "\"\r\nContent-Type: application/octet-stream\r\n\r\n"});
}

std::string Tail(const std::string& boundary)
{
    return Join({"\r\n--", boundary, "--\r\n"});
}

std::string LargeFileForm(const std::string& boundary, std::uint32_t totalSize, std::string_view md5,
                          std::string_view fileName)
{
    return Join({"--", boundary, "\r\nContent-Disposition: form-data; name=\"totalsize\"\r\n\r\n",
                 std::to_string(totalSize),                                                           //
                 "\r\n--", boundary, "\r\nContent-Disposition: form-data; name=\"md5\"\r\n\r\n", md5, //
                 "\r\n--", boundary, "\r\nContent-Disposition: form-data; name=\"upfile\"; filename=\"", fileName,
                 "\"\r\n\r\n\r\n--", boundary, "--\r\n"});
}

std::string BlockHead(const std::string& boundary, std::string_view fileKey, std::uint32_t position, std::uint32_t size)
{
    return Join({"--", boundary, "\r\nContent-Disposition: form-data; name=\"fkey\"\r\n\r\n", fileKey, //
                 "\r\n--", boundary, "\r\nContent-Disposition: form-data; name=\"pos\"\r\n\r\n",
                 std::to_string(position), //
                 "\r\n--", boundary, "\r\nContent-Disposition: form-data; name=\"size\"\r\n\r\n",
                 std::to_string(size), //
                 "\r\n--", boundary, "\r\nContent-Disposition: form-data; name=\"upfile\"; filename=\"0\"\r\n\r\n"});
}

std::string ChunkHead(const std::string& boundary, std::string_view key, std::uint32_t first, std::uint32_t last)
{
    return Join({"--", boundary, "\r\nContent-Disposition: form-data; name=\"k\"\r\n\r\n", key, //
                 "\r\n--", boundary, "\r\nContent-Disposition: form-data; name=\"rs\"\r\n\r\n",
                 std::to_string(first), //
                 "\r\n--", boundary, "\r\nContent-Disposition: form-data; name=\"re\"\r\n\r\n",
                 std::to_string(last), //
                 "\r\n--", boundary, "\r\nContent-Disposition: form-data; name=\"chunk\"; filename=\"0\"\r\n",
                 "Content-Type: application/octet-stream\r\n\r\n"});
}

std::string PictureHead(const std::string& boundary, std::string_view md5, std::string_view name)
{
    return Join({"--", boundary, "\r\nContent_disposition: form-data: name=\"md5\"\r\n", md5, //
                 "\r\n--", boundary, "\r\nContent-Disposition: form-data; name=\"upfile\";filename=\"", name,
                 "\"\r\nContent-type: image/jpeg\r\n\r\n"});
}

std::string PhotoBlockHead(const std::string& boundary, std::uint32_t offset, std::string_view ticket, int flag,
                           std::uint64_t fileSize, std::string_view md5, std::string_view name)
{
    return Join({"--",
                 boundary,
                 "\r\nContent-Disposition: form-data; name=\"offset\"\r\n\r\n",
                 std::to_string(offset), //
                 "\r\n--",
                 boundary,
                 "\r\nContent-Disposition: form-data; name=\"ticket\"\r\n\r\n",
                 ticket, //
                 "\r\n--",
                 boundary,
                 "\r\nContent-Disposition: form-data; name=\"flag\"\r\n\r\n",
                 std::to_string(flag), //
                 "\r\n--",
                 boundary,
                 "\r\nContent-Disposition: form-data; name=\"filesize\"\r\n\r\n",
                 std::to_string(fileSize), //
                 "\r\n--",
                 boundary,
                 "\r\nContent-Disposition: form-data; name=\"md5\"\r\n\r\n",
                 md5, //
                 "\r\n--",
                 boundary,
                 "\r\nContent-Disposition: form-data; name=\"photo\"; filename=\"",
                 name,
                 "\"\r\nContent-Type: image/jpeg\r\n\r\n"});
}

} // namespace quorvex::Multipart
