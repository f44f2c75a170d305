#include "SeedFolder.h"

#include "support/UploadForms.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <array>
#include <vector>

namespace quorvex::fuzz
{

namespace
{

using namespace std::string_literals;

/// A text with its length before it.
std::string Counted(const std::string& text)
{
    return static_cast<char>(text.size()) + text;
}

std::string Zlib(const std::string& text)
{
    std::vector<Bytef> packed(compressBound(static_cast<uLong>(text.size())));
    uLongf size = static_cast<uLongf>(packed.size());
    EXPECT_EQ(
        compress(packed.data(), &size, reinterpret_cast<const Bytef*>(text.data()), static_cast<uLong>(text.size())),
        Z_OK);
    return {packed.begin(), packed.begin() + static_cast<std::ptrdiff_t>(size)};
}

void WriteAll(const std::string& target, const std::vector<std::string>& inputs)
{
    for (std::size_t i = 0; i < inputs.size(); ++i)
    {
        WriteSeed(target, "text-" + std::to_string(i), inputs[i]);
    }
}

TEST(TextSeeds, HeaderValues)
{
    WriteAll("header-values",
             {"Dattachment;filename=\"NAME;md5=0123456789abcdef0123456789abcdef;sha=da39a3ee",
              "d" + Counted("a name") + Counted("0123") + "4567", "Tbytes 0-0/4294967296", "Tbytes 0-0/-1",
              "T18446744073709551616", "R\0\0\0\0\0\0\0\1"s, "R\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s, "Nfile.txt", "N..",
              "N. .", "Nnul.txt", "NCOM\xC2\xB9 .x", "Na\\b", "N", "NCONOUT$"});
}

TEST(TextSeeds, Texts)
{
    WriteAll("texts", {"Uhttp://127.0.0.1:8080/object/", "Uhttps://host/a/b//", "Uhttp://host", "Uhttp:/", "U",
                       "PA b&c=\xC3\xA4%", "P"s + std::string(200, '\xFF'),
                       "F\0\0\0\1\0\0\0\2\0\0\0\3\0\0\0\0\0\0\0\4"s + Counted("name.txt") + Counted("key") +
                           Counted("0123456789abcdef0123456789abcdef") + "content\r\n--",
                       "B\3\0"s + Counted("{\"name\":\"") + "\1" +
                           Counted("gr\xC3\xB6\xC3\x9F"
                                   "er \xF0\x9F\x98\x80") +
                           "\2\xFF\xFF\xFF\xFF\3\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\4",
                       "B\4\1"s + Counted("\xE2\x82\xAC"), "B\7\0"s + Counted("https://host/\xF0\x9F\x98\x80") + "\2",
                       "B\6\0"s + Counted("ab\xF0\x9F\x98\x80"), "W\2\xE2\x82\xAC\xE2\x82\xAC", "W\4ab\x80\x80\x80\x80",
                       "C\5gr\xC3\xB6\xC3\x9F"
                       "er",
                       "C\2\xF0\x9F\x98\x80", "C\0text"s, "O" + Counted("folder/list?fo_id=%s") + "0",
                       "O" + Counted("%s%s") + "%s"});
}

TEST(TextSeeds, Inflate)
{
    const std::string text = "one two three one two three one two three";
    WriteAll("inflate", {"S\1\2\1\5"s + Zlib(text), "S\1\0"s + Zlib(text).substr(0, 12), "L\1\0\0\0\5"s + Zlib(text),
                         "P\0\2\3\7\10"s + text, "P\x0D\0\1"s + text, "P\x13\0\xFF"s + text});
}

TEST(TextSeeds, Digests)
{
    WriteAll("digests", {"\0\0"s, "\0\0abc"s, "\3\x3F\1\x40\0"s + std::string(200, 'a'),
                         "\2\x37\x09\7"s + services::test::SampleBytes(300), "\1\x40\2"s + std::string(64, 'b'),
                         "\0\0"s + services::test::SampleBytes(1024)});
}

} // namespace

} // namespace quorvex::fuzz
