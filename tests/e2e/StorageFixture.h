#pragma once

#include "DiskFixture.h"

#include <string>
#include <utility>
#include <vector>

namespace quorvex::e2e
{

/// The services with two accounts, and the console as a user of the file storage.
class StorageFixture : public DiskFixture
{
protected:
    /// @param commands the commands' group: "storage" or "depot"
    explicit StorageFixture(std::string commands) : group(std::move(commands)) {}

    std::string StorageServer() const;

    std::vector<std::string> Command(std::vector<std::string> arguments, const Account& account = kAnn) const override;

    /// Asks the services for what no client can.
    Json::Value Admin(const std::string& path, const Json::Value& body) const;

    /// Ends the account's logins, as time would.
    /// @param kind "service" for the logins of services, "centre" for the sessions that open them
    void EndSessions(const Account& account, const char* kind = "service") const;

    std::string UidOf(const Account& account) const;

    std::string group;
};

} // namespace quorvex::e2e
