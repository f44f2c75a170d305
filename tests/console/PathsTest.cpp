#include "Paths.h"
#include "Failure.h"
#include "RemoteFile.h"
#include "Text.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

namespace quorvex::console
{
namespace
{

/// The text that the system makes of a header's UTF-8 bytes when it takes each for one character.
std::wstring AsLatin(const std::string& bytes)
{
    std::wstring text;
    for (const char byte : bytes)
        text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    return text;
}

TEST(SplitPath, MakesRelativePathsAbsolute)
{
    const LocalPath local = SplitPath(L"some.txt");
    EXPECT_EQ(local.name, L"some.txt");
    EXPECT_TRUE(std::filesystem::equivalent(local.folder, std::filesystem::current_path()));
    EXPECT_EQ(SplitPath(L".\\x\\..\\some.txt").Whole(), local.Whole());
}

TEST(SplitPath, LeavesNoTrailingBackslashOnTheFolder)
{
    EXPECT_EQ(SplitPath(L"C:\\some.txt").folder, L"C:");
    EXPECT_EQ(SplitPath(L"C:/a//b/some.txt").folder, L"C:\\a\\b");
    EXPECT_EQ(SplitPath(L"C:\\a\\some.txt").Whole(), L"C:\\a\\some.txt");
}

TEST(SplitPath, RefusesWhatIsNoFileOrTooLong)
{
    EXPECT_THROW(SplitPath(L""), Failure);
    EXPECT_THROW(SplitPath(L"C:\\"), Failure);
    EXPECT_THROW(SplitPath(L"C:\\folder\\"), Failure);
    EXPECT_EQ(SplitPath(L"C:\\" + std::wstring(256, L'x')).name.size(), 256u);
    EXPECT_THROW(SplitPath(L"C:\\" + std::wstring(257, L'x')), Failure);
}

TEST(RepairedName, GivesBackTheUtf8OfTheHeader)
{
    for (const char* const meant : {"plain.txt", "caf\xC3\xA9.txt", "\xE6\x97\xA5\xE6\x9C\xAC.txt", "\xF0\x9F\x98\x80"})
        EXPECT_EQ(RepairedName(AsLatin(meant)), Wide(meant)) << meant;
}

TEST(RepairedName, LeavesAloneWhatNeedsNoRepair)
{
    for (const wchar_t* const name : {L"", L"caf\xE9.txt", L"\x65E5\x672C.txt", L"\xD83D\xDE00"})
        EXPECT_EQ(RepairedName(name), name);
}

TEST(SafeName, KeepsOrdinaryNames)
{
    for (const wchar_t* const name :
         {L"a", L"report.final.pdf", L".profile", L"caf\xE9 \x65E5\x672C.txt", L"CONSOLE.txt", L"COM10", L"a..b"})
        EXPECT_EQ(SafeName(name, L"key"), name);
}

TEST(SafeName, NeverLeavesTheFolder)
{
    EXPECT_EQ(SafeName(L"..\\..\\evil.exe", L"key"), L".._.._evil.exe");
    EXPECT_EQ(SafeName(L"/etc/passwd", L"key"), L"_etc_passwd");
    EXPECT_EQ(SafeName(L"C:evil.exe", L"key"), L"C_evil.exe");
    EXPECT_EQ(SafeName(L"file.txt:stream", L"key"), L"file.txt_stream");
    EXPECT_EQ(SafeName(L"\\\\server\\share", L"key"), L"__server_share");
}

TEST(SafeName, ReplacesWhatNoNameMayHold)
{
    EXPECT_EQ(SafeName(L"a<b>c\"d|e?f*g\x1h\ni", L"key"), L"a_b_c_d_e_f_g_h_i");
    EXPECT_EQ(SafeName(L"a\x7F\x9B"
                       L"31m\xA0",
                       L"key"),
              L"a__31m\xA0");
}

TEST(SafeName, DropsTheMarkThatClosesTheQuotation)
{
    EXPECT_EQ(SafeName(L"a.txt\"", L"key"), L"a.txt");
    EXPECT_EQ(SafeName(L"\"", L"key"), L"key");
}

TEST(SafeName, FallsBackWhenNothingIsLeft)
{
    for (const wchar_t* const name : {L"", L".", L"..", L"...", L" ", L". ."})
        EXPECT_EQ(SafeName(name, L"key"), L"key");
    EXPECT_EQ(SafeName(L"a. .", L"key"), L"a");
}

TEST(SafeName, TrustsTheFallbackNoMoreThanTheName)
{
    EXPECT_EQ(SafeName(L"", L"..\\..\\evil.bat"), L".._.._evil.bat");
    EXPECT_EQ(SafeName(L".", L"C:\\x\\evil.exe"), L"C__x_evil.exe");
    EXPECT_EQ(SafeName(L"", L"nul"), L"_nul");
    EXPECT_EQ(SafeName(L"..", L".. "), L"file");
    EXPECT_EQ(SafeName(L"", L""), L"file");
}

TEST(SharedFile, StaysInItsFolderWhateverTheServerSays)
{
    FileEntry entry;
    entry.key = "..\\..\\evil.bat";
    EXPECT_EQ(SharedFile(entry).name, L".._.._evil.bat");
    entry.key = "CON";
    EXPECT_EQ(SharedFile(entry).name, L"_CON");
    entry.name = "C:\\x\\evil.exe";
    EXPECT_EQ(SharedFile(entry).name, L"C__x_evil.exe");
}

TEST(SafeName, NamesNoDevice)
{
    for (const wchar_t* const name :
         {L"CON", L"nul", L"Aux.txt", L"prn .tar.gz", L"COM1", L"lpt9.log", L"COM\xB9", L"CONIN$"})
        EXPECT_EQ(SafeName(name, L"key"), std::wstring(L"_") + name);
}

TEST(DistinctNames, LeaveAloneWhatIsDistinct)
{
    const std::vector<std::wstring> names{L"a.txt", L"b.txt", L"a"};
    EXPECT_EQ(DistinctNames(names), names);
    EXPECT_TRUE(DistinctNames({}).empty());
}

TEST(DistinctNames, NumberWhatTheSystemTakesForTheSame)
{
    EXPECT_EQ(DistinctNames({L"a.txt", L"A.TXT", L"a.txt", L"\x444.tar.gz", L"\x424.tar.gz", L"n", L"n"}),
              (std::vector<std::wstring>{L"a.txt", L"A (2).TXT", L"a (3).txt", L"\x444.tar.gz", L"\x424.tar (2).gz",
                                         L"n", L"n (2)"}));
}

TEST(DistinctNames, AvoidNamesThatHaveANumberAlready)
{
    EXPECT_EQ(DistinctNames({L"a (2).txt", L"a.txt", L"a.txt", L"a (3).txt"}),
              (std::vector<std::wstring>{L"a (2).txt", L"a.txt", L"a (3).txt", L"a (3) (2).txt"}));
}

TEST(DownloadPlaces, LieSideBySideInAFolder)
{
    DownloadPlaces places(".", 3);
    EXPECT_EQ(places.For(L"a.txt").filename(), L"a.txt");
    EXPECT_EQ(places.For(L"A.txt").filename(), L"A (2).txt");
    EXPECT_EQ(places.For(L"b.txt").filename(), L"b.txt");
}

TEST(DownloadPlaces, NeedAFolderForSeveral)
{
    EXPECT_THROW(DownloadPlaces("no such folder", 2), Failure);
    EXPECT_EQ(DownloadPlaces("some file", 1).For(L"a.txt").filename(), L"some file");
    EXPECT_EQ(DownloadPlaces("", 2).For(L"a.txt").filename(), L"a.txt");
}

TEST(TargetOf, IsInAFolderOrAFile)
{
    const std::filesystem::path here = std::filesystem::current_path();
    EXPECT_EQ(TargetOf("", L"n"), here / L"n");
    EXPECT_EQ(TargetOf(".", L"n"), here / L"n");
    EXPECT_EQ(TargetOf("x.bin", L"n"), here / L"x.bin");
    EXPECT_EQ(TargetOf("none\\", L"n"), here / L"none" / L"n");
}

TEST(WithEnding, AddsToTheName)
{
    EXPECT_EQ(WithEnding(L"C:\\a.b\\c.d", L".e"), std::filesystem::path(L"C:\\a.b\\c.d.e"));
    EXPECT_EQ(WithEnding(std::wstring(250, L'n'), L".part").wstring(), std::wstring(250, L'n') + L".part");
}

TEST(WithEnding, CutsANameThatLeavesNoRoom)
{
    const auto cut = [](const std::wstring& name) { return WithEnding(L"C:\\a\\" + name, L".part"); };
    for (const std::wstring& name : {std::wstring(255, L'n'), std::wstring(84, L'\x65E5')})
    {
        const std::filesystem::path one = cut(name + L"one");
        EXPECT_EQ(one, cut(name + L"one"));
        EXPECT_NE(one, cut(name + L"two"));
        EXPECT_EQ(one.parent_path(), L"C:\\a");
        EXPECT_LE(ToUtf8(one.filename().wstring()).size(), 255u);
        EXPECT_GT(ToUtf8(one.filename().wstring()).size(), 250u);
        EXPECT_EQ(one.extension(), L".part");
        EXPECT_EQ(one.filename().wstring().substr(0, 60), name.substr(0, 60));
    }
    std::wstring smiles;
    for (int i = 0; i < 70; ++i)
        smiles += L"\xD83D\xDE00";
    EXPECT_TRUE(ToUtf8(cut(smiles).wstring()).find("\xEF\xBF\xBD") == std::string::npos);
}

} // namespace
} // namespace quorvex::console
