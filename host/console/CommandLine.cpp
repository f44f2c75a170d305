#include "CommandLine.h"

#include "Environment.h"
#include "ExitStatus.h"
#include "Grammar.h"
#include "Session.h"

#include <algorithm>
#include <sstream>

namespace quorvex::console
{
namespace
{

std::string ComplaintAboutTicket(const std::string& ticket)
{
    return ticket.find(':') != std::string::npos ? std::string() : "a ticket is written as BLOWFISH:TICKET";
}

class Grammar
{
public:
    Grammar()
    {
        m_app.require_subcommand(1);
        m_app.fallthrough();
        // A path such as /home/me/file is no option.
        m_app.allow_windows_style_options(false);
        m_app.set_version_flag("--version", "quorvex " QUORVEX_VERSION);
        m_app.footer("Every option can also stand behind the command. Where --server is not given, QUORVEX_SERVER\n"
                     "in the environment serves for netdisk and doctor, QUORVEX_STORAGE for storage and depot, and\n"
                     "QUORVEX_SEARCH for search; where --password is not given, QUORVEX_PASSWORD.\n"
                     "Exit status: 0 done, 1 failed, 2 the command line is wrong, 130 interrupted by Ctrl+C.\n\n"
                     "Examples:\n"
                     "  quorvex netdisk put report.pdf --user ann --password secret\n"
                     "  quorvex doctor --server http://disk.example/object --session 5f1c");
        AddServerOptions();
        AddOutputOptions();
        AddNetDiskCommands(m_app, m_invocation);
        AddStorageCommands(m_app, m_invocation);
        AddDepotCommands(m_app, m_invocation);
        AddSearchCommands(m_app, m_invocation);
        AddLocalCommands(m_app, m_invocation);
    }

    std::vector<CommandInfo> Commands() const
    {
        std::vector<CommandInfo> commands;
        Describe(m_app, commands);
        return commands;
    }

    std::optional<Invocation> Parse(std::vector<std::string> arguments, Answer& answer)
    {
        // CLI11 takes its arguments from the back.
        std::reverse(arguments.begin(), arguments.end());
        try
        {
            m_app.parse(std::move(arguments));
            TakeDefaults();
            CheckLogin();
            return m_invocation;
        }
        catch (const CLI::ParseError& error)
        {
            std::ostringstream out;
            std::ostringstream complaint;
            const bool isAnswer = m_app.exit(error, out, complaint) == 0;
            answer = {isAnswer ? ExitStatus::kDone : ExitStatus::kUsage, isAnswer ? out.str() : complaint.str()};
            return std::nullopt;
        }
    }

private:
    void AddServerOptions()
    {
        Options& options = m_invocation.options;
        m_app
            .add_option("--server", options.server,
                        "Address of the service; by default http://127.0.0.1:8080/object for netdisk,\n"
                        "http://127.0.0.1:8080/storage for storage and depot, and\n"
                        "http://127.0.0.1:8080/search for search")
            ->type_name("URL")
            ->group("Server");
        auto* const session = m_app.add_option("--session", options.session, "Log in with a session")->type_name("S");
        auto* const user = m_app.add_option("--user", options.user, "Log in with this account ...")->type_name("U");
        auto* const password =
            m_app.add_option("--password", options.password, "... and this password")->type_name("P")->needs(user);
        auto* const ticket =
            m_app.add_option("--ticket", options.ticket, "Log in with a passport ticket, written BLOWFISH:TICKET")
                ->type_name("B:T")
                ->check(CLI::Validator(ComplaintAboutTicket, ""));
        session->excludes(user)->excludes(ticket);
        user->excludes(ticket);
        for (auto* const option : {session, user, password, ticket})
            option->group("Login, one of");
    }

    void AddOutputOptions()
    {
        Options& options = m_invocation.options;
        m_app.add_flag("--json", options.json, "Print one JSON object, also for a failure");
        m_app.add_flag("-q,--quiet", options.quiet, "Do not show progress");
        AddChoice(m_app, "--log", options.logLevel, "What to log", {"trace", "debug", "info", "error", "off"});
        m_app.add_option("--log-file", options.logFile, "Append log lines to a file instead of standard error")
            ->type_name("FILE");
    }

    void TakeDefaults()
    {
        Options& options = m_invocation.options;
        if (!options.user.empty() && options.password.empty())
            options.password = FromEnvironment(L"QUORVEX_PASSWORD");
        if (m_invocation.service == nullptr)
            return;
        if (options.server.empty())
            options.server = FromEnvironment(m_invocation.service->variable);
        if (options.server.empty())
            options.server = m_invocation.service->localAddress;
    }

    void CheckLogin() const
    {
        const Options& options = m_invocation.options;
        if (!m_invocation.needsLogin || m_invocation.service == nullptr)
            return;
        const bool takesTickets = m_invocation.service->takesTickets;
        if (LoginMethod(options).empty())
            throw CLI::RequiredError(takesTickets ? "--session, --user with --password, or --ticket"
                                                  : "--session, or --user with --password,");
        if (!takesTickets && !options.ticket.empty())
            throw CLI::ValidationError("--ticket", "the file storage takes no tickets");
        if (!options.user.empty() && options.password.empty())
            throw CLI::RequiredError("--password, or QUORVEX_PASSWORD in the environment,");
    }

    static void Describe(const CLI::App& app, std::vector<CommandInfo>& commands)
    {
        const auto below = app.get_subcommands([](const CLI::App*) { return true; });
        CommandInfo info{WordsOf(app), app.get_description(), !below.empty(), {}, {}};
        for (const CLI::Option* const option : app.get_options())
            (option->nonpositional() ? info.options : info.arguments).push_back(Described(*option));
        commands.push_back(std::move(info));
        for (const CLI::App* const each : below)
            Describe(*each, commands);
    }

    static ArgumentInfo Described(const CLI::Option& option)
    {
        ArgumentInfo info;
        for (const std::string& name : option.get_snames())
            info.names.push_back('-' + name);
        for (const std::string& name : option.get_lnames())
            info.names.push_back("--" + name);
        const bool takesValue = option.get_items_expected_max() > 0;
        info.type = takesValue ? option.get_type_name() : std::string();
        info.choices = ChoicesIn(info.type);
        info.isRepeated = option.get_items_expected_max() > 1;
        return info;
    }

    CLI::App m_app{"Host of the quorvex module for the command line", "quorvex"};
    Invocation m_invocation;
};

} // namespace

std::optional<Invocation> ParseCommandLine(std::vector<std::string> arguments, Answer& answer)
{
    Grammar grammar;
    return grammar.Parse(std::move(arguments), answer);
}

std::vector<CommandInfo> AllCommands()
{
    return Grammar().Commands();
}

} // namespace quorvex::console
