#pragma once

#include "CommandLine.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace quorvex::console
{

/// A group of commands in the command line's grammar, such as "netdisk".
class CommandGroup
{
public:
    /// The whole grammar as a group.
    /// @param service what its commands talk to; null when they talk to nobody
    CommandGroup(CLI::App& app, Invocation& invocation, const Service* service);

    /// @param parent   the whole grammar, or a group that this one belongs to
    /// @param examples one or two whole lines
    CommandGroup(CLI::App& parent, Invocation& invocation, const Service& service, const std::string& name,
                 const std::string& description, const std::string& examples);

    /// @param examples one or two whole lines
    /// @param settle   runs when the command was given; throws what is wrong with its arguments
    CLI::App& Add(
        const std::string& name, const std::string& description, Command command, const std::string& examples,
        const std::function<void()>& settle = [] {}) const;

    CLI::App& App() const { return m_app; }
    Options& Values() const { return m_invocation.options; }

private:
    CLI::App& m_app;
    Invocation& m_invocation;
    const Service* m_service;
};

/// @name Arguments that commands of several groups have
/// @{

inline constexpr std::size_t kLongestId = 32;

/// Words of a command, from the group to its own name; none for the program.
std::string WordsOf(const CLI::App& app);

/// An option that takes one of a few words. Help shows them in the place of a type.
CLI::Option* AddChoice(CLI::App& app, const std::string& name, std::string& text, const std::string& description,
                       const std::vector<std::string>& choices);

/// The words in a type that AddChoice has made; none in every other one, which is written in capitals.
std::vector<std::string> ChoicesIn(const std::string& type);

/// @param text receives the id, which becomes a part of an address and of a request as it is
CLI::Option* AddId(CLI::App& app, const std::string& name, std::string& text, const std::string& description,
                   const std::string& typeName, std::size_t longest = kLongestId);

void AddIds(CLI::App& app, const std::string& name, std::vector<std::string>& texts, const std::string& description,
            const std::string& typeName, std::size_t longest = kLongestId);
void AddFile(CLI::App& app, Options& options, const std::string& description);
void AddFiles(CLI::App& app, Options& options, const std::string& description);
void AddOut(CLI::App& app, Options& options, const std::string& description);
/// The file that one range goes into.
void AddPiece(CLI::App& app, Options& options);
void AddBlockSize(CLI::App& app, Options& options);
void AddOffset(CLI::App& app, Options& options, const std::string& description);
void AddLength(CLI::App& app, Options& options, const std::string& description);
/// @}

void AddNetDiskCommands(CLI::App& app, Invocation& invocation);
void AddStorageCommands(CLI::App& app, Invocation& invocation);
void AddDepotCommands(CLI::App& app, Invocation& invocation);
void AddSearchCommands(CLI::App& app, Invocation& invocation);

/// What stands in no group.
void AddLocalCommands(CLI::App& app, Invocation& invocation);

} // namespace quorvex::console
