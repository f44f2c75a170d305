#include "common/FileForm.h"

#include "common/HttpAnswers.h"
#include "common/HttpServer.h"
#include "common/Text.h"

#include <utility>

namespace quorvex::services
{

namespace
{

constexpr std::size_t BufferSize = 256UL * 1024;
constexpr std::size_t MaxFieldSize = 256;
constexpr std::size_t MaxFields = 16;

} // namespace

FileForm::FileForm(std::string fileField) : fileField_(std::move(fileField))
{
}

void FileForm::OnPart(const FormPart& part)
{
    if (hasFile_)
    {
        throw HttpError(Status::BadRequest, fileField_ + " is not the form's last field");
    }
    if (part.name == fileField_)
    {
        hasFile_ = true;
        OnFile(part.fileName.value_or(""));
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

void FileForm::OnData(std::string_view bytes)
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

void FileForm::OnPartEnd()
{
    field_ = nullptr;
    Flush();
}

void FileForm::Receive(const httplib::Request& request, const httplib::ContentReader& read)
{
    const auto boundary = MultipartBoundary(request.get_header_value(FormContentType));
    if (!boundary)
    {
        throw HttpError(Status::BadRequest, "the request is not a multipart form");
    }
    MultipartReader reader(*boundary, *this);
    const bool isWhole = read([&](const char* data, std::size_t size) { return reader.Feed({data, size}); });
    if (!isWhole || !reader.IsComplete())
    {
        throw HttpError(Status::BadRequest, "the form is broken or not complete");
    }
    if (!hasFile_)
    {
        throw HttpError(Status::BadRequest, fileField_ + " is missing");
    }
}

const std::string& FileForm::Field(const std::string& name) const
{
    const auto found = fields_.find(name);
    if (found == fields_.end())
    {
        throw HttpError(Status::BadRequest, name + " is missing");
    }
    return found->second;
}

std::uint64_t FileForm::NumberField(const std::string& name) const
{
    const auto value = ParseUnsigned(Field(name));
    if (!value)
    {
        throw HttpError(Status::BadRequest, name + " is not a number");
    }
    return *value;
}

void FileForm::Flush()
{
    if (!buffer_.empty())
    {
        OnFileBytes(buffer_);
        buffer_.clear();
    }
}

} // namespace quorvex::services
