#pragma once

#include "HostStorage.h"
#include "Paths.h"
#include "StorageSession.h"

#include <string>

namespace quorvex::console
{

/// @name A picture of the shared file storage, in each generation
/// @param local the file, which is in a folder of its own when it is to be fetched
/// @return the module's result
/// @throws Failure
/// @{
int SendPicture(Storage& storage, const LocalPath& local);
int SendPicture(Storage2& storage, const LocalPath& local);
int SendPicture(Storage3& storage, const LocalPath& local);

int FetchPicture(Storage& storage, const std::string& name, const LocalPath& local);
int FetchPicture(Storage2& storage, const std::string& name, const LocalPath& local);
int FetchPicture(Storage3& storage, const std::string& name, const LocalPath& local);
/// @}

} // namespace quorvex::console
