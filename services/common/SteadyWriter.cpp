#include "common/SteadyWriter.h"

#include <utility>

namespace quorvex::services
{

namespace
{

constexpr std::uint64_t SyncInterval = 64ULL << 20U;

} // namespace

SteadyWriter::SteadyWriter(FileHandle file, std::uint64_t position) : file_(std::move(file)), position_(position)
{
}

void SteadyWriter::Append(std::string_view bytes)
{
    file_.WriteAt(position_, bytes);
    position_ += bytes.size();
    unsynced_ += bytes.size();
    if (unsynced_ >= SyncInterval)
    {
        Sync();
    }
}

void SteadyWriter::Sync()
{
    file_.Sync();
    unsynced_ = 0;
}

} // namespace quorvex::services
