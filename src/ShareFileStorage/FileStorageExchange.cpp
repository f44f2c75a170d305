#include "FileStorageExchange.h"

namespace quorvex
{

int CFileStorage::Exchange::SendLogin(const ObjectPath& path) const
{
    if (const int result = CheckConnection(); result != Result::Ok)
    {
        return result;
    }
    std::string reply;
    const int result = Helper().RequestGet(path.c_str(), reply);
    return result == Result::Ok ? ReadLogin(reply, Login()) : result;
}

} // namespace quorvex
