#include "common/Digests.h"

#include "common/HttpAnswers.h"

#include <algorithm>

namespace quorvex::services
{

namespace
{

bool MakeDigest(std::string& text, std::size_t digits)
{
    const auto isDigit = [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'f');
    };
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'F' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return text.size() == digits && std::all_of(text.begin(), text.end(), isDigit);
}

} // namespace

std::string RequireMd5(std::string text)
{
    if (!MakeDigest(text, 32))
    {
        throw HttpError(Status::BadRequest, "md5 is not an MD5");
    }
    return text;
}

std::string RequireSha1(std::string text)
{
    if (!MakeDigest(text, 40))
    {
        throw HttpError(Status::BadRequest, "sha1 is not a SHA-1");
    }
    return text;
}

} // namespace quorvex::services
