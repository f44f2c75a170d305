#pragma once

#include "Failure.h"
#include "Paths.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace quorvex::console
{

/// A folder that is empty at first and goes with all that is in it.
class FolderForAWhile
{
public:
    /// @throws Failure
    explicit FolderForAWhile(std::filesystem::path path);
    ~FolderForAWhile();

    FolderForAWhile(const FolderForAWhile&) = delete;
    FolderForAWhile& operator=(const FolderForAWhile&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

/// @return the size of a file that the protocol can carry: sizes have 32 bits in it
/// @throws Failure when it is missing, no file, or too large
std::uint64_t TransferableSize(const std::filesystem::path& path);

/// MD5 of a whole file, 32 lowercase hexadecimal characters; an empty file has one, too.
/// @throws Failure when it cannot be read
std::string DigestOf(const std::filesystem::path& path);

/// Gives a complete download its name, in place of what has had it.
/// @throws Failure
void PutInPlace(const std::filesystem::path& complete, const std::filesystem::path& place);

/// Has a whole file written into a folder of its own beside its place, and puts it there when it has come.
/// @param fetch writes the file and returns the module's result
/// @param what  what cannot be done when that fails
/// @throws Failure
void FetchInto(const std::filesystem::path& place, const std::function<Outcome(const LocalPath&)>& fetch,
               const std::string& what, Transport transport = Transport::Module);

/// The name for messages.
std::string NameOf(const std::filesystem::path& path);

} // namespace quorvex::console
