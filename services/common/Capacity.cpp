#include "common/Capacity.h"

#include "common/HttpAnswers.h"

namespace quorvex::services
{

void Capacity::RequireRoom(std::uint64_t size) const
{
    if (size > maxFileSize)
    {
        throw HttpError(Status::PayloadTooLarge, "the file is larger than a file may be");
    }
    if (size > Free())
    {
        throw HttpError(Status::InsufficientStorage, "the disk has no room for the file");
    }
}

} // namespace quorvex::services
