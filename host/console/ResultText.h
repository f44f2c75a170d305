#pragma once

#include <string>

namespace quorvex::console
{

/// Who sends an operation's requests. The host's HTTP session service has results of its own.
enum class Transport
{
    Module,
    Host
};

/// What a result of the module means, as a part of a sentence.
std::string MeaningOf(int result, Transport transport = Transport::Module);

} // namespace quorvex::console
