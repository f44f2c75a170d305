#pragma once

#include "HostStorage.h"
#include "Options.h"
#include "ResultText.h"
#include "StorageSession.h"

namespace quorvex::console
{

/// Uses the storage in the generation that the options name, with a login.
/// @throws Failure
template <class Use>
auto WithStorage(const Options& options, const Use& use)
{
    const auto with = [&](auto&& storage) { return use(storage); };
    if (options.generation == 2)
        return with(Storage2(options));
    if (options.generation == 3)
        return with(Storage3(options));
    return with(Storage(options));
}

/// Who sends the requests of that generation.
inline Transport TransportOf(const Options& options)
{
    return options.generation == 1 ? Transport::Module : Transport::Host;
}

} // namespace quorvex::console
