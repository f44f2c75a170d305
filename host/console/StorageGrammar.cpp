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
    AddFile(group.Add("put-picture", "Upload a picture, whose file name is its key", PutPictureCommand,
                      "  quorvex storage put-picture sunset.png --session 5f1c\n"),
            options, "The picture");

    CLI::App& get = group.Add("get-picture", "Download a picture", GetPictureCommand,
                              "  quorvex storage get-picture sunset.png --session 5f1c\n"
                              "  quorvex storage get-picture sunset.png --out C:\\Pictures --session 5f1c\n");
    AddName(get, "name", options.key, "Its name");
    AddOut(get, options, "Where to put it; its name by default");
}

void AddPhotoCommands(const CommandGroup& group)
{
    Options& options = group.Values();
    CLI::App& put = group.Add("put-photo", "Upload a user's photo", PutPhotoCommand,
                              "  quorvex storage put-photo me.jpg --session 5f1c\n"
                              "  quorvex storage put-photo me.jpg --name ann-2026.jpg --session 5f1c\n");
    AddFile(put, options, "The photo");
    AddName(put, "--name", options.name, "Its key on the server; the file's name by default", false);

    CLI::App& get = group.Add("get-photo", "Download a user's photo", GetPhotoCommand,
                              "  quorvex storage get-photo ann-2026.jpg --session 5f1c\n"
                              "  quorvex storage get-photo ann-2026.jpg --out ann.jpg --session 5f1c\n");
    AddName(get, "name", options.key, "Its key");
    AddOut(get, options, "Where to put it; its key by default");
}

void AddEmoticonCommands(const CommandGroup& group)
{
    Options& options = group.Values();
    CLI::App& put = group.Add("put", "Upload an emoticon into the account's own set", PutEmoticonCommand,
                              "  quorvex storage emoticons put smile.gif --session 5f1c\n"
                              "  quorvex storage emoticons put smile.gif --name happy.gif --session 5f1c\n");
    AddFile(put, options, "The emoticon");
    AddName(put, "--name", options.name, "Its key in the set; the file's name by default", false);

    CLI::App& get = group.Add("get", "Download an emoticon, of any account", GetEmoticonCommand,
                              "  quorvex storage emoticons get smile.gif --session 5f1c\n"
                              "  quorvex storage emoticons get smile.gif --uid 2 --out bobs.gif --session 5f1c\n");
    AddName(get, "name", options.key, "Its key in the set");
    AddUid(get, options);
    AddOut(get, options, "Where to put it; its key by default");

    AddName(group.Add("rm", "Remove an emoticon from the account's own set", RemoveEmoticonCommand,
                      "  quorvex storage emoticons rm smile.gif --session 5f1c\n"),
            "name", options.key, "Its key in the set");
    group.Add("ls", "Ask for the account's own set; the module logs how many emoticons it has, and no more",
              ListEmoticonsCommand, "  quorvex storage emoticons ls --log trace --session 5f1c\n");
}

void AddDepotTransfers(const CommandGroup& group)
{
    Options& options = group.Values();
    CLI::App& put = group.Add("put", "Upload a file; an interrupted upload goes on where it was", PutInDepotCommand,
                              "  quorvex depot put film.mkv --session 5f1c\n"
                              "  quorvex depot put film.mkv --block-size 16MiB --session 5f1c\n");
    AddFile(put, options, "The file to upload; less than 4 GiB");
    AddBlockSize(put, options);

    CLI::App& get =
        group.Add("get", "Download a file; an interrupted download goes on where it was", GetFromDepotCommand,
                  "  quorvex depot get 0a1b2c3d --session 5f1c\n"
                  "  quorvex depot get 0a1b2c3d --uid 2 --out C:\\Films --session 5f1c\n");
    AddDepotKey(get, options);
    AddUid(get, options);
    AddOut(get, options, "Where to put it; the server's name for it by default");
    AddBlockSize(get, options);
}

} // namespace

void AddStorageCommands(CLI::App& app, Invocation& invocation)
{
    const CommandGroup storage(app, invocation, kStorage, "storage", "Pictures, photos and emoticons");
    storage.Add("login", "Log in, to see whether server and login are right", StorageLoginCommand,
                "  quorvex storage login --user ann --password secret\n");
    AddPictureCommands(storage);
    AddPhotoCommands(storage);
    AddEmoticonCommands({storage.App(), invocation, kStorage, "emoticons", "The account's own set of emoticons"});
}

void AddDepotCommands(CLI::App& app, Invocation& invocation)
{
    const CommandGroup depot(app, invocation, kStorage, "depot", "Large files that are kept for a limited time");
    Options& options = depot.Values();
    AddDepotTransfers(depot);
    depot.Add("ls", "List the account's files and how long they are kept", ListDepotCommand,
              "  quorvex depot ls --session 5f1c\n"
              "  quorvex depot ls --json --session 5f1c\n");
    AddDepotKey(
        depot.Add("rm", "Remove a file", RemoveFromDepotCommand, "  quorvex depot rm 0a1b2c3d --session 5f1c\n"),
        options);
    AddDepotKey(depot.Add("renew", "Have a file kept for the whole time from now on", RenewInDepotCommand,
                          "  quorvex depot renew 0a1b2c3d --session 5f1c\n"),
                options);

    CLI::App& info =
        depot.Add("info", "Show the account's space; with a key, a file's name, size and MD5", DepotInfoCommand,
                  "  quorvex depot info --session 5f1c\n"
                  "  quorvex depot info 0a1b2c3d --session 5f1c\n");
    AddDepotKey(info, options, false);
    AddUid(info, options);
}

} // namespace quorvex::console
