#include "Grammar.h"

#include "LocalCommands.h"

namespace quorvex::console
{

void AddLocalCommands(CLI::App& app, Invocation& invocation)
{
    const CommandGroup local(app, invocation, nullptr);
    Options& options = local.Values();
    AddFiles(local.Add("md5", "Show the MD5s of local files of any size, one line each", Md5Command,
                       "  quorvex md5 report.pdf film.mkv\n"),
             options, "The files to digest");

    CLI::App& completion = local.Add("completion", "Print a script that completes this command line in a shell",
                                     CompletionCommand, "  quorvex completion bash > quorvex-completion.bash\n");
    AddChoice(completion, "shell", options.shell, "The shell", {"bash"})->required();

    const CommandGroup services(app, invocation, &kNetDisk);
    CLI::App& doctor =
        services.Add("doctor", "Try every service step by step, and say what is wrong", DoctorCommand,
                     "  quorvex doctor --user ann --password secret\n"
                     "  quorvex doctor --server http://disk.example/object --storage http://files.example/storage\n",
                     [&invocation] { invocation.needsLogin = false; });
    doctor
        .add_option("--storage", options.storage,
                    "Address of the file storage; by default QUORVEX_STORAGE in the environment,\n"
                    "or /storage on the server of the network disk")
        ->type_name("URL");
    doctor
        .add_option("--search", options.search,
                    "Address of the search; by default QUORVEX_SEARCH in the environment,\n"
                    "or /search on the server of the network disk")
        ->type_name("URL");
}

} // namespace quorvex::console
