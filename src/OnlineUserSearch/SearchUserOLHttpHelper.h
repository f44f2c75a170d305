#pragma once

#include "../HttpHelper.h"

#include <string>

namespace quorvex
{

struct ResponseAttributes;

/// The online-user search's connection: the two plain requests, with the service's own response reader.
class CSearchUserOLHttpHelper : public CHttpHelper
{
public:
    using CHttpHelper::CHttpHelper;

    /// Reads a received response.
    /// @param response cleared, then filled with the body; what was read before a failure stays in it
    /// @return 0, -107, -130, -131, -132, a zlib code, the status of a refused request, or 1 for a body of another
    ///         length than announced
    int GetResponse(Platform::Request& request, std::string& response) override;

private:
    static int GetResponseAttribute(const Platform::Request& request, ResponseAttributes& attributes);
};

} // namespace quorvex
