#pragma once

#include "common/FileHandle.h"

#include <cstdint>
#include <string_view>

namespace quorvex::services
{

// Writes one piece behind the other. Syncs on the way, so that the sync at the end of several GiB does not outlast the
// patience of a client that waits for its answer.
class SteadyWriter
{
public:
    explicit SteadyWriter(FileHandle file, std::uint64_t position = 0);

    void Append(std::string_view bytes);
    void Sync();
    std::uint64_t Position() const { return position_; }

private:
    FileHandle file_;
    std::uint64_t position_;
    std::uint64_t unsynced_ = 0;
};

} // namespace quorvex::services
