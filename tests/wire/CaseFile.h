#pragma once

#include "support/ScriptedServer.h"
#include "wire/Arguments.h"
#include "wire/Pattern.h"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace wire
{

/// The head lines that a shorthand stands for, by its name; "$1" and "$2" are its arguments.
using HeadTemplates = std::map<std::string, std::string, std::less<>>;

HeadTemplates readHeadTemplates(const std::filesystem::path& path);

/// Constructs the client.
struct ClientStep
{
    std::string kind;
    std::vector<ArgumentForm> arguments;
};

/// Makes a coming system call fail.
struct FailStep
{
    std::string function;
    unsigned call = 1;
    unsigned long error = 0;
    unsigned howMany = 1;
};

/// Sets the enabled level bits.
struct LevelsStep
{
    unsigned levels = 0;
};

struct FileStep
{
    std::string name;
    std::string content;
};

/// A file of zeros that takes no space where the file system can do that.
struct SparseStep
{
    std::string name;
    unsigned long long size = 0;
};

struct FolderStep
{
    std::string name;
};

struct CallStep
{
    std::size_t line = 0;
    std::string operation;
    std::vector<ArgumentForm> arguments;
    std::string result;
    std::map<std::string, std::string> outs; ///< as they are written, by name
};

using Step = std::variant<ClientStep, FailStep, LevelsStep, FileStep, SparseStep, FolderStep, CallStep>;

struct ExpectedRequest
{
    std::size_t line = 0;
    Pattern pattern;
};

struct ExpectedLine
{
    std::size_t line = 0;
    std::string level;
    Pattern message;
};

/// One protocol case.
struct CaseFile
{
    std::vector<Step> steps;
    std::vector<ExpectedRequest> requests;
    std::vector<support::Exchange> replies;
    std::vector<std::pair<std::string, std::string>> filesAfterwards;
    std::vector<std::string> absentAfterwards;
    std::vector<ExpectedLine> log;
    std::vector<std::string> exactLevels{"ERROR"}; ///< levels of which no line may be missing from the list
};

/// @throws CaseError with the line number
CaseFile parseCase(std::string_view content, const HeadTemplates& heads, const Variables& variables);

} // namespace wire
