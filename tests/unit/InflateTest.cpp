#include "Inflate.h"
#include "ResponseBody.h"

#include "support/LogCapture.h"
#include "support/SystemCalls.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <quorvex/Results.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>
#include <vector>

using namespace quorvex;

namespace
{

constexpr int kGzipWrapper = 15 + 16;
constexpr int kZlibWrapper = 15;
constexpr std::size_t kAnySize = static_cast<std::size_t>(-1);

std::string Deflated(const std::string& text, int windowBits, const std::string& dictionary = {})
{
    z_stream stream = {};
    EXPECT_EQ(deflateInit2(&stream, 9, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY), Z_OK);
    if (!dictionary.empty())
    {
        deflateSetDictionary(&stream, reinterpret_cast<const Bytef*>(dictionary.data()),
                             static_cast<uInt>(dictionary.size()));
    }
    std::string out(deflateBound(&stream, static_cast<uLong>(text.size())) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    out.resize(out.size() - stream.avail_out);
    deflateEnd(&stream);
    return out;
}

std::string Noise(std::size_t size)
{
    std::string text(size, '\0');
    unsigned int state = 1;
    for (char& character : text)
    {
        state = state * 1103515245U + 12345U;
        character = static_cast<char>(state >> 24U);
    }
    return text;
}

/// Fails each allocation of an action in turn.
/// @return what the action gave each time, but for those times when it threw
template <class Action>
std::vector<int> WithoutMemory(Action action)
{
    std::vector<int> results;
    // The pieces of the module are linked into this program, so it is its own calls that fail.
    support::SystemCalls calls(nullptr);
    for (unsigned failing = 1;; ++failing)
    {
        const unsigned before = calls.calls("malloc");
        calls.fail("malloc", failing, ERROR_NOT_ENOUGH_MEMORY);
        try
        {
            const int result = action();
            if (calls.calls("malloc") - before < failing)
            {
                return results;
            }
            results.push_back(result);
        }
        catch (const std::bad_alloc&)
        {
        }
    }
}

} // namespace

TEST(Inflate, GzipAndDeflate)
{
    const std::string text = Noise(10000);
    std::string out;
    EXPECT_EQ(InflateToString(out, Deflated(text, kGzipWrapper), kEncodingGzip, kAnySize), 0);
    EXPECT_EQ(out, text);
    out.clear();
    EXPECT_EQ(InflateToString(out, Deflated(text, kZlibWrapper), kEncodingDeflate, kAnySize), 0);
    EXPECT_EQ(out, text);
}

TEST(Inflate, GzipFindsOutWhichHeaderThereIs)
{
    std::string out;
    EXPECT_EQ(InflateToString(out, Deflated("text", kZlibWrapper), kEncodingGzip, kAnySize), 0);
    EXPECT_EQ(out, "text");
}

TEST(Inflate, DeflateTakesNoGzipHeader)
{
    const support::LogCapture log;
    std::string out;
    EXPECT_EQ(InflateToString(out, Deflated("text", kGzipWrapper), kEncodingDeflate, kAnySize), Z_DATA_ERROR);
    EXPECT_EQ(log.messages("ERROR"), std::vector<std::string>{"GetResponse() inflate() ret=-3"});
}

TEST(Inflate, AppendsToWhatIsThere)
{
    std::string out = "before ";
    EXPECT_EQ(InflateToString(out, Deflated("after", kGzipWrapper), kEncodingGzip, kAnySize), 0);
    EXPECT_EQ(out, "before after");
}

TEST(Inflate, WholeChunksTakeOneMoreRound)
{
    for (const std::size_t size : {kInflateChunk, 2 * kInflateChunk, 16 * kInflateChunk})
    {
        const std::string text(size, 'x');
        std::string out;
        EXPECT_EQ(InflateToString(out, Deflated(text, kGzipWrapper), kEncodingGzip, kAnySize), 0) << size;
        EXPECT_EQ(out, text) << size;
    }
}

TEST(Inflate, CutBodyIsLoggedAndStillGivesWhatCameAndZero)
{
    const support::LogCapture log;
    const std::string text = Noise(5000);
    const std::string whole = Deflated(text, kGzipWrapper);
    std::string out;
    // Only the trailer's last bytes are gone: every byte of text is there.
    EXPECT_EQ(InflateToString(out, std::span(whole).first(whole.size() - 4), kEncodingGzip, kAnySize), 0);
    EXPECT_EQ(out, text);
    EXPECT_EQ(log.messages("ERROR"),
              std::vector<std::string>{"GetResponse() inflate() last return is not Z_STREAM_END, ret=0"});
}

TEST(Inflate, EmptyBodyIsNoStream)
{
    const support::LogCapture log;
    std::string out;
    EXPECT_EQ(InflateToString(out, {}, kEncodingGzip, kAnySize), Z_BUF_ERROR);
    EXPECT_EQ(log.messages("ERROR"),
              std::vector<std::string>{"GetResponse() inflate() last return is not Z_STREAM_END, ret=-5"});
}

TEST(Inflate, CorruptBodyIsADataError)
{
    const support::LogCapture log;
    std::string whole = Deflated(Noise(5000), kGzipWrapper);
    whole[whole.size() - 6] = static_cast<char>(~whole[whole.size() - 6]);
    std::string out;
    EXPECT_EQ(InflateToString(out, whole, kEncodingGzip, kAnySize), Z_DATA_ERROR);
    EXPECT_EQ(log.messages("ERROR"), std::vector<std::string>{"GetResponse() inflate() ret=-3"});
}

TEST(Inflate, ATextMayBeAsLongAsTheLimitAndNoLonger)
{
    for (const std::size_t size :
         {std::size_t{1}, kInflateChunk - 1, kInflateChunk, kInflateChunk + 1, 3 * kInflateChunk, std::size_t{50000}})
    {
        const support::LogCapture log(8);
        const std::string text(size, 'a');
        const std::string whole = Deflated(text, kGzipWrapper);
        std::string out;
        EXPECT_EQ(InflateToString(out, whole, kEncodingGzip, size), 0);
        EXPECT_EQ(out, text);
        EXPECT_TRUE(log.lines().empty());

        out.clear();
        EXPECT_EQ(InflateToString(out, whole, kEncodingGzip, size - 1), Result::TransferFailed);
        EXPECT_EQ(out, "");
        EXPECT_EQ(log.messages("ERROR"),
                  std::vector<std::string>{"GetResponse() inflate() gives too long a response, limit=" +
                                           std::to_string(size - 1)});
    }
}

TEST(Inflate, ATextIsBoundedTogetherWithWhatStandsBeforeIt)
{
    std::string out(10, 'b');
    const std::string whole = Deflated("12345", kGzipWrapper);
    EXPECT_EQ(InflateToString(out, whole, kEncodingGzip, 14), Result::TransferFailed);
    out.assign(10, 'b');
    EXPECT_EQ(InflateToString(out, whole, kEncodingGzip, 15), 0);
    EXPECT_EQ(out, std::string(10, 'b') + "12345");
}

TEST(Inflate, ARangeMayBeAsLongAsItWasAskedFor)
{
    EXPECT_EQ(LongestRange(0), kLongestResponse);
    EXPECT_EQ(LongestRange(static_cast<std::uint32_t>(kLongestResponse)), kLongestResponse);
    EXPECT_EQ(LongestRange(static_cast<std::uint32_t>(kLongestResponse) + 1), kLongestResponse + 1);
    EXPECT_EQ(LongestRange(0xFFFFFFFFU), 0xFFFFFFFFU);
}

TEST(Inflate, PresetDictionaryCountsAsDamage)
{
    const support::LogCapture log;
    std::string out;
    EXPECT_EQ(InflateToString(out, Deflated("some text", kZlibWrapper, "some dictionary"), kEncodingDeflate, kAnySize),
              Z_DATA_ERROR);
    EXPECT_EQ(log.messages("ERROR"), std::vector<std::string>{"GetResponse() inflate() ret=-3"});
}

TEST(Inflate, EveryCutOfABodyEndsInSomeResult)
{
    const std::string whole = Deflated(Noise(300), kGzipWrapper);
    for (std::size_t length = 0; length < whole.size(); ++length)
    {
        std::string out;
        const int result = InflateToString(out, std::span(whole).first(length), kEncodingGzip, kAnySize);
        EXPECT_TRUE(result == 0 || result == Z_BUF_ERROR) << length << " " << result;
    }
}

TEST(Inflate, SettingUpWithoutMemoryIsTold)
{
    for (const std::uint32_t encoding : {kEncodingGzip, kEncodingDeflate})
    {
        const std::vector<int> results = WithoutMemory([&] { return Inflater(encoding).InitResult(); });
        EXPECT_EQ(std::ranges::count(results, Z_MEM_ERROR), 1) << encoding;
    }
}

TEST(Inflate, ABodyWithoutMemoryFailsInTheStepThatNeedsIt)
{
    const support::LogCapture log(8);
    // A text that goes on behind the first step needs the window.
    const std::string whole = Deflated(Noise(10000), kGzipWrapper);
    const std::vector<int> results = WithoutMemory([&] {
        std::string out;
        return InflateToString(out, whole, kEncodingGzip, kAnySize);
    });
    // An inflater that could not be set up refuses its first step; one that was takes its window in that step.
    EXPECT_EQ(std::ranges::count(results, Z_STREAM_ERROR), 1);
    EXPECT_EQ(std::ranges::count(results, Z_MEM_ERROR), 1);
    const std::vector<std::string> lines = log.messages("ERROR");
    EXPECT_EQ(std::ranges::count(lines, "GetResponse() inflate() last return is not Z_STREAM_END, ret=-2"), 1);
    EXPECT_EQ(std::ranges::count(lines, "GetResponse() inflate() ret=-4"), 1);
}

TEST(Inflate, BadDataAndMissingMemoryEndABodyAtOnce)
{
    EXPECT_TRUE(Inflater::IsFailure(Z_DATA_ERROR));
    EXPECT_TRUE(Inflater::IsFailure(Z_MEM_ERROR));
    for (const int result : {Z_OK, Z_STREAM_END, Z_BUF_ERROR, Z_STREAM_ERROR})
    {
        EXPECT_FALSE(Inflater::IsFailure(result)) << result;
    }
}
