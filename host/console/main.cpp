#include "CommandLine.h"
#include "Failure.h"
#include "Output.h"
#include "Text.h"

#include <ferrolink/log.h>

#include <algorithm>
#include <exception>

namespace
{

using namespace quorvex::console;

constexpr int kFailureExitStatus = 1;

unsigned LevelBits(const std::string& name)
{
    if (name == "trace")
        return FRL_LOG_TRACE | FRL_LOG_DEBUG | FRL_LOG_ERROR;
    // The module writes its INFO lines at the DEBUG level.
    if (name == "debug" || name == "info")
        return FRL_LOG_DEBUG | FRL_LOG_ERROR;
    return name == "error" ? FRL_LOG_ERROR : 0;
}

void StartLog(const Options& options)
{
    frl_log_set_level(LevelBits(options.logLevel));
    if (!options.logFile.empty() && frl_log_set_file(Wide(options.logFile).c_str()) != 0)
        throw Failure("cannot write the log file " + options.logFile);
}

/// "code" is the module's result, or null when that is not the reason.
void TellFailure(bool asJson, const Failure& failure)
{
    if (!asJson)
        return WriteError(std::string("quorvex: ") + failure.what() + '\n');
    Json::Value object;
    object["ok"] = false;
    object["code"] = failure.Code() ? Json::Value(*failure.Code()) : Json::Value();
    object["meaning"] = failure.Meaning();
    object["message"] = failure.what();
    WriteOut(JsonLine(object));
}

int Tell(const Answer& answer, bool asJson)
{
    if (answer.exitStatus == 0)
        WriteOut(answer.text);
    else
        TellFailure(asJson, Failure(answer.text.substr(0, answer.text.find('\n'))));
    if (answer.exitStatus != 0 && !asJson)
        WriteError("Run with --help for more information.\n");
    return answer.exitStatus;
}

int Run(const Invocation& invocation)
{
    StartLog(invocation.options);
    const Report report = invocation.command(invocation.options);
    WriteOut(invocation.options.json ? report.ForMachines() : report.ForPeople());
    return 0;
}

int RunSafely(const Invocation& invocation)
{
    const bool asJson = invocation.options.json;
    try
    {
        return Run(invocation);
    }
    catch (const Failure& failure)
    {
        TellFailure(asJson, failure);
    }
    catch (const std::exception& error)
    {
        TellFailure(asJson, Failure(error.what()));
    }
    return kFailureExitStatus;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    try
    {
        std::vector<std::string> arguments;
        for (int i = 1; i < argc; ++i)
            arguments.push_back(ToUtf8(argv[i]));
        // A wrong command line has not been read to its end.
        const bool asJson = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
        Answer answer;
        const auto invocation = ParseCommandLine(std::move(arguments), answer);
        return invocation ? RunSafely(*invocation) : Tell(answer, asJson);
    }
    catch (const std::exception& error)
    {
        WriteError(std::string("quorvex: ") + error.what() + '\n');
        return kFailureExitStatus;
    }
}
