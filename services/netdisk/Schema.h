#pragma once

#include "common/Database.h"

namespace quorvex::services::netdisk
{

// The types of the recycle bin's items.
enum class ItemType
{
    File = 1,
    Folder = 2,
};

// Brings all tables of the network disk up to date; they refer to each other and change together.
void MigrateTables(Database& database);

} // namespace quorvex::services::netdisk
