#pragma once

#include "Command.h"

namespace quorvex::console
{

Report LoginCommand(const Options& options);
Report LogoutCommand(const Options& options);
Report PutCommand(const Options& options);
Report GetCommand(const Options& options);
Report InfoCommand(const Options& options);
Report MoveCommand(const Options& options);
Report RemoveCommand(const Options& options);
Report ListCommand(const Options& options);
Report TreeCommand(const Options& options);
Report MakeFolderCommand(const Options& options);
Report TrashCommand(const Options& options);
Report RestoreCommand(const Options& options);
Report PurgeCommand(const Options& options);
Report ShareCommand(const Options& options);
Report SharesCommand(const Options& options);
Report UnshareCommand(const Options& options);
Report ExtendCommand(const Options& options);
Report SaveCommand(const Options& options);
Report FetchCommand(const Options& options);
Report QuotaCommand(const Options& options);
Report ChecksumCommand(const Options& options);
Report CreateBlocksCommand(const Options& options);
Report SendBlockCommand(const Options& options);
Report FinishBlocksCommand(const Options& options);
Report ReadBlockCommand(const Options& options);

} // namespace quorvex::console
