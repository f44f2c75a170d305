#pragma once

#include "wire/Arguments.h"

#include <memory>
#include <string>

namespace wire
{

/// A client of the module whose operations are called by name.
class Client
{
public:
    virtual ~Client() = default;

    /// @return the operation's result as a case writes it
    virtual std::string call(const std::string& operation, Arguments& arguments) = 0;
};

std::unique_ptr<Client> makeNetDisk(const Arguments& arguments);

/// @param kind which class: "netdisk"
std::unique_ptr<Client> makeClient(const std::string& kind, const Arguments& arguments);

} // namespace wire
