#include "storage/UploadForms.h"

#include "common/Digests.h"
#include "common/FileName.h"
#include "common/HttpAnswers.h"
#include "storage/ClientText.h"

#include <limits>

namespace quorvex::services::storage
{

NamedFileForm::NamedFileForm(BlobStore& blobs, const Capacity& capacity)
    : FileForm("upfile"), capacity_(capacity), incoming_(blobs.TemporaryFolder())
{
}

void NamedFileForm::OnFile(const std::string& fileName)
{
    key_ = TextFromClient(fileName);
    RequireKey(key_);
}

void NamedFileForm::OnFileBytes(std::string_view bytes)
{
    // The size is known only at the end; what cannot fit is not written to the disk until then.
    capacity_.RequireRoom(incoming_.Size() + bytes.size());
    incoming_.Append(bytes);
}

BlobStore::Staged DigestedFileForm::Stage(BlobStore& blobs)
{
    const std::string md5 = RequireMd5(Field("md5"));
    BlobStore::Staged staged = NamedFileForm::Stage(blobs);
    if (staged.Content().md5 != md5)
    {
        throw HttpError(Status::Conflict, "the MD5 does not match");
    }
    return staged;
}

BlockForm::BlockForm(BlockFiles& files, std::int64_t account) : FileForm("chunk"), files_(files), account_(account)
{
}

void BlockForm::OnFile(const std::string&)
{
    // An empty block's last position lies before its first, also where that is 0.
    const std::uint32_t first = PositionField("rs");
    const std::uint32_t past = PositionField("re") + 1U;
    block_.emplace(files_.OpenBlock(account_, Field("k"), first, past - first));
}

std::uint32_t BlockForm::PositionField(const std::string& name) const
{
    const std::uint64_t value = NumberField(name);
    if (value > std::numeric_limits<std::uint32_t>::max())
    {
        throw HttpError(Status::BadRequest, name + " is not a position");
    }
    return static_cast<std::uint32_t>(value);
}

TicketForm::TicketForm(BlobStore& blobs, TicketUploads& uploads, std::int64_t account)
    : FileForm("photo"), uploads_(uploads), account_(account), incoming_(blobs.TemporaryFolder())
{
}

void TicketForm::OnFile(const std::string& fileName)
{
    block_ = {Field("ticket"),         TextFromClient(fileName), NumberField("offset"),
              NumberField("filesize"), RequireMd5(Field("md5")), LastBlockField()};
    RequireName(block_.name);
    if (block_.offset > block_.fileSize)
    {
        throw HttpError(Status::BadRequest, "the block is not inside the file");
    }
    uploads_.Require(account_, block_);
}

void TicketForm::OnFileBytes(std::string_view bytes)
{
    if (incoming_.Size() + bytes.size() > block_.fileSize - block_.offset)
    {
        throw HttpError(Status::BadRequest, "the block is not inside the file");
    }
    incoming_.Append(bytes);
}

bool TicketForm::LastBlockField() const
{
    const std::uint64_t flag = NumberField("flag");
    if (flag > 1)
    {
        throw HttpError(Status::BadRequest, "flag is neither 0 nor 1");
    }
    return flag == 1;
}

} // namespace quorvex::services::storage
