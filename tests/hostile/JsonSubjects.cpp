// JSON of every wrong type for every key that is read, and documents that are hardly any.

#include "hostile/Subjects.h"

#include <algorithm>

namespace hostile
{
namespace
{

/// For large replies: their text is no part of an error line.
constexpr unsigned errorsOnly = 8;

/// What a key's value is read as.
enum class Type
{
    Text,
    Int,
    Unsigned,
    Wide,    ///< a number that may have more than 32 bits
    Array,   ///< a value of another type is an error
    Listing, ///< a value of another type is an empty listing
    Code     ///< the server's own result, which is handed on
};

struct Key
{
    std::string name;
    std::string good; ///< as JSON
    Type type;
    bool isRequired = true;
};

/// A reply that one operation parses.
struct Shape
{
    const Operation* operation;
    std::string before; ///< the object whose keys these are
    std::vector<Key> keys;
    std::string behind;

    /// The document with one key's value changed, or without the key when there is none.
    std::string with(const Key& changed, const std::string* value) const
    {
        std::string members;
        for (const Key& key : keys)
        {
            const bool isChanged = &key == &changed;
            if (isChanged && value == nullptr)
                continue;
            members += (members.empty() ? "\"" : ",\"") + key.name + "\":" + (isChanged ? *value : key.good);
        }
        return before + "{" + members + "}" + behind;
    }
};

/// What a value is, as far as the readers tell values apart.
enum class Kind
{
    Null,
    Truth,
    Small,     ///< 7
    Negative,  ///< -7
    Fraction,  ///< 1.5
    Beyond32,  ///< a number that has more than 32 bits
    BeyondAll, ///< one that a double does not hold
    Text,
    Container,
    Nothing ///< no JSON
};

struct Value
{
    std::string json;
    Kind kind;
};

const std::vector<Value>& values()
{
    static const std::vector<Value> all{
        {"null", Kind::Null},
        {"true", Kind::Truth},
        {"7", Kind::Small},
        {"-7", Kind::Negative},
        {"1.5", Kind::Fraction},
        {"4294967296", Kind::Beyond32},
        {"-4294967297", Kind::Beyond32},
        {"9223372036854775808", Kind::Beyond32},
        {"-9223372036854775809", Kind::Beyond32},
        {"18446744073709551616", Kind::Beyond32},
        {"1e300", Kind::Beyond32},
        {"-1e300", Kind::Beyond32},
        {"1e999", Kind::BeyondAll},
        {"1" + std::string(400, '0'), Kind::BeyondAll},
        {"\"\"", Kind::Text},
        {"\"7\"", Kind::Text},
        {"\"" + std::string(100 * 1024, 'x') + "\"", Kind::Text},
        {"{}", Kind::Container},
        {"{\"a\":{\"b\":[1]}}", Kind::Container},
        {"NaN", Kind::Nothing},
        {"nul", Kind::Nothing},
        {"'x'", Kind::Nothing},
        {"\"x", Kind::Nothing},
        {"", Kind::Nothing},
    };
    return all;
}

bool isNumberOrTruth(Kind kind)
{
    return kind == Kind::Truth || kind == Kind::Small || kind == Kind::Negative || kind == Kind::Fraction;
}

/// What a code is read as that such a value stands for.
std::vector<int> resultOfCode(Kind kind)
{
    switch (kind)
    {
    case Kind::Small:
        return {7};
    case Kind::Negative:
        return {-7};
    default:
        // A truth and a fraction are 1, and so is what cannot be read.
        return {1};
    }
}

bool isTaken(Type type, Kind kind)
{
    switch (type)
    {
    case Type::Text:
        return kind == Kind::Text;
    case Type::Int:
        return isNumberOrTruth(kind);
    case Type::Unsigned:
        return isNumberOrTruth(kind) && kind != Kind::Negative;
    case Type::Wide:
        return isNumberOrTruth(kind) || kind == Kind::Beyond32;
    case Type::Listing:
        return true;
    default:
        return false;
    }
}

std::vector<int> resultOf(const Shape& shape, const Key& key, Kind kind)
{
    const int success = shape.operation->success;
    if (kind == Kind::Nothing || kind == Kind::BeyondAll)
        return {1};
    if (kind == Kind::Null)
        return {key.isRequired ? 1 : success};
    if (key.type == Type::Code)
        return resultOfCode(kind);
    return {isTaken(key.type, kind) ? success : 1};
}

Key text(const char* name, bool isRequired = true)
{
    return {name, "\"x\"", Type::Text, isRequired};
}

Key number(const char* name, Type type, bool isRequired = true)
{
    return {name, "1", type, isRequired};
}

Key code(const char* name = "result")
{
    return {name, "200", Type::Code};
}

std::vector<Shape> diskShapes()
{
    static constexpr bool optional = false;

    return {
        {&operation("CNetDisk.UserLogin"), "", {number("uap_uid", Type::Int)}, ""},
        {&operation("CNetDisk.UserLoginPassword"),
         "",
         {number("uap_uid", Type::Int), text("uap_sid"), text("QVUserCenterLogin", optional)},
         ""},
        {&operation("CNetDisk.FileUpload"),
         "",
         {text("fkey"), number("fsize", Type::Int), number("cflag", Type::Int)},
         ""},
        {&operation("CNetDisk.LargeFileCreate"),
         "",
         {text("fkey"), number("fsize", Type::Int), number("cflag", Type::Int)},
         ""},
        {&operation("CNetDisk.LargeFileFinish"), "", {text("fkey"), number("fsize", Type::Int)}, ""},
        {&operation("CNetDisk.FolderAdd"), "", {text("fo_id")}, ""},
        {&operation("CNetDisk.PcodeCreate"), "", {text("pcode")}, ""},
        {&operation("CNetDisk.CapacityInfo"),
         "",
         {number("total_space", Type::Wide), number("used_space", Type::Wide), number("max_file_size", Type::Unsigned)},
         ""},
        {&operation("CNetDisk.FolderList"),
         "",
         {{"files", "[]", Type::Listing, optional}, {"folders", "[]", Type::Listing, optional}},
         ""},
        {&operation("CNetDisk.PcodeList"), "", {{"pcodes", "[]", Type::Listing, optional}}, ""},
        {&operation("CNetDisk.RecyclebinList"), "", {{"data", "[]", Type::Listing, optional}}, ""},
    };
}

std::vector<Shape> diskListings()
{
    static constexpr bool optional = false;

    std::vector<Shape> shapes;
    for (const char* const name : {"CNetDisk.FolderList", "CNetDisk.FolderListUtf8"})
    {
        shapes.push_back({&operation(name),
                          "{\"files\":[",
                          {text("fkey", optional), text("name", optional), number("size", Type::Unsigned, optional),
                           number("cflag", Type::Int, optional), number("downcount", Type::Unsigned, optional),
                           number("ctime", Type::Wide, optional), text("md5", optional)},
                          "]}"});
        shapes.push_back({&operation(name), "{\"folders\":[", {text("fo_id", optional), text("name", optional)}, "]}"});
    }
    shapes.push_back({&operation("CNetDisk.PcodeList"),
                      "{\"pcodes\":[",
                      {text("pcode", optional), number("createtime", Type::Wide, optional),
                       number("deadline", Type::Wide, optional), number("downcount", Type::Unsigned, optional)},
                      "]}"});
    shapes.push_back({&operation("CNetDisk.PcodeInfo"),
                      "{\"files\":[",
                      {text("fid", optional), text("name", optional), number("size", Type::Unsigned, optional),
                       number("cflag", Type::Int, optional), text("md5", optional)},
                      "]}"});
    for (const char* const name : {"CNetDisk.RecyclebinList", "CNetDisk.RecyclebinListUtf8"})
    {
        shapes.push_back({&operation(name),
                          "{\"data\":[",
                          {text("rs_id", optional), number("rtime", Type::Wide, optional),
                           number("type", Type::Int, optional), text("name", optional), text("fo_before", optional)},
                          "]}"});
    }
    return shapes;
}

std::vector<Shape> storageShapes()
{
    const std::vector<Key> login{code(), text("uid"), text("sid"), text("errorinfo")};
    const std::vector<Key> stored{code(), text("fkey"), number("fsize", Type::Unsigned), text("errorinfo")};
    const std::vector<Key> done{code(), text("errorinfo")};
    const std::vector<Key> listed{code(), text("errorinfo"), {"files", "[]", Type::Array}};
    const std::vector<Key> emoticon{text("fkey"), text("fname"), number("fsize", Type::Unsigned)};
    const std::vector<Key> depotFile{
        text("fkey"),  text("fname"),      number("fsize", Type::Unsigned), text("fmd5"),
        text("fsha1"), text("createtime"), number("finish", Type::Int),     number("leftminute", Type::Int)};
    static const std::string before = R"({"result":200,"errorinfo":"","files":[)";
    return {
        {&operation("CFileStorage.UserLogin"), "", login, ""},
        {&operation("CFileStorage.UserPhotoUpload"), "", stored, ""},
        {&operation("CFileStorage.LargeFileCreate"), "", stored, ""},
        {&operation("CFileStorage.LargeFileUpload"), "", done, ""},
        {&operation("CFileStorage.EmoticonGetList"), "", listed, ""},
        {&operation("CFileStorage.EmoticonGetList"), before, emoticon, "]}"},
        {&operation("CFileStorage.LargeFileGetList"), "", listed, ""},
        {&operation("CFileStorage.LargeFileGetList"), before, depotFile, "]}"},
        {&operation("CFileStorage.LargeFileDepotInfo"),
         "",
         {code(), text("uid"), number("totalspace", Type::Wide), number("totalsize", Type::Wide),
          number("freespace", Type::Wide), text("errorinfo")},
         ""},
    };
}

std::vector<Shape> laterShapes()
{
    const std::vector<Key> login{code(), text("uid"), text("sid"), text("errorinfo")};
    const std::vector<Key> done{code(), text("errorinfo")};
    return {
        {&operation("CFileStorage2.UserLogin"), "", login, ""},
        {&operation("CFileStorage2.LargeFileCreate"),
         "",
         {code(), text("fkey"), number("fsize", Type::Unsigned), text("errorinfo")},
         ""},
        {&operation("CFileStorage2.LargeFileUpload"), "", done, ""},
        {&operation("CFileStorage3.BufferUpload"),
         "",
         {code("code"), text("fkey"), text("ticket"), number("fsize", Type::Unsigned), text("msg")},
         ""},
        {&operation("COnlineUserSearch.ClientLogin"), "", login, ""},
        {&operation("COnlineUserSearch.UserReportStatus"), "", done, ""},
        {&operation("COnlineUserSearch.QueryByCondition"),
         "",
         {code(), text("errorinfo"), {"users", "[]", Type::Array}},
         ""},
        {&operation("COnlineUserSearch.QueryCountByConditionString"),
         "",
         {code(), text("errorinfo"), number("total", Type::Int)},
         ""},
    };
}

std::vector<Attack> wrongValues(const std::vector<Shape>& shapes)
{
    std::vector<Attack> all;
    for (const Shape& shape : shapes)
    {
        for (const Key& key : shape.keys)
        {
            for (const Value& value : values())
            {
                all.push_back({key.name + ":" + value.json.substr(0, 40), shape.operation,
                               reply(answer(shape.with(key, &value.json))), resultOf(shape, key, value.kind)});
            }
            all.push_back({"no " + key.name, shape.operation, reply(answer(shape.with(key, nullptr))),
                           resultOf(shape, key, Kind::Null)});
        }
    }
    return all;
}

/// Texts around the length of every array that they may be copied into.
std::vector<Attack> textLengths()
{
    std::vector<Shape> shapes = diskListings();
    for (const auto& more : {diskShapes(), storageShapes(), laterShapes()})
        shapes.insert(shapes.end(), more.begin(), more.end());

    std::vector<Attack> all;
    for (const Shape& shape : shapes)
    {
        for (const Key& key : shape.keys)
        {
            if (key.type != Type::Text)
                continue;
            for (const std::size_t size : {19U, 20U, 33U, 34U, 65U, 66U, 130U, 4097U, 8194U, 20000U})
            {
                const std::string narrow = "\"" + std::string(size, 'x') + "\"";
                all.push_back({key.name + " of " + std::to_string(size),
                               shape.operation,
                               reply(answer(shape.with(key, &narrow))),
                               {shape.operation->success}});
            }
            // Characters that fill two places, so that one may straddle the end of the room.
            for (const std::size_t count : {16U, 33U, 65U})
            {
                std::string pairs = "\"";
                for (std::size_t i = 0; i < count; ++i)
                    pairs += "\xF0\x9F\x98\x80";
                pairs += "\"";
                all.push_back({key.name + " of " + std::to_string(count) + " pairs",
                               shape.operation,
                               reply(answer(shape.with(key, &pairs))),
                               {shape.operation->success}});
            }
        }
    }
    return all;
}

/// One of each class, and of each family of replies.
const std::vector<const Operation*>& parsers()
{
    static const std::vector<const Operation*> all{
        &operation("CNetDisk.UserLoginPassword"),         &operation("CNetDisk.CapacityInfo"),
        &operation("CFileStorage.UserPhotoUpload"),       &operation("CFileStorage.LargeFileGetList"),
        &operation("CFileStorage2.LargeFileUpload"),      &operation("CFileStorage3.BufferUpload"),
        &operation("COnlineUserSearch.QueryByCondition"),
    };
    return all;
}

std::string nested(std::size_t depth, char open, char close)
{
    std::string text;
    for (std::size_t i = 0; i < depth; ++i)
        text += open == '{' ? "{\"a\":" : "[";
    return text + "1" + std::string(depth, close);
}

std::vector<Attack> oddDocuments()
{
    std::vector<Attack> all;
    for (const Operation* each : parsers())
    {
        const std::string& good = each->body;
        const std::string members = good.substr(1);
        const auto attack = [&](const std::string& name, const std::string& body, int expected) {
            all.push_back({name, each, reply(answer(body)), {expected}});
        };
        for (const char* const root : {"null",
                                       "true",
                                       "7",
                                       "-7",
                                       "1.5",
                                       "1e999",
                                       "\"x\"",
                                       "\"\"",
                                       "[]",
                                       "{}",
                                       "[{}]",
                                       "",
                                       " ",
                                       "{",
                                       "}",
                                       "[",
                                       "]",
                                       ",",
                                       ":",
                                       "{}}",
                                       "[[",
                                       "{\"",
                                       "{\"a\"",
                                       "{\"a\":",
                                       "{\"a\":1",
                                       "{\"a\":1,",
                                       "{,}",
                                       "{1:2}",
                                       "{\"a\" 1}",
                                       "{'a':1}",
                                       "//",
                                       "/*",
                                       "/**/",
                                       "/",
                                       "<html>",
                                       "\xEF\xBB\xBF",
                                       "\xFF\xFE{\0}",
                                       "\x1F\x8B",
                                       "-",
                                       "+1",
                                       ".",
                                       "\\",
                                       "tru",
                                       "truee"})
            attack(std::string("the document ") + root, root, 1);
        attack("zero bytes alone", std::string(10, '\0'), 1);
        attack("a byte order mark", "\xEF\xBB\xBF" + good, each->success);
        attack("comments", "/* a */ // b\n" + good + " // c", each->success);
        attack("blanks around", std::string(5000, ' ') + good + std::string(5000, '\n'), each->success);
        attack("garbage behind", good + "garbage{[\"", each->success);
        attack("a zero byte behind", good + std::string(1, '\0') + "x", each->success);
        attack("a second document behind", good + "{\"result\":403,\"code\":403}", each->success);
        attack("a key of zero bytes", std::string("{\"\0\\u0000\":1,", 13) + members, each->success);
        attack("an empty key", "{\"\":1," + members, each->success);
        attack("a key of 100 KiB", "{\"" + std::string(100 * 1024, 'k') + "\":1," + members, each->success);
        // The last one of a name counts.
        attack("every key before with another value",
               R"({"result":[],"code":{},"fkey":1,"fsize":"x","cflag":[],"uap_uid":{},"uap_sid":0,"errorinfo":[],)"
               R"("total_space":"","used_space":"","max_file_size":"","fo_id":1,"pcode":2,"uid":3,"sid":4,"files":"",)"
               R"("totalspace":"","totalsize":"","freespace":"","ticket":9,"msg":9,"users":"","total":"",)" +
                   members,
               each->success);
        attack("900 levels of arrays", "{\"a\":" + nested(900, '[', ']') + "," + members, each->success);
        for (const std::size_t depth : {1001U, 5000U})
        {
            attack(std::to_string(depth) + " levels of arrays", "{\"a\":" + nested(depth, '[', ']') + "," + members, 1);
            attack(std::to_string(depth) + " levels of objects", "{\"a\":" + nested(depth, '{', '}') + "," + members,
                   1);
        }
        all.push_back(
            {"100000 levels of arrays", each, reply(answer(nested(100000, '[', ']'))), {1}, 16 * MiB, 8, errorsOnly});
        all.push_back(
            {"100000 levels of objects", each, reply(answer(nested(100000, '{', '}'))), {1}, 16 * MiB, 8, errorsOnly});
        for (const char* const bad : {"\\x", "\\u", "\\u12", "\\uZZZZ", "\\uD83D", "\\uDE00x\\"})
            attack(std::string("the escape ") + bad, "{\"a\":\"" + std::string(bad) + "\"," + members, 1);
    }
    return all;
}

/// What is no UTF-8 is taken as it can be; it is no reason to fail.
std::vector<Attack> oddBytes()
{
    const std::vector<std::string> texts{
        "\xC0\x80",
        "\xC0\xAF",
        "\xE0\x80\x80",
        "\xF0\x80\x80\x80",
        "\x80",
        "\xBF\xBF\xBF",
        "\xED\xA0\x80",
        "\xED\xBF\xBF",
        "\xED\xA0\xBD\xED\xB8\x80",
        "\xE2\x82",
        "\xF0\x9F\x98",
        "\xC3",
        "x\xC3",
        "\xF4\x90\x80\x80",
        "\xF8\x88\x80\x80\x80",
        "\xFF",
        "\xFE\xFF",
        "\xEF\xBF\xBE",
        "\xEF\xBF\xBF",
        "\\u0000",
        "a\\u0000b",
        "\\uD83D\\uDE00",
        "\\uD83D\\u0041",
        "\\uFFFF",
        "\x7F",
        std::string(1, '\0'),
        std::string("a\0b", 3),
        "\x01\x02\x1B[2J",
        "%s%n%d",
        "\t",
        "\r\n",
        std::string(200, '\x80'),
        std::string(131, 'x') + "\xC3\xA4",
        std::string(32, 'x') + "\xF0\x9F\x98\x80",
        std::string(64, 'x') + "\xE2\x82\xAC",
    };
    // Each conversion: of texts in UTF-8 and in the ANSI code page, into records and into a caller's room.
    std::vector<Shape> shapes = diskListings();
    for (const Shape& shape : storageShapes())
    {
        if (!shape.before.empty())
            shapes.push_back(shape);
    }
    shapes.push_back({&operation("CNetDisk.FolderAdd"), "", {text("fo_id")}, ""});

    std::vector<Attack> all;
    for (const Shape& shape : shapes)
    {
        // One text of each reply: they are all read alike.
        const auto key = std::ranges::find(shape.keys, Type::Text, &Key::type);
        if (key == shape.keys.end())
            continue;
        for (const std::string& bytes : texts)
        {
            const std::string value = "\"" + bytes + "\"";
            all.push_back({key->name + " of odd bytes",
                           shape.operation,
                           reply(answer(shape.with(*key, &value))),
                           {shape.operation->success}});
        }
    }
    return all;
}

std::string repeated(const std::string& element, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text.append(i == 0 ? "" : ",").append(element);
    return text;
}

std::vector<Attack> arrays()
{
    static constexpr std::size_t many = 10000;
    struct Listing
    {
        const char* operation;
        const char* before;
        const char* element; ///< a whole one
        int resultOfEmpty;   ///< of elements without a key
    };
    static const Listing listings[] = {
        {"CNetDisk.FolderList", "{\"files\":[", R"({"fkey":"k","name":"n","size":1})", 0},
        {"CNetDisk.FolderListUtf8", "{\"files\":[", R"({"fkey":"k","name":"n","size":1})", 0},
        {"CNetDisk.FolderList", "{\"folders\":[", R"({"fo_id":"k","name":"n"})", 0},
        {"CNetDisk.PcodeList", "{\"pcodes\":[", R"({"pcode":"k"})", 0},
        {"CNetDisk.PcodeInfo", "{\"files\":[", R"({"fid":"k"})", 0},
        {"CNetDisk.RecyclebinList", "{\"data\":[", R"({"rs_id":"k"})", 0},
        {"CNetDisk.RecyclebinListUtf8", "{\"data\":[", R"({"rs_id":"k"})", 0},
        {"CFileStorage.EmoticonGetList", R"({"result":200,"errorinfo":"","files":[)",
         R"({"fkey":"k","fname":"n","fsize":1})", 1},
        {"CFileStorage.LargeFileGetList", R"({"result":200,"errorinfo":"","files":[)",
         R"({"fkey":"k","fname":"n","fsize":1,"fmd5":"","fsha1":"","createtime":"","finish":1,"leftminute":1})", 1},
    };
    static const std::string users = R"({"result":200,"errorinfo":"","users":[)";

    std::vector<Attack> all;
    for (const Listing& listing : listings)
    {
        const Operation& each = operation(listing.operation);
        const auto attack = [&](const std::string& name, const std::string& elements, int expected,
                                std::size_t memory) {
            all.push_back(
                {name, &each, reply(answer(listing.before + elements + "]}")), {expected}, memory, 8, errorsOnly});
        };
        attack("10000 empty elements", repeated("{}", many), listing.resultOfEmpty, 64 * MiB);
        attack("400 whole elements", repeated(listing.element, 400), 0, 64 * MiB);
        attack("elements without end", repeated(listing.element, 400) + ",{", 1, 64 * MiB);
        attack("a wrong element at the end", repeated(listing.element, 400) + ",7",
               each.name.starts_with("CNetDisk.Recyclebin") ? 0 : 1, 64 * MiB);
        attack("arrays in the array", "[],[[]]", each.name.starts_with("CNetDisk.Recyclebin") ? 0 : 1, 16 * MiB);
        attack("nulls in the array", repeated("null", 100), listing.resultOfEmpty, 64 * MiB);
    }
    const Operation& query = operation("COnlineUserSearch.QueryByCondition");
    const auto ids = [&](const std::string& id, std::size_t count) {
        all.push_back({std::to_string(count) + " times the id " + id,
                       &query,
                       reply(answer(users + repeated(id, count) + "]}")),
                       {0},
                       64 * MiB,
                       8,
                       errorsOnly});
    };
    ids("\"1\"", many);
    ids("{}", many);
    for (const char* const id : {"\"4294967295\"", "\"4294967296\"", "\"-1\"", "\"x\"", "\"\"", "\" 7\"", "1", "null",
                                 "\"99999999999999999999999999\"", "\"\\u0000\"", "true"})
        ids(id, 100);
    return all;
}

} // namespace

std::vector<Subject> jsonSubjects()
{
    return {{"JsonValuesOfTheDisk", [] { return wrongValues(diskShapes()); }},
            {"JsonValuesOfTheDisksListings", [] { return wrongValues(diskListings()); }},
            {"JsonValuesOfTheStorage", [] { return wrongValues(storageShapes()); }},
            {"JsonValuesOfLaterClients", [] { return wrongValues(laterShapes()); }},
            {"JsonTextLengths", textLengths},
            {"JsonDocuments", oddDocuments},
            {"JsonBytes", oddBytes},
            {"JsonArrays", arrays}};
}

} // namespace hostile
