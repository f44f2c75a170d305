#pragma once

#include "common/Clock.h"
#include "common/Database.h"
#include "search/Condition.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::services::search
{

// Who is online in which application: who reported a status there and was not silent since for longer than a presence
// lasts.
class OnlineUsers
{
public:
    static constexpr std::int64_t DefaultLifetime = 5 * 60;
    static constexpr int PageSize = 100;
    static constexpr int Offline = 0;

    // Conditions are met by the values that UserValues keeps: it has to be there first.
    OnlineUsers(Database& database, Clock clock, std::int64_t lifetime);

    void Report(std::int64_t account, const std::string& app, int status);

    // Takes a user, or all, offline in every application; returns how many presences ended.
    int EndPresence(std::optional<std::int64_t> account);

    // The users online in the application who meet all conditions, by their ids: one page of them behind the first
    // `skip`, and how many there are.
    std::vector<std::int64_t> Find(const std::string& app, const std::vector<Condition>& conditions, std::int64_t skip);
    std::int64_t Count(const std::string& app, const std::vector<Condition>& conditions);

private:
    std::int64_t OldestReport() const { return clock_() - lifetime_; }

    Database& database_;
    Clock clock_;
    std::int64_t lifetime_;
};

} // namespace quorvex::services::search
