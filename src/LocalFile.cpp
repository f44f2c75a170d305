#include "LocalFile.h"

#include "CommonUtil.h"
#include "Platform/LastError.h"

namespace quorvex
{

bool OpenUploadFile(Platform::File& file, const UploadPath& path, Platform::File::Share share)
{
    if (path.IsCut())
    {
        Platform::SetLastError(Platform::kInvalidName);
    }
    if (path.IsCut() || !file.OpenToRead(path.c_str(), share))
    {
        LOG_LAST_ERROR();
        return false;
    }
    return true;
}

bool CloseLocalFile(Platform::File& file)
{
    if (file.Close())
    {
        LOG_TRACE(L"CloseHandle successfully");
        return true;
    }
    LOG_FAILED_CALL(L"CloseHandle fail");
    return false;
}

} // namespace quorvex
