#include "storage/Schema.h"

namespace quorvex::services::storage
{

namespace
{

// Shelf 0 holds the pictures, which all accounts share; an account's emoticons are on the shelf of its id.
constexpr const char* FirstSchema = R"(
    CREATE TABLE storage_named_file (
        shelf INTEGER NOT NULL,
        fkey TEXT NOT NULL,
        account_id INTEGER NOT NULL REFERENCES account (id),
        blob_id INTEGER NOT NULL REFERENCES blob (id),
        size INTEGER NOT NULL CHECK (size >= 0),
        PRIMARY KEY (shelf, fkey)
    ) STRICT, WITHOUT ROWID;
    CREATE INDEX storage_named_file_space ON storage_named_file (account_id, size);
    CREATE INDEX storage_named_file_by_blob ON storage_named_file (blob_id);
    CREATE TABLE storage_depot_file (
        fkey TEXT PRIMARY KEY,
        account_id INTEGER NOT NULL REFERENCES account (id),
        name TEXT NOT NULL,
        size INTEGER NOT NULL CHECK (size >= 0),
        md5 TEXT NOT NULL,
        sha1 TEXT NOT NULL,
        blob_id INTEGER REFERENCES blob (id),
        createtime INTEGER NOT NULL,
        deadline INTEGER NOT NULL
    ) STRICT;
    CREATE INDEX storage_depot_file_space ON storage_depot_file (account_id, size);
    CREATE INDEX storage_depot_file_by_blob ON storage_depot_file (blob_id);
    CREATE INDEX storage_depot_file_by_deadline ON storage_depot_file (deadline);
)";

// Files that are announced by their first block alone have a ticket, and no MD5 before they are finished.
constexpr const char* Tickets = R"(
    ALTER TABLE storage_depot_file ADD COLUMN ticket TEXT;
    CREATE UNIQUE INDEX storage_depot_file_by_ticket ON storage_depot_file (ticket) WHERE ticket IS NOT NULL;
)";

} // namespace

void MigrateTables(Database& database)
{
    database.Migrate("storage", {FirstSchema, Tickets});
}

} // namespace quorvex::services::storage
