#include "Upload.h"

#include "Failure.h"
#include "LargeUpload.h"
#include "LocalFile.h"
#include "Output.h"
#include "Paths.h"
#include "RemoteFile.h"
#include "Text.h"

namespace quorvex::console
{

UploadResult Upload(const UploadTarget& target, const Options& options)
{
    const LocalPath local = SplitPath(Wide(options.file));
    UploadResult result;
    result.name = ToUtf8(local.name);
    result.size = TransferableSize(local.Whole());
    result.md5 = DigestOf(local.Whole());

    if (target.sendWhole && (result.size <= options.largeFrom || result.size == 0))
    {
        Check(target.sendWhole(local, result.key), "cannot upload " + result.name);
    }
    else
    {
        LargeUpload upload(target, options, local, result.size, result.md5);
        upload.Run();
        result.key = upload.Key();
        result.resumedFrom = upload.ResumedFrom();
        result.instant = upload.WasInstant();
    }

    const std::string what = "cannot verify the upload of " + result.name + ", which has got the key " + result.key;
    const RemoteFile remote = target.askAbout(Wide(result.key), what);
    result.verified = IsSameFile(remote, result.size, result.md5, what);
    if (remote.stated != result.name)
        WriteError("note: on the server the file is named " + remote.stated + '\n');
    result.name = remote.stated;
    return result;
}

} // namespace quorvex::console
