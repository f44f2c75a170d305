#pragma once

#include "Command.h"
#include "Options.h"

#include <optional>
#include <string>
#include <vector>

namespace quorvex::console
{

/// What a group of commands talks to.
struct Service
{
    const wchar_t* variable;  ///< of the environment, where its address is taken from when none is given
    const char* localAddress; ///< its address when there is none there either
    bool takesTickets;
};

struct Invocation
{
    Options options;
    Command command = nullptr;
    const Service* service = nullptr;
    bool needsLogin = true;
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

} // namespace quorvex::console
