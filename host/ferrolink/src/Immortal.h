#ifndef FERROLINK_IMMORTAL_H
#define FERROLINK_IMMORTAL_H

#include <new>

namespace ferrolink
{

/// The only object of its type, made when first asked for. It is never destroyed: other modules may use this one
/// until the process has ended, after its own end.
template <typename Object>
Object& Immortal() noexcept
{
    alignas(Object) static unsigned char room[sizeof(Object)];
    static auto* const object = new (room) Object;
    return *object;
}

} // namespace ferrolink

#endif
