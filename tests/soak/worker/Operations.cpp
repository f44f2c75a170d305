#include "Operations.h"

#include <quorvex/Results.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <mutex>
#include <string_view>

namespace quorvex::soak
{

namespace
{

/// Sets of results that an operation may have.
enum Kind : unsigned
{
    kLocal = 1,    ///< nothing is sent
    kWeb = 2,      ///< sent over the module's own connection
    kSync = 4,     ///< sent over the host's session service
    kConflict = 8, ///< the server may know a file as finished, or as not yet whole
    kRefused = 16, ///< a refusal has a code of the module's own
    kProbe = 32,   ///< an answer may lack what was asked for
    kRange = 64    ///< success is the HTTP status
};

struct Description
{
    Class group;
    const char* name;
    unsigned kinds;
};

// In the order of Op.
constexpr Description kDescriptions[] = {
    {Class::NetDisk, "CNetDisk", kLocal},
    {Class::NetDisk, "~CNetDisk", kLocal},
    {Class::NetDisk, "IsConnected", kLocal},
    {Class::NetDisk, "GetLastErrMsg", kLocal},
    {Class::NetDisk, "UserLogin (session)", kWeb},
    {Class::NetDisk, "UserLogin (password)", kWeb},
    {Class::NetDisk, "PassportLoginTicket", kWeb},
    {Class::NetDisk, "UserLogout", kWeb},
    {Class::NetDisk, "FileUpload", kWeb},
    {Class::NetDisk, "FileDownload", kWeb | kRefused},
    {Class::NetDisk, "FileModify", kWeb},
    {Class::NetDisk, "FileDelete", kWeb},
    {Class::NetDisk, "FileDelete4ever", kWeb},
    {Class::NetDisk, "FileGetChecksum", kLocal},
    {Class::NetDisk, "LargeFileCreate", kWeb},
    {Class::NetDisk, "LargeFileUpload", kWeb | kConflict},
    {Class::NetDisk, "LargeFileFinish", kWeb | kConflict},
    {Class::NetDisk, "LargeFileGetInfo", kWeb | kProbe},
    {Class::NetDisk, "LargeFileDownload", kWeb},
    {Class::NetDisk, "CapacityInfo", kWeb},
    {Class::NetDisk, "FolderAdd", kWeb},
    {Class::NetDisk, "FolderModi", kWeb},
    {Class::NetDisk, "FolderDel", kWeb},
    {Class::NetDisk, "FolderDel4ever", kWeb},
    {Class::NetDisk, "FolderList", kWeb},
    {Class::NetDisk, "FolderList (UTF-8)", kWeb},
    {Class::NetDisk, "PcodeCreate", kWeb},
    {Class::NetDisk, "PcodeDelete", kWeb},
    {Class::NetDisk, "PcodeList", kWeb},
    {Class::NetDisk, "PcodeInfo", kWeb},
    {Class::NetDisk, "PcodeDefer", kWeb},
    {Class::NetDisk, "PcodeSave", kWeb},
    {Class::NetDisk, "PcodeDown", kWeb | kRefused},
    {Class::NetDisk, "LargePcodeDown", kWeb},
    {Class::NetDisk, "RecyclebinList", kWeb},
    {Class::NetDisk, "RecyclebinList (UTF-8)", kWeb},
    {Class::NetDisk, "RecyclebinRecover", kWeb},
    {Class::NetDisk, "RecyclebinDel", kWeb},
    {Class::NetDisk, "NewFileInfoVector", kLocal},
    {Class::NetDisk, "NewFolderInfoVector", kLocal},
    {Class::NetDisk, "NewPcodeInfoVector", kLocal},
    {Class::NetDisk, "NewRItemInfoVector", kLocal},
    {Class::NetDisk, "DeleteFileInfoVector", kLocal},
    {Class::NetDisk, "DeleteFolderInfoVector", kLocal},
    {Class::NetDisk, "DeletePcodeInfoVector", kLocal},
    {Class::NetDisk, "DeleteRItemInfoVector", kLocal},
    {Class::Storage1, "CFileStorage", kLocal},
    {Class::Storage1, "~CFileStorage", kLocal},
    {Class::Storage1, "IsConnected", kLocal},
    {Class::Storage1, "GetLastErrMsg", kLocal},
    {Class::Storage1, "UserLogin (session)", kWeb},
    {Class::Storage1, "UserLogin (password)", kWeb},
    {Class::Storage1, "UserLogout", kWeb},
    {Class::Storage1, "PictureUpload", kWeb},
    {Class::Storage1, "PictureDownload", kWeb},
    {Class::Storage1, "UserPhotoUpload", kWeb},
    {Class::Storage1, "UserPhotoDownload", kWeb},
    {Class::Storage1, "EmoticonUpload", kWeb},
    {Class::Storage1, "EmoticonDownload", kWeb},
    {Class::Storage1, "EmoticonRemove", kWeb},
    {Class::Storage1, "EmoticonGetList", kWeb},
    {Class::Storage1, "FileGetChecksum", kLocal},
    {Class::Storage1, "LargeFileCreate", kWeb},
    {Class::Storage1, "LargeFileUpload", kWeb | kConflict},
    {Class::Storage1, "LargeFileUploadFinish", kWeb | kConflict},
    {Class::Storage1, "LargeFileGetInfo", kWeb | kProbe},
    {Class::Storage1, "LargeFileDownload", kWeb | kProbe},
    {Class::Storage1, "LargeFileRenewTime", kWeb},
    {Class::Storage1, "LargeFileRemove", kWeb},
    {Class::Storage1, "LargeFileGetList", kWeb},
    {Class::Storage1, "LargeFileDepotInfo", kWeb},
    {Class::Storage2, "CFileStorage2", kLocal},
    {Class::Storage2, "~CFileStorage2", kLocal},
    {Class::Storage2, "exit", kLocal},
    {Class::Storage2, "UserLogin", kSync},
    {Class::Storage2, "UserLogout", kSync},
    {Class::Storage2, "PictureUpload", kSync},
    {Class::Storage2, "PictureDownload", kSync},
    {Class::Storage2, "LargeFileCreate", kSync},
    {Class::Storage2, "LargeFileUpload", kSync | kConflict},
    {Class::Storage2, "LargeFileUploadFinish", kSync | kConflict},
    {Class::Storage2, "LargeFileDownload", kSync},
    {Class::Storage2, "LargeFileRemove", kSync},
    {Class::Storage3, "CFileStorage3", kLocal},
    {Class::Storage3, "~CFileStorage3", kLocal},
    {Class::Storage3, "exit", kLocal},
    {Class::Storage3, "UserLogin", kLocal},
    {Class::Storage3, "UserLogout", kLocal},
    {Class::Storage3, "PictureUpload", kSync},
    {Class::Storage3, "PictureDownload", kSync},
    {Class::Storage3, "BufferUpload", kSync | kConflict},
    {Class::Storage3, "Bufferdownload", kSync | kRange},
    {Class::Storage3, "getBuffer", kLocal},
    {Class::Storage3, "releaseBuffer", kLocal},
    {Class::Search, "COnlineUserSearch", kLocal},
    {Class::Search, "~COnlineUserSearch", kLocal},
    {Class::Search, "GetLastErrMsg", kLocal},
    {Class::Search, "ClientLogin", kWeb},
    {Class::Search, "ClientLogout", kWeb},
    {Class::Search, "UserReportStatus", kWeb},
    {Class::Search, "UserUpdateAppInfo", kWeb},
    {Class::Search, "UserUpdateInfo", kWeb},
    {Class::Search, "QueryByCondition", kWeb},
    {Class::Search, "QueryByAppCondition", kWeb},
    {Class::Search, "QueryCountByConditionString", kWeb},
    {Class::Search, "QueryCountByConditionVector", kWeb},
    {Class::Md5, "md5_init", kLocal},
    {Class::Md5, "md5_append", kLocal},
    {Class::Md5, "md5_finish", kLocal},
};
static_assert(std::size(kDescriptions) == static_cast<std::size_t>(Op::Count));

constexpr const char* kClasses[] = {"CNetDisk",      "CFileStorage",      "CFileStorage2",
                                    "CFileStorage3", "COnlineUserSearch", "MD5"};
static_assert(std::size(kClasses) == static_cast<std::size_t>(Class::Count));

struct Expected
{
    int result;
    unsigned kinds;
};

// All that the headers document and that can happen here: local files are as they should be, and texts are given.
constexpr Expected kExpected[] = {
    {Result::Ok, kLocal | kWeb | kSync},
    {Result::BadAnswer, kWeb | kSync},
    {403, kWeb | kSync},
    {404, kWeb | kSync},
    {500, kWeb | kSync},
    {409, kConflict},
    {200, kRange},
    {206, kRange},
    {Result::RequestRefused, kSync},
    {-2, kWeb}, // zlib's, of a damaged body
    {-3, kWeb},
    {-5, kWeb},
    {Result::TransferFailed, kWeb},
    {Result::UploadSendFailed, kWeb},
    {Result::PostSendFailed, kWeb},
    {Result::ReceiveFailed, kWeb},
    {Result::RangeAnswerInvalid, kProbe},
    {Result::RangeHeaderAddFailed, kProbe},
    {Result::StatusUnreadable, kWeb},
    {Result::TransferEncodingInvalid, kWeb},
    {Result::ContentEncodingInvalid, kWeb},
    {Result::DownloadRefused, kRefused},
};

bool IsSuccess(int result)
{
    return result == Result::Ok || result == 200 || result == 206;
}

} // namespace

int Tally::Note(Op operation, int result)
{
    const auto index = static_cast<std::size_t>(operation);
    const Description& description = kDescriptions[index];
    const auto* const expected = std::ranges::find(kExpected, result, &Expected::result);
    if (expected == std::end(kExpected) || (expected->kinds & description.kinds) == 0)
    {
        Fail(std::string(kClasses[static_cast<std::size_t>(description.group)]) + "::" + description.name +
             " returned " + std::to_string(result));
    }
    if (m_isCalm)
    {
        SayNow("verifying ", ++m_calmOperations);
        return result;
    }
    if (expected != std::end(kExpected))
    {
        ++m_results[index][static_cast<std::size_t>(expected - std::begin(kExpected))];
    }
    SayNow("progress ", ++m_operations);
    return result;
}

void Tally::SayNow(const char* what, std::uint64_t done) const
{
    if (done % static_cast<std::uint64_t>(m_progressStep) == 0)
    {
        Say(what + std::to_string(done));
    }
}

void Tally::Fail(const std::string& what)
{
    constexpr std::uint64_t mostShown = 50;
    if (++m_failures <= mostShown)
    {
        Say("FAILED: " + what);
    }
}

void Tally::Print()
{
    static_assert(std::size(kExpected) <= kResults);
    Say("\n| class | operation | done | succeeded | other results |\n|---|---|---:|---:|---|");
    std::uint64_t byClass[std::size(kClasses)] = {};
    for (std::size_t i = 0; i < kOperations; ++i)
    {
        std::uint64_t all = 0;
        std::uint64_t succeeded = 0;
        std::string others;
        for (std::size_t j = 0; j < std::size(kExpected); ++j)
        {
            const std::uint64_t count = m_results[i][j];
            all += count;
            if (IsSuccess(kExpected[j].result))
            {
                succeeded += count;
            }
            else if (count != 0)
            {
                others +=
                    (others.empty() ? "" : ", ") + std::to_string(kExpected[j].result) + ": " + std::to_string(count);
            }
        }
        const char* const group = kClasses[static_cast<std::size_t>(kDescriptions[i].group)];
        Say(std::string("| ") + group + " | " + kDescriptions[i].name + " | " + std::to_string(all) + " | " +
            std::to_string(succeeded) + " | " + others + " |");
        byClass[static_cast<std::size_t>(kDescriptions[i].group)] += all;
        if (all == 0)
        {
            Fail(std::string(group) + "::" + kDescriptions[i].name + " never occurred");
        }
    }
    Say("\n| class | operations |\n|---|---:|");
    for (std::size_t i = 0; i < std::size(kClasses); ++i)
    {
        Say(std::string("| ") + kClasses[i] + " | " + std::to_string(byClass[i]) + " |");
    }
    Say("| in all | " + std::to_string(m_operations) + " |");
    Say("| further ones without faults, to verify | " + std::to_string(m_calmOperations) + " |");
    Say("| downloads that ended early and were right as far as they went | " + std::to_string(m_short) + " |");
}

void Say(const std::string& line)
{
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

} // namespace quorvex::soak
