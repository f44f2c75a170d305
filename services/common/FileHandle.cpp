#include "common/FileHandle.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvex::services
{

namespace
{

[[noreturn]] void ThrowLastError(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

int Flags(FileHandle::Mode mode)
{
    switch (mode)
    {
    case FileHandle::Mode::Read:
        return O_RDONLY;
    case FileHandle::Mode::Write:
        return O_RDWR;
    case FileHandle::Mode::CreateNew:
        return O_RDWR | O_CREAT | O_EXCL;
    case FileHandle::Mode::OpenOrCreate:
        return O_RDWR | O_CREAT;
    }
    return O_RDONLY;
}

} // namespace

FileHandle::FileHandle(const std::filesystem::path& path, Mode mode)
    : descriptor_(::open(path.c_str(), Flags(mode) | O_CLOEXEC, S_IRUSR | S_IWUSR))
{
    if (descriptor_ < 0)
    {
        ThrowLastError("open " + path.string());
    }
}

FileHandle::FileHandle(FileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1))
{
}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept
{
    if (this != &other)
    {
        Close();
        descriptor_ = std::exchange(other.descriptor_, -1);
    }
    return *this;
}

FileHandle::~FileHandle()
{
    Close();
}

void FileHandle::WriteAt(std::uint64_t position, std::string_view bytes) const
{
    while (!bytes.empty())
    {
        const ssize_t written = ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(position));
        if (written < 0)
        {
            if (errno == EINTR)
            {
                continue;
            }
            ThrowLastError("pwrite");
        }
        position += static_cast<std::uint64_t>(written);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

std::size_t FileHandle::ReadAt(std::uint64_t position, std::span<char> buffer) const
{
    std::size_t total = 0;
    while (total < buffer.size())
    {
        const ssize_t count =
            ::pread(descriptor_, buffer.data() + total, buffer.size() - total, static_cast<off_t>(position + total));
        if (count < 0)
        {
            if (errno == EINTR)
            {
                continue;
            }
            ThrowLastError("pread");
        }
        if (count == 0)
        {
            break;
        }
        total += static_cast<std::size_t>(count);
    }
    return total;
}

void FileHandle::Sync() const
{
    if (::fdatasync(descriptor_) != 0)
    {
        ThrowLastError("fdatasync");
    }
}

bool FileHandle::TryLock() const
{
    return ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0;
}

std::uint64_t FileHandle::Size() const
{
    struct stat status
    {
    };
    if (::fstat(descriptor_, &status) != 0)
    {
        ThrowLastError("fstat");
    }
    return static_cast<std::uint64_t>(status.st_size);
}

void FileHandle::Close() noexcept
{
    if (descriptor_ >= 0)
    {
        ::close(descriptor_);
    }
}

void SyncFolder(const std::filesystem::path& folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
    {
        ThrowLastError("open " + folder.string());
    }
    const int result = ::fsync(descriptor);
    const int error = errno;
    ::close(descriptor);
    if (result != 0)
    {
        errno = error;
        ThrowLastError("fsync " + folder.string());
    }
}

} // namespace quorvex::services
