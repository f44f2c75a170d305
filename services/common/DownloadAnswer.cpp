#include "common/DownloadAnswer.h"

#include "common/ByteRange.h"
#include "common/HttpAnswers.h"

#include <algorithm>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace quorvex::services
{

namespace
{

constexpr std::size_t ReadSize = 256UL * 1024;

// Reads on as the connection takes the bytes, so that memory does not grow with the file.
httplib::ContentProvider ProvideFrom(std::shared_ptr<FileHandle> file, std::uint64_t first)
{
    return [file = std::move(file), first, buffer = std::vector<char>()](std::size_t offset, std::size_t length,
                                                                         httplib::DataSink& sink) mutable {
        buffer.resize(ReadSize);
        const std::size_t wanted = std::min(length, buffer.size());
        const std::size_t count = file->ReadAt(first + offset, std::span(buffer).first(wanted));
        return count == wanted && sink.write(buffer.data(), count);
    };
}

void AnswerContent(httplib::Response& response, FileHandle content, const ByteRange& range)
{
    constexpr const char* contentType = "application/octet-stream";
    if (range.length == 0)
    {
        response.set_content("", contentType);
        return;
    }
    response.set_content_provider(range.length, contentType,
                                  ProvideFrom(std::make_shared<FileHandle>(std::move(content)), range.first));
}

// A one-byte range at the start is a client's probe for name and size.
bool IsCounted(const ByteRange& range)
{
    return range.kind == ByteRange::Kind::Whole || (range.first == 0 && range.length > 1);
}

} // namespace

std::string ContentDisposition(std::string_view name, std::string_view md5, std::string_view sha1)
{
    std::string value = "attachment;filename=\"";
    std::replace_copy_if(
        name.begin(), name.end(), std::back_inserter(value), [](char letter) { return letter == ';' || letter == '"'; },
        '_');
    value.append(";md5=").append(md5);
    if (!sha1.empty())
    {
        value.append(";sha=").append(sha1);
    }
    return value;
}

bool AnswerDownload(const httplib::Request& request, httplib::Response& response, Download file)
{
    const ByteRange range = ParseByteRange(request.get_header_value("Range"), file.size);
    response.set_header("Accept-Ranges", "bytes");
    if (range.kind != ByteRange::Kind::Whole)
    {
        response.set_header("Content-Range", ContentRange(range, file.size));
    }
    if (range.kind == ByteRange::Kind::NotSatisfiable)
    {
        AnswerError(request, response, Status::RangeNotSatisfiable, "the range is outside the file");
        return false;
    }
    response.status = range.kind == ByteRange::Kind::Part ? Status::PartialContent : Status::Ok;
    response.set_header("Content-Disposition", ContentDisposition(file.name, file.md5, file.sha1));
    AnswerContent(response, std::move(file.content), range);
    return IsCounted(range) && request.method == "GET";
}

} // namespace quorvex::services
