#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <httplib.h>
#include <json/value.h>

namespace quorvex::services::storage
{

// What several operations read and answer with.

// The key, which is the last value of each query that has one.
std::string KeyOf(const httplib::Request& request);

// The account whose file is meant; the asking one's own where no uid is given. No account has another text than a
// number, so that such a request ends.
std::int64_t OwnerOf(const httplib::Request& request, std::int64_t account);

// An account in its decimal digits; another text ends the request, because no account has it.
std::int64_t AccountNamed(const std::string& text);

// The file that a request names in its path: whose it is, and its key. Nothing stands for whoever's it is, which the
// path says with 0.
struct PathName
{
    std::optional<std::int64_t> account;
    std::string key;
};

// Reads what follows `path`, as it was sent: a question mark is a letter of the key.
PathName PathNameBelow(const httplib::Request& request, std::string_view path);

Json::Value EmptyUploadAnswer();
Json::Value EmptyListAnswer();

} // namespace quorvex::services::storage
