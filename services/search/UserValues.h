#pragma once

#include "common/Database.h"
#include "search/Form.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quorvex::services::search
{

// What users tell about themselves: values under names, of their profile and of each application.
class UserValues
{
public:
    explicit UserValues(Database& database);

    // Sets all of the values or none; a name that comes twice gets the last one. Without an application they belong to
    // the profile.
    void Update(std::int64_t account, const std::optional<std::string>& app, const std::vector<Field>& fields);

private:
    Database& database_;
};

} // namespace quorvex::services::search
