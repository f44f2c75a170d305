#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quorvex::soak
{

/// Two accounts for each of the worker's threads.
std::vector<std::string> AccountNames(int threads);

/// The options that make the services have them.
std::vector<std::string> AccountOptions(int threads);

/// Logs in to each account and writes what the worker needs of it, one account a line: name, password, user id,
/// user-centre session, and the two parts of a ticket.
void WriteAccounts(int port, int threads, const std::filesystem::path& file);

} // namespace quorvex::soak
