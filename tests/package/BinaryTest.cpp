// What the binaries that are handed on say about themselves, read as they lie on disk.
#include "ExecutableImage.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include <windows.h>

namespace quorvex::test
{
namespace
{

const std::filesystem::path kBuild = QUORVEX_BUILD_FOLDER;

class BinaryTest : public testing::TestWithParam<const char*>
{
protected:
    std::filesystem::path Path() const { return kBuild / "bin" / GetParam(); }
    std::filesystem::path SymbolsPath() const { return kBuild / "symbols" / (std::string(GetParam()) + ".debug"); }
    bool IsProgram() const { return Path().extension() == ".exe"; }
};

TEST_P(BinaryTest, IsLoadedWhereTheSystemLikes)
{
    const ExecutableImage image(Path());
    EXPECT_TRUE(image.LoaderCharacteristics() & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_FALSE(image.Characteristics() & IMAGE_FILE_RELOCS_STRIPPED);
    EXPECT_GT(image.SizeOfRelocations(), sizeof(IMAGE_BASE_RELOCATION));
#ifdef _WIN64
    EXPECT_TRUE(image.LoaderCharacteristics() & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA);
    EXPECT_TRUE(image.Characteristics() & IMAGE_FILE_LARGE_ADDRESS_AWARE);
#endif
}

TEST_P(BinaryTest, RunsNoData)
{
    const ExecutableImage image(Path());
    EXPECT_TRUE(image.LoaderCharacteristics() & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
    EXPECT_EQ(image.WritableCode(), std::vector<std::string>());
}

// The header's time and the builder's folders would make each build another one.
TEST_P(BinaryTest, TellsNothingOfItsBuild)
{
    const ExecutableImage image(Path());
    EXPECT_EQ(image.SecondsOfBuild(), 0U);
    EXPECT_FALSE(image.Contains(QUORVEX_SOURCE_FOLDER));
    EXPECT_EQ(support::readFile(SymbolsPath()).find(QUORVEX_SOURCE_FOLDER), std::string::npos);
}

TEST_P(BinaryTest, HasItsSymbolsBesideIt)
{
    const ExecutableImage image(Path());
    EXPECT_TRUE(image.Contains(SymbolsPath().filename().string()));
    EXPECT_GT(file_size(SymbolsPath()), file_size(Path()));
}

/// The version that the system shows for a file.
class FileVersion
{
public:
    explicit FileVersion(const std::filesystem::path& path)
    {
        DWORD unused = 0;
        m_block.resize(::GetFileVersionInfoSizeW(path.c_str(), &unused));
        m_isRead = !m_block.empty() &&
                   ::GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(m_block.size()), m_block.data());
    }

    bool IsRead() const { return m_isRead; }

    std::string Numbers() const
    {
        const auto* const fixed = static_cast<const VS_FIXEDFILEINFO*>(Value(L"\\"));
        if (fixed == nullptr)
            return {};
        std::ostringstream text;
        text << HIWORD(fixed->dwFileVersionMS) << '.' << LOWORD(fixed->dwFileVersionMS) << '.'
             << HIWORD(fixed->dwFileVersionLS);
        return text.str();
    }

    DWORD FileType() const
    {
        const auto* const fixed = static_cast<const VS_FIXEDFILEINFO*>(Value(L"\\"));
        return fixed == nullptr ? DWORD{VFT_UNKNOWN} : fixed->dwFileType;
    }

    std::wstring Text(const std::wstring& name) const
    {
        const auto* const text = static_cast<const wchar_t*>(Value(L"\\StringFileInfo\\040904b0\\" + name));
        return text == nullptr ? std::wstring() : text;
    }

private:
    const void* Value(const std::wstring& name) const
    {
        void* value = nullptr;
        UINT length = 0;
        return m_isRead && ::VerQueryValueW(m_block.data(), name.c_str(), &value, &length) ? value : nullptr;
    }

    std::vector<unsigned char> m_block;
    bool m_isRead = false;
};

TEST_P(BinaryTest, TellsItsVersion)
{
    const FileVersion version(Path());
    const std::string expected = QUORVEX_VERSION;
    ASSERT_TRUE(version.IsRead());
    EXPECT_EQ(version.Numbers(), expected);
    EXPECT_EQ(version.FileType(), IsProgram() ? DWORD{VFT_APP} : DWORD{VFT_DLL});
    EXPECT_EQ(version.Text(L"FileVersion"), std::wstring(expected.begin(), expected.end()));
    EXPECT_EQ(version.Text(L"ProductVersion"), std::wstring(expected.begin(), expected.end()));
    EXPECT_EQ(version.Text(L"ProductName"), L"quorvex");
    EXPECT_EQ(version.Text(L"OriginalFilename"), Path().filename().wstring());
    EXPECT_NE(version.Text(L"FileDescription"), L"");
}

INSTANTIATE_TEST_SUITE_P(, BinaryTest, testing::Values("quorvex.dll", "ferrolink.dll", "quorvex.exe"),
                         [](const auto& test) {
                             std::string name = test.param;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

/// One line for each name that a host can link.
std::string Exports()
{
    std::string lines;
    for (const std::string file : {"quorvex.dll", "ferrolink.dll"})
    {
        for (const auto& name : ExecutableImage(kBuild / "bin" / file).ExportedNames())
            lines += file + ' ' + name + '\n';
    }
    return lines;
}

TEST(ExportsTest, AreTheOnesThatHostsRelyOn)
{
    const std::filesystem::path committed =
        std::filesystem::path(QUORVEX_SOURCE_FOLDER) / "tests/package" / QUORVEX_EXPORTS;
    const std::filesystem::path found = kBuild / QUORVEX_EXPORTS;
    std::ofstream(found, std::ios::binary) << Exports();
    EXPECT_EQ(support::readFile(found), support::readFile(committed))
        << "The interface has changed. A name that is gone or different breaks every host that was linked with it. "
        << "Where that is meant:\n  cp " << found.generic_string() << ' ' << committed.generic_string();
}

} // namespace
} // namespace quorvex::test
