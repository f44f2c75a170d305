#include "CommandLine.h"
#include "Failure.h"
#include "Interruption.h"
#include "Output.h"
#include "Text.h"

#include <ferrolink/log.h>

#include <algorithm>
#include <exception>

namespace
{

using namespace quorvex::console;

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

/// Tells what a command has to tell, also of its failure.
/// @return the exit status
int Tell(const Report& report, bool asJson)
{
    const auto& failure = report.WhyFailed();
    const std::string text = asJson ? report.ForMachines() : report.ForPeople();
    if (!text.empty())
        WriteOut(text);
    if (failure && !asJson)
        WriteFailure(*failure);
    return failure ? failure->Status() : ExitStatus::kDone;
}

/// @param command its words; empty when the command line names none
int TellFailure(const Failure& failure, const std::string& command, bool asJson)
{
    Report report;
    report.AddData("command", command.empty() ? Json::Value() : Json::Value(command));
    report.SetFailure(failure);
    return Tell(report, asJson);
}

int Tell(const Answer& answer, bool asJson)
{
    if (answer.exitStatus == ExitStatus::kDone)
    {
        WriteOut(answer.text);
        return answer.exitStatus;
    }
    TellFailure(Failure(answer.text.substr(0, answer.text.find('\n'))), {}, asJson);
    if (!asJson)
        WriteError("Run with --help for more information.\n");
    return answer.exitStatus;
}

int Run(const Invocation& invocation)
{
    StartLog(invocation.options);
    Report report = invocation.command(invocation.options);
    report.AddData("command", invocation.words);
    return Tell(report, invocation.options.json);
}

int RunSafely(const Invocation& invocation)
{
    const bool asJson = invocation.options.json;
    TakeInterruptions([&invocation, asJson] {
        TellFailure(Failure::Interruption("interrupted: " + invocation.words), invocation.words, asJson);
    });
    try
    {
        return Run(invocation);
    }
    catch (const Failure& failure)
    {
        return TellFailure(failure, invocation.words, asJson);
    }
    catch (const std::exception& error)
    {
        return TellFailure(Failure(FromSystem(error.what())), invocation.words, asJson);
    }
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
        return ExitStatus::kFailed;
    }
}
