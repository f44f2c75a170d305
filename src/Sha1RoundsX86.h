#pragma once

#include "DigestBlocks.h"

#include <cstdint>

#include <immintrin.h>

namespace quorvex
{

/// The SHA-1 chain in vector registers, four rounds an instruction. Only files built with SHA instructions use it.
class Sha1ChainX86
{
public:
    explicit Sha1ChainX86(const std::uint32_t* chain)
        : m_abcd(HighWordFirst(_mm_loadu_si128(reinterpret_cast<const __m128i*>(chain)))),
          m_e(_mm_set_epi32(static_cast<int>(chain[4]), 0, 0, 0))
    {
    }

    void Store(std::uint32_t* chain) const
    {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(chain), HighWordFirst(m_abcd));
        chain[4] = static_cast<std::uint32_t>(_mm_extract_epi32(m_e, 3));
    }

    /// Does rounds 4 * Group to 4 * Group + 3; a block takes the groups 0 to 19 in order.
    template <int Group>
    void FourRounds(const unsigned char* block)
    {
        if constexpr (Group == 0)
        {
            m_abcdBefore = m_abcd;
            m_eBefore = m_e;
        }

        __m128i& words = m_schedule[Group % 4];
        if constexpr (Group < 4)
        {
            words = LoadWords(block + 16 * Group);
        }
        else
        {
            words = _mm_sha1msg2_epu32(
                _mm_xor_si128(_mm_sha1msg1_epu32(words, m_schedule[(Group + 1) % 4]), m_schedule[(Group + 2) % 4]),
                m_schedule[(Group + 3) % 4]);
        }

        // After the first group, m_e holds the words a to d of four rounds ago, from which the next e is made.
        const __m128i e = Group == 0 ? _mm_add_epi32(m_e, words) : _mm_sha1nexte_epu32(m_e, words);
        m_e = m_abcd;
        m_abcd = _mm_sha1rnds4_epu32(m_abcd, e, Group / 5);

        if constexpr (Group == 19)
        {
            m_e = _mm_sha1nexte_epu32(m_e, m_eBefore);
            m_abcd = _mm_add_epi32(m_abcd, m_abcdBefore);
        }
    }

private:
    static __m128i HighWordFirst(__m128i words) { return _mm_shuffle_epi32(words, 0x1b); }

    static __m128i LoadWords(const unsigned char* bytes)
    {
        const __m128i reversed = _mm_set_epi64x(0x0001020304050607, 0x08090a0b0c0d0e0f);
        return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), reversed);
    }

    __m128i m_abcd;
    __m128i m_e;
    __m128i m_abcdBefore;
    __m128i m_eBefore;
    __m128i m_schedule[4];
};

} // namespace quorvex
