#include "Grammar.h"

#include "DepotCommands.h"
#include "StorageCommands.h"
#include "StorageNames.h"

namespace quorvex::console
{
namespace
{

constexpr std::size_t kLongestDepotKey = 64;

/// Adds an operation that the storage's protocol has up to this generation.
CLI::App& Add(
    const CommandGroup& group, int lastGeneration, const std::string& name, const std::string& description,
    Command command, const std::string& examples, const std::function<void()>& settle = [] {})
{
    const std::string words = WordsOf(group.App()) + ' ' + name;
    return group.Add(name, description, command, examples, [lastGeneration, &options = group.Values(), words, settle] {
        if (options.generation > lastGeneration)
            throw CLI::ValidationError("--generation", "generation " + std::to_string(options.generation) +
                                                           " of the file storage has no such operation as " + words);
        settle();
    });
}

void AddGeneration(const CommandGroup& group)
{
    Options& options = group.Values();
    group.App()
        .add_option("--generation", options.generation,
                    "Generation of the service's protocol. 2 has no photos, no emoticons, and of the depot put, get\n"
                    "and rm alone; 3 has put-picture, get-picture and the depot's put and get")
        ->type_name("1|2|3")
        ->capture_default_str()
        ->check(CLI::Range(1, 3).description(""));
    group.App()
        .add_option("--accounts", options.accounts,
                    "Address of the account system, which opens a session for --user in generations 2 and 3;\n"
                    "by default /object on the server of the storage")
        ->type_name("URL");
}

CLI::Validator NameOfAThing()
{
    return {[](const std::string& given) { return ComplaintAboutName(given); }, ""};
}

/// The name that an upload shall have.
void AddNewName(CLI::App& app, Options& options, const std::string& description)
{
    app.add_option("--name", options.name, description)->type_name("NAME")->check(NameOfAThing());
}

void AddNames(CLI::App& app, Options& options, const std::string& description)
{
    app.add_option("names", options.names, description)->required()->type_name("NAME")->check(NameOfAThing());
}

void AddUid(CLI::App& app, Options& options)
{
    AddId(app, "--uid", options.uid, "The user id of its owner, when that is another account", "UID");
}

CLI::Option* AddDepotKey(CLI::App& app, Options& options)
{
    return AddId(app, "key", options.key, "The file's key, as put has printed it", "KEY", kLongestDepotKey);
}

void AddDepotKeys(CLI::App& app, Options& options)
{
    AddIds(app, "keys", options.keys, "The files' keys, as put has printed them", "KEY", kLongestDepotKey);
}

void AddPictureCommands(const CommandGroup& group)
{
    Options& options = group.Values();
    AddFiles(Add(group, 3, "put-picture", "Upload pictures, whose file names are their keys", PutPictureCommand,
                 "  quorvex storage put-picture sunset.png dawn.png --session 5f1c\n"
                 "  quorvex storage put-picture sunset.png --generation 3 --session 5f1c\n"),
             options, "The pictures");

    CLI::App& get = Add(group, 3, "get-picture", "Download pictures", GetPictureCommand,
                        "  quorvex storage get-picture sunset.png --session 5f1c\n"
                        "  quorvex storage get-picture sunset.png dawn.png --out C:\\Pictures --session 5f1c\n");
    AddNames(get, options, "Their names");
    AddOut(get, options, "Where to put them; their names by default. Several need a folder");
}

void AddPhotoCommands(const CommandGroup& group)
{
    Options& options = group.Values();
    CLI::App& put = Add(group, 1, "put-photo", "Upload a user's photo", PutPhotoCommand,
                        "  quorvex storage put-photo me.jpg --session 5f1c\n"
                        "  quorvex storage put-photo me.jpg --name ann-2026.jpg --session 5f1c\n");
    AddFile(put, options, "The photo");
    AddNewName(put, options, "Its key on the server; the file's name by default");

    CLI::App& get = Add(group, 1, "get-photo", "Download users' photos", GetPhotoCommand,
                        "  quorvex storage get-photo ann-2026.jpg --session 5f1c\n"
                        "  quorvex storage get-photo ann-2026.jpg --out ann.jpg --session 5f1c\n");
    AddNames(get, options, "Their keys");
    AddOut(get, options, "Where to put them; their keys by default. Several need a folder");
}

void AddEmoticonCommands(const CommandGroup& group)
{
    Options& options = group.Values();
    CLI::App& put = Add(group, 1, "put", "Upload emoticons into the account's own set", PutEmoticonCommand,
                        "  quorvex storage emoticons put smile.gif wink.gif --session 5f1c\n"
                        "  quorvex storage emoticons put smile.gif --name happy.gif --session 5f1c\n",
                        [&options] {
                            if (!options.name.empty() && options.files.size() > 1)
                                throw CLI::ValidationError("--name", "is for one file");
                        });
    AddFiles(put, options, "The emoticons");
    AddNewName(put, options, "Its key in the set, when it is one; the file's name by default");

    CLI::App& get = Add(group, 1, "get", "Download emoticons, of any account", GetEmoticonCommand,
                        "  quorvex storage emoticons get smile.gif --session 5f1c\n"
                        "  quorvex storage emoticons get smile.gif --uid 2 --out bobs.gif --session 5f1c\n");
    AddNames(get, options, "Their keys in the set");
    AddUid(get, options);
    AddOut(get, options, "Where to put them; their keys by default. Several need a folder");

    AddNames(Add(group, 1, "rm", "Remove emoticons from the account's own set", RemoveEmoticonCommand,
                 "  quorvex storage emoticons rm smile.gif wink.gif --session 5f1c\n"),
             options, "Their keys in the set");
    Add(group, 1, "ls", "Ask for the account's own set; the module logs how many emoticons it has, and no more",
        ListEmoticonsCommand, "  quorvex storage emoticons ls --log trace --session 5f1c\n");
}

void AddDepotTransfers(const CommandGroup& group)
{
    Options& options = group.Values();
    CLI::App& put = Add(group, 3, "put", "Upload files; an interrupted upload goes on where it was", PutInDepotCommand,
                        "  quorvex depot put film.mkv --block-size 16MiB --session 5f1c\n"
                        "  quorvex depot put film.mkv talk.mp3 --generation 2 --session 5f1c\n");
    AddFiles(put, options, "The files to upload; each less than 4 GiB");
    AddBlockSize(put, options);

    CLI::App& get =
        Add(group, 3, "get", "Download files; an interrupted download goes on where it was", GetFromDepotCommand,
            "  quorvex depot get 0a1b2c3d --uid 2 --out C:\\Films --session 5f1c\n"
            "  quorvex depot get 0a1b2c3d --generation 3 --out film.mkv --session 5f1c\n");
    AddDepotKeys(get, options);
    AddUid(get, options);
    AddOut(get, options,
           "Where to put them; the server's name by default, where it tells one, or the key. Several\n"
           "need a folder");
    AddBlockSize(get, options);
}

void AddDepotBlocks(const CommandGroup& group)
{
    Options& options = group.Values();
    AddFile(Add(group, 2, "create", "Announce a file", CreateBlocksInDepotCommand,
                "  quorvex depot blocks create film.mkv --session 5f1c\n"),
            options, "The file");

    CLI::App& send = Add(group, 2, "send", "Send one block of an announced file", SendBlockToDepotCommand,
                         "  quorvex depot blocks send 0a1b2c3d film.mkv --offset 4MiB --length 4MiB --session 5f1c\n");
    AddDepotKey(send, options)->required();
    AddFile(send, options, "The file that the block is of");
    AddOffset(send, options, "Where the block begins");
    AddLength(send, options, "What it has of the file at most");

    AddDepotKey(Add(group, 2, "finish", "Say that every block has been sent", FinishBlocksInDepotCommand,
                    "  quorvex depot blocks finish 0a1b2c3d --session 5f1c\n"),
                options)
        ->required();

    CLI::App& read =
        Add(group, 3, "read", "Read one range of a file", ReadBlockFromDepotCommand,
            "  quorvex depot blocks read 0a1b2c3d --offset 1MiB --length 64KiB --out piece.bin --session 5f1c\n");
    AddDepotKey(read, options)->required();
    AddUid(read, options);
    AddOffset(read, options, "Where the range begins");
    AddLength(read, options, "How long it is at most");
    AddPiece(read, options);
}

} // namespace

void AddStorageCommands(CLI::App& app, Invocation& invocation)
{
    const CommandGroup storage(app, invocation, kStorage, "storage", "Pictures, photos and emoticons",
                               "  quorvex storage put-picture sunset.png --user ann --password secret\n");
    AddGeneration(storage);
    Add(storage, 2, "login", "Log in, to see whether server and login are right", StorageLoginCommand,
        "  quorvex storage login --user ann --password secret\n");
    Add(storage, 3, "logout", "Log in and out again", StorageLogoutCommand,
        "  quorvex storage logout --generation 2 --session 5f1c\n");
    AddPictureCommands(storage);
    AddPhotoCommands(storage);
    AddEmoticonCommands({storage.App(), invocation, kStorage, "emoticons", "The account's own set of emoticons",
                         "  quorvex storage emoticons put smile.gif --user ann --password secret\n"});
    AddFiles(Add(storage, 1, "checksum", "Show local files' MD5 and SHA-1, without a server", StorageChecksumCommand,
                 "  quorvex storage checksum film.mkv\n", [&invocation] { invocation.needsLogin = false; }),
             storage.Values(), "The files to digest; each less than 4 GiB");
}

void AddDepotCommands(CLI::App& app, Invocation& invocation)
{
    const CommandGroup depot(app, invocation, kStorage, "depot", "Large files that are kept for a limited time",
                             "  quorvex depot put film.mkv --user ann --password secret\n");
    AddGeneration(depot);
    Options& options = depot.Values();
    AddDepotTransfers(depot);
    Add(depot, 1, "ls", "List the account's files and how long they are kept", ListDepotCommand,
        "  quorvex depot ls --session 5f1c\n"
        "  quorvex depot ls --json --session 5f1c\n");
    AddDepotKeys(Add(depot, 2, "rm", "Remove files", RemoveFromDepotCommand,
                     "  quorvex depot rm 0a1b2c3d 4e5f6a7b --session 5f1c\n"),
                 options);
    AddDepotKeys(Add(depot, 1, "renew", "Have files kept for the whole time from now on", RenewInDepotCommand,
                     "  quorvex depot renew 0a1b2c3d --session 5f1c\n"),
                 options);

    CLI::App& info =
        Add(depot, 1, "info", "Show the account's space; with a key, a file's name, size and MD5", DepotInfoCommand,
            "  quorvex depot info --session 5f1c\n"
            "  quorvex depot info 0a1b2c3d --session 5f1c\n");
    AddDepotKey(info, options);
    AddUid(info, options);
    AddDepotBlocks({depot.App(), invocation, kStorage, "blocks", "The steps of a transfer one by one",
                    "  quorvex depot blocks create film.mkv --user ann --password secret\n"});
}

} // namespace quorvex::console
