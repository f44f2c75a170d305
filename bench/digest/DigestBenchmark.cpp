// The digests of the module against OpenSSL's, over one buffer in memory.
//
// The two sides of a comparison take turns every few MiB, so that whatever slows the machine down meets both, and
// what is measured is processor time. A comparison is repeated; the table gives the median of the ratios and their
// range. Digests that differ end the program with an error.

#include "Hex.h"
#include "Md5.h"
#include "Md5Sha1.h"
#include "Sha1.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace
{

constexpr std::size_t kMebibyte = 1 << 20;
constexpr std::size_t kTurn = 4 * kMebibyte;

template <class Digest>
std::string Hex(const Digest& digest)
{
    return quorvex::HexText(digest).data();
}

/// One way of digesting a message. Its result is the digest, or both, in hexadecimal.
class Digester
{
public:
    Digester() = default;
    Digester(const Digester&) = delete;
    Digester& operator=(const Digester&) = delete;
    virtual ~Digester() = default;

    virtual void Append(const unsigned char* data, std::size_t size) = 0;
    virtual std::string Finish() = 0;
};

template <class Digest>
class Ours : public Digester
{
public:
    void Append(const unsigned char* data, std::size_t size) override { m_digest.Append(data, size); }
    std::string Finish() override { return Hex(m_digest.Finish()); }

private:
    Digest m_digest;
};

class OurPair : public Digester
{
public:
    void Append(const unsigned char* data, std::size_t size) override { m_pair.Append(data, size); }

    std::string Finish() override
    {
        const quorvex::Md5Sha1::Digests digests = m_pair.Finish();
        return Hex(digests.md5) + Hex(digests.sha1);
    }

private:
    quorvex::Md5Sha1 m_pair;
};

class OpenSsl : public Digester
{
public:
    explicit OpenSsl(const EVP_MD* type) : m_context(EVP_MD_CTX_new())
    {
        Check(m_context && EVP_DigestInit_ex(m_context.get(), type, nullptr) == 1);
    }

    void Append(const unsigned char* data, std::size_t size) override
    {
        Check(EVP_DigestUpdate(m_context.get(), data, size) == 1);
    }

    std::string Finish() override
    {
        std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
        unsigned int size = 0;
        Check(EVP_DigestFinal_ex(m_context.get(), digest.data(), &size) == 1);
        return Hex(digest).substr(0, 2 * std::size_t{size});
    }

private:
    struct Free
    {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };

    static void Check(bool worked)
    {
        if (!worked)
        {
            throw std::runtime_error("OpenSSL cannot digest");
        }
    }

    std::unique_ptr<EVP_MD_CTX, Free> m_context;
};

class OpenSslPair : public Digester
{
public:
    void Append(const unsigned char* data, std::size_t size) override
    {
        m_md5.Append(data, size);
        m_sha1.Append(data, size);
    }

    std::string Finish() override
    {
        const std::string md5 = m_md5.Finish();
        return md5 + m_sha1.Finish();
    }

private:
    OpenSsl m_md5{EVP_md5()};
    OpenSsl m_sha1{EVP_sha1()};
};

using MakeDigester = std::function<std::unique_ptr<Digester>()>;

template <class Kind>
MakeDigester Make()
{
    return [] { return std::make_unique<Kind>(); };
}

MakeDigester MakeOpenSsl(const EVP_MD* type)
{
    return [type] { return std::make_unique<OpenSsl>(type); };
}

struct Comparison
{
    const char* name;
    const char* reference;
    double target; ///< the least ratio of speeds
    MakeDigester ours;
    MakeDigester theirs;
};

struct Seconds
{
    double ours = 0;
    double theirs = 0;
};

double ProcessorSecondsOf(Digester& digester, const unsigned char* data, std::size_t size)
{
    const std::clock_t begin = std::clock();
    digester.Append(data, size);
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

/// Digests the bytes once on either side.
Seconds RunOnce(const Comparison& comparison, const std::vector<unsigned char>& bytes)
{
    const std::unique_ptr<Digester> ours = comparison.ours();
    const std::unique_ptr<Digester> theirs = comparison.theirs();
    Seconds seconds;
    bool oursFirst = true;
    for (std::size_t begin = 0; begin < bytes.size(); begin += kTurn)
    {
        const unsigned char* data = bytes.data() + begin;
        const std::size_t size = std::min(kTurn, bytes.size() - begin);
        if (oursFirst)
        {
            seconds.ours += ProcessorSecondsOf(*ours, data, size);
        }
        seconds.theirs += ProcessorSecondsOf(*theirs, data, size);
        if (!oursFirst)
        {
            seconds.ours += ProcessorSecondsOf(*ours, data, size);
        }
        oursFirst = !oursFirst;
    }
    // The pair is also held against MD5 alone, which is then the first part of its text.
    if (!ours->Finish().starts_with(theirs->Finish()))
    {
        throw std::runtime_error(std::string("the digests differ: ") + comparison.name);
    }
    return seconds;
}

double Median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values[values.size() / 2];
}

void Measure(const Comparison& comparison, const std::vector<unsigned char>& bytes, int rounds)
{
    std::vector<double> ours;
    std::vector<double> theirs;
    std::vector<double> ratios;
    RunOnce(comparison, bytes); // the first touch of code and memory is not counted
    for (int round = 0; round < rounds; ++round)
    {
        const Seconds seconds = RunOnce(comparison, bytes);
        ours.push_back(seconds.ours);
        theirs.push_back(seconds.theirs);
        ratios.push_back(seconds.theirs / seconds.ours);
    }
    const double gibibytes = static_cast<double>(bytes.size()) / (1024.0 * static_cast<double>(kMebibyte));
    const auto [slowest, fastest] = std::ranges::minmax(ratios);
    const double ratio = Median(ratios);
    // Where both sides are as fast as the processor's instructions, the third place is chance.
    const bool isMet = std::round(ratio * 100) >= std::round(comparison.target * 100);
    std::printf("| %s | %.3f | %s | %.3f | **%.3f** | %.3f to %.3f | at least %.2f | %s |\n", comparison.name,
                gibibytes / Median(ours), comparison.reference, gibibytes / Median(theirs), ratio, slowest, fastest,
                comparison.target, isMet ? "yes" : "no");
    std::fflush(stdout);
}

std::vector<unsigned char> RandomBytes(std::size_t size)
{
    std::vector<unsigned char> bytes(size);
    std::uint32_t number = 1;
    for (unsigned char& byte : bytes)
    {
        number = number * 1664525 + 1013904223;
        byte = static_cast<unsigned char>(number >> 24);
    }
    return bytes;
}

int PositiveNumber(std::string_view text)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number <= 0)
    {
        throw std::invalid_argument("usage: digest-bench [MiB [rounds]]");
    }
    return number;
}

void Run(int argc, char** argv)
{
    const int mebibytes = argc > 1 ? PositiveNumber(argv[1]) : 256;
    const int rounds = argc > 2 ? PositiveNumber(argv[2]) : 9;
    const std::vector<unsigned char> bytes = RandomBytes(static_cast<std::size_t>(mebibytes) * kMebibyte);

    const Comparison comparisons[] = {
        {"MD5", "OpenSSL MD5", 1.0, Make<Ours<quorvex::Md5>>(), MakeOpenSsl(EVP_md5())},
        {"SHA-1", "OpenSSL SHA-1", 1.0, Make<Ours<quorvex::Sha1>>(), MakeOpenSsl(EVP_sha1())},
        {"MD5 and SHA-1 in one pass", "OpenSSL, one after the other", 1.0, Make<OurPair>(), Make<OpenSslPair>()},
        {"MD5 and SHA-1 in one pass", "our MD5 alone", 1 / 1.05, Make<OurPair>(), Make<Ours<quorvex::Md5>>()},
    };
    std::printf(
        "%d MiB in memory, %d rounds, sides taking turns every %zu MiB, processor time; targets to two places\n\n",
        mebibytes, rounds, kTurn / kMebibyte);
    std::printf("| Digest | GiB/s | against | GiB/s | ratio of speeds, median | range | target | met |\n");
    std::printf("|---|---:|---|---:|---:|---:|---|---|\n");
    for (const Comparison& comparison : comparisons)
    {
        Measure(comparison, bytes, rounds);
    }
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        Run(argc, argv);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "digest-bench: %s\n", error.what());
        return 1;
    }
}
