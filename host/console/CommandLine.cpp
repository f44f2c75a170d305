#include "CommandLine.h"

#include "Session.h"
#include "Text.h"
#include "Times.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include <CLI/CLI.hpp>

namespace quorvex::console
{
namespace
{

constexpr int kUsageExitStatus = 2;
constexpr const char* kLoginHint = "\nServer, login and output are options of every command: see quorvex --help.";

/// An id, key or code becomes a part of an address and of a request, as it is.
std::string ComplaintAboutId(const std::string& id)
{
    const auto isPlain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '_';
    };
    const bool isId = !id.empty() && id.size() <= 32 && std::all_of(id.begin(), id.end(), isPlain);
    return isId ? std::string() : "a key, id or code has 1 to 32 letters, digits, hyphens and underscores";
}

/// Turns a length of time into seconds.
std::string ComplaintAboutSpan(std::string& text)
{
    const auto seconds = ParseSpan(text);
    if (!seconds)
        return "a length of time is written as 90s, 15m, 24h or 7d, and lasts 136 years at most";
    text = std::to_string(*seconds);
    return {};
}

std::string ComplaintAboutTicket(const std::string& ticket)
{
    return ticket.find(':') != std::string::npos ? std::string() : "a ticket is written as BLOWFISH:TICKET";
}

std::string FromEnvironment(const wchar_t* name)
{
    const wchar_t* const value = _wgetenv(name);
    return value != nullptr ? ToUtf8(value) : std::string();
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
        m_app.footer("Examples:\n"
                     "  quorvex netdisk quota --user ann --password secret\n"
                     "  quorvex netdisk put report.pdf --server http://disk.example/object --session 5f1c\n"
                     "Every option can also stand behind the command. QUORVEX_SERVER and QUORVEX_PASSWORD in the\n"
                     "environment serve where --server and --password are not given.\n"
                     "Exit status: 0 done, 1 failed, 2 the command line is wrong.");
        AddServerOptions();
        AddOutputOptions();
        AddCommands();
    }

    std::optional<Invocation> Parse(std::vector<std::string> arguments, Answer& answer)
    {
        // CLI11 takes its arguments from the back.
        std::reverse(arguments.begin(), arguments.end());
        try
        {
            m_app.parse(std::move(arguments));
            TakeEnvironment();
            CheckChange();
            CheckLogin();
            return m_invocation;
        }
        catch (const CLI::ParseError& error)
        {
            std::ostringstream out;
            std::ostringstream complaint;
            const bool isAnswer = m_app.exit(error, out, complaint) == 0;
            answer = {isAnswer ? 0 : kUsageExitStatus, isAnswer ? out.str() : complaint.str()};
            return std::nullopt;
        }
    }

private:
    void AddServerOptions()
    {
        Options& options = m_invocation.options;
        m_server = m_app.add_option("--server", options.server, "Address of the network disk")
                       ->type_name("URL")
                       ->capture_default_str()
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
        m_app.add_option("--log", options.logLevel, "What to log: trace, debug, info, error or off")
            ->type_name("LEVEL")
            ->capture_default_str()
            ->check(CLI::IsMember(std::vector<std::string>{"trace", "debug", "info", "error", "off"}).description(""));
        m_app.add_option("--log-file", options.logFile, "Append log lines to a file instead of standard error")
            ->type_name("FILE");
    }

    CLI::App& AddCommand(const std::string& name, const std::string& description, Command command,
                         const std::string& examples)
    {
        CLI::App* const app = m_netdisk->add_subcommand(name, description);
        app->footer("Examples:\n" + examples + kLoginHint);
        app->callback([this, command] { m_invocation.command = command; });
        return *app;
    }

    void AddCommands()
    {
        m_netdisk = m_app.add_subcommand("netdisk", "The personal network disk");
        m_netdisk->require_subcommand(1);
        AddCommand("login", "Log in, to see whether server and login are right", LoginCommand,
                   "  quorvex netdisk login --user ann --password secret\n"
                   "  quorvex netdisk login --ticket 00ff00ff:8d2e41\n");
        AddTransferCommands();
        AddFileCommands();
        AddFolderCommands();
        AddRecyclebinCommands();
        AddShareCommands();
        AddCommand("quota", "Show the size of the disk and what is used of it", QuotaCommand,
                   "  quorvex netdisk quota --session 5f1c\n"
                   "  quorvex netdisk quota --session 5f1c --json\n");
    }

    void AddTransferCommands()
    {
        CLI::App& put = AddCommand("put", "Upload a file; an interrupted upload goes on where it was", PutCommand,
                                   "  quorvex netdisk put report.pdf --session 5f1c\n"
                                   "  quorvex netdisk put film.mkv --block-size 16MiB --session 5f1c\n"
                                   "  quorvex netdisk put film.mkv --folder 77aa --session 5f1c\n");
        AddFile(put, "The file to upload; less than 4 GiB");
        AddFolderOption(put, "The id of the folder to put it into; the top of the disk by default");
        AddSizes(put, "Files larger than this go block by block");

        CLI::App& get = AddCommand("get", "Download a file; an interrupted download goes on where it was", GetCommand,
                                   "  quorvex netdisk get 0a1b2c3d --session 5f1c\n"
                                   "  quorvex netdisk get 0a1b2c3d --out C:\\Films --session 5f1c\n");
        AddKey(get);
        AddOut(get, "Where to put it; the server's name for it by default");
        AddSizes(get, "Files larger than this come block by block");
    }

    void AddFileCommands()
    {
        Options& options = m_invocation.options;
        AddKey(AddCommand("info", "Show a file's name, size and MD5", InfoCommand,
                          "  quorvex netdisk info 0a1b2c3d --session 5f1c\n"));

        m_move = &AddCommand("mv", "Rename a file or folder, or move it into another folder", MoveCommand,
                             "  quorvex netdisk mv 0a1b2c3d --name summary.pdf --session 5f1c\n"
                             "  quorvex netdisk mv 0a1b2c3d --folder 77aa --session 5f1c\n"
                             "  quorvex netdisk mv --dir 77aa --name Films --folder 0 --session 5f1c\n");
        AddKeyOrFolder(*m_move);
        m_move->add_option("--name", options.name, "Its new name")->type_name("NAME");
        AddFolderOption(*m_move, "The id of its new folder; 0 is the top of the disk");

        CLI::App& remove =
            AddCommand("rm", "Move a file or folder into the recycle bin, or remove it for ever", RemoveCommand,
                       "  quorvex netdisk rm 0a1b2c3d --session 5f1c\n"
                       "  quorvex netdisk rm 0a1b2c3d --forever --session 5f1c\n"
                       "  quorvex netdisk rm --dir 77aa --session 5f1c\n");
        AddKeyOrFolder(remove);
        remove.add_flag("--forever", options.forever, "Do not keep it in the recycle bin");

        m_checksum = &AddCommand("checksum", "Show a local file's MD5, without a server", ChecksumCommand,
                                 "  quorvex netdisk checksum report.pdf\n");
        AddFile(*m_checksum, "The file to digest; less than 4 GiB");
    }

    void AddFolderCommands()
    {
        AddInFolder(AddCommand("ls", "List a folder's folders and files", ListCommand,
                               "  quorvex netdisk ls --session 5f1c\n"
                               "  quorvex netdisk ls 77aa --json --session 5f1c\n"),
                    "folder");
        AddInFolder(AddCommand("tree", "Show a folder with everything below it", TreeCommand,
                               "  quorvex netdisk tree --session 5f1c\n"),
                    "folder");

        CLI::App& make = AddCommand("mkdir", "Make a folder", MakeFolderCommand,
                                    "  quorvex netdisk mkdir Films --session 5f1c\n"
                                    "  quorvex netdisk mkdir 2026 --parent 77aa --session 5f1c\n");
        make.add_option("name", m_invocation.options.name, "Its name")->required()->type_name("NAME");
        AddInFolder(make, "--parent");
    }

    void AddRecyclebinCommands()
    {
        AddCommand("trash", "List the recycle bin", TrashCommand, "  quorvex netdisk trash --session 5f1c\n");
        AddItem(AddCommand("restore", "Put something back from the recycle bin to where it was", RestoreCommand,
                           "  quorvex netdisk restore 3c9e --session 5f1c\n"));
        AddItem(AddCommand("purge", "Remove something in the recycle bin for ever", PurgeCommand,
                           "  quorvex netdisk purge 3c9e --session 5f1c\n"));
    }

    void AddItem(CLI::App& app)
    {
        AddId(app, "id", m_invocation.options.item, "Its id in the recycle bin, as trash prints it", "ID")->required();
    }

    void AddShareCommands()
    {
        Options& options = m_invocation.options;
        CLI::App& share = AddCommand("share", "Make a share code for files of the disk", ShareCommand,
                                     "  quorvex netdisk share 0a1b2c3d --session 5f1c\n"
                                     "  quorvex netdisk share 0a1b2c3d 4e5f6a7b --for 24h --session 5f1c\n");
        AddIds(share, "keys", options.keys, "The files' keys, 200 at most", "KEY");
        AddSpanOption(share, "--for", "How long the code shall live: 90s, 15m, 24h ...")->default_str("7d");

        CLI::App& shares = AddCommand("shares", "List the share codes of this account", SharesCommand,
                                      "  quorvex netdisk shares --session 5f1c\n"
                                      "  quorvex netdisk shares --type expired --session 5f1c\n");
        shares.add_option("--type", options.shareType, "Which ones: all, alive or expired")
            ->type_name("TYPE")
            ->capture_default_str()
            ->check(CLI::IsMember(std::vector<std::string>{"all", "alive", "expired"}).description(""));

        AddIds(AddCommand("unshare", "End share codes", UnshareCommand,
                          "  quorvex netdisk unshare 7h2k9 --session 5f1c\n"),
               "codes", options.pcodes, "The share codes, 200 at most", "CODE");

        CLI::App& extend = AddCommand("extend", "Let a share code live longer", ExtendCommand,
                                      "  quorvex netdisk extend 7h2k9 --by 1d --session 5f1c\n");
        AddCode(extend);
        AddSpanOption(extend, "--by", "How much longer: 90s, 15m, 24h, 7d ...")->required();

        CLI::App& save = AddCommand("save", "Save a share code's files into this account's disk", SaveCommand,
                                    "  quorvex netdisk save 7h2k9 --session 5f1c\n"
                                    "  quorvex netdisk save 7h2k9 --folder 77aa --session 5f1c\n");
        AddCode(save);
        AddInFolder(save, "--folder");
        AddFetchCommand();
    }

    void AddFetchCommand()
    {
        Options& options = m_invocation.options;
        CLI::App& fetch = AddCommand(
            "fetch", "Download a share code's files; an interrupted download goes on where it was", FetchCommand,
            "  quorvex netdisk fetch 7h2k9 --list --session 5f1c\n"
            "  quorvex netdisk fetch 7h2k9 --out C:\\Films --session 5f1c\n"
            "  quorvex netdisk fetch 7h2k9 --fid 2 --out film.mkv --session 5f1c\n");
        AddCode(fetch);
        AddId(fetch, "--fid", options.fileId, "Only the file with this id", "ID");
        fetch.add_flag("--list", options.listOnly, "List the files and their ids; download nothing");
        AddOut(fetch, "Where to put them: a folder; for one file also a file");
        AddSizes(fetch, "Files larger than this come block by block");
    }

    void AddCode(CLI::App& app)
    {
        AddId(app, "code", m_invocation.options.pcode, "The share code", "CODE")->required();
    }

    void AddFile(CLI::App& app, const std::string& description)
    {
        app.add_option("file", m_invocation.options.file, description)->required()->type_name("FILE");
    }

    /// @param text receives the id
    static CLI::Option* AddId(CLI::App& app, const std::string& name, std::string& text, const std::string& description,
                              const std::string& typeName)
    {
        return app.add_option(name, text, description)
            ->type_name(typeName)
            ->check(CLI::Validator(ComplaintAboutId, ""));
    }

    static void AddIds(CLI::App& app, const std::string& name, std::vector<std::string>& texts,
                       const std::string& description, const std::string& typeName)
    {
        app.add_option(name, texts, description)
            ->required()
            ->type_name(typeName)
            ->check(CLI::Validator(ComplaintAboutId, ""));
    }

    void AddKey(CLI::App& app)
    {
        AddId(app, "key", m_invocation.options.key, "The file's key, as put has printed it", "KEY")->required();
    }

    void AddKeyOrFolder(CLI::App& app)
    {
        AddId(app, "key", m_invocation.options.key, "The file's key; with --dir, the folder's id", "KEY|ID")
            ->required();
        app.add_flag("-d,--dir", m_invocation.options.isFolder, "It is a folder, named by its id");
    }

    void AddFolderOption(CLI::App& app, const std::string& description)
    {
        AddId(app, "--folder", m_invocation.options.folder, description, "ID");
    }

    /// @param name how a folder that something is done in is given
    void AddInFolder(CLI::App& app, const std::string& name)
    {
        AddId(app, name, m_invocation.options.inFolder, "The folder's id; the top of the disk by default", "ID");
    }

    void AddOut(CLI::App& app, const std::string& description)
    {
        app.add_option("-o,--out", m_invocation.options.out, description)->type_name("FILE|FOLDER");
    }

    CLI::Option* AddSpanOption(CLI::App& app, const std::string& name, const std::string& description)
    {
        return app.add_option(name, m_invocation.options.span, description)
            ->type_name("TIME")
            ->transform(CLI::Validator(ComplaintAboutSpan, ""));
    }

    void AddSizes(CLI::App& app, const std::string& largeFrom)
    {
        Options& options = m_invocation.options;
        app.add_option("--block-size", options.blockSize, "Size of a block, 1 byte to 256 MiB")
            ->type_name("SIZE")
            ->default_str("4MiB")
            ->transform(CLI::AsSizeValue(false).description(""))
            ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{256} << 20).description(""));
        app.add_option("--large-from", options.largeFrom, largeFrom)
            ->type_name("SIZE")
            ->default_str("8MiB")
            ->transform(CLI::AsSizeValue(false).description(""));
    }

    void TakeEnvironment()
    {
        Options& options = m_invocation.options;
        const std::string server = FromEnvironment(L"QUORVEX_SERVER");
        if (m_server->count() == 0 && !server.empty())
            options.server = server;
        if (!options.user.empty() && options.password.empty())
            options.password = FromEnvironment(L"QUORVEX_PASSWORD");
    }

    void CheckChange() const
    {
        const Options& options = m_invocation.options;
        if (m_move->parsed() && options.name.empty() && options.folder.empty())
            throw CLI::RequiredError("--name or --folder");
    }

    void CheckLogin() const
    {
        const Options& options = m_invocation.options;
        if (m_checksum->parsed())
            return;
        if (LoginMethod(options).empty())
            throw CLI::RequiredError("--session, --user with --password, or --ticket");
        if (!options.user.empty() && options.password.empty())
            throw CLI::RequiredError("--password, or QUORVEX_PASSWORD in the environment,");
    }

    CLI::App m_app{"Host of the quorvex module for the command line", "quorvex"};
    Invocation m_invocation;
    CLI::Option* m_server = nullptr;
    CLI::App* m_netdisk = nullptr;
    CLI::App* m_move = nullptr;
    CLI::App* m_checksum = nullptr;
};

} // namespace

std::optional<Invocation> ParseCommandLine(std::vector<std::string> arguments, Answer& answer)
{
    Grammar grammar;
    return grammar.Parse(std::move(arguments), answer);
}

} // namespace quorvex::console
