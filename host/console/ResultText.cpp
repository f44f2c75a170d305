#include "ResultText.h"

#include <ferrolink/http_session.h>
#include <quorvex/Results.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace quorvex::console
{
namespace
{

struct Meaning
{
    int result;
    const char* text;
};

constexpr Meaning kMeaningsOfHost[] = {
    {FRL_HTTP_FAILED, "the request was not made, or no whole answer came: the server cannot be reached"},
    {FRL_HTTP_TIMED_OUT, "the server did not answer in time"},
    {FRL_HTTP_CLOSED, "the request was cut off, because the session that it belongs to was closed"},
};

constexpr Meaning kMeanings[] = {
    {Result::Ok, "success"},
    {Result::BadAnswer, "the server's answer could not be understood, or a local file has no digest"},
    {Result::RequestRefused, "the request was not made: the session for it is closed"},
    {Result::RangeTooLong, "the server sent more of the file than was asked for"},
    {Result::NotConnected, "there is no connection to the server"},
    {Result::CredentialsMissing, "user name or password is missing"},
    {Result::SessionMissing, "the session is missing"},
    {Result::NameMismatch, "the server reports another name for the file than it has here"},
    {Result::UrlInvalid, "the server's address is not a valid URL"},
    {Result::SessionOpenFailed, "the system's HTTP session could not be opened"},
    {Result::ConnectFailed, "the connection to the server could not be made"},
    {Result::TransferFailed, "reading the answer, or writing it to the local file, failed"},
    {Result::RequestOpenFailed, "the request could not be opened"},
    {Result::UploadSendFailed, "the upload could not be sent: the server cannot be reached"},
    {Result::PostSendFailed, "the request could not be sent: the server cannot be reached"},
    {Result::ReceiveFailed, "the server did not answer"},
    {Result::RangeAnswerInvalid, "the server refused to tell the file's size and name, or its answer lacks them"},
    {Result::HeaderAddFailed, "a request header could not be added"},
    {Result::RangeHeaderAddFailed, "a part of the file could not be asked for, or the server did not answer"},
    {Result::StandardHeader1Failed, "the first standard request header could not be added"},
    {Result::StandardHeader2Failed, "the second standard request header could not be added"},
    {Result::StandardHeader3Failed, "the third standard request header could not be added"},
    {Result::StandardHeader4Failed, "the fourth standard request header could not be added"},
    {Result::StandardHeader5Failed, "the fifth standard request header could not be added"},
    {Result::LocalFileFailed, "the local file could not be opened, read to its end, or closed"},
    {Result::DigestFileFailed, "the file whose digest is needed could not be opened"},
    {Result::StatusUnreadable, "the status of the server's answer could not be read"},
    {Result::TransferEncodingInvalid, "the server's answer is not chunked where it has to be"},
    {Result::ContentEncodingInvalid, "the server's answer is compressed in an unknown way"},
    {Result::DownloadRefused, "the server refused the download"},
    {Result::ArgumentMissing, "a required argument is missing"},
    {Result::FolderIdMissing, "the folder id is missing"},
    {Result::FolderChangeMissing, "neither a new folder name nor a new parent folder was given"},
    {Result::FileKeyCountInvalid, "the number of file keys is not within 1 to 200"},
    {Result::PcodeInvalid, "the share code is missing, or the number of share codes is not within 1 to 200"},
    {Result::RecyclebinItemMissing, "the recycle-bin item is missing"},
    {2, "the compressed answer needs a dictionary that nobody has"},
    {-2, "the compressed answer could not be inflated: the stream is inconsistent"},
    {-3, "the compressed answer is damaged"},
    {-4, "there was not enough memory to inflate the answer"},
    {-5, "the compressed answer is cut off"},
    {400, "the server did not understand the request"},
    {401, "the server does not accept the login"},
    {403, "the server does not accept the session"},
    {404, "the server does not know it: no such file, folder, share code or item, or a wrong address"},
    {409, "the request does not fit what the server holds"},
    {413, "that is larger than the server accepts"},
    {416, "the server does not hold that range of the file"},
    {423, "the name is taken by another account's file"},
    {429, "the server asks for fewer requests"},
    {500, "the server failed"},
    {502, "a gateway could not reach the server"},
    {503, "the server is not available now"},
    {504, "a gateway waited in vain for the server"},
    {507, "the account's space is used up"},
};

/// @return nullptr when the result is not among them
template <std::size_t Count>
const char* TextAmong(const Meaning (&meanings)[Count], int result)
{
    const auto* const known = std::find_if(std::begin(meanings), std::end(meanings),
                                           [=](const Meaning& each) { return each.result == result; });
    return known != std::end(meanings) ? known->text : nullptr;
}

} // namespace

std::string MeaningOf(int result, Transport transport)
{
    const char* const ofHost = transport == Transport::Host ? TextAmong(kMeaningsOfHost, result) : nullptr;
    if (ofHost != nullptr)
        return ofHost;
    if (const char* const known = TextAmong(kMeanings, result))
        return known;
    if (result >= 100 && result < 600)
        return "the server answered with HTTP status " + std::to_string(result);
    return result > 0 ? "the service reported a result of its own" : "the module failed";
}

} // namespace quorvex::console
