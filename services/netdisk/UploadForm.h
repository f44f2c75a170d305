#pragma once

#include "common/FileForm.h"
#include "netdisk/UploadTargets.h"

#include <memory>
#include <string>
#include <string_view>

namespace quorvex::services::netdisk
{

// The form of "file/upload" in its three shapes, told apart by the fields that stand before "upfile": none for a whole
// file; "totalsize" and "md5" for the announcement of a large one; "fkey", "pos" and "size" for a block of it.
class UploadForm : public FileForm
{
public:
    UploadForm(NetDiskStore& store, LargeFiles& largeFiles, BlobStore& blobs, std::int64_t account);

    // After the form's end.
    UploadAnswer Finish() { return target_->Finish(); }

private:
    void OnFile(const std::string& fileName) override;
    void OnFileBytes(std::string_view bytes) override { target_->Append(bytes); }

    NetDiskStore& store_;
    LargeFiles& largeFiles_;
    BlobStore& blobs_;
    std::int64_t account_;
    std::unique_ptr<UploadTarget> target_;
};

} // namespace quorvex::services::netdisk
