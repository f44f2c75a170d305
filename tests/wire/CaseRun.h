#pragma once

#include "wire/CaseFile.h"

#include <filesystem>

namespace wire
{

/// Runs one case in the middle of a GoogleTest test, which every difference makes fail.
void runCase(const std::filesystem::path& path, const HeadTemplates& heads);

} // namespace wire
