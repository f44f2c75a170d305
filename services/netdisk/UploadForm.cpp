#include "netdisk/UploadForm.h"

#include "common/Digests.h"
#include "common/FileName.h"

namespace quorvex::services::netdisk
{

UploadForm::UploadForm(NetDiskStore& store, LargeFiles& largeFiles, BlobStore& blobs, std::int64_t account)
    : FileForm("upfile"), store_(store), largeFiles_(largeFiles), blobs_(blobs), account_(account)
{
}

void UploadForm::OnFile(const std::string& fileName)
{
    if (HasField("fkey"))
    {
        target_ = std::make_unique<BlockUpload>(largeFiles_, account_, Field("fkey"), NumberField("pos"),
                                                NumberField("size"));
        return;
    }
    RequireName(fileName);
    if (HasField("totalsize") || HasField("md5"))
    {
        target_ = std::make_unique<Announcement>(largeFiles_, account_, fileName,
                                                 BlobContent{RequireMd5(Field("md5")), NumberField("totalsize")});
        return;
    }
    target_ = std::make_unique<WholeUpload>(store_, blobs_, account_, fileName);
}

} // namespace quorvex::services::netdisk
