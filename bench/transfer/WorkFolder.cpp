#include "WorkFolder.h"

#include "Handle.h"

#include <windows.h>
// Needs windows.h.
#include <winioctl.h>

#include <string>
#include <system_error>

namespace quorvex::bench
{

namespace fs = std::filesystem;

WorkFolder::WorkFolder(const fs::path& parent)
    : m_path(parent / ("quorvex-bench-" + std::to_string(::GetCurrentProcessId())))
{
    fs::create_directory(m_path);
}

WorkFolder::~WorkFolder()
{
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

void MakeSparseFile(const fs::path& path, std::uint64_t size)
{
    const Handle file =
        CheckedFile(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    // A file system that refuses this stores the zeros instead.
    DWORD returned = 0;
    ::DeviceIoControl(file.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);

    LARGE_INTEGER end;
    end.QuadPart = static_cast<LONGLONG>(size);
    Check(::SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN), "SetFilePointerEx");
    Check(::SetEndOfFile(file.get()), "SetEndOfFile");
}

} // namespace quorvex::bench
