#ifndef QUORVEX_FILESTORAGE_H
#define QUORVEX_FILESTORAGE_H

#include "Export.h"
#include "FileStorageRecords.h"
#include "Results.h"

#include <memory>
#include <vector>

/// @file
/// The client of the shared file storage, first generation.

namespace quorvex
{

class CShareFileStorageHttpHelper;

/// The client of the shared file storage, first generation: chat pictures, user photos, emoticons, and the depot,
/// which keeps large files for a limited time.
///
/// One object holds one connection to the service and one remembered set of credentials. Every operation blocks
/// until the server has answered and returns a result code (see @ref results): 0 on success, a negative code of the
/// module, the HTTP status of a refused request, the server's own result code, or 1 for an answer that could not be
/// understood. While the object has never logged in successfully, and after a logout, each transfer first logs in
/// with the remembered credentials; some operations, which say so, log in again after a 403 and repeat the request
/// once. A refusal is never repeated for any other reason.
///
/// Threads: one object serves one thread at a time; different objects are independent of each other.
///
/// Texts are UTF-16 and end with a zero. A null text of a request goes out empty unless the operation says
/// otherwise. File names and keys travel in the system's OEM code page where they are part of a form; what it cannot
/// express becomes what the system makes of it, mostly a question mark. A request's path, with the keys in it, is
/// cut at 255 characters. Nothing that is passed in is kept by address, and nothing that is handed out has to be
/// released. No exception leaves an operation: memory exhaustion is logged and returned as 1.
class QUORVEX_API CFileStorage
{
public:
    /// Connects to a service. A URL that cannot be used leaves the object unconnected: see IsConnected.
    /// @param server  scheme, host, optional port and optional path, for example "http://storage.example/storage";
    ///                null leaves the object unconnected for good
    /// @param session a session of the account system to log in with at the first transfer, or null
    CFileStorage(const wchar_t* server, const wchar_t* session);

    /// Closes the connection. The server's session is left to expire; UserLogout ends it at once.
    ~CFileStorage();

    CFileStorage(const CFileStorage&) = delete;
    CFileStorage& operator=(const CFileStorage&) = delete;

    /// @return an empty text that lives as long as the module, never null; failures are described in the log only
    const wchar_t* GetLastErrMsg() const;

    /// @return whether a connection to the server was set up. Nothing has been sent over it yet when true is
    ///         returned after construction: the server may still turn out to be out of reach.
    bool IsConnected() const;

    /// @name Login
    /// A login remembers its credentials for later repetition, whether or not it succeeds, unless there is no
    /// connection.
    /// @{

    /// Logs in with a session of the account system.
    /// @param session the session
    /// @return 0; -100 not connected; -102 session is null; 1 the answer lacks a key or is no JSON; an HTTP status, a
    ///         code of the server, or a @ref get_code
    int UserLogin(const wchar_t* session);

    /// Logs in with user name and password.
    /// @param userName user name
    /// @param password password; it is sent as it is, in the request's path, unprotected: an https address encrypts
    /// nothing
    /// @return 0; -100 not connected; -101 a text is null; 1 the answer lacks a key or is no JSON; an HTTP status, a
    ///         code of the server, or a @ref get_code
    int UserLogin(const wchar_t* userName, const wchar_t* password);

    /// Ends the session on the server. The credentials stay remembered, and the next transfer logs in again. An
    /// answer that names another user or session than the login did is noted in the log only.
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or
    /// a
    ///         @ref get_code
    int UserLogout();
    /// @}

    /// @name Pictures and photos
    /// Their operations log in again after a 403 and repeat the transfer once; a login that fails then ends them with
    /// its own result. The server's 409, "there already", is a success.
    /// @{

    /// Uploads a picture; its file name is its key on the server.
    /// @param folder   folder of the file, without a trailing backslash
    /// @param fileName the file's name there (at most 255 bytes in the OEM code page)
    /// @return 0; -100 not connected; -103 the server keeps it under another name; -120 the file cannot be opened or
    ///         read; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, a @ref form_code, or
    ///         the result of a failed login
    int PictureUpload(const wchar_t* folder, const wchar_t* fileName) const;

    /// Downloads a picture into a file of the same name; one that is there already is overwritten.
    /// @param folder   an existing folder, without a trailing backslash
    /// @param fileName the picture's name, which is its key
    /// @return 0; -100 not connected; -120 the local file cannot be created; -107 reading or writing broke off; an
    ///         HTTP status, a @ref get_code, or the result of a failed login
    int PictureDownload(const wchar_t* folder, const wchar_t* fileName) const;

    /// Uploads a user's photo.
    /// @param folder     folder of the file, without a trailing backslash
    /// @param fileName   the file's name there
    /// @param serverName the name to send for it (at most 255 bytes in the OEM code page)
    /// @return as PictureUpload, without -103
    int UserPhotoUpload(const wchar_t* folder, const wchar_t* fileName, const wchar_t* serverName) const;

    /// Downloads a user's photo; a local file that is there already is overwritten.
    /// @param folder    an existing folder, without a trailing backslash
    /// @param key       the photo's key
    /// @param localName local file name
    /// @return as PictureDownload
    int UserPhotoDownload(const wchar_t* folder, const wchar_t* key, const wchar_t* localName) const;
    /// @}

    /// @name Emoticons
    /// @{

    /// Uploads an emoticon into the user's own set; see PictureUpload for logins and repetition.
    /// @param folder     folder of the file, without a trailing backslash
    /// @param fileName   the file's name there
    /// @param serverName the name to send for it (at most 255 bytes in the OEM code page)
    /// @return as PictureUpload, without -103
    int EmoticonUpload(const wchar_t* folder, const wchar_t* fileName, const wchar_t* serverName) const;

    /// Downloads an emoticon of any user; see PictureDownload for logins and repetition.
    /// @param uid       the owner's user id
    /// @param folder    an existing folder, without a trailing backslash
    /// @param key       the emoticon's key
    /// @param localName local file name; a file that is there already is overwritten
    /// @return as PictureDownload
    int EmoticonDownload(const wchar_t* uid, const wchar_t* folder, const wchar_t* key, const wchar_t* localName) const;

    /// Removes an emoticon from the user's own set. It neither logs in before nor again after a 403.
    /// @param key the emoticon's key
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or
    /// a
    ///         @ref get_code
    int EmoticonRemove(const wchar_t* key) const;

    /// Asks for the user's own set, logging in again once when the server's code is 403. Its number shows in the log
    /// only: the parameters are neither read nor written.
    /// @param list     not used; may be null
    /// @param capacity not used
    /// @param count    not used
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, a
    ///         @ref get_code, or the result of a failed login
    int EmoticonGetList(EmoticonInfo* list, const unsigned int& capacity, unsigned int& count) const;
    /// @}

    /// Computes MD5 and SHA-1 of a local file, without any request.
    /// @param folder   folder of the file, without a trailing backslash
    /// @param fileName the file's name there
    /// @param size     receives the low 32 bits of the file's size; left as it was when the file cannot be opened
    /// @param md5      room for 33 characters; receives 32 lowercase hexadecimal characters, or an empty text when the
    ///                 file cannot be read or is empty; null is allowed
    /// @param sha1     room for 41 characters; receives 40 lowercase hexadecimal characters, or an empty text as above;
    ///                 null is allowed
    /// @return 0, whether or not the file could be read
    int FileGetChecksum(const wchar_t* folder, const wchar_t* fileName, unsigned long& size, wchar_t* md5,
                        wchar_t* sha1) const;

    /// @name The large-file depot
    /// A large file is created by its name, MD5 and size, sent in blocks of the caller's size in any order, and
    /// finished; then it can be looked at, read in ranges, kept longer and removed until its time is up. Only
    /// LargeFileCreate logs in again after a 403; the other operations return it.
    /// @{

    /// Announces a local file to the server, with its MD5 and the low 32 bits of its size. A file that cannot be read
    /// is announced without its MD5, one of which nothing is known with the size 0; the server decides.
    /// @param folder    folder of the file, without a trailing backslash
    /// @param fileName  the file's name there, which is also its name in the depot (at most 127 bytes in the OEM code
    ///                  page)
    /// @param keyOut    receives the file's key
    /// @param keyOutLen room of keyOut in characters, the final zero included; 65 is enough for every key
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, a
    ///         @ref post_code, or the result of a failed login
    int LargeFileCreate(const wchar_t* folder, const wchar_t* fileName, wchar_t* keyOut, unsigned long keyOutLen) const;

    /// Sends one block.
    /// @param key      the file's key (at most 64 bytes in the OEM code page)
    /// @param data     the block; it may be null when size is 0
    /// @param size     bytes of the block
    /// @param position the block's place in the file, in bytes
    /// @return 0; -135 data is null although size is not 0; -100 not connected; 1 the answer lacks a key or is no JSON;
    ///         an HTTP status, a code of the server, or a @ref form_code
    int LargeFileUpload(const wchar_t* key, void* data, unsigned long size, unsigned long position) const;

    /// Tells the server that every block has been sent.
    /// @param key the file's key
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or
    /// a
    ///         @ref post_code
    int LargeFileUploadFinish(const wchar_t* key) const;

    /// Asks for a file's size and name by reading its first byte.
    /// @param uid        the owner's user id
    /// @param key        the file's key
    /// @param name       receives the file's name; null is allowed
    /// @param nameLen    room of name, secondOut and thirdOut each, in characters, the final zero included
    /// @param size       receives the file's size in bytes (low 32 bits)
    /// @param secondOut  receives the text that the server sends behind the name, mostly the MD5; empty when there is
    ///                   none; null is allowed
    /// @param thirdOut   receives the text behind that one; empty when there is none; null is allowed
    /// @return 0; -100 not connected; -112 the server refused or did not state size and name; -111 the request could
    /// not
    ///         be sent; -114 no answer came; of a @ref range_code also -108, -115 to -119 and -130
    int LargeFileGetInfo(const wchar_t* uid, const wchar_t* key, wchar_t* name, unsigned long nameLen,
                         unsigned long& size, wchar_t* secondOut, wchar_t* thirdOut) const;

    /// Reads one range of a file.
    /// @param uid      the owner's user id
    /// @param key      the file's key
    /// @param position offset of the range
    /// @param buffer   room for length bytes as given on entry; never more is written
    /// @param length   in: bytes wanted, at least 1; out, on success: bytes received
    /// @return 0, also when the server sends a shorter range than asked for; -135 buffer is null although length is not
    ///         0; -100 not connected; -111 the request could not be sent; -114 no answer came; an HTTP status or a
    ///         @ref range_code
    int LargeFileDownload(const wchar_t* uid, const wchar_t* key, unsigned long position, void* buffer,
                          unsigned long& length) const;

    /// Has a file kept longer.
    /// @param key the file's key
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or
    /// a
    ///         @ref get_code
    int LargeFileRenewTime(const wchar_t* key) const;

    /// Removes a file.
    /// @param key the file's key
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or
    /// a
    ///         @ref get_code
    int LargeFileRemove(const wchar_t* key) const;

    /// Lists the user's files.
    /// @param list the records are appended to it; those appended before a failure stay
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or
    /// a
    ///         @ref get_code
    int LargeFileGetList(std::vector<LargeFileInfo>& list) const;

    /// Asks for the user's space in the depot, in bytes.
    /// @param totalSpace receives the space that there is
    /// @param totalSize  receives the space in use
    /// @param freeSpace  receives the space left
    /// @return 0; -100 not connected; 1 the answer lacks a key or is no JSON; an HTTP status, a code of the server, or
    /// a
    ///         @ref get_code
    int LargeFileDepotInfo(double& totalSpace, double& totalSize, double& freeSpace) const;
    /// @}

protected:
    /// @name The two login requests
    /// @{

    /// Sends it without remembering the credentials.
    /// @param userName user name
    /// @param password password
    /// @return as UserLogin
    int UserLoginWithPassword(const wchar_t* userName, const wchar_t* password);

    /// Sends it without remembering the credentials.
    /// @param session the session
    /// @return as UserLogin
    int UserLoginWithSession(const wchar_t* session);
    /// @}

    /// Repeats a login.
    /// @param userName   user name; null to log in with a session
    /// @param credential password, or the session
    /// @return the login's result
    int UserRelogin(const wchar_t* userName, const wchar_t* credential) const;

    /// Uploads a whole file to a given path of the service.
    /// @param path       path below the base URL
    /// @param folder     folder of the file, without a trailing backslash
    /// @param fileName   the file's name there
    /// @param serverName the name to send for it
    /// @param keyOut     receives the file's key
    /// @param keyOutLen  room of keyOut in characters, the final zero included
    /// @return as PictureUpload, without -103
    int FileUploadWithRetry(const wchar_t* path, const wchar_t* folder, const wchar_t* fileName,
                            const wchar_t* serverName, wchar_t* keyOut, unsigned long keyOutLen) const;

    /// Downloads a whole file from a given path of the service.
    /// @param pathFormat path below the base URL; its last "%s" stands for the key
    /// @param key        file key
    /// @param folder     an existing folder, without a trailing backslash
    /// @param localName  local file name
    /// @return as PictureDownload
    int FileDownloadWithRetry(const wchar_t* pathFormat, const wchar_t* key, const wchar_t* folder,
                              const wchar_t* localName) const;

private:
    struct Exchange;

    std::unique_ptr<CShareFileStorageHttpHelper> m_pHttpHelper;
    mutable std::unique_ptr<char[]> m_pszUid; // a relogin within a const operation changes these two and the last
    mutable std::unique_ptr<char[]> m_pszSid;
    std::unique_ptr<wchar_t[]> m_pszUserName;
    std::unique_ptr<wchar_t[]> m_pszCredential;
    mutable bool m_bNeedLogin;
};

} // namespace quorvex

#endif
