#pragma once

#include <quorvex/NetDiskRecords.h>

#include <json/value.h>

#include <cstdint>
#include <string>
#include <vector>

namespace quorvex::netdisk
{

/// Reads one reply of the network disk. Each function parses a body and returns 0, or 1 for a body that cannot be
/// parsed, lacks a key or holds a value of the wrong type; then the out-parameters are as they were, while records
/// that were appended before stay. The texts handed out live as long as this object.
class CNetDiskJsonHelper
{
public:
    /// Writes what a refused request's body says into the log.
    /// @param code the request's result
    void ErrorReply(int code, const std::string& body);

    int LoginReply(const std::string& body, int& uapUid, const char*& uapSid, const char*& userCenterLogin);
    int SessionCheckReply(const std::string& body, int& uapUid);

    /// @param fileKeyOut     room for twice fileKeyOutSize characters
    int UploadReply(const std::string& body, wchar_t* fileKeyOut, unsigned long fileKeyOutSize, int& fsize, int& cflag);
    int BlockReply(const std::string& body, const char*& fkey, int& fsize);

    int FolderCreatedReply(const std::string& body, const char*& folderId);
    int FolderListing(const std::string& body, std::vector<_FileInfo>& files, std::vector<_FolderInfo>& folders);

    int PcodeCreatedReply(const std::string& body, const char*& pcode);
    int PcodeListing(const std::string& body, std::vector<_PcodeInfo>& pcodes);
    int PcodeContents(const std::string& body, std::vector<_FileInfo>& files);

    int Capacity(const std::string& body, std::int64_t& totalSpace, std::int64_t& usedSpace,
                 std::uint32_t& maxFileSize);

    /// Elements that are no objects, or lack "rs_id", are left out.
    int RecyclebinListing(const std::string& body, std::vector<_RItemInfo>& items);

private:
    template <class Read>
    int ReadReply(const std::string& body, Read read);

    Json::Value m_root;
};

} // namespace quorvex::netdisk
