#include "Upload.h"

#include "Failure.h"
#include "LargeUpload.h"
#include "LocalFile.h"
#include "Output.h"
#include "Paths.h"
#include "RemoteFile.h"
#include "Text.h"
#include "UploadKey.h"

namespace quorvex::console
{
namespace
{

std::string UploadWhole(const netdisk::CNetDisk& disk, const LocalPath& local)
{
    UploadKey key;
    Check(disk.FileUpload(local.folder.c_str(), local.name.c_str(), key.Room(), UploadKey::kStatedSize),
          "cannot upload " + ToUtf8(local.name));
    return key.Text();
}

} // namespace

UploadResult Upload(const netdisk::CNetDisk& disk, const Options& options)
{
    const LocalPath local = SplitPath(Wide(options.file));
    UploadResult result;
    result.name = ToUtf8(local.name);
    result.size = TransferableSize(local.Whole());
    result.md5 = DigestOf(local.Whole());

    if (result.size <= options.largeFrom || result.size == 0)
    {
        result.key = UploadWhole(disk, local);
    }
    else
    {
        LargeUpload upload(disk, options, local, result.size, result.md5);
        upload.Run();
        result.key = upload.Key();
        result.resumedFrom = upload.ResumedFrom();
        result.instant = upload.WasInstant();
    }

    const std::string what = "cannot verify the upload of " + result.name + ", which has got the key " + result.key;
    const RemoteFile remote = AskAbout(disk, Wide(result.key), what);
    result.verified = IsSameFile(remote, result.size, result.md5, what);
    if (remote.name != local.name)
        WriteError("note: on the server the file is named " + ToUtf8(remote.name) + '\n');
    result.name = ToUtf8(remote.name);
    return result;
}

} // namespace quorvex::console
