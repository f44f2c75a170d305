#include "Expect.h"
#include "Input.h"

#include "CpuFeatures.h"
#include "Hex.h"
#include "Md5.h"
#include "Md5Sha1.h"
#include "Sha1.h"

#include <openssl/evp.h>

#include <vector>

using namespace quorvex;
using namespace quorvex::fuzz;

namespace
{

template <std::size_t Size>
std::array<unsigned char, Size> Reference(const EVP_MD* kind, std::string_view message)
{
    std::array<unsigned char, Size> digest;
    unsigned int length = 0;
    Expect(EVP_Digest(message.data(), message.size(), digest.data(), &length, kind, nullptr) == 1 && length == Size,
           "the reference digests");
    return digest;
}

/// A message in pieces, each in a block of memory of exactly its size.
std::vector<std::vector<char>> Pieces(Input& cuts, std::string_view message)
{
    std::vector<std::vector<char>> pieces;
    while (!message.empty())
    {
        // No cut left is one big piece, and so are cuts that lead nowhere.
        const std::size_t wanted = cuts.IsEmpty() ? message.size() : cuts.Byte();
        const std::string_view piece = message.substr(0, wanted);
        pieces.emplace_back(piece.begin(), piece.end());
        message.remove_prefix(piece.size());
    }
    return pieces;
}

template <class Digest>
auto InPieces(Digest digest, const std::vector<std::vector<char>>& pieces)
{
    for (const auto& piece : pieces)
    {
        digest.Append(piece.data(), piece.size());
    }
    return digest.Finish();
}

Md5Digest ThroughTheInterface(const std::vector<std::vector<char>>& pieces)
{
    md5_state_t state;
    md5_init(&state);
    md5_append(&state, nullptr, 0);
    for (const auto& piece : pieces)
    {
        md5_append(&state, reinterpret_cast<const unsigned char*>(piece.data()), static_cast<int>(piece.size()));
        md5_append(&state, nullptr, -1);
    }
    Md5Digest digest;
    md5_finish(&state, digest.data());
    return digest;
}

void ExpectHex(const Md5Digest& digest)
{
    const auto text = HexText(digest);
    Expect(text.back() == '\0' && std::string_view(text.data()).size() == 2 * digest.size(), "a digest's text");
    for (std::size_t i = 0; i < digest.size(); ++i)
    {
        Expect(std::stoul(std::string(&text[2 * i], 2), nullptr, 16) == digest[i], "a digest's digits");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    Input cuts(input.Text());
    // Many blocks from few bytes.
    const std::size_t times = 1 + input.Byte() % 4U;
    const std::string_view part = input.Rest();
    std::string message;
    for (std::size_t i = 0; i < times; ++i)
    {
        message += part;
    }

    const auto pieces = Pieces(cuts, message);
    const auto md5 = Reference<16>(EVP_md5(), message);
    const auto sha1 = Reference<20>(EVP_sha1(), message);

    Expect(Md5Of(message.data(), message.size()) == md5, "MD5 of a whole message");
    Expect(InPieces(Md5(), pieces) == md5, "MD5 in pieces");
    Expect(ThroughTheInterface(pieces) == md5, "MD5 through the C interface");
    ExpectHex(md5);

    Sha1Digest whole;
    Sha1Of(message.data(), static_cast<std::uint32_t>(message.size()), whole.data());
    Expect(whole == sha1, "SHA-1 of a whole message");
    Expect(InPieces(Sha1(Sha1CompressPortable), pieces) == sha1, "SHA-1 in pieces, for every processor");
    const auto both = InPieces(Md5Sha1(Md5Sha1CompressPortable), pieces);
    Expect(both.md5 == md5 && both.sha1 == sha1, "both digests, for every processor");
#if QUORVEX_X86
    if (HasShaInstructions())
    {
        Expect(InPieces(Sha1(Sha1CompressX86), pieces) == sha1, "SHA-1 in pieces, with SHA instructions");
        const auto fast = InPieces(Md5Sha1(Md5Sha1CompressX86), pieces);
        Expect(fast.md5 == md5 && fast.sha1 == sha1, "both digests, with SHA instructions");
    }
#endif
    return 0;
}
