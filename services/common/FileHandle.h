#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

namespace quorvex::services
{

// Owns a file descriptor; every failed call throws std::system_error naming the call and the path.
class FileHandle
{
public:
    enum class Mode
    {
        Read,
        Write,     // an existing file
        CreateNew, // fails when the file is there
        OpenOrCreate,
    };

    FileHandle() = default;
    FileHandle(const std::filesystem::path& path, Mode mode);
    FileHandle(FileHandle&& other) noexcept;
    FileHandle& operator=(FileHandle&& other) noexcept;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle();

    void WriteAt(std::uint64_t position, std::string_view bytes) const;

    // How many bytes were read; fewer than asked only at the file's end.
    std::size_t ReadAt(std::uint64_t position, std::span<char> buffer) const;

    // The data, and the size where it changed, are on the disk when this returns.
    void Sync() const;

    // False when another process holds the lock.
    bool TryLock() const;

    std::uint64_t Size() const;

private:
    void Close() noexcept;

    int descriptor_ = -1;
};

// A new or removed name is durable only once its folder is.
void SyncFolder(const std::filesystem::path& folder);

} // namespace quorvex::services
