#pragma once

#include "Text.h"

#include <array>
#include <string>

namespace quorvex::console
{

/// Takes a file key from the module, which fills up to twice the size that it is told.
class UploadKey
{
public:
    static constexpr unsigned long kStatedSize = 64;

    wchar_t* Room() { return m_room.data(); }
    std::string Text() const { return ToUtf8(m_room.data()); }

private:
    std::array<wchar_t, 2 * kStatedSize> m_room{};
};

} // namespace quorvex::console
