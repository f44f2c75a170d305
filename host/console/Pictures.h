#pragma once

#include "Failure.h"
#include "HostStorage.h"
#include "Paths.h"
#include "StorageSession.h"

#include <string>

namespace quorvex::console
{

/// @name A picture of the shared file storage, in each generation
/// @param local the file, which is in a folder of its own when it is to be fetched
/// @return what the module has returned
/// @throws Failure
/// @{
Outcome SendPicture(Storage& storage, const LocalPath& local);
Outcome SendPicture(Storage2& storage, const LocalPath& local);
Outcome SendPicture(Storage3& storage, const LocalPath& local);

Outcome FetchPicture(Storage& storage, const std::string& name, const LocalPath& local);
Outcome FetchPicture(Storage2& storage, const std::string& name, const LocalPath& local);
Outcome FetchPicture(Storage3& storage, const std::string& name, const LocalPath& local);
/// @}

} // namespace quorvex::console
