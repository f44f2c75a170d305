#include "wire/Records.h"

#include "support/Text.h"
#include "wire/Scanner.h"

#include <quorvex/FileStorageRecords.h>
#include <quorvex/NetDisk.h>

#include <algorithm>
#include <concepts>
#include <map>

namespace wire
{
namespace
{

using namespace quorvex::netdisk;

/// Calls visit(name, field) for each field; the key comes first.
template <class Record, class Visit>
void visitFields(Record& record, Visit visit)
{
    if constexpr (requires { record.fname; })
    {
        visit("fkey", record.fkey);
        visit("fname", record.fname);
        visit("fsize", record.fsize);
        visit("fmd5", record.fmd5);
        visit("fsha1", record.fsha1);
        visit("createtime", record.createtime);
        visit("finish", record.finish);
        visit("leftminute", record.leftminute);
    }
    else if constexpr (requires { record.fkey; })
    {
        visit("fkey", record.fkey);
        visit("name", record.name);
        visit("size", record.size);
        visit("cflag", record.cflag);
        visit("downcount", record.downcount);
        visit("ctime", record.ctime);
        visit("md5", record.md5);
    }
    else if constexpr (requires { record.fo_id; })
    {
        visit("fo_id", record.fo_id);
        visit("name", record.name);
    }
    else if constexpr (requires { record.pcode; })
    {
        visit("pcode", record.pcode);
        visit("createtime", record.createtime);
        visit("deadline", record.deadline);
        visit("downcount", record.downcount);
    }
    else
    {
        visit("rs_id", record.rs_id);
        visit("rtime", record.rtime);
        visit("type", record.type);
        visit("name", record.name);
        visit("fo_before", record.fo_before);
    }
}

template <class Character>
std::basic_string<Character> characters(const std::string& utf8)
{
    if constexpr (std::same_as<Character, wchar_t>)
        return support::toWide(utf8);
    else
        return utf8;
}

template <class Character, std::size_t Size>
void setText(Character (&field)[Size], const std::string& utf8)
{
    const std::basic_string<Character> text = characters<Character>(utf8);
    if (text.size() > Size)
        throw CaseError("a text longer than its field");
    std::ranges::fill(field, Character{});
    text.copy(field, Size);
}

/// A text that runs on out of its array has no end there; then all of the array counts.
template <class Character, std::size_t Size>
std::string shownText(const Character (&field)[Size])
{
    const std::basic_string_view<Character> text(field, std::ranges::find(field, Character{}));
    if constexpr (std::same_as<Character, wchar_t>)
        return support::escaped(support::toUtf8(text));
    else
        return support::escaped(text);
}

/// Fields that are empty or zero are left out.
template <class Record>
std::string shownRecord(const Record& record)
{
    std::string fields;
    const auto add = [&](const char* name, const std::string& value) {
        fields.append(fields.empty() ? "" : ", ").append(name).append("=").append(value);
    };
    visitFields(record, [&](const char* name, const auto& field) {
        if constexpr (std::integral<std::remove_cvref_t<decltype(field)>>)
        {
            if (field != 0)
                add(name, std::to_string(field));
        }
        else if (field[0] != 0)
            add(name, "\"" + shownText(field) + "\"");
    });
    return "{" + fields + "}";
}

template <class Record>
void parseField(Scanner& scanner, const Variables& variables, Record& record)
{
    const std::string wanted = scanner.word();
    scanner.expect("=");
    bool found = false;
    visitFields(record, [&](std::string_view name, auto& field) {
        if (name != wanted)
            return;
        found = true;
        if constexpr (std::integral<std::remove_reference_t<decltype(field)>>)
            field = static_cast<std::remove_reference_t<decltype(field)>>(scanner.number());
        else
            setText(field, expand(scanner.quoted(), variables));
    });
    if (!found)
        throw CaseError("no field " + wanted);
}

template <class Record>
std::vector<std::string> expectedRecords(std::string_view raw, const Variables& variables)
{
    std::vector<std::string> shown;
    Scanner scanner(raw);
    while (!scanner.atEnd())
    {
        const std::size_t count = scanner.repetition();
        Record record{};
        scanner.expect("{");
        if (!scanner.accept("}"))
        {
            do
                parseField(scanner, variables, record);
            while (scanner.accept(","));
            scanner.expect("}");
        }
        shown.insert(shown.end(), count, shownRecord(record));
    }
    return shown;
}

template <class Record>
std::vector<std::string> shownRecords(const std::vector<Record>& records)
{
    std::vector<std::string> shown;
    shown.reserve(records.size());
    for (const Record& record : records)
        shown.push_back(shownRecord(record));
    return shown;
}

std::string firstDifference(const std::vector<std::string>& actual, const std::vector<std::string>& expected)
{
    if (actual.size() != expected.size())
        return "has " + std::to_string(actual.size()) + " records instead of " + std::to_string(expected.size());
    const auto [is, instead] = std::ranges::mismatch(actual, expected);
    if (is == actual.end())
        return {};
    return "record " + std::to_string(is - actual.begin() + 1) + " is " + *is + " instead of " + *instead;
}

/// @param Owner points to the vector and releases it
template <class Record, class Owner>
class OwnedRecords : public RecordVector<Record>
{
public:
    OwnedRecords(Owner vector, const std::vector<std::string>& keys) : m_vector(std::move(vector))
    {
        for (const std::string& key : keys)
            addRecord(key);
        m_before = shownRecords(*m_vector);
    }

    std::vector<Record>& records() override { return *m_vector; }

    std::string difference(const std::string* expected, const Variables& variables) const override
    {
        return firstDifference(shownRecords(*m_vector),
                               expected == nullptr ? m_before : expectedRecords<Record>(*expected, variables));
    }

private:
    void addRecord(const std::string& key)
    {
        Record record{};
        bool isFirst = true;
        visitFields(record, [&](const char*, auto& field) {
            if constexpr (std::is_array_v<std::remove_reference_t<decltype(field)>>)
            {
                if (isFirst)
                    setText(field, key);
            }
            isFirst = false;
        });
        m_vector->push_back(record);
    }

    Owner m_vector;
    std::vector<std::string> m_before;
};

using Keys = std::vector<std::string>;

/// On the module's heap.
template <class Record, auto New, auto Delete>
std::unique_ptr<Records> modulesRecords(const Keys& keys)
{
    struct Release
    {
        void operator()(std::vector<Record>* vector) const { Delete(vector); }
    };
    using Owner = std::unique_ptr<std::vector<Record>, Release>;
    return std::make_unique<OwnedRecords<Record, Owner>>(Owner(New()), keys);
}

template <class Record>
std::unique_ptr<Records> callersRecords(const Keys& keys)
{
    using Owner = std::unique_ptr<std::vector<Record>>;
    return std::make_unique<OwnedRecords<Record, Owner>>(std::make_unique<std::vector<Record>>(), keys);
}

using Make = std::unique_ptr<Records> (*)(const Keys&);

const std::map<std::string, Make, std::less<>>& makers()
{
    static const std::map<std::string, Make, std::less<>> all{
        {"files", modulesRecords<_FileInfo, &CNetDisk::NewFileInfoVector, &CNetDisk::DeleteFileInfoVector>},
        {"folders", modulesRecords<_FolderInfo, &CNetDisk::NewFolderInfoVector, &CNetDisk::DeleteFolderInfoVector>},
        {"pcodes", modulesRecords<_PcodeInfo, &CNetDisk::NewPcodeInfoVector, &CNetDisk::DeletePcodeInfoVector>},
        {"items", modulesRecords<_RItemInfo, &CNetDisk::NewRItemInfoVector, &CNetDisk::DeleteRItemInfoVector>},
        {"files-utf8", callersRecords<_FileInfoUTF8>},
        {"folders-utf8", callersRecords<_FolderInfoUTF8>},
        {"items-utf8", callersRecords<_RItemInfoUTF8>},
        {"large-files", callersRecords<quorvex::LargeFileInfo>},
    };
    return all;
}

} // namespace

const std::vector<std::string>& recordsKinds()
{
    static const std::vector<std::string> kinds = [] {
        std::vector<std::string> names;
        for (const auto& [name, make] : makers())
            names.push_back(name);
        return names;
    }();
    return kinds;
}

std::unique_ptr<Records> makeRecords(std::string_view kind, const std::vector<std::string>& keys)
{
    const auto maker = makers().find(kind);
    if (maker == makers().end())
        throw CaseError("unknown records " + std::string(kind));
    return maker->second(keys);
}

} // namespace wire
