#include "wire/Client.h"

#include <quorvex/OnlineUserSearch.h>

#include <functional>
#include <map>

namespace wire
{
namespace
{

/// Opens what is protected.
class OpenSearch : public quorvex::COnlineUserSearch
{
public:
    using COnlineUserSearch::ClientLoginWithSession;
    using COnlineUserSearch::ClientRelogin;
    using COnlineUserSearch::COnlineUserSearch;
};

using Operation = std::function<std::string(OpenSearch&, Arguments&)>;

const std::map<std::string, Operation>& operations()
{
    static const std::map<std::string, Operation> all{
        {"ClientLogin", [](auto& search, auto& a) { return shown(search.ClientLogin(a.text(0))); }},
        {"ClientLoginWithSession",
         [](auto& search, auto& a) { return shown(search.ClientLoginWithSession(a.text(0))); }},
        {"ClientRelogin", [](auto& search, auto&) { return shown(search.ClientRelogin()); }},
        {"ClientLogout", [](auto& search, auto&) { return shown(search.ClientLogout()); }},
        {"GetLastErrMsg", [](auto& search, auto&) { return shown(search.GetLastErrMsg()); }},
        {"UserReportStatus",
         [](auto& search, auto& a) { return shown(search.UserReportStatus(a.bytes(0), a.template number<int>(1))); }},
        {"UserUpdateAppInfo",
         [](auto& search, auto& a) { return shown(search.UserUpdateAppInfo(a.bytes(0), a.texts(1))); }},
        {"UserUpdateInfo", [](auto& search, auto& a) { return shown(search.UserUpdateInfo(a.bytes(0))); }},
        {"QueryByCondition",
         [](auto& search, auto& a) {
             return shown(search.QueryByCondition(a.bytes(0), a.ids(1), a.template number<unsigned>(2),
                                                  a.template out<unsigned>(3)));
         }},
        {"QueryByAppCondition",
         [](auto& search, auto& a) {
             return shown(search.QueryByAppCondition(a.bytes(0), a.texts(1), a.template number<int>(2), a.ids(3),
                                                     a.template number<unsigned>(4), a.template out<unsigned>(5)));
         }},
        {"QueryCountByConditionString",
         [](auto& search, auto& a) {
             return shown(search.QueryCountByConditionString(a.bytes(0), a.template out<int>(1)));
         }},
        {"QueryCountByConditionVector",
         [](auto& search, auto& a) {
             return shown(search.QueryCountByConditionVector(a.bytes(0), a.texts(1), a.template out<int>(2)));
         }},
    };
    return all;
}

class SearchClient : public Client
{
public:
    explicit SearchClient(const Arguments& a) : m_search(a.count() > 0 ? a.text(0) : nullptr) {}

    std::string call(const std::string& operation, Arguments& arguments) override
    {
        const auto found = operations().find(operation);
        if (found == operations().end())
            throw CaseError("unknown operation " + operation);
        return found->second(m_search, arguments);
    }

private:
    OpenSearch m_search;
};

} // namespace

std::unique_ptr<Client> makeSearch(const Arguments& arguments)
{
    return std::make_unique<SearchClient>(arguments);
}

} // namespace wire
