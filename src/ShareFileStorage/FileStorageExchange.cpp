#include "FileStorageExchange.h"

#include "../JsonHelper.h"
#include "SFSJsonHelper.h"

namespace quorvex
{

int CFileStorage::Exchange::SendLogin(const ObjectPath& path) const
{
    if (const int result = CheckConnection(); result != Result::Ok)
    {
        return result;
    }
    std::string reply;
    if (const int result = Helper().RequestGet(path.c_str(), reply); result != Result::Ok)
    {
        return result;
    }
    CSFSJsonHelper helper;
    int code = kNoCode;
    const char* uid = nullptr;
    const char* sid = nullptr;
    const char* errorinfo = nullptr;
    const char* failure = nullptr;
    if (const int result = helper.ParseLoginResponse(reply, code, uid, sid, errorinfo, failure); result != Result::Ok)
    {
        LOG_ERROR(failure);
        return result;
    }
    if (code != kCodeOk)
    {
        return RefusedBy(code, errorinfo);
    }
    auto uidCopy = CopyText(uid);
    storage.m_pszSid = CopyText(sid);
    storage.m_pszUid = std::move(uidCopy);
    storage.m_bNeedLogin = false;
    return Result::Ok;
}

} // namespace quorvex
