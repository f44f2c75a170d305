#include "netdisk/Schema.h"

namespace quorvex::services::netdisk
{

namespace
{

// A folder's parent is null at the top of the disk. An item in the recycle bin keeps its folder, to be put back there.
constexpr const char* FirstSchema = R"(
    CREATE TABLE netdisk_recycled (
        rs_id TEXT PRIMARY KEY,
        account_id INTEGER NOT NULL REFERENCES account (id),
        type INTEGER NOT NULL,
        rtime INTEGER NOT NULL
    ) STRICT;
    CREATE INDEX netdisk_recycled_by_account ON netdisk_recycled (account_id);
    CREATE TABLE netdisk_folder (
        fo_id TEXT PRIMARY KEY,
        account_id INTEGER NOT NULL REFERENCES account (id),
        parent_fo_id TEXT REFERENCES netdisk_folder (fo_id),
        name TEXT NOT NULL,
        ctime INTEGER NOT NULL,
        rs_id TEXT REFERENCES netdisk_recycled (rs_id)
    ) STRICT;
    CREATE INDEX netdisk_folder_by_parent ON netdisk_folder (account_id, parent_fo_id);
    CREATE TABLE netdisk_file (
        fkey TEXT PRIMARY KEY,
        account_id INTEGER NOT NULL REFERENCES account (id),
        fo_id TEXT REFERENCES netdisk_folder (fo_id),
        name TEXT NOT NULL,
        size INTEGER NOT NULL CHECK (size >= 0),
        md5 TEXT NOT NULL,
        blob_id INTEGER REFERENCES blob (id),
        downcount INTEGER NOT NULL DEFAULT 0,
        ctime INTEGER NOT NULL,
        rs_id TEXT REFERENCES netdisk_recycled (rs_id)
    ) STRICT;
    CREATE INDEX netdisk_file_by_folder ON netdisk_file (account_id, fo_id);
    CREATE INDEX netdisk_file_by_blob ON netdisk_file (blob_id);
    CREATE INDEX netdisk_file_by_item ON netdisk_file (rs_id);
    CREATE INDEX netdisk_folder_by_item ON netdisk_folder (rs_id);
)";

// What lies in a recycled folder bears that folder's item, so that a row without an item is always in its place. An
// item remembers what it was called and where it was, because the folders around it may go for ever before it does. The
// earlier version had no folders to make: all its items were files at the top.
constexpr const char* FoldersAndShares = R"(
    ALTER TABLE netdisk_recycled ADD COLUMN name TEXT NOT NULL DEFAULT '';
    ALTER TABLE netdisk_recycled ADD COLUMN fo_before TEXT NOT NULL DEFAULT '/';
    UPDATE netdisk_recycled SET name = COALESCE(
        (SELECT name FROM netdisk_file WHERE netdisk_file.rs_id = netdisk_recycled.rs_id), '');
    CREATE INDEX netdisk_folder_by_id_of_parent ON netdisk_folder (parent_fo_id);
    CREATE INDEX netdisk_file_by_id_of_folder ON netdisk_file (fo_id);
    CREATE INDEX netdisk_file_space ON netdisk_file (account_id, size);
    CREATE TABLE netdisk_share (
        pcode TEXT PRIMARY KEY,
        account_id INTEGER NOT NULL REFERENCES account (id),
        createtime INTEGER NOT NULL,
        deadline INTEGER NOT NULL,
        downcount INTEGER NOT NULL DEFAULT 0
    ) STRICT;
    CREATE INDEX netdisk_share_by_account ON netdisk_share (account_id, createtime);
    CREATE TABLE netdisk_shared_file (
        id INTEGER PRIMARY KEY,
        pcode TEXT NOT NULL REFERENCES netdisk_share (pcode) ON DELETE CASCADE,
        fkey TEXT NOT NULL REFERENCES netdisk_file (fkey) ON DELETE CASCADE,
        UNIQUE (pcode, fkey)
    ) STRICT;
    CREATE INDEX netdisk_shared_file_by_key ON netdisk_shared_file (fkey);
)";

} // namespace

void MigrateTables(Database& database)
{
    database.Migrate("netdisk", {FirstSchema, FoldersAndShares});
}

} // namespace quorvex::services::netdisk
