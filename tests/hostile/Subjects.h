#pragma once

#include "hostile/Operation.h"
#include "hostile/Reply.h"
#include "support/LogCapture.h"

#include <cstddef>
#include <string>
#include <vector>

namespace hostile
{

inline constexpr std::size_t MiB = std::size_t{1024} * 1024;

/// One reply against one operation.
struct Attack
{
    std::string name;
    const Operation* operation;
    Reply reply;
    std::vector<int> expected{};       ///< the results that are right; none: every documented one
    std::size_t mostMemory = 16 * MiB; ///< of the module's heap at once
    std::size_t mostConnections = 8;   ///< with all repetitions and logins that there may be
    unsigned logLevels = support::AllLevels;
    bool leadsAway = false; ///< to another server, with which some systems then connect the client for good
};

/// Attacks of one kind.
struct Subject
{
    const char* name;
    std::vector<Attack> (*attacks)();
};

std::vector<Subject> cutSubjects();
std::vector<Subject> lengthSubjects();
std::vector<Subject> statusSubjects();
std::vector<Subject> compressionSubjects();
std::vector<Subject> headerSubjects();
std::vector<Subject> jsonSubjects();
std::vector<Subject> breakSubjects();

std::vector<Subject> allSubjects();

} // namespace hostile
