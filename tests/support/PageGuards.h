#pragma once

#include <cstddef>
#include <type_traits>

namespace support
{

/// From now to the end of the program every heap block of quorvex.dll ends at a protected page, one that it frees is
/// protected itself, and what lies before a block is looked at when it is freed: a byte too far ends the program.
/// Blocks that this program frees for the module, or the other way round, are told apart.
///
/// Called before anything else stands before the module's functions.
void guardHeap();

/// The module's heap blocks.
struct HeapUse
{
    std::size_t blocks = 0;
    std::size_t bytes = 0;
    std::size_t peakBytes = 0; ///< since the last resetHeapPeak()
    std::size_t unguarded = 0; ///< blocks ever made when there was no guarded room for them
};

HeapUse heapUse();
void resetHeapPeak();

namespace detail
{

void* newPagesBefore(std::size_t bytes);
void deletePages(void* object, std::size_t bytes) noexcept;

} // namespace detail

/// Room for a number of objects, zero-filled, that ends at a protected page and has another before its first page.
template <typename T>
class AtPageEnd
{
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

public:
    explicit AtPageEnd(std::size_t count = 1)
        : m_count(count), m_objects(static_cast<T*>(detail::newPagesBefore(count * sizeof(T))))
    {
    }
    ~AtPageEnd() { detail::deletePages(m_objects, m_count * sizeof(T)); }

    AtPageEnd(const AtPageEnd&) = delete;
    AtPageEnd& operator=(const AtPageEnd&) = delete;

    std::size_t size() const { return m_count; }
    T* get() const { return m_objects; }
    T& operator*() const { return *m_objects; }
    T& operator[](std::size_t index) const { return m_objects[index]; }

private:
    std::size_t m_count;
    T* m_objects;
};

} // namespace support
