#include "CommandLine.h"
#include "support/ImportTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>

#include <windows.h>

namespace quorvex::console
{
namespace
{

std::string ContentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string WithoutComments(const std::string& source)
{
    return std::regex_replace(source, std::regex("//[^\n]*"), "");
}

/// How often each operation is declared: "CNetDisk::FolderList" twice.
using Operations = std::map<std::string, int>;

/// The names of the functions declared in a piece of a header. Nothing but a name stands before a parameter list.
void AddDeclared(const std::string& declarations, const std::string& prefix, const std::string& className,
                 Operations& operations)
{
    const std::regex declaration("(~?\\b[A-Za-z_]\\w*)\\s*\\(");
    for (std::sregex_iterator each(declarations.begin(), declarations.end(), declaration), end; each != end; ++each)
    {
        const std::string name = (*each)[1];
        const bool isLifetime = name == className || name == '~' + className || name.rfind("operator", 0) == 0;
        if (!isLifetime)
            ++operations[prefix + name];
    }
}

/// What is between "public:" and the next of its like in an exported class.
void AddPublicOperations(const std::string& header, Operations& operations)
{
    const std::regex start("class QUORVEX_API (\\w+)");
    for (std::sregex_iterator each(header.begin(), header.end(), start), end; each != end; ++each)
    {
        const std::string name = (*each)[1];
        const auto from = header.find("public:", static_cast<std::size_t>(each->position()));
        const auto to = std::min(header.find("protected:", from), header.find("private:", from));
        ASSERT_NE(to, std::string::npos) << name;
        AddDeclared(header.substr(from, to - from), name + "::", name, operations);
    }
}

Operations OfHeaders()
{
    Operations operations;
    for (const auto& entry : std::filesystem::directory_iterator(QUORVEX_SOURCE_FOLDER "/include/quorvex"))
    {
        const std::string header = WithoutComments(ContentOf(entry.path()));
        AddPublicOperations(header, operations);
        const std::regex function("QUORVEX_API void (\\w+)\\(");
        for (std::sregex_iterator each(header.begin(), header.end(), function), end; each != end; ++each)
            ++operations[(*each)[1]];
    }
    return operations;
}

struct Row
{
    std::string operation;
    std::string command;
};

/// The rows of the manual's table of operations: "| `CNetDisk::FolderList` (wide records) | `netdisk ls` | ...".
std::vector<Row> OfManual()
{
    const std::string manual = ContentOf(QUORVEX_SOURCE_FOLDER "/docs/console.md");
    const std::string table = manual.substr(manual.find("\n| Operation | Command |"));
    const std::regex row("\n\\| `([\\w:]+)`[^|]*\\| `([^`]+)` \\|");
    std::vector<Row> rows;
    for (std::sregex_iterator each(table.begin(), table.end(), row), end; each != end; ++each)
        rows.push_back({(*each)[1], (*each)[2]});
    return rows;
}

TEST(Operations, AreAllInTheManual)
{
    const Operations declared = OfHeaders();
    ASSERT_GT(declared.size(), 80u);
    Operations described;
    for (const Row& each : OfManual())
        ++described[each.operation];
    EXPECT_EQ(described, declared);
}

TEST(Operations, HaveCommandsThatThereAre)
{
    std::set<std::string> commands;
    for (const CommandInfo& each : AllCommands())
        if (!each.isGroup)
            commands.insert(each.words);
    for (const Row& each : OfManual())
        EXPECT_TRUE(commands.contains(each.command)) << each.operation << ": " << each.command;
}

/// The compiler writes "CNetDisk::FolderList" as "8CNetDisk10FolderListE" in the names of imported functions, once for
/// each set of parameters.
std::string InSymbols(const std::string& operation)
{
    const std::size_t colons = operation.find("::");
    if (colons == std::string::npos)
        return operation;
    const std::string className = operation.substr(0, colons);
    const std::string name = operation.substr(colons + 2);
    return std::to_string(className.size()) + className + std::to_string(name.size()) + name + 'E';
}

TEST(Operations, AreAllCalledByTheConsole)
{
    const std::vector<std::string> imports = support::ImportTable(GetModuleHandleW(nullptr)).functions();
    for (const auto& [operation, count] : OfHeaders())
    {
        const std::string symbol = InSymbols(operation);
        const auto calls = std::count_if(imports.begin(), imports.end(), [&](const std::string& import) {
            return import.find(symbol) != std::string::npos;
        });
        EXPECT_EQ(calls, count) << operation;
    }
}

TEST(Manual, TellsOfEveryCommandsJson)
{
    const std::string manual = ContentOf(QUORVEX_SOURCE_FOLDER "/docs/console.md");
    for (const CommandInfo& each : AllCommands())
    {
        const bool isThere = manual.find("\n| `" + each.words + "` | `") != std::string::npos;
        EXPECT_TRUE(isThere || each.isGroup) << each.words;
    }
}

} // namespace
} // namespace quorvex::console
