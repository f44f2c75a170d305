#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex::fuzz
{

/// A fuzzer's input, taken from its start piece by piece; what it lacks is zero or empty. Bodies come last and as they
/// are, so that a reply with a letter before it is an input.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size) : m_rest(reinterpret_cast<const char*>(data), size) {}
    explicit Input(std::string_view data) : m_rest(data) {}

    bool IsEmpty() const { return m_rest.empty(); }

    std::uint8_t Byte() { return static_cast<std::uint8_t>(Number(1)); }
    std::uint32_t Number32() { return static_cast<std::uint32_t>(Number(4)); }
    std::uint64_t Number64() { return Number(8); }

    /// Its length, in a byte, stands before it.
    std::string_view Text()
    {
        const std::size_t length = Byte();
        return Take(length);
    }
    std::string_view Rest() { return Take(m_rest.size()); }

    std::string_view Take(std::size_t count)
    {
        const std::string_view taken = m_rest.substr(0, count);
        m_rest.remove_prefix(taken.size());
        return taken;
    }

private:
    std::uint64_t Number(std::size_t size)
    {
        std::uint64_t number = 0;
        for (const char byte : Take(size))
        {
            number = number << 8U | static_cast<unsigned char>(byte);
        }
        return number;
    }

    std::string_view m_rest;
};

} // namespace quorvex::fuzz
