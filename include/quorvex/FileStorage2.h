#ifndef QUORVEX_FILESTORAGE2_H
#define QUORVEX_FILESTORAGE2_H

#include "Export.h"
#include "Results.h"

#include <atomic>
#include <memory>

/// @file
/// The client of the shared file storage, second generation.

/// A session or a request of the host's HTTP session service.
struct __frl_stru_handle__;

namespace quorvex
{

class RequestDispatcher;

/// The client of the shared file storage, second generation: pictures and the depot of the first, over the host's own
/// HTTP session service.
///
/// Every operation blocks until the host's event thread has completed its requests, and so must not be called from that
/// thread. It returns a result code (see @ref results): 0 on success, a negative code of the module or of the host's
/// service, the HTTP status of a refused request, the server's own result code, or 1 for an answer that could not be
/// understood. It logs in when told to, and some operations, which say so, again after a 403.
///
/// Threads: one object serves one thread at a time, except for exit(), which may be called from another one at any
/// time; different objects are independent of each other.
///
/// Texts are UTF-16 and end with a zero. A null text of a request goes out empty unless the operation says otherwise.
/// File names and keys travel in the system's OEM code page where they are part of a form. A request's path is cut at
/// 255 characters. Nothing that is passed in is kept by address. No exception leaves an operation: memory exhaustion is
/// logged and returned as 1.
class QUORVEX_API CFileStorage2
{
public:
    /// Opens a session of the host's service. Nothing is sent yet.
    /// @param server         scheme, host, optional port and path, without a trailing slash
    /// @param session        a session of the account system for logins after a 403, or null
    /// @param resolveTimeout milliseconds to find the server's address; here and below, 0 is no limit, and a negative
    ///                       value leaves the system's own
    /// @param connectTimeout milliseconds to connect to it
    /// @param sendTimeout    milliseconds to send a request
    /// @param receiveTimeout milliseconds to receive a piece of the answer
    CFileStorage2(const wchar_t* server, const wchar_t* session, int resolveTimeout, int connectTimeout,
                  int sendTimeout, int receiveTimeout);

    /// Closes the session, if that is still to be done. No operation may be running.
    ~CFileStorage2();

    CFileStorage2(const CFileStorage2&) = delete;
    CFileStorage2& operator=(const CFileStorage2&) = delete;

    /// Closes the session. A request that is under way ends with a failure, and every one after that is refused with
    /// -1.
    void exit();

    /// @name Login
    /// @{

    /// Logs in.
    /// @param session a session of the account system, remembered for logins after a 403; null is not
    /// @return 0; -102 session is null; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server,
    /// or
    ///         a @ref service_code
    int UserLogin(const wchar_t* session);

    /// Ends the session on the server. An answer that names another user or session than the login did is noted in the
    /// log only.
    /// @return 0; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or a @ref service_code
    int UserLogout();
    /// @}

    /// @name Pictures
    /// Their operations log in again after a 403.
    /// @{

    /// Uploads a picture; its file name is its key on the server. The file is read into memory as a whole. After a
    /// login because of a 403 it is sent once more, and 0 is returned whatever became of that.
    /// @param folder   folder of the file, without a trailing backslash
    /// @param fileName the file's name there (at most 255 bytes in the OEM code page)
    /// @return 0, also when the server has it already; -103 the server keeps it under another name; -120 the file
    /// cannot
    ///         be opened or read; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, a
    ///         @ref service_code, or the result of a failed login
    int PictureUpload(const wchar_t* folder, const wchar_t* fileName);

    /// Downloads a picture into a file of the same name; one that is there already is overwritten. After a login
    /// because of a 403 it is asked for once more.
    /// @param folder   an existing folder, without a trailing backslash
    /// @param fileName the picture's name, which is its key
    /// @return 0; -120 the local file cannot be created; -107 it cannot be written; an HTTP status, a @ref
    /// service_code,
    ///         or the result of a failed login
    int PictureDownload(const wchar_t* folder, const wchar_t* fileName);
    /// @}

    /// @name The large-file depot
    /// As in the first generation. Only LargeFileCreate logs in again after a 403.
    /// @{

    /// Announces a local file to the server, with its MD5 and the low 32 bits of its size. A file that cannot be read
    /// is announced without its MD5, one of which nothing is known with the size 0; the server decides.
    /// @param folder    folder of the file, without a trailing backslash
    /// @param fileName  the file's name there, which is also its name in the depot (at most 127 bytes in the OEM code
    ///                  page)
    /// @param keyOut    receives the file's key
    /// @param keyOutLen room of keyOut in characters, the final zero included; 65 is enough for every key
    /// @return 0; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, a @ref service_code, or
    ///         the result of a failed login
    int LargeFileCreate(const wchar_t* folder, const wchar_t* fileName, wchar_t* keyOut, unsigned long keyOutLen);

    /// Sends one block.
    /// @param key      the file's key (at most 64 bytes in the OEM code page)
    /// @param data     the block; it may be null when size is 0
    /// @param size     bytes of the block
    /// @param position the block's place in the file, in bytes
    /// @return 0; -135 data is null although size is not 0; 1 the answer lacks a key or is no JSON; an HTTP status, a
    ///         code of the server, or a @ref service_code
    int LargeFileUpload(const wchar_t* key, void* data, unsigned long size, unsigned long position) const;

    /// Tells the server that every block has been sent.
    /// @param key the file's key
    /// @return 0; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or a @ref service_code
    int LargeFileUploadFinish(const wchar_t* key) const;

    /// Reads one range of a file.
    /// @param uid      the owner's user id
    /// @param key      the file's key
    /// @param position offset of the range
    /// @param buffer   room for length bytes as given on entry; never more is written
    /// @param length   in: bytes wanted, at least 1; out, on success: bytes received
    /// @return 0, also when fewer bytes came; -11 when more came, and nothing is written; -135 buffer is null although
    ///         length is not 0; an HTTP status or a @ref service_code
    int LargeFileDownload(const wchar_t* uid, const wchar_t* key, unsigned long position, void* buffer,
                          unsigned long& length) const;

    /// Removes a file.
    /// @param key the file's key
    /// @return 0; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or a @ref service_code
    int LargeFileRemove(const wchar_t* key) const;
    /// @}

protected:
    /// The login request.
    /// @param session the session; null gives -102
    /// @return as UserLogin
    int UserLoginWithSession(const wchar_t* session);

    /// Uploads a whole file once.
    /// @param handle     the session of the host's service; null gives -1
    /// @param server     the server's address
    /// @param path       path below it
    /// @param folder     folder of the file, without a trailing backslash
    /// @param fileName   the file's name there
    /// @param serverName the name to send for it
    /// @param keyOut     receives the file's key
    /// @param keyOutLen  room of keyOut in characters, the final zero included
    /// @return as PictureUpload, without -103 and a login's result
    int FileUploadInternal(__frl_stru_handle__* handle, const wchar_t* server, const wchar_t* path,
                           const wchar_t* folder, const wchar_t* fileName, const wchar_t* serverName, wchar_t* keyOut,
                           unsigned long keyOutLen) const;

    /// Uploads a whole file, and once more after a login because of a 403.
    /// @param path       path below the server's address
    /// @param folder     folder of the file, without a trailing backslash
    /// @param fileName   the file's name there
    /// @param serverName the name to send for it
    /// @param keyOut     receives the file's key
    /// @param keyOutLen  room of keyOut in characters, the final zero included
    /// @return as PictureUpload, without -103
    int FileUploadWithRetry(const wchar_t* path, const wchar_t* folder, const wchar_t* fileName,
                            const wchar_t* serverName, wchar_t* keyOut, unsigned long keyOutLen);

    /// Downloads a whole file, and once more after a login because of a 403.
    /// @param pathFormat path below the server's address; its last "%s" stands for the key
    /// @param key        file key
    /// @param folder     an existing folder, without a trailing backslash
    /// @param localName  local file name
    /// @return as PictureDownload
    int FileDownloadWithRetry(const wchar_t* pathFormat, const wchar_t* key, const wchar_t* folder,
                              const wchar_t* localName);

private:
    struct Exchange;

    std::unique_ptr<char[]> m_pszUid;
    std::unique_ptr<char[]> m_pszSid;
    bool m_bNeedLogin;
    std::unique_ptr<wchar_t[]> m_pszSession;
    std::atomic<__frl_stru_handle__*> m_hSession;
    std::unique_ptr<wchar_t[]> m_pszServer;
    std::unique_ptr<RequestDispatcher> m_pDispatcher;
};

} // namespace quorvex

#endif
