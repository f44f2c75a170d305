#include "SFSReplies.h"

#include "../ChecksumHelper.h"
#include "../CommonUtil.h"
#include "../JsonHelper.h"
#include "../Platform/File.h"
#include "SFSJsonHelper.h"

#include <quorvex/Results.h>

#include <cstdint>

namespace quorvex
{

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

DepotForm CreateForm(const wchar_t* folder, const wchar_t* fileName)
{
    const std::wstring path =
        std::wstring(folder != nullptr ? folder : L"") + L"\\" + (fileName != nullptr ? fileName : L"");
    NarrowText<128, Platform::CodePage::Oem> name;
    name << fileName;
    const std::string md5 = StreamedFileMd5(WideToUtf8(path));
    std::uint64_t size = 0;
    Platform::FileSize(path.c_str(), size);

    // The SHA-1 has never been computed; the server knows the placeholder.
    DepotForm form;
    form << "n=" << name.view() << "&s=application/octet-stream&m=" << md5
         << "&sh=0000000000000000000000000000000000000000&sz=" << static_cast<std::int32_t>(size);
    return form;
}

DepotForm FinishForm(const wchar_t* key)
{
    DepotForm form;
    form << "k=" << key;
    return form;
}

} // namespace quorvex
