#include "SeedFolder.h"

#include "support/DiskCalls.h"
#include "support/ServiceFixture.h"
#include "support/StorageCalls.h"
#include "support/ThirdCalls.h"

#include <httplib.h>

namespace quorvex::services::test
{

namespace
{

using fuzz::WriteSeed;

const std::string kContent = "what a file may hold";

/// Every operation is called, and the services' answers become inputs: the parser's letter, and the body as it came.
class ServiceSeeds : public ServiceFixture
{
protected:
    static void Disk(const std::string& parsers, const std::string& name, const Reply& reply)
    {
        Write("netdisk-replies", parsers, name, reply.body);
    }
    static void Storage(const std::string& parsers, const std::string& name, const Reply& reply)
    {
        Write("storage-replies", parsers, name, reply.body);
    }
    static void Search(const std::string& parsers, const std::string& name, const Reply& reply)
    {
        Write("search-replies", parsers, name, reply.body);
    }

    static void Headers(const std::string& name, const Reply& reply)
    {
        WriteSeed("header-values", name + "-disposition", "D" + reply.Header("Content-Disposition"));
        if (const std::string range = reply.Header("Content-Range"); !range.empty())
        {
            WriteSeed("header-values", name + "-range", "T" + range);
        }
    }

    /// The body as it is packed on the wire.
    void Packed(const std::string& name, const ServiceClient& client, const std::string& path)
    {
        httplib::Client raw("127.0.0.1", client.Port());
        raw.set_decompress(false);
        const auto result = raw.Get(path, {{"Cookie", client.Cookie()}, {"Accept-Encoding", "gzip"}});
        ASSERT_TRUE(result);
        EXPECT_EQ(result->get_header_value("Content-Encoding"), "gzip");
        const char cuts[] = {'S', 0, 3, 1, 10, 50};
        WriteSeed("inflate", name, std::string(cuts, sizeof(cuts)) + result->body);
        WriteSeed("inflate", name + "-limit", std::string("L\0\0\0\0\x40", 6) + result->body);
    }

private:
    static void Write(const std::string& target, const std::string& parsers, const std::string& name,
                      const std::string& body)
    {
        for (const char parser : parsers)
        {
            // These have the key's room before the body.
            const bool hasRoom = (target == "netdisk-replies" && parser == 'U') || parser == 'k';
            WriteSeed(target, name + "-" + std::to_string(static_cast<int>(parser)),
                      parser + std::string(hasRoom ? 1 : 0, '\x21') + body);
        }
    }
};

TEST_F(ServiceSeeds, NetDisk)
{
    ServiceClient client(application_->Port());
    const Reply login = client.Login("alice", "secret");
    Disk("L", "login", login);
    Disk("S", "check", client.PostJson("/object/passport/check", Body({{"uap_sid", login.Text("uap_sid")}})));
    Disk("E", "refused", ServiceClient(application_->Port()).Login("alice", "wrong"));

    const Reply upload = client.UploadWhole("a file.txt", kContent);
    Disk("UB", "upload", upload);
    const std::string key = upload.Text("fkey");
    const Reply large = client.CreateLarge("gr\xC3\xB6\xC3\x9F"
                                           "er.iso",
                                           kContent);
    Disk("U", "create", large);
    Disk("B", "block", client.UploadBlock(large.Text("fkey"), 0, kContent));
    Disk("E", "finish", client.FinishLarge(large.Text("fkey")));
    Disk("E", "missing", client.Download("none"));

    const Reply folder = client.PostJson("/object/folder/add", Body({{"name", "\xE5\xA4\xB9"}, {"parent_fo_id", "0"}}));
    Disk("N", "folder", folder);
    PutFile(client, "\xF0\x9F\x98\x80 in a folder", "", folder.Text("fo_id"));
    PutFile(client, std::string(200, 'n'), "long", "0");
    Disk("FI", "listing", ListFolder(client, "0"));
    Packed("listing", client, "/object/folder/list?fo_id=0");
    Disk("F", "inner", ListFolder(client, folder.Text("fo_id")));
    Disk("Q", "capacity", client.Get("/object/capacity/info"));
    Packed("capacity", client, "/object/capacity/info");

    const Reply share = Share(client, {key}, 3600);
    Disk("C", "share", share);
    const std::string code = share.Text("pcode");
    Disk("P", "shares", client.Get("/object/pcode/list?type=0"));
    Disk("I", "contents", ShareInfo(client, code));
    Disk("E", "save", Save(client, code, "0"));
    Headers("shared", Fetch(client, code, key, "bytes=0-0"));
    Headers("down", client.Download(key));
    Headers("part", client.Download(large.Text("fkey"), "bytes=0-0"));

    RecycleFile(client, key);
    RecycleFolder(client, folder.Text("fo_id"));
    Disk("R", "bin", client.Get("/object/recyclebin/list"));
    Disk("E", "logout", client.Get("/object/passport/logout"));
    Disk("EFRPQ", "expired", client.Get("/object/capacity/info"));
}

TEST_F(ServiceSeeds, Storage)
{
    ServiceClient client(application_->Port());
    const std::string session = client.Login("alice", "secret").Text("uap_sid");
    const Reply login = StorageLogin(client, "alice", "secret");
    Storage("Ll", "login", login);
    Storage("Ll", "check", client.Get("/storage/check.php?s=" + session));
    Storage("Ll", "refused", StorageLogin(client, "alice", "wrong"));
    const std::string uid = login.Text("uid");

    Storage("Uk", "picture", PutPicture(client, "p.jpg", kContent));
    Storage("Uk", "again", PutPicture(client, "p.jpg", kContent));
    Storage("Uk", "emoticon", PutEmoticon(client, "e.gif", kContent));
    PutEmoticon(client, "\xC3\xA4.gif", "another");
    Storage("E", "emoticons", ListEmoticons(client));
    Storage("Rr", "remove", RemoveEmoticon(client, "e.gif"));
    Storage("Rr", "missing", RemoveEmoticon(client, "e.gif"));
    Headers("picture", GetPicture(client, "p.jpg"));

    const Reply created = CreateInDepot(client, "large.bin", kContent);
    Storage("Uk", "create", created);
    const std::string key = created.Text("fkey");
    Storage("Rr", "chunk", PutChunk(client, key, 0, kContent));
    Storage("Rr", "finish", FinishInDepot(client, key));
    CreateInDepot(client, "unfinished", "x");
    Storage("F", "depot", ListDepot(client));
    Storage("D", "space", DepotSpace(client));
    Storage("Rr", "renew", RenewInDepot(client, key));
    Headers("depot", GetFromDepot(client, uid, key));
    Headers("depot-part", GetFromDepot(client, uid, key, "bytes=0-0"));
    Storage("Rr", "removed", RemoveFromDepot(client, key));

    const ThirdClient third(application_->Port(), "session=" + session);
    Storage("A", "third-picture", third.PutPicture("q.jpg", kContent));
    ThirdBlock block;
    block.content = kContent;
    const Reply first = third.PutBlock(block);
    Storage("A", "third-block", first);
    block.ticket = "none";
    Storage("A", "third-refused", third.PutBlock(block));
    Headers("third", third.GetFile("0", first.Text("fkey"), "bytes=0-3"));

    Storage("Lo", "logout", client.Get("/storage/logout_rest.php"));
    Storage("FEDR", "expired", ListDepot(client));
}

TEST_F(ServiceSeeds, Search)
{
    ServiceClient client(application_->Port());
    const std::string session = client.Login("alice", "secret").Text("uap_sid");
    Search("L", "check", client.Get("/search/check.php?s=" + session));
    Search("L", "refused", client.Get("/search/check.php?s=none"));
    Search("R", "status", client.Get("/search/status.php?st=1&app=im"));
    Search("R", "update", client.PostJson("/search/update.php", "app=im&city=Rome&age=33"));
    Search("U", "found", client.PostJson("/search/search.php", "app=im&skip=0&age=20-40"));
    Search("U", "none", client.PostJson("/search/search.php", "app=im&skip=0&age=1"));
    Search("C", "count", client.PostJson("/search/count.php", "app=im&age=20-40"));
    Search("RUC", "bad", client.PostJson("/search/search.php", "app=im&skip=no"));
    Search("L", "logout", client.Get("/search/logout_rest.php"));
    Search("RUC", "expired", client.PostJson("/search/search.php", "app=im&skip=0&age=20-40"));
}

} // namespace

} // namespace quorvex::services::test
