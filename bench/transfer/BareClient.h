#pragma once

#include <windows.h>
// Needs windows.h.
#include <winhttp.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace quorvex::bench
{

/// What the module does on the wire as plain loops over WinHTTP: the same calls in the same order with the same
/// headers and buffer sizes, and nothing else. Every operation throws when a call fails or the status is no success.
class BareClient
{
public:
    explicit BareClient(std::uint16_t port);

    void Upload(const std::filesystem::path& file) const;
    void Download(const std::filesystem::path& file) const;
    void UploadBlock(std::span<const char> block, std::uint32_t position) const;
    void DownloadBlock(std::span<char> block, std::uint32_t position) const;
    std::string Get(const wchar_t* object) const;
    std::string Post(const wchar_t* object, std::string_view body) const;

private:
    struct Closer
    {
        using pointer = HINTERNET;
        void operator()(HINTERNET handle) const { ::WinHttpCloseHandle(handle); }
    };
    using Internet = std::unique_ptr<void, Closer>;

    Internet OpenRequest(const wchar_t* verb, const wchar_t* object) const;

    Internet m_session;
    Internet m_connection;
};

} // namespace quorvex::bench
