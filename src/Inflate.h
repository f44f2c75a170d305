#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

struct z_stream_s;

/// Inflating bodies that the server has compressed. The results are zlib's own codes.
namespace quorvex
{

/// What a response's Content-Encoding is.
inline constexpr std::uint32_t kEncodingGzip = 2;
inline constexpr std::uint32_t kEncodingDeflate = 4;

inline constexpr std::size_t kInflateChunk = 4096;

/// One compressed body.
class Inflater
{
public:
    static constexpr int kStreamEnd = 1;

    enum class Flush
    {
        None,
        Sync
    };

    explicit Inflater(std::uint32_t encoding);
    ~Inflater();
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// What setting up the stream gave; 0 when it is usable.
    int InitResult() const { return m_initResult; }

    /// Gives the next compressed bytes; they must stay in place while they are inflated.
    void SetInput(std::span<const char> data);

    /// Inflates into a chunk. A body that asks for a preset dictionary counts as damaged.
    /// @param produced receives how many bytes of the chunk were filled
    int Inflate(std::span<char, kInflateChunk> chunk, std::size_t& produced, Flush flush);

    /// Whether a result of Inflate says that the body is damaged or memory ran out.
    static bool IsFailure(int result);

private:
    std::unique_ptr<z_stream_s> m_stream;
    int m_initResult;
};

/// Inflates a whole body.
/// @param out      the text is appended to it
/// @param data     the compressed bytes
/// @param encoding kEncodingGzip or kEncodingDeflate
/// @param longest  bytes that the text may have: a body of some kilobytes may well inflate to gigabytes
/// @return 0, also for most bodies that end too early; zlib's code; -107 for a longer text, and then `out` is empty
int InflateToString(std::string& out, std::span<const char> data, std::uint32_t encoding, std::size_t longest);

} // namespace quorvex
