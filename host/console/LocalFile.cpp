#include "LocalFile.h"

#include "Progress.h"
#include "Text.h"

#include <quorvex/Md5.h>
#include <quorvex/Results.h>

#include <array>
#include <fstream>
#include <system_error>
#include <utility>
#include <vector>

namespace quorvex::console
{
namespace
{

void RemoveFolder(const std::filesystem::path& path)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored))
        std::filesystem::remove_all(path, ignored);
}

} // namespace

FolderForAWhile::FolderForAWhile(std::filesystem::path path) : m_path(std::move(path))
{
    // A run that was interrupted leaves its own.
    RemoveFolder(m_path);
    std::error_code error;
    std::filesystem::create_directories(m_path, error);
    if (error)
        throw Failure("cannot make the folder " + NameOf(m_path), Result::LocalFileFailed);
}

FolderForAWhile::~FolderForAWhile()
{
    RemoveFolder(m_path);
}

std::uint64_t TransferableSize(const std::filesystem::path& path)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        throw Failure(NameOf(path) + " is a folder; only files are transferred");
    const std::uint64_t size = std::filesystem::file_size(path, error);
    if (error)
        throw Failure("cannot open " + NameOf(path), Result::LocalFileFailed);
    if (size > UINT32_MAX)
        throw Failure(NameOf(path) + " has " + ExactSizeText(size) + "; files of 4 GiB and more cannot be transferred");
    return size;
}

std::string DigestOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw Failure("cannot open " + NameOf(path), Result::LocalFileFailed);
    md5_state_t state;
    md5_init(&state);
    std::vector<unsigned char> block(1u << 20);
    while (file)
    {
        file.read(reinterpret_cast<char*>(block.data()), static_cast<std::streamsize>(block.size()));
        md5_append(&state, block.data(), static_cast<int>(file.gcount()));
    }
    if (!file.eof() || file.bad())
        throw Failure("cannot read " + NameOf(path), Result::LocalFileFailed);

    std::array<unsigned char, 16> digest{};
    md5_finish(&state, digest.data());
    std::string text;
    for (const unsigned char byte : digest)
    {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
    }
    return text;
}

void PutInPlace(const std::filesystem::path& complete, const std::filesystem::path& place)
{
    std::error_code error;
    std::filesystem::rename(complete, place, error);
    if (error)
        throw Failure("the download is complete, but " + NameOf(complete) + " cannot be renamed to " + NameOf(place));
}

void FetchInto(const std::filesystem::path& place, const std::function<Outcome(const LocalPath&)>& fetch,
               const std::string& what, Transport transport)
{
    const FolderForAWhile folder(WithEnding(place, L".quorvex-part"));
    const LocalPath local = SplitPath(folder.Path() / place.filename());
    Check(fetch(local), what, transport);
    PutInPlace(local.Whole(), place);
}

std::string NameOf(const std::filesystem::path& path)
{
    return ToUtf8(path.filename().wstring());
}

} // namespace quorvex::console
