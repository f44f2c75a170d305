#include "DepotForm.h"

#include "../ChecksumHelper.h"
#include "../CommonUtil.h"
#include "../Platform/File.h"

#include <cstdint>
#include <string>

namespace quorvex
{

ObjectPath DepotPath(const wchar_t* uid, const wchar_t* key)
{
    ObjectPath path;
    path << L"ofs/down.php?uid=" << uid << L"&k=" << key;
    return path;
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
