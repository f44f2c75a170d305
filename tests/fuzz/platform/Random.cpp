#include "Random.h"

#include "Platform/Random.h"

#include <random>

namespace
{

thread_local std::mt19937 generator;

} // namespace

void quorvex::fuzz::SeedRandom(std::uint32_t seed)
{
    generator.seed(seed);
}

std::uint32_t quorvex::Platform::RandomNumber()
{
    return static_cast<std::uint32_t>(generator());
}
