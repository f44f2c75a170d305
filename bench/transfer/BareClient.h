#pragma once

#include <windows.h>
// Needs windows.h.
#include <winhttp.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace quorvex::bench
{

/// What differs between the services.
struct BareService
{
    const wchar_t* upload;
    const wchar_t* download;
    const wchar_t* blockUpload;
    const wchar_t* blockDownload;
    /// What precedes a block's bytes in its form.
    std::string (*blockHead)(std::size_t size, std::uint32_t position);
};

extern const BareService kBareNetDisk;
extern const BareService kBareStorage;

/// What the module does on the wire as plain loops over WinHTTP: the same calls in the same order with the same
/// headers and buffer sizes, and nothing else. Every operation throws when a call fails or the status is no success.
class BareClient
{
public:
    explicit BareClient(std::uint16_t port, const BareService& service = kBareNetDisk);

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

    const BareService& m_service;
    Internet m_session;
    Internet m_connection;
};

} // namespace quorvex::bench
