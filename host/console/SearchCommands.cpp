#include "SearchCommands.h"

#include "AccountSession.h"
#include "Failure.h"
#include "SearchForm.h"
#include "SearchPages.h"
#include "Session.h"
#include "Text.h"

#include <quorvex/OnlineUserSearch.h>

#include <memory>

namespace quorvex::console
{
namespace
{

/// The module puts the session into a path of 767 characters, behind "check.php?s=".
constexpr std::size_t kSessionRoom = 767 - 12;

/// More than services answer with at a time. Whoever does not fit is on the next page.
constexpr unsigned kPageRoom = 16384;

std::unique_ptr<COnlineUserSearch> LogInWith(const AccountSession& session, const std::string& server)
{
    const std::wstring text = QueryEscaped(session.text);
    CheckThatRequestHolds({text}, kSessionRoom);
    auto search = std::make_unique<COnlineUserSearch>(Wide(server).c_str());
    Check(search->ClientLogin(text.c_str()), "cannot log in to " + server);
    return search;
}

std::unique_ptr<COnlineUserSearch> LogInToSearch(const Options& options)
{
    return LogInWith(OpenAccountSession(options), options.server);
}

/// What the options say of the application, fit for a request.
std::vector<std::string> FieldsOf(const Options& options)
{
    std::vector<std::string> fields = NamesAndValues(options.fields);
    CheckThatFormHolds(options.app, fields);
    return fields;
}

Json::Value ToJson(const std::vector<std::string>& namesAndValues)
{
    Json::Value array(Json::arrayValue);
    for (std::size_t i = 0; i + 1 < namesAndValues.size(); i += 2)
    {
        Json::Value field;
        field["name"] = namesAndValues[i];
        field["value"] = namesAndValues[i + 1];
        array.append(field);
    }
    return array;
}

std::vector<unsigned> FindUsers(const COnlineUserSearch& search, const std::string& app,
                                const std::vector<std::string>& conditions)
{
    return ReadAllPages([&](int skip) {
        std::vector<unsigned> page(kPageRoom);
        unsigned count = 0;
        Check(search.QueryByAppCondition(app.c_str(), conditions, skip, page.data(), kPageRoom, count),
              "cannot search for users of " + app);
        page.resize(count);
        return page;
    });
}

} // namespace

Report SearchLoginCommand(const Options& options)
{
    const AccountSession session = OpenAccountSession(options);
    LogInWith(session, options.server);
    Report report;
    report.Add("server", options.server);
    report.Add("login", LoginMethod(options));
    report.Add("session", session.text);
    report.Add("uid", session.uid ? Json::Value(*session.uid) : Json::Value(),
               session.uid ? std::to_string(*session.uid) : "not told");
    return report;
}

Report SearchStatusCommand(const Options& options)
{
    const auto search = LogInToSearch(options);
    Check(search->UserReportStatus(options.app.c_str(), options.status), "cannot report the status to " + options.app);
    Report report;
    report.Add("app", options.app);
    report.Add("status", options.status, std::to_string(options.status));
    return report;
}

Report SearchUpdateCommand(const Options& options)
{
    const std::vector<std::string> values = FieldsOf(options);
    const auto search = LogInToSearch(options);
    Check(search->UserUpdateAppInfo(options.app.c_str(), values), "cannot set the values for " + options.app);
    Report report;
    report.AddData("app", options.app);
    report.AddData("values", ToJson(values));
    for (const std::string& each : options.fields)
        report.AddText("set  " + Printable(each) + '\n');
    return report;
}

Report SearchFindCommand(const Options& options)
{
    const std::vector<std::string> conditions = FieldsOf(options);
    const auto search = LogInToSearch(options);
    const std::vector<unsigned> users = FindUsers(*search, options.app, conditions);
    Json::Value array(Json::arrayValue);
    std::string lines;
    for (const unsigned each : users)
    {
        array.append(each);
        lines += std::to_string(each) + '\n';
    }
    Report report;
    report.AddData("app", options.app);
    report.AddData("conditions", ToJson(conditions));
    report.AddData("users", array);
    report.AddText(users.empty() ? "there are none\n" : lines);
    return report;
}

Report SearchCountCommand(const Options& options)
{
    const std::vector<std::string> conditions = FieldsOf(options);
    const auto search = LogInToSearch(options);
    int count = 0;
    Check(search->QueryCountByConditionVector(options.app.c_str(), conditions, count),
          "cannot count the users of " + options.app);
    Report report;
    report.AddData("app", options.app);
    report.AddData("conditions", ToJson(conditions));
    report.Add("count", count, std::to_string(count));
    return report;
}

} // namespace quorvex::console
