#include "Grammar.h"

#include "NetDiskCommands.h"
#include "Times.h"

namespace quorvex::console
{
namespace
{

/// Turns a length of time into seconds.
std::string ComplaintAboutSpan(std::string& text)
{
    const auto seconds = ParseSpan(text);
    if (!seconds)
        return "a length of time is written as 90s, 15m, 24h or 7d, and lasts 136 years at most";
    text = std::to_string(*seconds);
    return {};
}

class NetDiskGrammar
{
public:
    NetDiskGrammar(CLI::App& app, Invocation& invocation)
        : m_group(app, invocation, kNetDisk, "netdisk", "The personal network disk",
                  "  quorvex netdisk put report.pdf --user ann --password secret\n"),
          m_invocation(invocation),
          m_options(invocation.options)
    {
    }

    void AddCommands()
    {
        m_group.Add("login", "Log in, to see whether server and login are right", LoginCommand,
                    "  quorvex netdisk login --user ann --password secret\n"
                    "  quorvex netdisk login --ticket 00ff00ff:8d2e41\n");
        m_group.Add("logout", "Log in and out again", LogoutCommand, "  quorvex netdisk logout --session 5f1c\n");
        AddTransferCommands();
        AddFileCommands();
        AddFolderCommands();
        AddRecyclebinCommands();
        AddShareCommands();
        AddBlockCommands({m_group.App(), m_invocation, kNetDisk, "blocks", "The steps of a transfer one by one",
                          "  quorvex netdisk blocks create film.mkv --user ann --password secret\n"});
        m_group.Add("quota", "Show the size of the disk and what is used of it", QuotaCommand,
                    "  quorvex netdisk quota --session 5f1c\n"
                    "  quorvex netdisk quota --session 5f1c --json\n");
    }

private:
    void AddTransferCommands()
    {
        CLI::App& put = m_group.Add("put", "Upload files; an interrupted upload goes on where it was", PutCommand,
                                    "  quorvex netdisk put report.pdf notes.txt --session 5f1c\n"
                                    "  quorvex netdisk put film.mkv --block-size 16MiB --folder 77aa --session 5f1c\n");
        AddFiles(put, m_options, "The files to upload; each less than 4 GiB");
        AddFolderOption(put, "The id of the folder to put them into; the top of the disk by default");
        AddSizes(put, "Files larger than this go block by block");

        CLI::App& get = m_group.Add("get", "Download files; an interrupted download goes on where it was", GetCommand,
                                    "  quorvex netdisk get 0a1b2c3d --session 5f1c\n"
                                    "  quorvex netdisk get 0a1b2c3d 4e5f6a7b --out C:\\Films --session 5f1c\n");
        AddKeys(get);
        AddOut(get, m_options, "Where to put them; the server's names for them by default. Several need a folder");
        AddSizes(get, "Files larger than this come block by block");
    }

    void AddBlockCommands(const CommandGroup& group)
    {
        AddFile(group.Add("create", "Announce a file", CreateBlocksCommand,
                          "  quorvex netdisk blocks create film.mkv --session 5f1c\n"),
                m_options, "The file");

        CLI::App& send =
            group.Add("send", "Send one block of an announced file", SendBlockCommand,
                      "  quorvex netdisk blocks send 0a1b2c3d film.mkv --offset 4MiB --length 4MiB --session 5f1c\n");
        AddKey(send);
        AddFile(send, m_options, "The file that the block is of");
        AddOffset(send, m_options, "Where the block begins");
        AddLength(send, m_options, "What it has of the file at most");

        AddKey(group.Add("finish", "Say that every block has been sent", FinishBlocksCommand,
                         "  quorvex netdisk blocks finish 0a1b2c3d --session 5f1c\n"));

        CLI::App& read = group.Add(
            "read", "Read one range of a file", ReadBlockCommand,
            "  quorvex netdisk blocks read 0a1b2c3d --offset 1MiB --length 64KiB --out piece.bin --session 5f1c\n");
        AddKey(read);
        AddOffset(read, m_options, "Where the range begins");
        AddLength(read, m_options, "How long it is at most");
        AddPiece(read, m_options);
    }

    void AddFileCommands()
    {
        AddKeys(m_group.Add("info", "Show files' names, sizes and MD5s", InfoCommand,
                            "  quorvex netdisk info 0a1b2c3d --session 5f1c\n"));

        CLI::App& move = m_group.Add("mv", "Rename a file or folder, or move it into another folder", MoveCommand,
                                     "  quorvex netdisk mv 0a1b2c3d --name summary.pdf --session 5f1c\n"
                                     "  quorvex netdisk mv --dir 77aa --name Films --folder 0 --session 5f1c\n",
                                     [&options = m_options] {
                                         if (options.name.empty() && options.folder.empty())
                                             throw CLI::RequiredError("--name or --folder");
                                     });
        AddKeyOrFolder(move);
        move.add_option("--name", m_options.name, "Its new name")->type_name("NAME");
        AddFolderOption(move, "The id of its new folder; 0 is the top of the disk");

        CLI::App& remove =
            m_group.Add("rm", "Move files or folders into the recycle bin, or remove them for ever", RemoveCommand,
                        "  quorvex netdisk rm 0a1b2c3d 4e5f6a7b --forever --session 5f1c\n"
                        "  quorvex netdisk rm --dir 77aa --session 5f1c\n");
        AddIds(remove, "keys", m_options.keys, "The files' keys; with --dir, the folders' ids", "KEY|ID");
        AddDir(remove, "They are folders, named by their ids");
        remove.add_flag("--forever", m_options.forever, "Do not keep them in the recycle bin");

        AddFiles(m_group.Add("checksum", "Show local files' MD5s, without a server", ChecksumCommand,
                             "  quorvex netdisk checksum report.pdf\n",
                             [&invocation = m_invocation] { invocation.needsLogin = false; }),
                 m_options, "The files to digest; each less than 4 GiB");
    }

    void AddFolderCommands()
    {
        CLI::App& list = m_group.Add("ls", "List a folder's folders and files", ListCommand,
                                     "  quorvex netdisk ls --session 5f1c\n"
                                     "  quorvex netdisk ls 77aa --json --session 5f1c\n");
        AddInFolder(list, "folder");
        AddUtf8(list);
        AddInFolder(m_group.Add("tree", "Show a folder with everything below it", TreeCommand,
                                "  quorvex netdisk tree --session 5f1c\n"),
                    "folder");

        CLI::App& make = m_group.Add("mkdir", "Make a folder", MakeFolderCommand,
                                     "  quorvex netdisk mkdir Films --session 5f1c\n"
                                     "  quorvex netdisk mkdir 2026 --parent 77aa --session 5f1c\n");
        make.add_option("name", m_options.name, "Its name")->required()->type_name("NAME");
        AddInFolder(make, "--parent");
    }

    void AddRecyclebinCommands()
    {
        AddUtf8(m_group.Add("trash", "List the recycle bin", TrashCommand, "  quorvex netdisk trash --session 5f1c\n"));
        AddItems(m_group.Add("restore", "Put items of the recycle bin back to where they were", RestoreCommand,
                             "  quorvex netdisk restore 3c9e --session 5f1c\n"));
        AddItems(m_group.Add("purge", "Remove items of the recycle bin for ever", PurgeCommand,
                             "  quorvex netdisk purge 3c9e 4d0f --session 5f1c\n"));
    }

    void AddItems(CLI::App& app)
    {
        AddIds(app, "ids", m_options.items, "Their ids in the recycle bin, as trash prints them", "ID");
    }

    void AddUtf8(CLI::App& app)
    {
        app.add_flag("--utf8", m_options.inUtf8,
                     "Take the module's UTF-8 records, in which a name has 64 bytes instead of 64 characters");
    }

    void AddShareCommands()
    {
        CLI::App& share = m_group.Add("share", "Make a share code for files of the disk", ShareCommand,
                                      "  quorvex netdisk share 0a1b2c3d --session 5f1c\n"
                                      "  quorvex netdisk share 0a1b2c3d 4e5f6a7b --for 24h --session 5f1c\n");
        AddIds(share, "keys", m_options.keys, "The files' keys, 200 at most", "KEY");
        AddSpanOption(share, "--for", "How long the code shall live: 90s, 15m, 24h ...")->default_str("7d");

        CLI::App& shares = m_group.Add("shares", "List the share codes of this account", SharesCommand,
                                       "  quorvex netdisk shares --session 5f1c\n"
                                       "  quorvex netdisk shares --type expired --session 5f1c\n");
        AddChoice(shares, "--type", m_options.shareType, "Which ones", {"all", "alive", "expired"});

        AddIds(m_group.Add("unshare", "End share codes", UnshareCommand,
                           "  quorvex netdisk unshare 7h2k9 --session 5f1c\n"),
               "codes", m_options.pcodes, "The share codes, 200 at most", "CODE");

        CLI::App& extend = m_group.Add("extend", "Let a share code live longer", ExtendCommand,
                                       "  quorvex netdisk extend 7h2k9 --by 1d --session 5f1c\n");
        AddCode(extend);
        AddSpanOption(extend, "--by", "How much longer: 90s, 15m, 24h, 7d ...")->required();

        CLI::App& save = m_group.Add("save", "Save a share code's files into this account's disk", SaveCommand,
                                     "  quorvex netdisk save 7h2k9 --session 5f1c\n"
                                     "  quorvex netdisk save 7h2k9 --folder 77aa --session 5f1c\n");
        AddCode(save);
        AddInFolder(save, "--folder");
        AddFetchCommand();
    }

    void AddFetchCommand()
    {
        CLI::App& fetch = m_group.Add(
            "fetch", "Download a share code's files; an interrupted download goes on where it was", FetchCommand,
            "  quorvex netdisk fetch 7h2k9 --list --session 5f1c\n"
            "  quorvex netdisk fetch 7h2k9 --fid 2 --out film.mkv --session 5f1c\n");
        AddCode(fetch);
        AddId(fetch, "--fid", m_options.fileId, "Only the file with this id", "ID");
        fetch.add_flag("--list", m_options.listOnly, "List the files and their ids; download nothing");
        AddOut(fetch, m_options, "Where to put them: a folder; for one file also a file");
        AddSizes(fetch, "Files larger than this come block by block");
    }

    void AddCode(CLI::App& app) { AddId(app, "code", m_options.pcode, "The share code", "CODE")->required(); }

    void AddKey(CLI::App& app)
    {
        AddId(app, "key", m_options.key, "The file's key, as put has printed it", "KEY")->required();
    }

    void AddKeyOrFolder(CLI::App& app)
    {
        AddId(app, "key", m_options.key, "The file's key; with --dir, the folder's id", "KEY|ID")->required();
        AddDir(app, "It is a folder, named by its id");
    }

    void AddDir(CLI::App& app, const std::string& description)
    {
        app.add_flag("-d,--dir", m_options.isFolder, description);
    }

    void AddKeys(CLI::App& app)
    {
        AddIds(app, "keys", m_options.keys, "The files' keys, as put has printed them", "KEY");
    }

    void AddFolderOption(CLI::App& app, const std::string& description)
    {
        AddId(app, "--folder", m_options.folder, description, "ID");
    }

    /// @param name how a folder that something is done in is given
    void AddInFolder(CLI::App& app, const std::string& name)
    {
        AddId(app, name, m_options.inFolder, "The folder's id; the top of the disk by default", "ID");
    }

    CLI::Option* AddSpanOption(CLI::App& app, const std::string& name, const std::string& description)
    {
        return app.add_option(name, m_options.span, description)
            ->type_name("TIME")
            ->transform(CLI::Validator(ComplaintAboutSpan, ""));
    }

    void AddSizes(CLI::App& app, const std::string& largeFrom)
    {
        AddBlockSize(app, m_options);
        app.add_option("--large-from", m_options.largeFrom, largeFrom)
            ->type_name("SIZE")
            ->default_str("8MiB")
            ->transform(CLI::AsSizeValue(false).description(""));
    }

    CommandGroup m_group;
    Invocation& m_invocation;
    Options& m_options;
};

} // namespace

void AddNetDiskCommands(CLI::App& app, Invocation& invocation)
{
    NetDiskGrammar(app, invocation).AddCommands();
}

} // namespace quorvex::console
