#include "SearchCommands.h"

#include "AccountSession.h"
#include "Failure.h"
#include "SearchForm.h"
#include "SearchPages.h"
#include "Session.h"
#include "Text.h"

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
    CheckLogin({search->ClientLogin(text.c_str()), "ClientLogin"}, server, search->GetLastErrMsg());
    return search;
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
        Check({search.QueryByAppCondition(app.c_str(), conditions, skip, page.data(), kPageRoom, count),
               "QueryByAppCondition"},
              "cannot search for users of " + app);
        page.resize(count);
        return page;
    });
}

/// Whoever a form of the caller's own making finds: one page, for the form says itself whom to skip.
std::vector<unsigned> FindUsers(const COnlineUserSearch& search, const std::string& form)
{
    std::vector<unsigned> users(kPageRoom);
    unsigned count = 0;
    Check({search.QueryByCondition(form.c_str(), users.data(), kPageRoom, count), "QueryByCondition"},
          "cannot search for users");
    users.resize(count);
    return users;
}

/// What has been asked for; either the application and its conditions, or the form.
void AddQuestion(Report& report, const Options& options, const std::vector<std::string>& conditions)
{
    report.AddData("app", options.app.empty() ? Json::Value() : Json::Value(options.app));
    report.AddData("conditions", ToJson(conditions));
    report.AddData("form", options.form.empty() ? Json::Value() : Json::Value(options.form));
}

} // namespace

std::unique_ptr<COnlineUserSearch> LogInToSearch(const Options& options)
{
    return LogInWith(OpenAccountSession(options), options.server);
}

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

Report SearchLogoutCommand(const Options& options)
{
    Check({LogInToSearch(options)->ClientLogout(), "ClientLogout"}, "cannot log out");
    Report report;
    report.Add("server", options.server);
    report.Add("login", LoginMethod(options));
    return report;
}

Report SearchStatusCommand(const Options& options)
{
    const auto search = LogInToSearch(options);
    Check({search->UserReportStatus(options.app.c_str(), options.status), "UserReportStatus"},
          "cannot report the status to " + options.app);
    Report report;
    report.Add("app", options.app);
    report.Add("status", options.status, std::to_string(options.status));
    return report;
}

Report SearchUpdateCommand(const Options& options)
{
    const std::vector<std::string> values = FieldsOf(options);
    const auto search = LogInToSearch(options);
    Check({search->UserUpdateAppInfo(options.app.c_str(), values), "UserUpdateAppInfo"},
          "cannot set the values for " + options.app);
    Report report;
    report.AddData("app", options.app);
    report.AddData("values", ToJson(values));
    for (const std::string& each : options.fields)
        report.AddText("set  " + Printable(each) + '\n');
    return report;
}

Report SearchProfileCommand(const Options& options)
{
    const std::vector<std::string> values = FieldsOf(options);
    const std::string form = options.form.empty() ? FormOf(values) : options.form;
    const auto search = LogInToSearch(options);
    Check({search->UserUpdateInfo(form.c_str()), "UserUpdateInfo"}, "cannot set the values of the profile");
    Report report;
    report.AddData("values", ToJson(values));
    report.Add("form", form, Printable(form));
    return report;
}

Report SearchFindCommand(const Options& options)
{
    const std::vector<std::string> conditions = FieldsOf(options);
    const auto search = LogInToSearch(options);
    const std::vector<unsigned> users =
        options.form.empty() ? FindUsers(*search, options.app, conditions) : FindUsers(*search, options.form);
    Json::Value array(Json::arrayValue);
    std::string lines;
    for (const unsigned each : users)
    {
        array.append(each);
        lines += std::to_string(each) + '\n';
    }
    Report report;
    AddQuestion(report, options, conditions);
    report.AddData("users", array);
    report.AddText(users.empty() ? "there are none\n" : lines);
    return report;
}

Report SearchCountCommand(const Options& options)
{
    const std::vector<std::string> conditions = FieldsOf(options);
    const auto search = LogInToSearch(options);
    int count = 0;
    Check(options.form.empty() ? Outcome(search->QueryCountByConditionVector(options.app.c_str(), conditions, count),
                                         "QueryCountByConditionVector")
                               : Outcome(search->QueryCountByConditionString(options.form.c_str(), count),
                                         "QueryCountByConditionString"),
          "cannot count the users" + (options.app.empty() ? "" : " of " + options.app));
    Report report;
    AddQuestion(report, options, conditions);
    report.Add("count", count, std::to_string(count));
    return report;
}

} // namespace quorvex::console
