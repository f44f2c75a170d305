#pragma once

#include "common/Database.h"

namespace quorvex::services::storage
{

// Brings all tables of the file storage up to date.
void MigrateTables(Database& database);

} // namespace quorvex::services::storage
