#include "support/DiskCalls.h"
#include "support/StorageCalls.h"

namespace quorvex::services::test
{

namespace
{

// The network disk's tables as the first version made them.
constexpr const char* FirstVersion = R"(
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

constexpr const char* FirstVersionRows = R"(
    INSERT INTO netdisk_recycled VALUES ('item', 1, 1, 1600000001);
    INSERT INTO netdisk_file VALUES ('kept', 1, NULL, 'kept.txt', 7, 'digest', 1, 3, 1600000000, NULL);
    INSERT INTO netdisk_file VALUES ('gone', 1, NULL, 'gone.txt', 7, 'digest', 1, 0, 1600000000, 'item');
    UPDATE blob SET refs = 2, md5 = 'digest';
)";

} // namespace

TEST(MigrationTest, KeepsTheDiskOfTheFirstVersion)
{
    const TemporaryFolder folder;
    Application::Options options;
    options.dataFolder = folder.Path();
    options.http.isQuiet = true;
    options.hashIterations = 1;
    {
        Database database(folder.Path() / "services.db");
        Accounts accounts(database, options.hashIterations);
        ASSERT_EQ(accounts.Ensure("alice", "secret"), 1);
        BlobStore blobs(database, folder.Path());
        BlobStore::Incoming incoming(blobs.TemporaryFolder());
        incoming.Append("content");
        BlobStore::Staged staged = blobs.Stage(incoming);
        database.Transact([&](Transaction& transaction) { ASSERT_EQ(blobs.Reference(transaction, staged), 1); });
        database.Migrate("netdisk", {FirstVersion});
        database.Migrate("rows", {FirstVersionRows});
    }

    Application application(options);
    application.Start();
    ServiceClient client(application.Port());
    client.Login("alice", "secret");
    EXPECT_EQ(NamesIn(client), std::vector<std::string>{"kept.txt"});
    EXPECT_EQ(client.UsedSpace(), 14U);
    const Json::Value item = ListBin(client)[0];
    EXPECT_EQ(item["name"].asString(), "gone.txt");
    EXPECT_EQ(item["fo_before"].asString(), "/");
    EXPECT_EQ(item["rtime"].asInt64(), 1'600'000'001);
    EXPECT_EQ(Recover(client, "item").status, 200);
    EXPECT_EQ(client.Download("gone").body, "content");
    EXPECT_EQ(RecycleFolder(client, AddFolder(client, "new")).status, 200);
    EXPECT_EQ(Share(client, {"kept", "gone"}).status, 200);
}

TEST(MigrationTest, AFolderOfTheNetworkDiskAloneGainsTheFileStorage)
{
    const TemporaryFolder folder;
    Application::Options options;
    options.dataFolder = folder.Path();
    options.http.isQuiet = true;
    options.hashIterations = 1;
    std::string key;
    {
        Application application(options);
        application.GetAccounts().Ensure("alice", "secret");
        application.Start();
        ServiceClient client(application.Port());
        client.Login("alice", "secret");
        key = client.UploadWhole("kept.txt", "content").Text("fkey");
    }
    {
        // As the version before left it.
        SQLite::Database database((folder.Path() / "services.db").string(), SQLite::OPEN_READWRITE);
        database.exec("DROP TABLE storage_named_file; DROP TABLE storage_depot_file;"
                      "DELETE FROM schema_step WHERE component = 'storage'");
    }

    Application application(options);
    application.Start();
    ServiceClient client(application.Port());
    EXPECT_EQ(ResultOf(StorageLogin(client, "alice", "secret")), 200);
    EXPECT_EQ(ResultOf(PutPicture(client, "p.png", "content")), 200);
    EXPECT_EQ(GetFromDepot(client, "", PutInDepot(client, "d", "depot")).body, "depot");
    EXPECT_EQ(GetPicture(client, "p.png").body, "content");
    EXPECT_EQ(client.Download(key).body, "content");
    EXPECT_EQ(CountFiles(folder.Path() / "blobs"), 2U);
}

} // namespace quorvex::services::test
