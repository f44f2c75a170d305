#ifndef QUORVEX_NETDISK_H
#define QUORVEX_NETDISK_H

#include "Export.h"
#include "NetDiskRecords.h"
#include "Results.h"

#include <memory>
#include <vector>

/// @file
/// The client of the personal network disk.

namespace quorvex
{
namespace netdisk
{

class CNetDiskHttpHelper;

/// The client of the personal network disk.
///
/// One object holds one connection to the service and one remembered set of credentials. Every operation blocks
/// until the server has answered and returns a result code (see @ref results): 0 on success, a negative code of the
/// module, the HTTP status of a refused request, or 1 for an answer that could not be understood. While the object
/// has never logged in successfully, each operation first logs in with the remembered credentials; a 403 answer
/// makes it log in again and repeat the request once.
///
/// Threads: one object serves one thread at a time; different objects are independent of each other.
///
/// Texts are UTF-16 and end with a zero. A null text of a request goes out empty unless the operation says
/// otherwise. Nothing that is passed in is kept by address, and nothing that is handed out has to be released.
/// No exception leaves an operation: memory exhaustion is logged and returned as 1.
class QUORVEX_API CNetDisk
{
public:
    /// Connects to a service. A URL that cannot be used leaves the object unconnected: see IsConnected.
    /// @param serverUrl scheme, host, optional port and optional path, for example "http://disk.example/object";
    ///                  null leaves the object unconnected for good
    /// @param session   a session of the user centre to log in with at the first operation, or null
    explicit CNetDisk(const wchar_t* serverUrl = nullptr, const wchar_t* session = nullptr);

    /// Closes the connection. The server's session is left to expire; UserLogout ends it at once.
    ~CNetDisk();

    CNetDisk(const CNetDisk&) = delete;
    CNetDisk& operator=(const CNetDisk&) = delete;

    /// @return whether a connection to the server was set up. Nothing has been sent over it yet when true is
    ///         returned after construction: the server may still turn out to be out of reach.
    bool IsConnected() const;

    /// @return an empty text that lives as long as the module, never null; failures are described in the log only
    const wchar_t* GetLastErrMsg() const;

    /// @name Login
    /// A successful login remembers its credentials for later repetition; so does a failed one.
    /// @{

    /// Logs in with a session of the user centre.
    /// @param session the session
    /// @return 0; -100 not connected; -102 session is null; 1 the answer lacks its key or is no JSON; an HTTP status or
    ///         a @ref post_code
    int UserLogin(const wchar_t* session);

    /// Logs in with account and password.
    /// @param userName account name
    /// @param password password; it is sent as it is, unprotected: an https address encrypts nothing
    /// @return 0; -100 not connected; -101 a text is null; 1 the answer lacks a key or is no JSON; an HTTP status or a
    ///         @ref post_code
    int UserLogin(const wchar_t* userName, const wchar_t* password);

    /// Logs in with a ticket of the passport service.
    /// @param first  first part, sent as "blowfish"
    /// @param second second part, sent as "ticket"
    /// @return 0; -100 not connected; -135 a text is null; 1 the answer lacks a key or is no JSON; an HTTP status or a
    ///         @ref post_code
    int PassportLoginTicket(const wchar_t* first, const wchar_t* second);

    /// Ends the session on the server. The credentials stay remembered, so that a later operation that meets a
    /// 403 logs in again.
    /// @return 0; -100 not connected; an HTTP status or a @ref get_code
    int UserLogout();
    /// @}

    /// @name Files
    /// @{

    /// Uploads a whole file of less than 2 GiB into the user's disk. Of a file of 4 GiB and more only as much as the
    /// low 32 bits of its size say would be sent.
    /// @param localFolder    folder of the file, without a trailing backslash
    /// @param fileName       the file's name there, which is also its name on the disk, cut there at 255 bytes of UTF-8
    /// @param fileKeyOut     receives the file key; room for twice fileKeyOutSize characters; may be null
    /// @param fileKeyOutSize size to be doubled: 17 is enough for a key of 32 characters and its zero
    /// @return 0, also when the server calls the file incomplete (an ERROR line tells); -108 not connected, -100 when
    ///         the object was made without a server; -120 the file cannot be opened or read; 1 the answer lacks a key
    ///         or is no JSON; an HTTP status, a @ref form_code, or the result of a failed relogin
    int FileUpload(const wchar_t* localFolder, const wchar_t* fileName, wchar_t* fileKeyOut,
                   unsigned long fileKeyOutSize) const;

    /// Downloads a whole file. An existing local file is written from its start and not shortened first.
    /// @param fileKey     file key
    /// @param localFolder an existing folder, without a trailing backslash
    /// @param fileName    local file name, or null for the name that the server gives. Such a name never leads out
    ///                    of localFolder: one with a backslash, a slash or a colon is refused with -120, and so is
    ///                    a device's (NUL, COM1 ...).
    /// @return 0; -108 not connected, -100 when the object was made without a server; -134 the server refused, or gave
    ///         no name where it was to; -120 the local file cannot be created or closed; -107 reading or writing broke
    ///         off; a @ref get_code, or the result of a failed relogin. Whether the whole file came is not checked:
    ///         compare its size or MD5.
    int FileDownload(const wchar_t* fileKey, const wchar_t* localFolder, const wchar_t* fileName) const;

    /// Renames a file or moves it into another folder.
    /// @param fileKey  file key
    /// @param folderId the folder that it shall be in; empty leaves it where it is
    /// @param name     its new name; empty leaves it as it is
    /// @return 0; -100 not connected; an HTTP status or a @ref post_code
    int FileModify(const wchar_t* fileKey, const wchar_t* folderId, const wchar_t* name) const;

    /// Moves a file into the recycle bin.
    /// @param fileKey file key
    /// @return 0; -100 not connected; an HTTP status or a @ref post_code
    int FileDelete(const wchar_t* fileKey) const;

    /// Removes a file for ever.
    /// @param fileKey file key
    /// @return 0; -100 not connected; an HTTP status or a @ref post_code
    int FileDelete4ever(const wchar_t* fileKey) const;

    /// Computes the MD5 of a local file, without any request.
    /// @param folder   folder of the file, without a trailing backslash
    /// @param fileName the file's name there
    /// @param fileSize receives the low 32 bits of the file's size; left as it was when the file cannot be opened
    ///                 or is empty
    /// @param md5Out   room for 33 characters; receives 32 lowercase hexadecimal characters, or an empty text when
    ///                 the file cannot be read or is empty
    /// @return 0, whether or not the file could be read
    int FileGetChecksum(const wchar_t* folder, const wchar_t* fileName, unsigned long& fileSize, wchar_t* md5Out) const;
    /// @}

    /// @name Large files
    /// A large file is created by its name, size and MD5, sent in blocks of the caller's size in any order, and
    /// finished. Blocks that the server has confirmed survive a broken connection. Sizes and offsets have 32 bits, a
    /// block less than 2 GiB.
    /// @{

    /// Announces a local file to the server. The file may have 2 GiB and more; the size that the server confirms, which
    /// is not compared with it, must stay below that: a larger number is no answer that could be understood.
    /// @param localFolder    folder of the file, without a trailing backslash
    /// @param fileName       the file's name there, which is also its name on the disk, cut there at 64 bytes of UTF-8
    /// @param fileKeyOut     receives the file key; room for twice fileKeyOutSize characters; may be null
    /// @param fileKeyOutSize size to be doubled: 17 is enough for a key of 32 characters and its zero
    /// @param complete       receives a value other than 0 when the server holds the whole content already: then no
    ///                       block has to be sent
    /// @return 0; -100 not connected; 1 the file cannot be digested, or is empty, or the answer lacks a key, confirms
    ///         2 GiB or more, or is no JSON; an HTTP status, a @ref form_code, or the result of a failed relogin
    int LargeFileCreate(const wchar_t* localFolder, const wchar_t* fileName, wchar_t* fileKeyOut,
                        unsigned long fileKeyOutSize, int& complete) const;

    /// Sends one block.
    /// @param fileKey key from LargeFileCreate
    /// @param data    the block; only read
    /// @param size    bytes in the block
    /// @param pos     offset of the block in the file
    /// @return 0; -100 not connected; -135 data is null although size is not 0; 1 the server confirmed another size, or
    ///         its answer lacks a key or is no JSON; an HTTP status or a @ref form_code
    int LargeFileUpload(const wchar_t* fileKey, void* data, unsigned long size, unsigned long pos) const;

    /// Tells the server that all blocks have been sent. As in LargeFileCreate, the size that the server confirms must
    /// stay below 2 GiB, whatever the file's is.
    /// @param fileKey key from LargeFileCreate
    /// @return 0; -100 not connected; 1 the answer lacks a key, confirms 2 GiB or more, or is no JSON; an HTTP status
    ///         or a @ref post_code
    int LargeFileFinish(const wchar_t* fileKey) const;

    /// Asks for a stored file's name and size.
    /// @param fileKey         file key
    /// @param fileNameOut     receives the name; room for fileNameOutSize characters; may be null
    /// @param fileNameOutSize capacity of fileNameOut and of secondValueOut; a longer text is cut to one less
    /// @param totalSize       receives the size in bytes
    /// @param secondValueOut  receives the second value of the server's Content-Disposition, empty when there is
    ///                        none; room for fileNameOutSize characters; may be null
    /// @return 0; -100 not connected; -112 the answer lacks a header; 1 its status is 000; any other HTTP status; of a
    ///         @ref range_code -108, -111, -114 to -119 and -130, since no body is read
    int LargeFileGetInfo(const wchar_t* fileKey, wchar_t* fileNameOut, unsigned long fileNameOutSize,
                         unsigned long& totalSize, wchar_t* secondValueOut) const;

    /// Reads one range of a stored file.
    /// @param fileKey file key
    /// @param pos     offset of the range
    /// @param buffer  room for size bytes as given on entry; never more is written
    /// @param size    in: bytes wanted, at least 1, for a server reads none as all; out, on success: bytes received
    /// @return 0, also when fewer bytes came; -100 not connected; -135 buffer is null although size is not 0; an HTTP
    ///         status or a @ref range_code
    int LargeFileDownload(const wchar_t* fileKey, unsigned long pos, void* buffer, unsigned long& size) const;
    /// @}

    /// Asks for the user's quota.
    /// @param totalSpace  receives the size of the disk in bytes
    /// @param usedSpace   receives the bytes in use
    /// @param maxFileSize receives the size in bytes that one file may have
    /// @return 0; -100 not connected; 1 the answer lacks a key, one has a wrong type, or it is no JSON; an HTTP status
    ///         or a @ref get_code. The three are written together or not at all.
    int CapacityInfo(unsigned long long& totalSpace, unsigned long long& usedSpace, unsigned long& maxFileSize) const;

    /// @name Folders
    /// Folders are named by the ids that the server gives them, texts of at most 32 characters.
    /// @{

    /// Creates a folder.
    /// @param folderName      its name
    /// @param parentFolderId  id of the folder that it shall be in
    /// @param folderIdOut     receives the new folder's id; room for folderIdOutSize characters; may be null
    /// @param folderIdOutSize capacity of folderIdOut; a longer id is cut to one less
    /// @return 0; -135 folderName is null; -100 not connected; 1 the answer lacks its key or is no JSON; an HTTP status
    ///         or a @ref post_code
    int FolderAdd(const wchar_t* folderName, const wchar_t* parentFolderId, wchar_t* folderIdOut,
                  unsigned long folderIdOutSize) const;

    /// Renames a folder, moves it, or both.
    /// @param folderId       id of the folder
    /// @param folderName     its new name; null goes out empty, which leaves it as it is
    /// @param parentFolderId id of the folder that it shall be in; null goes out empty, which leaves it where it is
    /// @return 0; -136 folderId is null; -137 both of the others are null; -100 not connected; an HTTP status or a
    ///         @ref post_code
    int FolderModi(const wchar_t* folderId, const wchar_t* folderName, const wchar_t* parentFolderId) const;

    /// Moves a folder, with everything in it, into the recycle bin.
    /// @param folderId id of the folder
    /// @return 0; -136 folderId is null; -100 not connected; an HTTP status or a @ref post_code
    int FolderDel(const wchar_t* folderId) const;

    /// Removes a folder, with everything in it, for ever.
    /// @param folderId id of the folder
    /// @return 0; -136 folderId is null; -100 not connected; an HTTP status or a @ref post_code
    int FolderDel4ever(const wchar_t* folderId) const;

    /// Lists what is in a folder. Records are appended; those appended before a failure stay.
    /// @param folderId id of the folder
    /// @param files    receives the files
    /// @param folders  receives the folders. The module grows both vectors: a host with another C++ runtime takes
    ///                 them from NewFileInfoVector and NewFolderInfoVector.
    /// @return 0; -136 folderId is null; -100 not connected; 1 the answer is no JSON or has a value of a wrong type; an
    ///         HTTP status or a @ref get_code
    int FolderList(const wchar_t* folderId, std::vector<_FileInfo>& files, std::vector<_FolderInfo>& folders) const;

    /// The same in UTF-8: ids, keys and digests of at most 32 bytes, names of at most 64, cut between characters.
    /// Records are appended when the whole listing has come, and not at all otherwise.
    /// @param folderId id of the folder
    /// @param files    receives the files. The module grows both vectors: only for a host with the module's C++
    ///                 runtime.
    /// @param folders  receives the folders
    /// @return as for the wide form
    int FolderList(const wchar_t* folderId, std::vector<_FileInfoUTF8>& files,
                   std::vector<_FolderInfoUTF8>& folders) const;
    /// @}

    /// @name Share codes
    /// A share code publishes files of the user's disk for a limited time: whoever holds it can list the files,
    /// download them, or save them into a disk of their own.
    /// @{

    /// Makes a share code.
    /// @param files        1 to 200 records, of which only the key is used; they are only read
    /// @param aliveSeconds how long the code shall live, in seconds
    /// @param pcodeOut     receives the code; room for pcodeOutSize characters; may be null
    /// @param pcodeOutSize capacity of pcodeOut; a longer code is cut to one less
    /// @return 0; -138 no records or more than 200; -100 not connected; 1 the answer lacks its key or is no JSON; an
    ///         HTTP status or a @ref post_code
    int PcodeCreate(std::vector<_FileInfo>& files, unsigned long aliveSeconds, wchar_t* pcodeOut,
                    unsigned long pcodeOutSize) const;

    /// Ends share codes of the user's.
    /// @param pcodes 1 to 200 records, of which only the code is used; they are only read
    /// @return 0; -139 no records or more than 200; -100 not connected; an HTTP status or a @ref post_code
    int PcodeDelete(std::vector<_PcodeInfo>& pcodes) const;

    /// Lists the user's share codes. Records are appended; those appended before a failure stay.
    /// @param type   which ones, as the server numbers them
    /// @param pcodes receives the codes; see NewPcodeInfoVector
    /// @return 0; -100 not connected; 1 the answer is no JSON or has a value of a wrong type; an HTTP status or a
    ///         @ref get_code
    int PcodeList(unsigned long type, std::vector<_PcodeInfo>& pcodes) const;

    /// Lists the files of a share code. Records are appended; those appended before a failure stay.
    /// @param pcode the code
    /// @param files receives the files, the key of each being its id within the code; see NewFileInfoVector
    /// @return 0; -100 not connected; 1 the answer is no JSON or has a value of a wrong type; an HTTP status or a
    ///         @ref get_code
    int PcodeInfo(const wchar_t* pcode, std::vector<_FileInfo>& files) const;

    /// Lets a share code of the user's live longer.
    /// @param pcode        the code
    /// @param deferSeconds how much longer, in seconds
    /// @return 0; -139 pcode is null; -100 not connected; an HTTP status or a @ref post_code
    int PcodeDefer(const wchar_t* pcode, unsigned long deferSeconds) const;

    /// Saves the files of a share code into the user's own disk.
    /// @param pcode    the code
    /// @param folderId the folder to save them into
    /// @return 0; -139 pcode is null; -100 not connected; an HTTP status or a @ref post_code
    int PcodeSave(const wchar_t* pcode, const wchar_t* folderId) const;

    /// Downloads a whole file of a share code; as FileDownload.
    /// @param pcode       the code
    /// @param fileId      the file's id within the code
    /// @param localFolder an existing folder, without a trailing backslash
    /// @param fileName    local file name, or null for the name that the server gives
    /// @return as FileDownload
    int PcodeDown(const wchar_t* pcode, const wchar_t* fileId, const wchar_t* localFolder,
                  const wchar_t* fileName) const;

    /// Reads one range of a file of a share code.
    /// @param pcode  the code
    /// @param fileId the file's id within the code
    /// @param pos    offset of the range
    /// @param buffer room for size bytes as given on entry; never more is written
    /// @param size   in: bytes wanted, at least 1; out, on success: bytes received
    /// @return 0, also when fewer bytes came; -108 not connected, -100 when the object was made without a server; -135
    ///         buffer is null although size is not 0; an HTTP status or a @ref range_code
    int LargePcodeDown(const wchar_t* pcode, const wchar_t* fileId, unsigned long pos, void* buffer,
                       unsigned long& size) const;
    /// @}

    /// @name Recycle bin
    /// @{

    /// Lists the recycle bin. Records are appended; those appended before a failure stay.
    /// @param items receives the items; see NewRItemInfoVector
    /// @return 0; -100 not connected; 1 the answer is no JSON or has a value of a wrong type; an HTTP status or a
    ///         @ref get_code
    int RecyclebinList(std::vector<_RItemInfo>& items) const;

    /// The same in UTF-8: ids of at most 32 bytes, names of at most 64, folders of at most 4096, cut between
    /// characters. Records are appended when the whole listing has come, and not at all otherwise.
    /// @param items receives the items. The module grows the vector: only for a host with the module's C++ runtime.
    /// @return as for the wide form
    int RecyclebinList(std::vector<_RItemInfoUTF8>& items) const;

    /// Puts an item back to where it was.
    /// @param rsId the item's id
    /// @return 0; -140 rsId is null; -100 not connected; an HTTP status or a @ref post_code
    int RecyclebinRecover(const wchar_t* rsId) const;

    /// Removes an item for ever.
    /// @param rsId the item's id
    /// @return 0; -140 rsId is null; -100 not connected; an HTTP status or a @ref post_code
    int RecyclebinDel(const wchar_t* rsId) const;
    /// @}

    /// @name Vectors on the module's heap
    /// For hosts whose C++ runtime has another heap: they read such a vector, and never grow or destroy it
    /// themselves. They may be called from any thread.
    /// @{

    /// @return an empty vector, to be given back to DeleteFileInfoVector; null when memory ran out
    static std::vector<_FileInfo>* NewFileInfoVector();
    /// @return an empty vector, to be given back to DeleteFolderInfoVector; null when memory ran out
    static std::vector<_FolderInfo>* NewFolderInfoVector();
    /// @return an empty vector, to be given back to DeletePcodeInfoVector; null when memory ran out
    static std::vector<_PcodeInfo>* NewPcodeInfoVector();
    /// @return an empty vector, to be given back to DeleteRItemInfoVector; null when memory ran out
    static std::vector<_RItemInfo>* NewRItemInfoVector();
    /// @param v a vector from NewFileInfoVector; null is allowed
    static void DeleteFileInfoVector(std::vector<_FileInfo>* v);
    /// @param v a vector from NewFolderInfoVector; null is allowed
    static void DeleteFolderInfoVector(std::vector<_FolderInfo>* v);
    /// @param v a vector from NewPcodeInfoVector; null is allowed
    static void DeletePcodeInfoVector(std::vector<_PcodeInfo>* v);
    /// @param v a vector from NewRItemInfoVector; null is allowed
    static void DeleteRItemInfoVector(std::vector<_RItemInfo>* v);
    /// @}

protected:
    /// Takes the constructor's arguments.
    /// @param serverUrl as in the constructor
    /// @param session   as in the constructor
    void init(const wchar_t* serverUrl, const wchar_t* session);

    /// @name The three login requests
    /// @{

    /// Sends it without remembering the credentials.
    /// @param session the session
    /// @return as UserLogin
    int UserLoginWithSession(const wchar_t* session);

    /// Sends it without remembering the credentials.
    /// @param userName account name
    /// @param password password
    /// @return as UserLogin
    int UserLoginWithPassword(const wchar_t* userName, const wchar_t* password);

    /// Sends it without remembering the credentials.
    /// @param first  first part
    /// @param second second part
    /// @return as PassportLoginTicket
    int UserLoginWithTicket(const wchar_t* first, const wchar_t* second);
    /// @}

    /// Repeats the remembered login.
    /// @return the login's result; 1 when none is remembered
    int UserRelogin() const;

    /// FileUpload to a given path of the service.
    /// @param objectPath    path below the base URL
    /// @param localFolder   as in FileUpload
    /// @param fileName      as in FileUpload
    /// @param announcedName the name to send for the file
    /// @param fileKeyOut    as in FileUpload
    /// @param fileKeyOutSize as in FileUpload
    /// @return as FileUpload
    int FileUploadWithRetry(const wchar_t* objectPath, const wchar_t* localFolder, const wchar_t* fileName,
                            const wchar_t* announcedName, wchar_t* fileKeyOut, unsigned long fileKeyOutSize) const;

    /// FileDownload from a given path of the service.
    /// @param objectFormat path below the base URL; its "%s" stands for the file key
    /// @param fileKey      file key
    /// @param localFolder  as in FileDownload
    /// @param fileName     as in FileDownload
    /// @return as FileDownload
    int FileDownloadWithRetry(const wchar_t* objectFormat, const wchar_t* fileKey, const wchar_t* localFolder,
                              const wchar_t* fileName) const;

private:
    struct Exchange;

    std::unique_ptr<CNetDiskHttpHelper> m_pHttpHelper;
    unsigned int m_nLoginType;
    std::unique_ptr<wchar_t[]> m_pszCredential1;
    std::unique_ptr<wchar_t[]> m_pszCredential2;
    mutable int m_nUapUid; // a relogin within a const operation changes these two
    mutable bool m_bNeedLogin;
};

} // namespace netdisk
} // namespace quorvex

#endif
