#include "SearchPages.h"

#include "Failure.h"

#include <climits>
#include <cstddef>
#include <unordered_set>

namespace quorvex::console
{
namespace
{

int Behind(int skip, std::size_t count)
{
    if (count > static_cast<std::size_t>(INT_MAX - skip))
        throw Failure("there are more users than a search can skip");
    return skip + static_cast<int>(count);
}

} // namespace

std::vector<unsigned> ReadAllPages(const PageReader& read)
{
    std::vector<unsigned> users;
    std::unordered_set<unsigned> known;
    int skip = 0;
    bool isMore = true;
    while (isMore)
    {
        const std::vector<unsigned> page = read(skip);
        skip = Behind(skip, page.size());
        isMore = false;
        for (const unsigned user : page)
        {
            if (known.insert(user).second)
            {
                users.push_back(user);
                isMore = true;
            }
        }
    }
    return users;
}

} // namespace quorvex::console
