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
    /// @param parent the whole grammar, or a group that this one belongs to
    CommandGroup(CLI::App& parent, Invocation& invocation, const Service& service, const std::string& name,
                 const std::string& description);

    /// @param examples whole lines
    /// @param settle   runs when the command was given; throws what is wrong with its arguments
    CLI::App& Add(
        const std::string& name, const std::string& description, Command command, const std::string& examples,
        const std::function<void()>& settle = [] {}) const;

    CLI::App& App() const { return m_app; }
    Options& Values() const { return m_invocation.options; }

private:
    CLI::App& m_app;
    Invocation& m_invocation;
    const Service& m_service;
};

/// @name Arguments that commands of several groups have
/// @{

inline constexpr std::size_t kLongestId = 32;

/// @param text receives the id, which becomes a part of an address and of a request as it is
CLI::Option* AddId(CLI::App& app, const std::string& name, std::string& text, const std::string& description,
                   const std::string& typeName, std::size_t longest = kLongestId);

void AddIds(CLI::App& app, const std::string& name, std::vector<std::string>& texts, const std::string& description,
            const std::string& typeName);
void AddFile(CLI::App& app, Options& options, const std::string& description);
void AddOut(CLI::App& app, Options& options, const std::string& description);
void AddBlockSize(CLI::App& app, Options& options);
/// @}

void AddNetDiskCommands(CLI::App& app, Invocation& invocation);
void AddStorageCommands(CLI::App& app, Invocation& invocation);
void AddDepotCommands(CLI::App& app, Invocation& invocation);
void AddSearchCommands(CLI::App& app, Invocation& invocation);

} // namespace quorvex::console
