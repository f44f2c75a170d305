#ifndef QUORVEX_RESULTS_H
#define QUORVEX_RESULTS_H

/// @file
/// What the operations return: 0 is success; a negative value is one of the module's own failures below, zlib's code
/// for a damaged compressed body (-2 to -5), or, in the second and third storage generation, the result of the host's
/// HTTP session service; and a positive one comes from the other side: an HTTP status (403, 404, 500 ...), a service's
/// own result code, or 1 for an answer that could not be understood.

namespace quorvex
{

/// The module's own result codes. One code is shared by like failures of different operations; the ERROR line
/// that is logged with it tells them apart.
namespace Result
{
enum Code : int
{
    Ok = 0,        ///< the operation did what it was asked for
    BadAnswer = 1, ///< an answer that cannot be parsed, lacks a key, or has another length than it announced;
                   ///< also a local failure without a code of its own (an empty file has no digest, memory ran out)

    RequestRefused = -1, ///< a request was not made: the client's session is closed, or the client is going away
    RangeTooLong = -11,  ///< the server sent more of a range than was asked for

    NotConnected = -100,            ///< no connection to the server exists
    CredentialsMissing = -101,      ///< user name or password is missing or was rejected
    SessionMissing = -102,          ///< the session is missing or was rejected
    NameMismatch = -103,            ///< the server reports another name for an uploaded file than it has here
    UrlInvalid = -104,              ///< the base URL could not be split into its parts
    SessionOpenFailed = -105,       ///< the system's HTTP session could not be opened
    ConnectFailed = -106,           ///< the connection to the host could not be made
    TransferFailed = -107,          ///< reading the response, or writing it to the local file, failed
    RequestOpenFailed = -108,       ///< the request could not be opened
    UploadSendFailed = -109,        ///< an upload or creation request could not be sent
    PostSendFailed = -110,          ///< a POST request could not be sent
    ReceiveFailed = -111,           ///< no response was received
    RangeAnswerInvalid = -112,      ///< a ranged answer lacks a header it needs
    HeaderAddFailed = -113,         ///< a request header could not be added
    RangeHeaderAddFailed = -114,    ///< the Range header could not be added
    StandardHeader1Failed = -115,   ///< the first standard request header could not be added
    StandardHeader2Failed = -116,   ///< the second
    StandardHeader3Failed = -117,   ///< the third
    StandardHeader4Failed = -118,   ///< the fourth
    StandardHeader5Failed = -119,   ///< the fifth
    LocalFileFailed = -120,         ///< a local file could not be opened, read to its end, or closed
    DigestFileFailed = -121,        ///< the file to be digested could not be opened
    StatusUnreadable = -130,        ///< the status code of a response could not be read
    TransferEncodingInvalid = -131, ///< the transfer encoding is not "chunked" where that is required
    ContentEncodingInvalid = -132,  ///< the content encoding is neither "gzip" nor "deflate"
    DownloadRefused = -134,         ///< the server refused a download or did not name its file
    ArgumentMissing = -135,         ///< a required argument is null
    FolderIdMissing = -136,         ///< the folder id is null
    FolderChangeMissing = -137,     ///< neither a new folder name nor a new parent folder was given
    FileKeyCountInvalid = -138,     ///< the number of file keys is not within 1 to 200
    PcodeInvalid = -139,            ///< the share code is null, or the number of share codes is not within 1 to 200
    RecyclebinItemMissing = -140    ///< the recycle-bin item id is null
};
} // namespace Result

} // namespace quorvex

#endif
