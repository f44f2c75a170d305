#include "Grammar.h"
#include "SearchCommands.h"
#include "SearchForm.h"

#include <charconv>

namespace quorvex::console
{
namespace
{

constexpr Service kSearch{L"QUORVEX_SEARCH", "http://127.0.0.1:8080/search", true};

/// Writes the number as the parser reads it, which takes a leading zero for another base and no digits for a zero.
std::string ComplaintAboutStatus(std::string& text)
{
    int status = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, status);
    if (error != std::errc() || rest != end)
        return "a status is a whole number of 32 bits";
    text = std::to_string(status);
    return {};
}

void AddApp(CLI::App& app, Options& options)
{
    app.add_option("app", options.app, "The application, such as im")
        ->required()
        ->type_name("APP")
        ->check(CLI::Validator(ComplaintAboutApp, ""));
}

CLI::Option* AddFields(CLI::App& app, Options& options, const std::string& description)
{
    return app.add_option("fields", options.fields, description)
        ->type_name("NAME=VALUE")
        ->check(CLI::Validator(ComplaintAboutField, ""));
}

void AddConditions(CLI::App& app, Options& options)
{
    AddApp(app, options);
    AddFields(app, options, "What a user must have, all of it: a value, or for numbers a range such as age=20-30");
}

} // namespace

void AddSearchCommands(CLI::App& app, Invocation& invocation)
{
    const CommandGroup search(app, invocation, kSearch, "search", "Who is online, and what they tell about themselves");
    Options& options = search.Values();
    search.App()
        .add_option("--accounts", options.accounts,
                    "Address of the account system, which opens a session for --user or --ticket;\n"
                    "by default /object on the server of the search")
        ->type_name("URL");

    search.Add("login", "Log in, and show the session", SearchLoginCommand,
               "  quorvex search login --user ann --password secret\n"
               "  quorvex search login --session 5f1c\n"
               "  quorvex search login --user ann --password secret --accounts http://disk.example/object\n");

    CLI::App& status = search.Add("status", "Report this user's status in an application", SearchStatusCommand,
                                  "  quorvex search status im 1 --session 5f1c\n"
                                  "  quorvex search status im 0 --session 5f1c\n");
    AddApp(status, options);
    status.add_option("number", options.status, "The application's number for the status; 0 is offline")
        ->required()
        ->type_name("NUMBER")
        ->transform(CLI::Validator(ComplaintAboutStatus, ""));

    CLI::App& update = search.Add("update", "Set values of this user that others can search for", SearchUpdateCommand,
                                  "  quorvex search update im age=27 city=Paris --session 5f1c\n"
                                  "  quorvex search update im \"motto=to be or not to be\" --session 5f1c\n");
    AddApp(update, options);
    AddFields(update, options, "A value under its name; an empty one is a value too")->required();

    AddConditions(search.Add("find", "List the ids of the users who are online in an application", SearchFindCommand,
                             "  quorvex search find im --session 5f1c\n"
                             "  quorvex search find im age=20-30 city=Paris --session 5f1c\n"),
                  options);
    AddConditions(search.Add("count", "Count the users who are online in an application", SearchCountCommand,
                             "  quorvex search count im --session 5f1c\n"
                             "  quorvex search count im age=20-30 --json --session 5f1c\n"),
                  options);
}

} // namespace quorvex::console
