#include "Blocks.h"

#include <algorithm>
#include <vector>

namespace quorvex::soak
{

bool SendBlocks(Setting& setting, const Content& content,
                const std::function<int(void* data, unsigned long size, unsigned long position)>& send)
{
    std::string bytes = content.Bytes();
    std::vector<std::size_t> positions;
    for (std::size_t position = 0; position < bytes.size(); position += kBlockSize)
    {
        positions.push_back(position);
    }
    std::ranges::shuffle(positions, setting.random);
    return std::ranges::all_of(positions, [&](std::size_t position) {
        const std::size_t size = std::min(kBlockSize, bytes.size() - position);
        const auto sendBlock = [&] {
            return send(bytes.data() + position, static_cast<unsigned long>(size),
                        static_cast<unsigned long>(position));
        };
        return TryThrice(sendBlock) == Result::Ok;
    });
}

bool ReadRanges(Setting& setting, const Content& content,
                const std::function<bool(unsigned long position, void* room, unsigned long& size)>& read,
                const std::string& what)
{
    std::string come(content.size, '\0');
    const std::size_t rangeSize = 1 + Below(setting.random, 2 * kBlockSize);
    std::size_t done = 0;
    while (done < come.size())
    {
        const std::size_t wanted = std::min(rangeSize, come.size() - done);
        auto size = static_cast<unsigned long>(wanted);
        if (!read(static_cast<unsigned long>(done), come.data() + done, size) || size == 0)
        {
            break;
        }
        setting.Require(size <= wanted, what + " counted more than was asked for");
        done += std::min<std::size_t>(size, wanted);
    }
    come.resize(done);
    return setting.Check(come, content, true, what);
}

} // namespace quorvex::soak
