#include "Book.h"

#include <stdexcept>

namespace quorvex::soak
{

std::size_t Below(Random& random, std::size_t limit)
{
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
}

bool Chance(Random& random, int percent)
{
    return Below(random, 100) < static_cast<std::size_t>(percent);
}

Book::Book(std::size_t capacity)
{
    // Writing to the pages makes the system give them now.
    m_entries.resize(capacity);
    m_entries.clear();
}

Stored& Book::Add(const Stored& entry)
{
    if (IsFull())
    {
        throw std::length_error("the book is full");
    }
    return m_entries.emplace_back(entry);
}

std::size_t Book::Count(State state) const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(m_entries, [state](const Stored& entry) { return entry.Is(state); }));
}

Stored* Book::Pick(Random& random, const std::function<bool(const Stored&)>& fits)
{
    const auto count = static_cast<std::size_t>(std::ranges::count_if(m_entries, fits));
    if (count == 0)
    {
        return nullptr;
    }
    std::size_t left = Below(random, count);
    for (Stored& entry : m_entries)
    {
        if (fits(entry) && left-- == 0)
        {
            return &entry;
        }
    }
    return nullptr;
}

Stored* Book::Pick(Random& random, State state)
{
    return Pick(random, [state](const Stored& entry) { return entry.Is(state); });
}

} // namespace quorvex::soak
