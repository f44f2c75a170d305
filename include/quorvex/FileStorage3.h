#ifndef QUORVEX_FILESTORAGE3_H
#define QUORVEX_FILESTORAGE3_H

#include "Export.h"
#include "Results.h"

#include <atomic>
#include <memory>
#include <string>

/// @file
/// The client of the shared file storage, third generation.

/// A session or a request of the host's HTTP session service.
struct __frl_stru_handle__;

namespace quorvex
{

class CSFSJsonHelper;
class RequestDispatcher;

/// The client of the shared file storage, third generation: pictures and blocks between the server and memory, over the
/// host's own HTTP session service, with the user's session as a cookie on every request.
///
/// Every operation blocks until the host's event thread has completed its request, and so must not be called from that
/// thread. It returns a result code (see @ref results): 0 on success unless it says otherwise, a negative code of the
/// module or of the host's service, the HTTP status of a refused request, the server's own code, or 1 for an answer
/// that could not be understood. Nothing is ever repeated.
///
/// Threads: one object serves one thread at a time, except for exit(), which may be called from another one at any
/// time; different objects are independent of each other.
///
/// Texts are UTF-16 and end with a zero. A null text of a request goes out empty unless the operation says otherwise.
/// Names and tickets travel in the system's OEM code page where they are part of a form. Nothing that is passed in is
/// kept by address. No exception leaves an operation: memory exhaustion is logged and returned as 1.
class QUORVEX_API CFileStorage3
{
public:
    /// Opens a session of the host's service. Nothing is sent yet.
    /// @param server         scheme, host, optional port and path, with a trailing slash
    /// @param cookie         the user's session as the text of a cookie, "name=value"; null or empty for none
    /// @param resolveTimeout milliseconds to find the server's address; here and below, 0 is no limit, and a negative
    ///                       value leaves the system's own
    /// @param connectTimeout milliseconds to connect to it
    /// @param sendTimeout    milliseconds to send a request
    /// @param receiveTimeout milliseconds to receive a piece of the answer
    CFileStorage3(const wchar_t* server, const wchar_t* cookie, int resolveTimeout, int connectTimeout, int sendTimeout,
                  int receiveTimeout);

    /// Closes the session, if that is still to be done. No operation may be running.
    ~CFileStorage3();

    CFileStorage3(const CFileStorage3&) = delete;
    CFileStorage3& operator=(const CFileStorage3&) = delete;

    /// Closes the session. A request that is under way ends with a failure, and every one after that is refused with
    /// -1.
    void exit();

    /// Takes another cookie; nothing is sent.
    /// @param cookie the cookie, as in the constructor
    /// @return 0; 1 cookie is null, and the old one stays
    int UserLogin(const wchar_t* cookie);

    /// Does nothing: the cookie is the host's affair.
    /// @return 0
    int UserLogout();

    /// @name Pictures
    /// @{

    /// Uploads a picture.
    /// @param name its name (at most 255 bytes in the OEM code page)
    /// @param data the picture, only read; it may be null when size is 0
    /// @param size its bytes
    /// @return 0; -135 data is null although size is not 0; 1 the answer lacks a key or is no JSON; an HTTP status, a
    ///         code of the server, or a @ref service_code
    int PictureUpload(const wchar_t* name, void* data, unsigned long size) const;

    /// Downloads a picture into memory.
    /// @param folder the picture's folder on the server
    /// @param name   its name there
    /// @param buffer receives a buffer with the picture, to be given back with releaseBuffer; left as it was when the
    ///               server has no such picture, or an empty one
    /// @param size   receives the picture's bytes; left as it was together with buffer
    /// @return 0 when an answer came, whatever it was; -135 buffer or size is null; 1 memory ran out; a
    ///         @ref service_code
    int PictureDownload(const wchar_t* folder, const wchar_t* name, void** buffer, unsigned long* size) const;
    /// @}

    /// @name Blocks
    /// @{

    /// Uploads one block of a file.
    /// @param key      receives the file's key; room for 65 characters; null is allowed
    /// @param data     the block, only read; it may be null when size is 0
    /// @param size     bytes of the block
    /// @param position the block's place in the file, in bytes
    /// @param name     the file's name (at most 255 bytes in the OEM code page)
    /// @param ticket   in: the ticket that the server gave for the block before (at most 255 bytes in the OEM code
    ///                 page), or an empty text; out: the next one; room for 65 characters; null is an empty text, and
    ///                 then the next one is not handed out
    /// @param flag     the server's own meaning, for example that this block is the last one
    /// @return 0; -135 data is null although size is not 0; 1 the answer lacks a key or is no JSON; an HTTP status, a
    ///         code of the server, or a @ref service_code
    int BufferUpload(wchar_t* key, void* data, unsigned long size, unsigned long position, const wchar_t* name,
                     wchar_t* ticket, int flag) const;

    /// Reads one range of a file.
    /// @param first    first part of the file's key, mostly the owner
    /// @param second   second part
    /// @param position offset of the range
    /// @param buffer   room for length bytes as given on entry; never more is written
    /// @param length   in: bytes wanted, at least 1; out, on success: bytes received
    /// @return 200 or 206 on success, also when fewer bytes came; -11 when more came, and nothing is written; -135
    ///         buffer is null although length is not 0; 1 memory ran out; another HTTP status, or a @ref service_code
    int Bufferdownload(const wchar_t* first, const wchar_t* second, unsigned long position, void* buffer,
                       unsigned long& length) const;
    /// @}

    /// @name Memory that crosses the boundary
    /// Any thread may call these.
    /// @{

    /// Makes a buffer.
    /// @param buffer receives it, and so is not null; left as it was when there is no memory
    /// @param size   its bytes; one more, a zero, stands behind them
    /// @return 0; 1 there is no memory
    int getBuffer(void** buffer, unsigned long size) const;

    /// Gives a buffer back. The pointer itself stays as it is.
    /// @param buffer where the buffer's pointer is; null, also as the pointer, is allowed
    void releaseBuffer(void** buffer) const;
    /// @}

private:
    struct Exchange;

    int FileUpload_(const wchar_t* url, const wchar_t* name, void* data, unsigned long size) const;
    int FileDownload_(const wchar_t* url, void** buffer, unsigned long* size) const;
    int ParseResponse_(const std::string& body, int& code, const char*& failure, const char*& message, wchar_t* key,
                       wchar_t* ticket) const;

    std::atomic<__frl_stru_handle__*> m_hSession;
    std::unique_ptr<wchar_t[]> m_pszServer;
    std::unique_ptr<RequestDispatcher> m_pDispatcher;
    std::unique_ptr<wchar_t[]> m_pszCookie;
    mutable std::unique_ptr<CSFSJsonHelper> m_pReply; // what ParseResponse_ hands out lives in it
};

} // namespace quorvex

#endif
