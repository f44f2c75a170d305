#include <quorvex/NetDisk.h>

#include "../NoThrow.h"
#include "NetDiskExchange.h"

namespace quorvex::netdisk
{

int CNetDisk::CapacityInfo(unsigned long long& totalSpace, unsigned long long& usedSpace,
                           unsigned long& maxFileSize) const
{
    return NoThrow(L"CNetDisk::CapacityInfo()", [&]() -> int {
        LOG_TRACE(L"CNetDisk::CapacityInfo()");
        std::string reply;
        if (const int result = Exchange{*this}.SendWithRelogin(
                RetryOn{500, 404}, reply, [&] { return m_pHttpHelper->RequestGet(L"capacity/info", reply); });
            result != Result::Ok)
        {
            return result;
        }
        std::int64_t total = 0;
        std::int64_t used = 0;
        std::uint32_t maximum = 0;
        if (const int result = CNetDiskJsonHelper().Capacity(reply, total, used, maximum); result != Result::Ok)
        {
            return result;
        }
        totalSpace = static_cast<unsigned long long>(total);
        usedSpace = static_cast<unsigned long long>(used);
        maxFileSize = maximum;
        return Result::Ok;
    });
}

} // namespace quorvex::netdisk
