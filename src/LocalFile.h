#pragma once

#include "BoundedText.h"
#include "Platform/File.h"

/// The local file of a transfer, with its lines in the log.
namespace quorvex
{

using UploadPath = WideText<260>;

/// Opens a file to be uploaded. A path that was cut would lead to another file than the one that was asked for: it
/// counts as one that cannot be opened.
bool OpenUploadFile(Platform::File& file, const UploadPath& path, Platform::File::Share share);

/// Closes a file, with a line in the log either way.
/// @return whether the system closed it
bool CloseLocalFile(Platform::File& file);

} // namespace quorvex
