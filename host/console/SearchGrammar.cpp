#include "Grammar.h"
#include "SearchCommands.h"
#include "SearchForm.h"

#include <charconv>

namespace quorvex::console
{
namespace
{

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

CLI::Option* AddApp(CLI::App& app, Options& options, bool isRequired = true)
{
    return app.add_option("app", options.app, "The application, such as im")
        ->required(isRequired)
        ->type_name("APP")
        ->check(CLI::Validator(ComplaintAboutApp, ""));
}

CLI::Option* AddFields(CLI::App& app, Options& options, const std::string& description)
{
    return app.add_option("fields", options.fields, description)
        ->type_name("NAME=VALUE")
        ->check(CLI::Validator(ComplaintAboutField, ""));
}

/// @param fields what the form stands in the place of
void AddForm(CLI::App& app, Options& options, const std::vector<CLI::Option*>& others)
{
    CLI::Option* const form =
        app.add_option("--form", options.form, "In their place a whole form, which is sent as it is")
            ->type_name("FORM");
    for (CLI::Option* const other : others)
        form->excludes(other);
}

void AddConditions(CLI::App& app, Options& options)
{
    CLI::Option* const application = AddApp(app, options, false);
    CLI::Option* const fields =
        AddFields(app, options, "What a user must have, all of it: a value, or for numbers a range such as age=20-30");
    AddForm(app, options, {application, fields});
}

/// Ends the reading of a command line that gives neither what is needed nor a form in its place.
std::function<void()> NeedsForm(const Options& options, const std::string& name, const std::function<bool()>& isGiven)
{
    return [&options, name, isGiven] {
        if (options.form.empty() && !isGiven())
            throw CLI::RequiredError(name + " or --form");
    };
}

} // namespace

void AddSearchCommands(CLI::App& app, Invocation& invocation)
{
    const CommandGroup search(app, invocation, kSearch, "search", "Who is online, and what they tell about themselves",
                              "  quorvex search find im --user ann --password secret\n");
    Options& options = search.Values();
    search.App()
        .add_option("--accounts", options.accounts,
                    "Address of the account system, which opens a session for --user or --ticket;\n"
                    "by default /object on the server of the search")
        ->type_name("URL");

    search.Add("login", "Log in, and show the session", SearchLoginCommand,
               "  quorvex search login --user ann --password secret\n"
               "  quorvex search login --user ann --password secret --accounts http://disk.example/object\n");
    search.Add("logout", "Log out, and so be offline in all applications", SearchLogoutCommand,
               "  quorvex search logout --session 5f1c\n");

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

    const auto hasFields = [&options] { return !options.fields.empty(); };
    CLI::App& profile =
        search.Add("profile", "Set values of this user's profile, for all applications", SearchProfileCommand,
                   "  quorvex search profile age=27 city=Paris --session 5f1c\n"
                   "  quorvex search profile --form \"age=27&city=Paris\" --session 5f1c\n",
                   NeedsForm(options, "fields", hasFields));
    AddForm(profile, options, {AddFields(profile, options, "A value under its name; an empty one is a value too")});

    const auto hasApp = [&options] { return !options.app.empty(); };
    AddConditions(search.Add("find", "List the ids of the users who are online in an application", SearchFindCommand,
                             "  quorvex search find im age=20-30 city=Paris --session 5f1c\n"
                             "  quorvex search find --form \"app=im&skip=100\" --session 5f1c\n",
                             NeedsForm(options, "app", hasApp)),
                  options);
    AddConditions(search.Add("count", "Count the users who are online in an application", SearchCountCommand,
                             "  quorvex search count im --session 5f1c\n"
                             "  quorvex search count --form \"app=im&age=20-30\" --session 5f1c\n",
                             NeedsForm(options, "app", hasApp)),
                  options);
}

} // namespace quorvex::console
