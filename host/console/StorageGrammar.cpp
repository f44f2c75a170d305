#include "Grammar.h"

#include "DepotCommands.h"
#include "StorageCommands.h"
#include "StorageNames.h"

namespace quorvex::console
{
namespace
{

constexpr Service kStorage{L"QUORVEX_STORAGE", "http://127.0.0.1:8080/storage", false};
constexpr std::size_t kLongestDepotKey = 64;

/// Adds an operation that the storage's protocol has up to this generation.
CLI::App& Add(const CommandGroup& group, int lastGeneration, const std::string& name, const std::string& description,
              Command command, const std::string& examples)
{
    const std::string words = group.App().get_name() + ' ' + name;
    return group.Add(name, description, command, examples, [lastGeneration, &options = group.Values(), words] {
        if (options.generation > lastGeneration)
            throw CLI::ValidationError("--generation", "generation " + std::to_string(options.generation) +
                                                           " of the file storage has no such operation as " + words);
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

void AddName(CLI::App& app, const std::string& name, std::string& text, const std::string& description,
             bool isRequired = true)
{
    app.add_option(name, text, description)
        ->required(isRequired)
        ->type_name("NAME")
        ->check(CLI::Validator([](const std::string& given) { return ComplaintAboutName(given); }, ""));
}

void AddUid(CLI::App& app, Options& options)
{
    AddId(app, "--uid", options.uid, "The user id of its owner, when that is another account", "UID");
}

void AddDepotKey(CLI::App& app, Options& options, bool isRequired = true)
{
    AddId(app, "key", options.key, "The file's key, as put has printed it", "KEY", kLongestDepotKey)
        ->required(isRequired);
}

void AddPictureCommands(const CommandGroup& group)
{
    Options& options = group.Values();
    AddFile(Add(group, 3, "put-picture", "Upload a picture, whose file name is its key", PutPictureCommand,
                "  quorvex storage put-picture sunset.png --session 5f1c\n"
                "  quorvex storage put-picture sunset.png --generation 3 --session 5f1c\n"),
            options, "The picture");

    CLI::App& get = Add(group, 3, "get-picture", "Download a picture", GetPictureCommand,
                        "  quorvex storage get-picture sunset.png --session 5f1c\n"
                        "  quorvex storage get-picture sunset.png --out C:\\Pictures --session 5f1c\n"
                        "  quorvex storage get-picture sunset.png --generation 3 --session 5f1c\n");
    AddName(get, "name", options.key, "Its name");
    AddOut(get, options, "Where to put it; its name by default");
}

void AddPhotoCommands(const CommandGroup& group)
{
    Options& options = group.Values();
    CLI::App& put = Add(group, 1, "put-photo", "Upload a user's photo", PutPhotoCommand,
                        "  quorvex storage put-photo me.jpg --session 5f1c\n"
                        "  quorvex storage put-photo me.jpg --name ann-2026.jpg --session 5f1c\n");
    AddFile(put, options, "The photo");
    AddName(put, "--name", options.name, "Its key on the server; the file's name by default", false);

    CLI::App& get = Add(group, 1, "get-photo", "Download a user's photo", GetPhotoCommand,
                        "  quorvex storage get-photo ann-2026.jpg --session 5f1c\n"
                        "  quorvex storage get-photo ann-2026.jpg --out ann.jpg --session 5f1c\n");
    AddName(get, "name", options.key, "Its key");
    AddOut(get, options, "Where to put it; its key by default");
}

void AddEmoticonCommands(const CommandGroup& group)
{
    Options& options = group.Values();
    CLI::App& put = Add(group, 1, "put", "Upload an emoticon into the account's own set", PutEmoticonCommand,
                        "  quorvex storage emoticons put smile.gif --session 5f1c\n"
                        "  quorvex storage emoticons put smile.gif --name happy.gif --session 5f1c\n");
    AddFile(put, options, "The emoticon");
    AddName(put, "--name", options.name, "Its key in the set; the file's name by default", false);

    CLI::App& get = Add(group, 1, "get", "Download an emoticon, of any account", GetEmoticonCommand,
                        "  quorvex storage emoticons get smile.gif --session 5f1c\n"
                        "  quorvex storage emoticons get smile.gif --uid 2 --out bobs.gif --session 5f1c\n");
    AddName(get, "name", options.key, "Its key in the set");
    AddUid(get, options);
    AddOut(get, options, "Where to put it; its key by default");

    AddName(Add(group, 1, "rm", "Remove an emoticon from the account's own set", RemoveEmoticonCommand,
                "  quorvex storage emoticons rm smile.gif --session 5f1c\n"),
            "name", options.key, "Its key in the set");
    Add(group, 1, "ls", "Ask for the account's own set; the module logs how many emoticons it has, and no more",
        ListEmoticonsCommand, "  quorvex storage emoticons ls --log trace --session 5f1c\n");
}

void AddDepotTransfers(const CommandGroup& group)
{
    Options& options = group.Values();
    CLI::App& put = Add(group, 3, "put", "Upload a file; an interrupted upload goes on where it was", PutInDepotCommand,
                        "  quorvex depot put film.mkv --session 5f1c\n"
                        "  quorvex depot put film.mkv --block-size 16MiB --session 5f1c\n"
                        "  quorvex depot put film.mkv --generation 2 --session 5f1c\n");
    AddFile(put, options, "The file to upload; less than 4 GiB");
    AddBlockSize(put, options);

    CLI::App& get =
        Add(group, 3, "get", "Download a file; an interrupted download goes on where it was", GetFromDepotCommand,
            "  quorvex depot get 0a1b2c3d --session 5f1c\n"
            "  quorvex depot get 0a1b2c3d --uid 2 --out C:\\Films --session 5f1c\n"
            "  quorvex depot get 0a1b2c3d --generation 3 --out film.mkv --session 5f1c\n");
    AddDepotKey(get, options);
    AddUid(get, options);
    AddOut(get, options, "Where to put it; the server's name for it by default, where it tells one, or the key");
    AddBlockSize(get, options);
}

} // namespace

void AddStorageCommands(CLI::App& app, Invocation& invocation)
{
    const CommandGroup storage(app, invocation, kStorage, "storage", "Pictures, photos and emoticons");
    AddGeneration(storage);
    Add(storage, 2, "login", "Log in, to see whether server and login are right", StorageLoginCommand,
        "  quorvex storage login --user ann --password secret\n");
    AddPictureCommands(storage);
    AddPhotoCommands(storage);
    AddEmoticonCommands({storage.App(), invocation, kStorage, "emoticons", "The account's own set of emoticons"});
}

void AddDepotCommands(CLI::App& app, Invocation& invocation)
{
    const CommandGroup depot(app, invocation, kStorage, "depot", "Large files that are kept for a limited time");
    AddGeneration(depot);
    Options& options = depot.Values();
    AddDepotTransfers(depot);
    Add(depot, 1, "ls", "List the account's files and how long they are kept", ListDepotCommand,
        "  quorvex depot ls --session 5f1c\n"
        "  quorvex depot ls --json --session 5f1c\n");
    AddDepotKey(
        Add(depot, 2, "rm", "Remove a file", RemoveFromDepotCommand, "  quorvex depot rm 0a1b2c3d --session 5f1c\n"),
        options);
    AddDepotKey(Add(depot, 1, "renew", "Have a file kept for the whole time from now on", RenewInDepotCommand,
                    "  quorvex depot renew 0a1b2c3d --session 5f1c\n"),
                options);

    CLI::App& info =
        Add(depot, 1, "info", "Show the account's space; with a key, a file's name, size and MD5", DepotInfoCommand,
            "  quorvex depot info --session 5f1c\n"
            "  quorvex depot info 0a1b2c3d --session 5f1c\n");
    AddDepotKey(info, options, false);
    AddUid(info, options);
}

} // namespace quorvex::console
