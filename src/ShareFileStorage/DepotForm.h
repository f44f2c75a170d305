#pragma once

#include "../BoundedText.h"
#include "../ObjectPath.h"

/// What the generations of the shared file storage ask the large-file depot for.
namespace quorvex
{

/// The path that a depot file is read at.
ObjectPath DepotPath(const wchar_t* uid, const wchar_t* key);

/// A form of the depot's requests.
using DepotForm = NarrowText<1024, Platform::CodePage::Oem>;

/// The form that announces a local file. A file that cannot be read is announced without its digest, one of which
/// nothing is known with the size 0.
DepotForm CreateForm(const wchar_t* folder, const wchar_t* fileName);

/// The form that finishes a large file.
DepotForm FinishForm(const wchar_t* key);

} // namespace quorvex
