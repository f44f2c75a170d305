#include "Inflate.h"
#include "Expect.h"
#include "Input.h"

#include <quorvex/Results.h>

#include <zlib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

using namespace quorvex;
using namespace quorvex::fuzz;

namespace
{

constexpr std::size_t kLongest = std::size_t{16} << 20U;

struct Outcome
{
    std::string text;
    bool isDamaged = false;
    bool isEnded = false;
};

/// zlib itself, with all the room that it may want.
Outcome Reference(std::string_view data, std::uint32_t encoding)
{
    z_stream stream = {};
    Expect(inflateInit2(&stream, encoding == kEncodingGzip ? 15 + 32 : 15) == Z_OK, "zlib can be set up");
    std::vector<Bytef> input(data.begin(), data.end());
    stream.next_in = input.data();
    stream.avail_in = static_cast<uInt>(input.size());
    Outcome outcome;
    // Nothing that deflate packs shrinks to less than a thousandth.
    const std::size_t size = data.size() * 1100 + 64;
    const auto room = std::make_unique_for_overwrite<char[]>(size);
    stream.next_out = reinterpret_cast<Bytef*>(room.get());
    stream.avail_out = static_cast<uInt>(size);
    const int result = inflate(&stream, Z_NO_FLUSH);
    outcome.text.assign(room.get(), size - stream.avail_out);
    outcome.isEnded = result == Z_STREAM_END;
    outcome.isDamaged = result == Z_DATA_ERROR || result == Z_NEED_DICT;
    inflateEnd(&stream);
    return outcome;
}

/// As a download is inflated: piece by piece as it comes, each in a block of memory of exactly its size.
Outcome InPieces(std::string_view data, std::uint32_t encoding, Input cuts)
{
    Inflater inflater(encoding);
    Expect(inflater.InitResult() == 0, "an inflater can be set up");
    Outcome outcome;
    const auto chunk = std::make_unique<std::array<char, kInflateChunk>>();
    while (!data.empty() && !outcome.isDamaged)
    {
        const std::size_t wanted = cuts.IsEmpty() ? data.size() : std::max<std::size_t>(cuts.Byte(), 1);
        const std::vector<char> piece(data.begin(),
                                      data.begin() + static_cast<std::ptrdiff_t>(std::min(wanted, data.size())));
        data.remove_prefix(piece.size());
        inflater.SetInput(piece);
        std::size_t produced = 0;
        do
        {
            const int result = inflater.Inflate(*chunk, produced, Inflater::Flush::Sync);
            Expect(produced <= chunk->size(), "a chunk holds what was produced");
            outcome.isDamaged = Inflater::IsFailure(result);
            outcome.isEnded = result == Inflater::kStreamEnd;
            outcome.text.append(chunk->data(), produced);
        } while (produced == chunk->size() && !outcome.isDamaged);
    }
    return outcome;
}

/// The whole, in pieces, and zlib itself agree.
void ExpectSame(std::string_view data, std::uint32_t encoding, std::string_view cuts)
{
    const Outcome reference = Reference(data, encoding);
    const Outcome pieces = InPieces(data, encoding, Input(cuts));
    Expect(pieces.isDamaged == reference.isDamaged, "in pieces as in one: whether it is damaged");
    Expect(pieces.isEnded == reference.isEnded, "in pieces as in one: whether it ends");
    Expect(pieces.text == reference.text, "in pieces as in one: the text");

    std::string text;
    const std::vector<char> exact(data.begin(), data.end());
    const int result = InflateToString(text, exact, encoding, kLongest);
    if (reference.isEnded)
    {
        Expect(result == 0 && text == reference.text, "a whole body is inflated");
    }
    else if (reference.isDamaged)
    {
        Expect(result == Z_DATA_ERROR, "a damaged body is refused");
        Expect(reference.text.starts_with(text), "what a damaged body gave before is right");
    }
    else
    {
        Expect((result == 0 || result == Z_BUF_ERROR) && text == reference.text, "a body that ends too early");
    }
}

void ExpectLimit(std::string_view data, std::uint32_t encoding, std::size_t longest)
{
    std::string text;
    const int result = InflateToString(text, data, encoding, longest);
    Expect(text.size() <= longest, "no text is longer than allowed");
    Expect(result != Result::TransferFailed || text.empty(), "too long a text is none");
    const Outcome reference = Reference(data, encoding);
    Expect(!reference.isEnded || (result == 0) == (reference.text.size() <= longest), "a text that fits is given");
}

std::string Packed(std::string_view text, std::uint32_t encoding, int level)
{
    z_stream stream = {};
    Expect(deflateInit2(&stream, level, Z_DEFLATED, encoding == kEncodingGzip ? 15 + 16 : 15, 8, Z_DEFAULT_STRATEGY) ==
               Z_OK,
           "zlib can be set up");
    std::vector<Bytef> input(text.begin(), text.end());
    stream.next_in = input.data();
    stream.avail_in = static_cast<uInt>(input.size());
    std::string packed(deflateBound(&stream, static_cast<uLong>(input.size())), '\0');
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    Expect(deflate(&stream, Z_FINISH) == Z_STREAM_END, "zlib packs");
    packed.resize(packed.size() - stream.avail_out);
    deflateEnd(&stream);
    return packed;
}

void ExpectRoundTrip(std::string_view text, std::uint32_t encoding, int level, std::string_view cuts)
{
    const std::string packed = Packed(text, encoding, level);
    ExpectSame(packed, encoding, cuts);
    std::string inflated;
    Expect(InflateToString(inflated, packed, encoding, kLongest) == 0 && inflated == text,
           "what was packed comes back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const std::uint8_t operation = input.Byte();
    const std::uint8_t choice = input.Byte();
    const std::uint32_t encoding = choice % 2 == 0 ? kEncodingGzip : kEncodingDeflate;
    switch (operation)
    {
    case 'S':
    {
        const std::string_view cuts = input.Text();
        ExpectSame(input.Rest(), encoding, cuts);
        break;
    }
    case 'L':
    {
        const std::size_t longest = input.Number32() % kLongest;
        ExpectLimit(input.Rest(), encoding, longest);
        break;
    }
    case 'P':
    {
        const std::string_view cuts = input.Text();
        // Short texts often, long ones sometimes: a text is as often repeated as its first byte says.
        const std::size_t times = input.Byte();
        const std::string_view part = input.Rest();
        std::string text;
        for (std::size_t i = 0; i <= times && text.size() < 65536; ++i)
        {
            text += part;
        }
        ExpectRoundTrip(text, encoding, choice / 2 % 10, cuts);
        break;
    }
    default:
        return 0;
    }
    return 0;
}
