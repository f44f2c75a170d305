#pragma once

#include "common/BlockFiles.h"
#include "common/ResultRoutes.h"
#include "common/Sessions.h"
#include "storage/Depot.h"

#include <cstdint>
#include <functional>

namespace quorvex::services::storage
{

// The requests of the large-file depot.
class DepotService
{
public:
    DepotService(Sessions& sessions, Space& space, Depot& depot, BlockFiles& blocks);

    void AddRoutes(ResultRoutes& routes, HttpServer& server);

    // Files whose time ends on demand.
    void AddAdminRoutes(HttpServer& server);

private:
    std::int64_t Enter(const httplib::Request& request);
    void AddKeyRoute(ResultRoutes& routes, const std::string& path,
                     void (Depot::*operation)(std::int64_t, const std::string&));
    void Create(std::int64_t account, const httplib::ContentReader& read, Json::Value& answer);
    void Finish(std::int64_t account, const httplib::ContentReader& read);
    void Download(const httplib::Request& request, httplib::Response& response);
    void List(std::int64_t account, Json::Value& answer);
    void ShowSpace(std::int64_t account, Json::Value& answer);

    Sessions& sessions_;
    Space& space_;
    Depot& depot_;
    BlockFiles& blocks_;
};

} // namespace quorvex::services::storage
