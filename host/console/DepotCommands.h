#pragma once

#include "Command.h"

namespace quorvex::console
{

Report PutInDepotCommand(const Options& options);
Report GetFromDepotCommand(const Options& options);
Report ListDepotCommand(const Options& options);
Report RemoveFromDepotCommand(const Options& options);
Report RenewInDepotCommand(const Options& options);
Report DepotInfoCommand(const Options& options);
Report CreateBlocksInDepotCommand(const Options& options);
Report SendBlockToDepotCommand(const Options& options);
Report FinishBlocksInDepotCommand(const Options& options);
Report ReadBlockFromDepotCommand(const Options& options);

} // namespace quorvex::console
