#include <quorvex/NetDisk.h>

#include "../NoThrow.h"
#include "NetDiskExchange.h"
#include "NetDiskUtf8Records.h"

#include <new>

namespace quorvex::netdisk
{

int CNetDisk::RecyclebinList(std::vector<_RItemInfo>& items) const
{
    return NoThrow(L"CNetDisk::RecyclebinList()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::RecyclebinList()");
        std::string reply;
        const int result = Exchange{*this}.SendWithRelogin(
            RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestGet(L"recyclebin/list", reply); });
        return result != Result::Ok ? result : CNetDiskJsonHelper().RecyclebinListing(reply, items);
    });
}

int CNetDisk::RecyclebinList(std::vector<_RItemInfoUTF8>& items) const
{
    return NoThrow(L"CNetDisk::RecyclebinList()", [&]() -> int {
        std::vector<_RItemInfo> wideItems;
        const int result = RecyclebinList(wideItems);
        if (result == Result::Ok)
        {
            AppendUtf8(wideItems, items);
        }
        return result;
    });
}

int CNetDisk::RecyclebinRecover(const wchar_t* rsId) const
{
    return NoThrow(L"CNetDisk::RecyclebinRecover()", [&]() -> int {
        if (rsId == nullptr)
        {
            LOG_ERROR(L"CNetDisk::RecyclebinRecover() recyclebin item ID is not correct");
            return Result::RecyclebinItemMissing;
        }
        LOG_TRACE(L"CNetDisk::RecyclebinRecover(lpszRSID=" << rsId << L")");
        JsonBody<256> body;
        body << "{\"rs_id\":\"" << rsId << "\"}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(RetryOn{500, 404}, reply, [&] {
            return m_pHttpHelper->RequestPost(L"recyclebin/recover", body.c_str(), reply);
        });
    });
}

int CNetDisk::RecyclebinDel(const wchar_t* rsId) const
{
    return NoThrow(L"CNetDisk::RecyclebinDel()", [&]() -> int {
        if (rsId == nullptr)
        {
            LOG_ERROR(L"CNetDisk::RecyclebinDel() recyclebin item ID is not correct");
            return Result::RecyclebinItemMissing;
        }
        LOG_TRACE(L"CNetDisk::RecyclebinDel(lpszRSID=" << rsId << L")");
        JsonBody<256> body;
        body << "{\"rs_id\":\"" << rsId << "\"}";

        std::string reply;
        return Exchange{*this}.SendWithRelogin(RetryOn{500, 404}, reply, [&] {
            return m_pHttpHelper->RequestPost(L"recyclebin/del", body.c_str(), reply);
        });
    });
}

std::vector<_FileInfo>* CNetDisk::NewFileInfoVector()
{
    return new (std::nothrow) std::vector<_FileInfo>;
}

std::vector<_FolderInfo>* CNetDisk::NewFolderInfoVector()
{
    return new (std::nothrow) std::vector<_FolderInfo>;
}

std::vector<_PcodeInfo>* CNetDisk::NewPcodeInfoVector()
{
    return new (std::nothrow) std::vector<_PcodeInfo>;
}

std::vector<_RItemInfo>* CNetDisk::NewRItemInfoVector()
{
    return new (std::nothrow) std::vector<_RItemInfo>;
}

void CNetDisk::DeleteFileInfoVector(std::vector<_FileInfo>* v)
{
    delete v;
}

void CNetDisk::DeleteFolderInfoVector(std::vector<_FolderInfo>* v)
{
    delete v;
}

void CNetDisk::DeletePcodeInfoVector(std::vector<_PcodeInfo>* v)
{
    delete v;
}

void CNetDisk::DeleteRItemInfoVector(std::vector<_RItemInfo>* v)
{
    delete v;
}

} // namespace quorvex::netdisk
