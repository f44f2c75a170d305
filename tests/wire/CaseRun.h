#pragma once

#include "wire/CaseFile.h"

#include <filesystem>

namespace wire
{

enum class Logging
{
    AsInCase,
    Off, ///< every level stays off, and the log must stay empty
};

/// Runs one case in the middle of a GoogleTest test, which every difference makes fail.
void runCase(const std::filesystem::path& path, const HeadTemplates& heads, Logging logging = Logging::AsInCase);

} // namespace wire
