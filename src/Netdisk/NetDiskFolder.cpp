#include <quorvex/NetDisk.h>

#include "../NoThrow.h"
#include "NetDiskExchange.h"
#include "NetDiskUtf8Records.h"

namespace quorvex::netdisk
{

int CNetDisk::FolderAdd(const wchar_t* folderName, const wchar_t* parentFolderId, wchar_t* folderIdOut,
                        unsigned long folderIdOutSize) const
{
    return NoThrow(L"CNetDisk::FolderAdd()", [&]() -> int {
        if (folderName == nullptr)
        {
            LOG_ERROR(L"CNetDisk::FolderAdd() folder name is not correct");
            return Result::ArgumentMissing;
        }
        LOG_TRACE(L"CNetDisk::FolderAdd(lpszFolderName=" << folderName << L",lpszParentFoID=" << parentFolderId
                                                         << L")");
        JsonBody<256> body;
        body << "{\"name\":\"" << folderName << "\",\"parent_fo_id\":\"" << parentFolderId << "\"}";

        std::string reply;
        const int result = Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestPost(L"folder/add", body.c_str(), reply); });
        if (result != Result::Ok)
        {
            return result;
        }
        CNetDiskJsonHelper helper;
        const char* folderId = nullptr;
        if (const int parsed = helper.FolderCreatedReply(reply, folderId); parsed != Result::Ok)
        {
            return parsed;
        }
        CopyToWide(folderId, folderIdOut, folderIdOutSize);
        return Result::Ok;
    });
}

int CNetDisk::FolderModi(const wchar_t* folderId, const wchar_t* folderName, const wchar_t* parentFolderId) const
{
    return NoThrow(L"CNetDisk::FolderModi()", [&]() -> int {
        if (folderId == nullptr)
        {
            LOG_ERROR(L"CNetDisk::FolderModi() folder ID is not correct");
            return Result::FolderIdMissing;
        }
        if (folderName == nullptr && parentFolderId == nullptr)
        {
            LOG_ERROR(L"CNetDisk::FolderModi()  foldername/parent_fo_id  is not correct");
            return Result::FolderChangeMissing;
        }
        LOG_TRACE(L"CNetDisk::FolderModi(lpszFoID=" << folderId << L",lpszFolderName=" << folderName
                                                    << L",lpszParentFoID=" << parentFolderId << L")");
        JsonBody<512> body;
        body << "{\"fo_id\":\"" << folderId << "\",\"name\":\"" << folderName << "\",\"parent_fo_id\":\""
             << parentFolderId << "\"}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestPost(L"folder/modi", body.c_str(), reply); });
    });
}

int CNetDisk::FolderDel(const wchar_t* folderId) const
{
    return NoThrow(L"CNetDisk::FolderDel()", [&]() -> int {
        if (folderId == nullptr)
        {
            LOG_ERROR(L"CNetDisk::FolderDel() folder ID is not correct");
            return Result::FolderIdMissing;
        }
        LOG_TRACE(L"CNetDisk::FolderDel(lpszFoID=" << folderId << L")");
        JsonBody<256> body;
        body << "{\"fo_id\":\"" << folderId << "\"}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestPost(L"folder/del", body.c_str(), reply); });
    });
}

int CNetDisk::FolderDel4ever(const wchar_t* folderId) const
{
    return NoThrow(L"CNetDisk::FolderDel4ever()", [&]() -> int {
        if (folderId == nullptr)
        {
            LOG_ERROR(L"CNetDisk::FolderDel4ever() folder ID is not correct");
            return Result::FolderIdMissing;
        }
        LOG_TRACE(L"CNetDisk::FolderDel4ever(lpszFoID=" << folderId << L")");
        JsonBody<256> body;
        body << "{\"fo_id\":\"" << folderId << "\"}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(RetryOn{500, 404}, reply, [&] {
            return m_pHttpHelper->RequestPost(L"folder/del4ever", body.c_str(), reply);
        });
    });
}

int CNetDisk::FolderList(const wchar_t* folderId, std::vector<_FileInfo>& files,
                         std::vector<_FolderInfo>& folders) const
{
    return NoThrow(L"CNetDisk::FolderList()", [&]() -> int {
        if (folderId == nullptr)
        {
            LOG_ERROR(L"CNetDisk::FolderList() folder ID is not correct");
            return Result::FolderIdMissing;
        }
        LOG_TRACE(L"CNetDisk::FolderList(lpszFoID=" << folderId << L")");
        ObjectPath path;
        path << L"folder/list?fo_id=" << folderId;

        std::string reply;
        const int result = Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestGet(path.c_str(), reply); });
        return result != Result::Ok ? result : CNetDiskJsonHelper().FolderListing(reply, files, folders);
    });
}

int CNetDisk::FolderList(const wchar_t* folderId, std::vector<_FileInfoUTF8>& files,
                         std::vector<_FolderInfoUTF8>& folders) const
{
    return NoThrow(L"CNetDisk::FolderList()", [&]() -> int {
        std::vector<_FileInfo> wideFiles;
        std::vector<_FolderInfo> wideFolders;
        const int result = FolderList(folderId, wideFiles, wideFolders);
        if (result == Result::Ok)
        {
            // Room for both first, so that either both come or none.
            folders.reserve(folders.size() + wideFolders.size());
            AppendUtf8(wideFiles, files);
            AppendUtf8(wideFolders, folders);
        }
        return result;
    });
}

} // namespace quorvex::netdisk
