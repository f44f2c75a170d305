#include "hostile/Stage.h"

#include <algorithm>

namespace hostile
{
namespace
{

/// What ends a wait for a server that does nothing, in milliseconds; the first generation has the system's.
constexpr int timeout = 30000;

std::wstring url(unsigned short port)
{
    return L"http://127.0.0.1:" + std::to_wstring(port) + L"/api";
}

template <typename T>
void empty(support::AtPageEnd<T>& room)
{
    std::fill_n(room.get(), room.size(), T{});
}

} // namespace

Stage::Stage(unsigned short port)
    : in((folder.path() / "in").wstring()),
      out((folder.path() / "out").wstring()),
      disk(url(port).c_str(), L"S"),
      storage(url(port).c_str(), L"S"),
      storage2(url(port).c_str(), L"S", timeout, timeout, timeout, timeout),
      storage3((url(port) + L"/").c_str(), L"sid=5", timeout, timeout, timeout, timeout),
      search(url(port).c_str())
{
    namespace fs = std::filesystem;
    fs::create_directory(in);
    fs::create_directory(out);
    support::writeFile(fs::path(out) / "a.txt", "hello");
    support::writeFile(fs::path(out) / "large.bin", "");
    fs::resize_file(fs::path(out) / "large.bin", LargeUpload);
}

void Stage::clear()
{
    empty(key);
    empty(longKey);
    empty(ticket);
    empty(name);
    empty(second);
    empty(third);
    empty(block);
    empty(ids);
}

} // namespace hostile
