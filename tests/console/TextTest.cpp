#include "Text.h"

#include <gtest/gtest.h>

namespace quorvex::console
{
namespace
{

TEST(FromSystem, IsUtf8InAnyCase)
{
    EXPECT_EQ(FromSystem("caf\xC3\xA9"), "caf\xC3\xA9");
    EXPECT_TRUE(ToWide(FromSystem("caf\xE9")).has_value());
    EXPECT_TRUE(FromSystem("caf\xE9").starts_with("caf"));
    EXPECT_EQ(FromSystem(""), "");
}

TEST(Text, ConvertsEveryScriptBothWays)
{
    const std::wstring wide = L"a\xE9\x20AC\x65E5\xD83D\xDE00";
    const std::string narrow = "a\xC3\xA9\xE2\x82\xAC\xE6\x97\xA5\xF0\x9F\x98\x80";
    EXPECT_EQ(ToUtf8(wide), narrow);
    EXPECT_EQ(ToWide(narrow), wide);
    EXPECT_EQ(ToUtf8(L""), "");
    EXPECT_EQ(ToWide(""), L"");
}

TEST(Text, TellsBytesThatAreNoUtf8)
{
    for (const char* const bytes : {"\x80", "caf\xE9", "\xC3", "\xED\xA0\x80", "\xC0\xAF", "\xF4\x90\x80\x80"})
        EXPECT_EQ(ToWide(bytes), std::nullopt) << testing::PrintToString(bytes);
    EXPECT_EQ(Wide("caf\xE9"), L"");
}

TEST(Text, EscapesWhatJsonKeepsForItself)
{
    EXPECT_EQ(JsonEscaped(""), L"");
    EXPECT_EQ(JsonEscaped("plain \xC3\xA9/"), L"plain \xE9/");
    EXPECT_EQ(JsonEscaped("a\"b\\c"), L"a\\\"b\\\\c");
    EXPECT_EQ(JsonEscaped("\n\x1F\x7F"), L"\\u000a\\u001f\x7F");
}

TEST(Text, EscapesWhatAQueryKeepsForItself)
{
    EXPECT_EQ(QueryEscaped(""), L"");
    EXPECT_EQ(QueryEscaped("aZ09-._~"), L"aZ09-._~");
    EXPECT_EQ(QueryEscaped("a b%41&c=d+e#f/g\\h\"\x7F\n"), L"a%20b%2541%26c%3Dd%2Be%23f%2Fg%5Ch%22%7F%0A");
    EXPECT_EQ(QueryEscaped("\xC3\xA9\xE6\x97\xA5"), L"\xE9\x65E5");
}

TEST(Text, ForATerminalHasNoControlCharacters)
{
    EXPECT_EQ(Printable("a \xE6\x97\xA5\xF0\x9F\x98\x80~"), "a \xE6\x97\xA5\xF0\x9F\x98\x80~");
    EXPECT_EQ(Printable("\x1B\r\x7F\xC2\x80\xC2\x9F\xC2\xA0"),
              "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xC2\xA0");
}

TEST(Text, HasAWidthInColumns)
{
    EXPECT_EQ(WidthOf(""), 0u);
    EXPECT_EQ(WidthOf("abc"), 3u);
    EXPECT_EQ(WidthOf("\xD0\xA4\xC3\xA9"), 2u);
    EXPECT_EQ(WidthOf("\xE6\x97\xA5\xF0\x9F\x98\x80"), 4u);
}

} // namespace
} // namespace quorvex::console
