#pragma once

#include "storage/Depot.h"

#include <string_view>

namespace quorvex::services::storage
{

// The form that announces a depot file: "n=NAME&s=TYPE&m=MD5&sh=SHA1&sz=SIZE", nothing of it escaped. The name runs to
// the last "&s=", and the size is the low 32 bits of the file's, printed with a sign. Ends the request as a bad one
// when the form is another.
Depot::Announcement ParseCreateForm(std::string_view form);

} // namespace quorvex::services::storage
