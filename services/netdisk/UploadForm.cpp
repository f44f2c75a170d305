#include "netdisk/UploadForm.h"

#include "common/HttpAnswers.h"
#include "common/Text.h"
#include "netdisk/FileName.h"

#include <algorithm>

namespace quorvex::services::netdisk
{

namespace
{

constexpr std::size_t BufferSize = 256UL * 1024;
constexpr std::size_t MaxFieldSize = 256;
constexpr std::size_t MaxFields = 16;

std::string LowercaseDigest(std::string text)
{
    const auto isDigit = [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'f');
    };
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'F' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    if (text.size() != 32 || !std::all_of(text.begin(), text.end(), isDigit))
    {
        throw HttpError(Status::BadRequest, "md5 is not an MD5");
    }
    return text;
}

} // namespace

UploadForm::UploadForm(NetDiskStore& store, LargeFiles& largeFiles, BlobStore& blobs, std::int64_t account)
    : store_(store), largeFiles_(largeFiles), blobs_(blobs), account_(account)
{
}

void UploadForm::OnPart(const FormPart& part)
{
    if (target_)
    {
        throw HttpError(Status::BadRequest, "upfile is not the form's last field");
    }
    if (part.name == "upfile")
    {
        target_ = ChooseTarget(part.fileName.value_or(""));
        buffer_.reserve(BufferSize);
        return;
    }
    if (fields_.size() == MaxFields)
    {
        throw HttpError(Status::BadRequest, "the form has too many fields");
    }
    field_ = &fields_[part.name];
    field_->clear();
}

void UploadForm::OnData(std::string_view bytes)
{
    std::string& destination = field_ != nullptr ? *field_ : buffer_;
    destination.append(bytes);
    if (field_ == nullptr && buffer_.size() >= BufferSize)
    {
        Flush();
    }
    else if (field_ != nullptr && field_->size() > MaxFieldSize)
    {
        throw HttpError(Status::BadRequest, "a field of the form is too long");
    }
}

void UploadForm::OnPartEnd()
{
    field_ = nullptr;
    if (target_)
    {
        Flush();
    }
}

UploadAnswer UploadForm::Finish()
{
    if (!target_)
    {
        throw HttpError(Status::BadRequest, "upfile is missing");
    }
    return target_->Finish();
}

std::unique_ptr<UploadTarget> UploadForm::ChooseTarget(const std::string& fileName) const
{
    if (fields_.contains("fkey"))
    {
        return std::make_unique<BlockUpload>(largeFiles_, account_, Field("fkey"), NumberField("pos"),
                                             NumberField("size"));
    }
    RequireName(fileName);
    if (fields_.contains("totalsize") || fields_.contains("md5"))
    {
        return std::make_unique<Announcement>(largeFiles_, account_, fileName,
                                              BlobContent{LowercaseDigest(Field("md5")), NumberField("totalsize")});
    }
    return std::make_unique<WholeUpload>(store_, blobs_, account_, fileName);
}

const std::string& UploadForm::Field(const std::string& name) const
{
    const auto found = fields_.find(name);
    if (found == fields_.end())
    {
        throw HttpError(Status::BadRequest, name + " is missing");
    }
    return found->second;
}

std::uint64_t UploadForm::NumberField(const std::string& name) const
{
    const auto value = ParseUnsigned(Field(name));
    if (!value)
    {
        throw HttpError(Status::BadRequest, name + " is not a number");
    }
    return *value;
}

void UploadForm::Flush()
{
    if (!buffer_.empty())
    {
        target_->Append(buffer_);
        buffer_.clear();
    }
}

} // namespace quorvex::services::netdisk
