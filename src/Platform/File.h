#pragma once

#include <cstdint>

namespace quorvex::Platform
{

/// An open local file; closed at the end of its scope. Methods that return false leave the reason in LastError.
class File
{
public:
    enum class Share
    {
        Nothing,
        ReadAndWrite
    };
    enum class Access
    {
        Normal,
        Random
    };

    File() = default;
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// Opens an existing file for reading.
    bool OpenToRead(const wchar_t* path, Share share, Access access = Access::Normal);

    /// What becomes of a file that is there already.
    enum class Existing
    {
        Kept,
        Emptied
    };

    /// Opens a file for reading and writing, shared with nobody. A missing one is made.
    bool OpenToWrite(const wchar_t* path, Existing existing);

    bool Size(std::uint64_t& size) const;
    bool Read(void* buffer, std::uint32_t room, std::uint32_t& read) const;
    bool Write(const void* data, std::uint32_t size, std::uint32_t& written) const;

    /// Closes now, for callers that report a failure; the file counts as closed in any case.
    bool Close();

    /// The system's handle, for log lines.
    const void* Handle() const { return m_handle; }

private:
    bool Open(const wchar_t* path, unsigned long access, unsigned long share, unsigned long creation,
              unsigned long flags);

    void* m_handle = nullptr;
};

/// The size of a file, which need not be one that can be opened.
bool FileSize(const wchar_t* path, std::uint64_t& size);

} // namespace quorvex::Platform
