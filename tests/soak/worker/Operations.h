#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace quorvex::soak
{

enum class Class : std::size_t
{
    NetDisk,
    Storage1,
    Storage2,
    Storage3,
    Search,
    Md5,
    Count
};

/// Every operation that the module exports; overloads apart.
enum class Op : std::size_t
{
    DiskCreate,
    DiskDestroy,
    DiskIsConnected,
    DiskGetLastErrMsg,
    DiskUserLoginSession,
    DiskUserLoginPassword,
    DiskPassportLoginTicket,
    DiskUserLogout,
    DiskFileUpload,
    DiskFileDownload,
    DiskFileModify,
    DiskFileDelete,
    DiskFileDelete4ever,
    DiskFileGetChecksum,
    DiskLargeFileCreate,
    DiskLargeFileUpload,
    DiskLargeFileFinish,
    DiskLargeFileGetInfo,
    DiskLargeFileDownload,
    DiskCapacityInfo,
    DiskFolderAdd,
    DiskFolderModi,
    DiskFolderDel,
    DiskFolderDel4ever,
    DiskFolderList,
    DiskFolderListUtf8,
    DiskPcodeCreate,
    DiskPcodeDelete,
    DiskPcodeList,
    DiskPcodeInfo,
    DiskPcodeDefer,
    DiskPcodeSave,
    DiskPcodeDown,
    DiskLargePcodeDown,
    DiskRecyclebinList,
    DiskRecyclebinListUtf8,
    DiskRecyclebinRecover,
    DiskRecyclebinDel,
    DiskNewFileInfoVector,
    DiskNewFolderInfoVector,
    DiskNewPcodeInfoVector,
    DiskNewRItemInfoVector,
    DiskDeleteFileInfoVector,
    DiskDeleteFolderInfoVector,
    DiskDeletePcodeInfoVector,
    DiskDeleteRItemInfoVector,
    Storage1Create,
    Storage1Destroy,
    Storage1IsConnected,
    Storage1GetLastErrMsg,
    Storage1UserLoginSession,
    Storage1UserLoginPassword,
    Storage1UserLogout,
    Storage1PictureUpload,
    Storage1PictureDownload,
    Storage1UserPhotoUpload,
    Storage1UserPhotoDownload,
    Storage1EmoticonUpload,
    Storage1EmoticonDownload,
    Storage1EmoticonRemove,
    Storage1EmoticonGetList,
    Storage1FileGetChecksum,
    Storage1LargeFileCreate,
    Storage1LargeFileUpload,
    Storage1LargeFileUploadFinish,
    Storage1LargeFileGetInfo,
    Storage1LargeFileDownload,
    Storage1LargeFileRenewTime,
    Storage1LargeFileRemove,
    Storage1LargeFileGetList,
    Storage1LargeFileDepotInfo,
    Storage2Create,
    Storage2Destroy,
    Storage2Exit,
    Storage2UserLogin,
    Storage2UserLogout,
    Storage2PictureUpload,
    Storage2PictureDownload,
    Storage2LargeFileCreate,
    Storage2LargeFileUpload,
    Storage2LargeFileUploadFinish,
    Storage2LargeFileDownload,
    Storage2LargeFileRemove,
    Storage3Create,
    Storage3Destroy,
    Storage3Exit,
    Storage3UserLogin,
    Storage3UserLogout,
    Storage3PictureUpload,
    Storage3PictureDownload,
    Storage3BufferUpload,
    Storage3Bufferdownload,
    Storage3GetBuffer,
    Storage3ReleaseBuffer,
    SearchCreate,
    SearchDestroy,
    SearchGetLastErrMsg,
    SearchClientLogin,
    SearchClientLogout,
    SearchUserReportStatus,
    SearchUserUpdateAppInfo,
    SearchUserUpdateInfo,
    SearchQueryByCondition,
    SearchQueryByAppCondition,
    SearchQueryCountByConditionString,
    SearchQueryCountByConditionVector,
    Md5Init,
    Md5Append,
    Md5Finish,
    Count
};

/// Counts operations and their results, and keeps what went wrong. Shared by all threads.
class Tally
{
public:
    /// Prints a line each time so many more operations have been done.
    explicit Tally(int progressStep) : m_progressStep(progressStep) {}

    /// Counts an operation. A result that its header does not tell of is a failure.
    /// @return the result
    int Note(Op operation, int result);

    /// While nothing is disturbed, operations have to succeed and count for themselves.
    void SetCalm(bool isCalm) { m_isCalm = isCalm; }
    bool IsCalm() const { return m_isCalm; }

    void Fail(const std::string& what);
    bool HasFailed() const { return m_failures != 0; }

    std::uint64_t Operations() const { return m_operations; }

    /// An answer that ended early and was right as far as it went, where the headers allow that.
    void NoteShort() { ++m_short; }

    /// Prints a table, and fails for each operation that never occurred.
    void Print();

private:
    void SayNow(const char* what, std::uint64_t done) const;

    static constexpr std::size_t kOperations = static_cast<std::size_t>(Op::Count);
    static constexpr std::size_t kResults = 32;

    int m_progressStep;
    std::atomic<bool> m_isCalm = false;
    std::atomic<std::uint64_t> m_operations = 0;
    std::atomic<std::uint64_t> m_calmOperations = 0;
    std::atomic<std::uint64_t> m_short = 0;
    std::atomic<std::uint64_t> m_failures = 0;
    std::array<std::array<std::atomic<std::uint64_t>, kResults>, kOperations> m_results{};
};

/// Prints one line, whole.
void Say(const std::string& line);

} // namespace quorvex::soak
