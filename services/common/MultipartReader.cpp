#include "common/MultipartReader.h"

#include "common/Text.h"

#include <algorithm>

namespace quorvex::services
{

namespace
{

constexpr std::size_t MaxHeaderSize = 8192;
constexpr std::size_t MaxBoundarySize = 200;

// The value between quotation marks behind `key`. A file name is not escaped and may hold quotation marks itself, so
// that `toLastQuote` reads on to the last one of the line.
std::optional<std::string> QuotedParameter(std::string_view line, std::string_view key, bool toLastQuote)
{
    const std::size_t start = line.find(key);
    if (start == std::string_view::npos)
    {
        return std::nullopt;
    }
    const std::string_view value = line.substr(start + key.size());
    const std::size_t end = toLastQuote ? value.rfind('"') : value.find('"');
    if (end == std::string_view::npos)
    {
        return std::nullopt;
    }
    return std::string(value.substr(0, end));
}

std::optional<FormPart> ParseDisposition(std::string_view line)
{
    // The name comes first, so that a file name holding `name="` cannot pose as it.
    const std::size_t fileNameStart = std::min(line.find("filename=\""), line.size());
    const auto name = QuotedParameter(line.substr(0, fileNameStart), "name=\"", false);
    if (!name)
    {
        return std::nullopt;
    }
    return FormPart{*name, QuotedParameter(line.substr(fileNameStart), "filename=\"", true)};
}

constexpr std::string_view Disposition = "content-disposition:";
constexpr std::string_view LoneDisposition = "content_disposition:";

// The bytes of a part that begin with the line end behind its boundary.
struct PartHead
{
    std::size_t size = std::string_view::npos; // npos while its end has not come
    std::size_t endSize = 0;                   // of what stands between it and the data
};

PartHead FindPartHead(std::string_view part)
{
    constexpr std::string_view lineEnd = "\r\n";
    constexpr std::string_view emptyLine = "\r\n\r\n";
    const std::string_view firstLine = part.substr(std::min(lineEnd.size(), part.size()));
    if (StartsWithIgnoringCase(firstLine, LoneDisposition))
    {
        return {part.find(lineEnd, lineEnd.size()), lineEnd.size()};
    }
    return {part.find(emptyLine), emptyLine.size()};
}

std::optional<FormPart> ParsePartHeaders(std::string_view headers)
{
    static_assert(Disposition.size() == LoneDisposition.size());
    while (!headers.empty())
    {
        const std::size_t end = std::min(headers.find("\r\n"), headers.size());
        const std::string_view line = headers.substr(0, end);
        if (StartsWithIgnoringCase(line, Disposition) || StartsWithIgnoringCase(line, LoneDisposition))
        {
            return ParseDisposition(line.substr(Disposition.size()));
        }
        headers.remove_prefix(std::min(end + 2, headers.size()));
    }
    return std::nullopt;
}

} // namespace

MultipartReader::MultipartReader(std::string_view boundary, FormReceiver& receiver)
    : delimiter_("\r\n--" + std::string(boundary)),
      receiver_(receiver),
      // The first boundary has no line end before it; with this one it looks like all others.
      pending_("\r\n")
{
}

bool MultipartReader::Feed(std::string_view bytes)
{
    if (state_ == State::Complete || state_ == State::Broken)
    {
        return state_ == State::Complete;
    }
    pending_.append(bytes);
    while (Step())
    {
    }
    return state_ != State::Broken;
}

// True while the bytes at hand may hold more.
bool MultipartReader::Step()
{
    switch (state_)
    {
    case State::Preamble:
    case State::Data:
        return FindBoundary();
    case State::AfterBoundary:
        return ReadBoundaryEnd();
    case State::Headers:
        return ReadHeaders();
    case State::Complete:
    case State::Broken:
        break;
    }
    pending_.clear();
    return false;
}

bool MultipartReader::FindBoundary()
{
    const bool inPart = state_ == State::Data;
    const std::size_t found = pending_.find(delimiter_);
    const bool isFound = found != std::string::npos;
    // The tail may be the start of a boundary that the next bytes complete.
    const std::size_t certain = isFound ? found : pending_.size() - std::min(pending_.size(), delimiter_.size() - 1);
    if (inPart && certain > 0)
    {
        receiver_.OnData(std::string_view(pending_).substr(0, certain));
    }
    pending_.erase(0, isFound ? found + delimiter_.size() : certain);
    if (!isFound)
    {
        return false;
    }
    if (inPart)
    {
        receiver_.OnPartEnd();
    }
    state_ = State::AfterBoundary;
    return true;
}

bool MultipartReader::ReadBoundaryEnd()
{
    if (pending_.size() < 2)
    {
        return false;
    }
    if (pending_.starts_with("--"))
    {
        state_ = State::Complete;
    }
    else
    {
        state_ = pending_.starts_with("\r\n") ? State::Headers : State::Broken;
    }
    return true;
}

// The line end behind the boundary is still there, so that the headers end at the first empty line even if there are
// none.
bool MultipartReader::ReadHeaders()
{
    const PartHead head = FindPartHead(pending_);
    if (head.size == std::string::npos && pending_.size() <= MaxHeaderSize)
    {
        return false;
    }
    const auto part =
        head.size <= MaxHeaderSize ? ParsePartHeaders(std::string_view(pending_).substr(0, head.size)) : std::nullopt;
    if (!part)
    {
        state_ = State::Broken;
        return true;
    }
    pending_.erase(0, head.size + head.endSize);
    state_ = State::Data;
    receiver_.OnPart(*part);
    return true;
}

std::optional<std::string> MultipartBoundary(std::string_view contentType)
{
    constexpr std::string_view key = "boundary=";
    if (!StartsWithIgnoringCase(contentType, "multipart/form-data"))
    {
        return std::nullopt;
    }
    const std::size_t start = contentType.find(key);
    if (start == std::string_view::npos)
    {
        return std::nullopt;
    }
    std::string_view boundary = contentType.substr(start + key.size());
    boundary = Trim(boundary.substr(0, boundary.find(';')));
    if (boundary.size() >= 2 && boundary.front() == '"' && boundary.back() == '"')
    {
        boundary = boundary.substr(1, boundary.size() - 2);
    }
    if (boundary.empty() || boundary.size() > MaxBoundarySize)
    {
        return std::nullopt;
    }
    return std::string(boundary);
}

} // namespace quorvex::services
