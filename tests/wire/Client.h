#pragma once

#include "support/Text.h"
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

/// Results as a case writes them.
inline std::string shown(int result)
{
    return std::to_string(result);
}

inline std::string shown(bool result)
{
    return result ? "true" : "false";
}

inline std::string shown(const wchar_t* result)
{
    return result == nullptr ? "null" : "\"" + support::toUtf8(result) + "\"";
}

/// A time-out among a client's arguments; without one there is no limit.
inline int timeout(const Arguments& arguments, std::size_t index)
{
    return index < arguments.count() ? arguments.number<int>(index) : 0;
}

std::unique_ptr<Client> makeNetDisk(const Arguments& arguments);
std::unique_ptr<Client> makeSearch(const Arguments& arguments);
std::unique_ptr<Client> makeStorage(const Arguments& arguments);
std::unique_ptr<Client> makeStorage2(const Arguments& arguments);
std::unique_ptr<Client> makeStorage3(const Arguments& arguments);

/// @param kind which class: "netdisk", "search", "storage", "storage2", "storage3"
std::unique_ptr<Client> makeClient(const std::string& kind, const Arguments& arguments);

} // namespace wire
