#include "Upload.h"

#include "Failure.h"
#include "LargeUpload.h"
#include "LocalFile.h"
#include "Output.h"
#include "Paths.h"
#include "RemoteFile.h"
#include "StorageNames.h"
#include "Text.h"

namespace quorvex::console
{

namespace
{

/// Completes the result by what the server tells of the file, as far as it tells anything.
void Confirm(UploadResult& result, const UploadTarget& target)
{
    std::string stated;
    if (target.askAbout)
    {
        const std::string what = "cannot verify the upload of " + result.name + ", which has got the key " + result.key;
        const RemoteFile remote = target.askAbout(Wide(result.key), what);
        result.verified = IsSameFile(remote, result.size, result.md5, what);
        stated = remote.stated;
    }
    else
    {
        WriteError("note: this generation tells nothing of a stored file, so that nothing is known beyond the server's "
                   "word that it has all of it\n");
        stated = ToUtf8(NameAsSent(Wide(result.name)));
    }
    if (stated != result.name)
        WriteError("note: on the server the file is named " + Printable(stated) + '\n');
    result.name = stated;
}

} // namespace

UploadResult Upload(const UploadTarget& target, const std::string& file, const Options& options)
{
    const LocalPath local = SplitPath(Wide(file));
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

    Confirm(result, target);
    return result;
}

} // namespace quorvex::console
