#pragma once

#include "../BoundedText.h"

#include <string>

/// What the generations of the shared file storage make of the server's replies, and the form that they announce a
/// large file with.
namespace quorvex
{

/// @return 0, 1, or the server's code
int ReadResult(const std::string& reply);

/// Reads the answer to a whole-file upload, for which a file that is there already is as good as a new one.
/// @param keyOut    receives the file's key
/// @param keyOutLen room of keyOut, the final zero included
/// @return 0, 1, or the server's code
int ReadUpload(const std::string& reply, wchar_t* keyOut, unsigned long keyOutLen);

/// A form of the depot's requests.
using DepotForm = NarrowText<1024, Platform::CodePage::Oem>;

/// The form that announces a local file. A file that cannot be read is announced without digest and size.
DepotForm CreateForm(const wchar_t* folder, const wchar_t* fileName);

/// The form that finishes a large file.
DepotForm FinishForm(const wchar_t* key);

} // namespace quorvex
