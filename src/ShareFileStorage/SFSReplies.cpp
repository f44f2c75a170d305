#include "SFSReplies.h"

#include "../CommonUtil.h"
#include "../JsonHelper.h"
#include "SFSJsonHelper.h"

#include <quorvex/Results.h>

namespace quorvex
{

namespace
{

std::string_view TextOf(const std::unique_ptr<char[]>& text)
{
    return text != nullptr ? std::string_view(text.get()) : std::string_view();
}

} // namespace

int ReadResult(const std::string& reply)
{
    CSFSJsonHelper helper;
    int code = kNoCode;
    const char* errorinfo = nullptr;
    const char* failure = nullptr;
    if (const int result = helper.ParseResult(reply, code, errorinfo, failure); result != Result::Ok)
    {
        return result;
    }
    return code == kCodeOk ? Result::Ok : RefusedBy(code, errorinfo);
}

int ReadLogin(const std::string& reply, LoginState state)
{
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
    state.sid = CopyText(sid);
    state.uid = std::move(uidCopy);
    state.needLogin = false;
    return Result::Ok;
}

int ReadLogout(const std::string& reply, LoginState state)
{
    CSFSJsonHelper helper;
    int code = kNoCode;
    const char* uid = nullptr;
    const char* sid = nullptr;
    const char* errorinfo = nullptr;
    const char* failure = nullptr;
    if (const int result = helper.ParseLoginResponse(reply, code, uid, sid, errorinfo, failure); result != Result::Ok)
    {
        return result;
    }
    if (uid != TextOf(state.uid))
    {
        LOG_ERROR(L"uid not match");
    }
    if (sid != TextOf(state.sid))
    {
        LOG_ERROR(L"sid not match");
    }
    if (code != kCodeOk)
    {
        return RefusedBy(code, errorinfo);
    }
    state.needLogin = true;
    return Result::Ok;
}

int CheckPictureName(int result, std::wstring_view key, const wchar_t* fileName)
{
    const std::wstring_view localName = fileName != nullptr ? fileName : L"";
    if (result == Result::Ok && !key.empty() && key != localName)
    {
        LOG_ERROR(L"PictureUpload() server file name not the same as local file!!!");
        return Result::NameMismatch;
    }
    return result;
}

int ReadUpload(const std::string& reply, wchar_t* keyOut, unsigned long keyOutLen)
{
    CSFSJsonHelper helper;
    int code = kNoCode;
    const char* fkey = nullptr;
    unsigned int fsize = 0;
    const char* errorinfo = nullptr;
    const char* failure = nullptr;
    if (const int result = helper.ParseUploadResponse(reply, code, fkey, fsize, errorinfo, failure);
        result != Result::Ok)
    {
        return result;
    }
    static constexpr int kAlreadyThere = 409;
    if (code != kCodeOk && code != kAlreadyThere)
    {
        return RefusedBy(code, errorinfo);
    }
    CopyToWide(fkey, keyOut, keyOutLen, Platform::CodePage::Ansi);
    return Result::Ok;
}

} // namespace quorvex
