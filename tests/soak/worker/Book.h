#pragma once

#include "Content.h"

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <functional>
#include <random>
#include <string_view>
#include <vector>

namespace quorvex::soak
{

using Random = std::mt19937_64;

/// A number below the limit.
std::size_t Below(Random& random, std::size_t limit);
bool Chance(Random& random, int percent);

/// A text that takes no memory of its own: the book must not grow while memory is watched.
template <std::size_t Room>
class Text
{
public:
    Text() = default;
    template <std::convertible_to<std::wstring_view> Other>
    Text(const Other& other)
    {
        const std::wstring_view text = other;
        std::ranges::copy(text.substr(0, Room - 1), m_text.begin());
    }

    const wchar_t* c_str() const { return m_text.data(); }
    operator std::wstring_view() const { return m_text.data(); }

private:
    std::array<wchar_t, Room> m_text{};
};

/// What the services have acknowledged of a thing.
enum class State
{
    Unknown, ///< an operation on it failed: it may have been carried out or not
    Live,
    Binned, ///< an item of the recycle bin
    Buried, ///< within a folder that is in the recycle bin
    Gone
};

/// A file, a folder, a picture or a share code.
struct Stored
{
    State state = State::Unknown;
    Content content;
    Text<66> key;
    Text<66> name;
    Text<34> folder;
    bool isPlaced = true; ///< whether name and folder are certain

    bool Is(State wanted) const { return state == wanted; }
};

/// The acknowledged state of one kind of thing.
class Book
{
public:
    /// Takes its memory at once.
    explicit Book(std::size_t capacity);

    bool IsFull() const { return m_entries.size() == m_entries.capacity(); }
    Stored& Add(const Stored& entry);

    std::size_t Count(State state) const;

    /// One that fits, by chance; null when none does.
    Stored* Pick(Random& random, const std::function<bool(const Stored&)>& fits);
    Stored* Pick(Random& random, State state);

    std::vector<Stored>& Entries() { return m_entries; }

private:
    std::vector<Stored> m_entries;
};

} // namespace quorvex::soak
