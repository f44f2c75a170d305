#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvex::services::search
{

// A name with its value, byte for byte what the user meant.
struct Field
{
    std::string name;
    std::string value;
};

struct Form
{
    std::optional<std::string> app;
    std::optional<std::int64_t> skip;
    std::vector<Field> fields;
};

// Reads "app=APP&skip=N&name=value..." in any order. Clients encode values but neither applications nor names, and cut
// what does not fit into their buffers without a word: half a field, or a value that ends in half an escape, ends the
// request as a bad one, because the whole of it is not known.
Form ParseForm(std::string_view body);

// An application's name as it is; one that cannot be told apart in every request ends the request as a bad one.
std::string RequireAppName(const std::optional<std::string>& app);

} // namespace quorvex::services::search
