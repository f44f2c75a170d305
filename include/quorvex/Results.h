#ifndef QUORVEX_RESULTS_H
#define QUORVEX_RESULTS_H

/// @file
/// What the operations return.

/// @defgroup results Results
/// What the operations return.
///
/// 0 is success; a negative value is one of the module's own failures, listed in quorvex::Result, zlib's code for a
/// damaged compressed body (-2 to -5), or, in the second and third storage generation, the result of the host's HTTP
/// session service; and a positive one comes from the other side: an HTTP status (403, 404, 500 ...), a service's own
/// result code, or 1 for an answer that could not be understood.
///
/// An operation lists the codes that are its own. What its request may end with besides is one of these sets:
///
/// @section get_code GET code
/// Of every request of the network disk, of the first storage generation and of the search:
/// - -108 it could not be opened; -115 to -119 one of its five standard headers could not be added;
/// - -111 no answer came;
/// - -130 the answer's status could not be read; -132 its body is compressed in an unknown way; in the search also
///   -131, its transfer encoding is not "chunked";
/// - -107 reading its body failed, or it is longer than 64 MiB and than a range that was asked for; -2 to -5 (zlib) its
///   compressed body is damaged; 1 its body has another length than it announced.
///
/// @section post_code POST code
/// A @ref get_code, or -113 the header with the content type could not be added, -110 the request could not be sent.
///
/// @section form_code form code
/// Of a multipart form: a @ref get_code, or -113 the header with the content type could not be added, -109 the request
/// could not be sent.
///
/// @section range_code range code
/// A @ref get_code, or -114 the Range header could not be added.
///
/// @section service_code service code
/// Of the second and third storage generation: what the host's HTTP session service gave the request (see
/// ::frl_http_result), or -1 when it was not made, because the client's session is closed or could not be opened.

namespace quorvex
{

/// The module's own result codes. One code is shared by like failures of different operations; the ERROR line
/// that is logged with it tells them apart. See @ref results for all that an operation may return.
/// @ingroup results
namespace Result
{
/// The codes.
enum Code : int
{
    Ok = 0,        ///< the operation did what it was asked for
    BadAnswer = 1, ///< an answer that cannot be parsed, lacks a key, or has another length than it announced;
                   ///< also a local failure without a code of its own (an empty file has no digest, memory ran out)

    RequestRefused = -1, ///< a request was not made: the client's session is closed, or the client is going away
    RangeTooLong = -11,  ///< the server sent more of a range than was asked for

    NotConnected = -100,            ///< no connection to the server exists
    CredentialsMissing = -101,      ///< user name or password is null
    SessionMissing = -102,          ///< the session is null
    NameMismatch = -103,            ///< the server reports another name for an uploaded file than it has here
    UrlInvalid = -104,              ///< the base URL could not be split into its parts; no operation returns it
    SessionOpenFailed = -105,       ///< the system's HTTP session could not be opened; no operation returns it
    ConnectFailed = -106,           ///< the connection to the host could not be made; no operation returns it
    TransferFailed = -107,          ///< reading the response, or writing it to the local file, failed
    RequestOpenFailed = -108,       ///< the request could not be opened
    UploadSendFailed = -109,        ///< an upload or creation request could not be sent
    PostSendFailed = -110,          ///< a POST request could not be sent
    ReceiveFailed = -111,           ///< no response was received
    RangeAnswerInvalid = -112,      ///< a ranged answer lacks a header it needs; CFileStorage: or is refused
    HeaderAddFailed = -113,         ///< a request header could not be added
    RangeHeaderAddFailed = -114,    ///< the Range header could not be added; CFileStorage: or no response came
    StandardHeader1Failed = -115,   ///< the first standard request header could not be added
    StandardHeader2Failed = -116,   ///< the second
    StandardHeader3Failed = -117,   ///< the third
    StandardHeader4Failed = -118,   ///< the fourth
    StandardHeader5Failed = -119,   ///< the fifth
    LocalFileFailed = -120,         ///< a local file could not be opened, read to its end, or closed
    DigestFileFailed = -121,        ///< the file to be digested could not be opened; no operation returns it
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
