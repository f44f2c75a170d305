// Asks the C library's header for rand_s.
#define _CRT_RAND_S

#include "Random.h"

#include <cstdlib>

namespace quorvex::Platform
{

std::uint32_t RandomNumber()
{
    unsigned int number = 0;
    return rand_s(&number) == 0 ? number : static_cast<std::uint32_t>(std::rand());
}

} // namespace quorvex::Platform
