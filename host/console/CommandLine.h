#pragma once

#include "Command.h"
#include "Options.h"
#include "Services.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvex::console
{

struct Invocation
{
    Options options;
    Command command = nullptr;
    std::string words;                ///< of the command, such as "netdisk put"
    const Service* service = nullptr; ///< null for what needs no server
    bool needsLogin = true;
};

/// What an option or an argument of the grammar takes.
struct ArgumentInfo
{
    std::vector<std::string> names; ///< "-o", "--out"; none for an argument without a dash
    std::string type;               ///< what help calls its value; empty for a flag
    std::vector<std::string> choices;
    bool isRepeated = false;
};

/// One command of the grammar, or a group of commands.
struct CommandInfo
{
    std::string words; ///< empty for the program itself
    std::string description;
    bool isGroup = false;
    std::vector<ArgumentInfo> options; ///< its own; those of the groups above it serve as well
    std::vector<ArgumentInfo> arguments;
};

/// What the command line asks for, when that is no command: help, the version, or a complaint about itself.
struct Answer
{
    int exitStatus = 0;
    std::string text;
};

/// @param arguments the arguments in UTF-8, without the program's name
/// @param answer    receives what to print when nothing is to be run
std::optional<Invocation> ParseCommandLine(std::vector<std::string> arguments, Answer& answer);

/// The whole grammar: the program first, and each group before what is in it.
std::vector<CommandInfo> AllCommands();

} // namespace quorvex::console
