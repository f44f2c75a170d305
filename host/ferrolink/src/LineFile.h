#ifndef FERROLINK_LINEFILE_H
#define FERROLINK_LINEFILE_H

#include <cstddef>

namespace ferrolink
{

/// Where lines are written: the standard error stream, or a file that this object owns.
class LineFile
{
public:
    LineFile() noexcept = default;
    ~LineFile() { UseStandardError(); }

    LineFile(const LineFile&) = delete;
    LineFile& operator=(const LineFile&) = delete;

    /// Appends to the file from now on.
    /// @return 0, or the system's error code; then nothing has changed
    int Open(const wchar_t* path) noexcept;

    /// Closes the file, if one is open, and writes to the standard error stream from now on.
    void UseStandardError() noexcept;

    /// Writes the whole line in one call; a line for which there is no memory or no room is dropped.
    void Write(const wchar_t* line, std::size_t length) noexcept;

private:
    void* m_file = nullptr;
};

/// Keeps the calling thread's last-error code as it was found.
class LastErrorKeeper
{
public:
    LastErrorKeeper() noexcept;
    ~LastErrorKeeper();

    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

private:
    unsigned long m_code;
};

} // namespace ferrolink

#endif
