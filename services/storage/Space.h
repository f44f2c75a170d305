#pragma once

#include "common/Capacity.h"
#include "common/Database.h"

#include <cstdint>

namespace quorvex::services::storage
{

struct Limits
{
    std::uint64_t quota = 16ULL << 30U;
    // The protocol's sizes and positions are 32-bit.
    std::uint64_t maxFileSize = 0xFFFFFFFFU;
    // For how many seconds the depot keeps a file.
    std::int64_t keepingTime = 7 * 24 * 60 * 60;
};

// The space that an account's pictures, emoticons and depot files take together, each with its full size.
class Space
{
public:
    // Also makes the tables, on which all of the file storage stands.
    Space(Database& database, const Limits& limits);

    Capacity Of(std::int64_t account);
    Capacity Of(Transaction& transaction, std::int64_t account) const;

private:
    Database& database_;
    Limits limits_;
};

} // namespace quorvex::services::storage
