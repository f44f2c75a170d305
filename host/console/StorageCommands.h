#pragma once

#include "Command.h"

namespace quorvex::console
{

Report StorageLoginCommand(const Options& options);
Report StorageLogoutCommand(const Options& options);
Report PutPictureCommand(const Options& options);
Report GetPictureCommand(const Options& options);
Report PutPhotoCommand(const Options& options);
Report GetPhotoCommand(const Options& options);
Report PutEmoticonCommand(const Options& options);
Report GetEmoticonCommand(const Options& options);
Report RemoveEmoticonCommand(const Options& options);
Report ListEmoticonsCommand(const Options& options);
Report StorageChecksumCommand(const Options& options);

} // namespace quorvex::console
