#pragma once

#include <functional>
#include <vector>

namespace quorvex::console
{

/// Asks for the users behind the first `skip`; an empty page is behind the last.
using PageReader = std::function<std::vector<unsigned>(int skip)>;

/// All users, page by page, in the server's order and each of them once: who comes or goes between two pages moves
/// the others. A page with nobody new is the end as well, so that a server that does not skip cannot hold the caller.
std::vector<unsigned> ReadAllPages(const PageReader& read);

} // namespace quorvex::console
