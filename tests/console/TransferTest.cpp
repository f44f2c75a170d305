#include "Download.h"
#include "Failure.h"
#include "Interruption.h"
#include "LargeUpload.h"
#include "LocalFile.h"
#include "Text.h"
#include "Upload.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include <windows.h>

namespace quorvex::console
{
namespace
{

std::string ContentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A server that takes files in blocks only, and can be told to refuse.
class BlockServer
{
public:
    UploadTarget Target()
    {
        UploadTarget target;
        target.create = [this](const LocalPath&, std::string& key, bool& isComplete) {
            key = "key" + std::to_string(++creations);
            isComplete = hasContent;
            content.clear();
            return Outcome(0);
        };
        target.sendBlock = [this](const LocalPath&, const UploadIds&, const Block& block) {
            return Outcome(Take(block));
        };
        target.finish = [this](const std::wstring&) {
            const int result = finishResult;
            finishResult = 0;
            return Outcome(result);
        };
        target.askAbout = [this](const std::wstring&, const std::string&) {
            return RemoteFile{L"stored.bin", content.size(), md5, "stored.bin"};
        };
        return target;
    }

    /// The same for blocks that begin and end a file by themselves, and nothing that could be asked.
    UploadTarget TargetWithTickets()
    {
        UploadTarget target;
        target.sendBlock = [this](const LocalPath& local, UploadIds& ids, const Block& block) {
            EXPECT_EQ(local.name, L"file.bin");
            EXPECT_EQ(ids.ticket, ticket);
            if (ids.ticket.empty())
                ids.key = "key" + std::to_string(++creations);
            const int result = Take(block);
            if (result == 0)
                ids.ticket = ticket = "ticket" + std::to_string(blocks);
            lastBlocks += block.isLast ? "L" : ".";
            return Outcome(result);
        };
        target.transport = Transport::Host;
        return target;
    }

    std::string content;
    std::string md5;
    std::string ticket;
    std::string lastBlocks; ///< for each block, whether it was the last
    bool hasContent = false;
    int creations = 0;
    int blocks = 0;
    int blocksUntilRefusal = -1;
    int stopAfter = -1; ///< blocks
    int refusal = 500;
    int finishResult = 0;

private:
    int Take(const Block& block)
    {
        if (blocksUntilRefusal-- == 0)
            return refusal;
        isAskedToStop = blocks + 1 == stopAfter;
        content.resize(std::max<std::size_t>(content.size(), block.position + block.size));
        std::copy_n(static_cast<const char*>(block.data), block.size,
                    content.begin() + static_cast<std::ptrdiff_t>(block.position));
        ++blocks;
        return 0;
    }
};

class Transfer : public testing::Test
{
protected:
    void SetUp() override
    {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        m_folder = std::filesystem::temp_directory_path() /
                   (std::string("transfer-") + test->name() + '-' + std::to_string(GetCurrentProcessId()));
        std::filesystem::create_directories(m_folder);
        m_file = m_folder / "file.bin";
        std::ofstream(m_file, std::ios::binary) << m_content;
        m_options.server = "http://server";
        m_options.blockSize = 3;
        m_options.largeFrom = 100;
        m_options.quiet = true;
        m_server.md5 = DigestOf(m_file);
    }

    void TearDown() override
    {
        isAskedToStop = false;
        std::filesystem::remove_all(m_folder);
    }

    UploadResult UploadHere(const UploadTarget& target) { return Upload(target, ToUtf8(m_file.wstring()), m_options); }

    UploadResult Put() { return UploadHere(m_server.Target()); }

    std::filesystem::path Record() const { return m_folder / "file.bin.quorvex-resume"; }

    DownloadSource Ranges()
    {
        DownloadSource source;
        source.remote = {L"file.bin", m_content.size(), m_server.md5, "file.bin"};
        source.fetchRange = [this](unsigned long position, void* buffer, unsigned long& size) -> Outcome {
            if (m_rangesUntilFailure-- == 0)
                return {500, "ReadRange"};
            isAskedToStop = m_ranges + 1 == m_stopAfter;
            // Behind its end there is nothing.
            size = static_cast<unsigned long>(
                m_content.copy(static_cast<char*>(buffer), size, std::min<std::size_t>(position, m_content.size())));
            ++m_ranges;
            return Outcome(0);
        };
        return source;
    }

    DownloadSource RangesOfUnknown()
    {
        DownloadSource source = Ranges();
        source.remote = {L"key", UINT32_MAX, {}, {}};
        source.isToldOf = false;
        source.partEnding = L".key.part";
        return source;
    }

    /// A file that a listing names, which comes whole, with this name of its own.
    DownloadSource Listed(const std::wstring& ownName)
    {
        DownloadSource source;
        source.remote = {L"listed", m_content.size(), m_server.md5, "listed"};
        source.fetchWhole = [this, ownName](const wchar_t* folder, const wchar_t* name) -> Outcome {
            if (m_wholeResult == 0)
                std::ofstream(std::filesystem::path(folder) / (name != nullptr ? name : ownName)) << m_content;
            return {m_wholeResult, "Whole"};
        };
        return source;
    }

    const std::string m_content = "0123456789";
    int m_wholeResult = 0;
    Options m_options;
    BlockServer m_server;
    int m_ranges = 0;
    int m_stopAfter = -1;
    int m_rangesUntilFailure = -1;
    std::filesystem::path m_folder;
    std::filesystem::path m_file;
};

TEST_F(Transfer, SendsAnyFileInBlocksWhereNothingElseIsTaken)
{
    const UploadResult upload = Put();
    EXPECT_EQ(m_server.content, m_content);
    EXPECT_EQ(m_server.blocks, 4);
    EXPECT_EQ(upload.key, "key1");
    EXPECT_EQ(upload.name, "stored.bin");
    EXPECT_EQ(upload.resumedFrom, 0u);
    EXPECT_TRUE(upload.verified);
    EXPECT_FALSE(upload.instant);
    EXPECT_FALSE(std::filesystem::exists(Record()));
}

TEST_F(Transfer, SendsSmallFilesWholeWhereThatCanBe)
{
    UploadTarget target = m_server.Target();
    target.sendWhole = [this](const LocalPath& local, std::string& key) {
        m_server.content = ContentOf(local.Whole());
        key = "whole";
        return Outcome(0);
    };
    EXPECT_EQ(UploadHere(target).key, "whole");
    m_options.largeFrom = m_content.size() - 1;
    EXPECT_EQ(UploadHere(target).key, "key1");
    EXPECT_EQ(m_server.blocks, 4);
}

TEST_F(Transfer, SendsNothingThatTheServerHas)
{
    m_server.hasContent = true;
    UploadTarget target = m_server.Target();
    target.askAbout = [this](const std::wstring&, const std::string&) {
        return RemoteFile{L"stored.bin", m_content.size(), m_server.md5, "stored.bin"};
    };
    EXPECT_TRUE(UploadHere(target).instant);
    EXPECT_EQ(m_server.blocks, 0);
}

TEST_F(Transfer, GoesOnBehindTheLastConfirmedBlock)
{
    m_server.blocksUntilRefusal = 2;
    try
    {
        Put();
        ADD_FAILURE();
    }
    catch (const Failure& failure)
    {
        EXPECT_EQ(failure.Code(), 500);
        EXPECT_NE(std::string(failure.what()).find("has confirmed 6 bytes of 10 bytes"), std::string::npos)
            << failure.what();
    }
    EXPECT_TRUE(std::filesystem::exists(Record()));
    const UploadResult rest = Put();
    EXPECT_EQ(rest.resumedFrom, 6u);
    EXPECT_EQ(rest.key, "key1");
    EXPECT_EQ(m_server.blocks, 4);
    EXPECT_EQ(m_server.content, m_content);
}

TEST_F(Transfer, BeginsAnewWhenTheServerHasGivenTheUploadUp)
{
    for (const int refusal : {404, 409})
    {
        m_server.blocksUntilRefusal = 2;
        m_server.refusal = 500;
        EXPECT_THROW(Put(), Failure);
        const int creations = m_server.creations;
        m_server.blocksUntilRefusal = 0;
        m_server.refusal = refusal;
        const UploadResult upload = Put();
        EXPECT_EQ(upload.resumedFrom, 0u);
        EXPECT_EQ(m_server.creations, creations + 1);
        EXPECT_EQ(m_server.content, m_content);
    }
}

TEST_F(Transfer, BeginsAnewWhenTheServerMissesBlocksAtTheEnd)
{
    m_server.blocksUntilRefusal = 2;
    EXPECT_THROW(Put(), Failure);
    m_server.finishResult = 409;
    EXPECT_EQ(Put().resumedFrom, 0u);
    EXPECT_EQ(m_server.creations, 2);
    EXPECT_EQ(m_server.content, m_content);
}

TEST_F(Transfer, KeepsNoRecordOfAWholeThatIsRefused)
{
    m_server.finishResult = 409;
    EXPECT_THROW(Put(), Failure);
    EXPECT_FALSE(std::filesystem::exists(Record()));
}

TEST_F(Transfer, DoesNotGoOnWithAnotherContent)
{
    m_server.blocksUntilRefusal = 2;
    EXPECT_THROW(Put(), Failure);
    std::ofstream(m_file, std::ios::binary) << "9876543210";
    m_server.md5 = DigestOf(m_file);
    EXPECT_EQ(Put().resumedFrom, 0u);
    EXPECT_EQ(m_server.content, "9876543210");
}

TEST_F(Transfer, ComplainsWhenTheServerStatesAnotherDigest)
{
    m_server.md5 = std::string(32, '0');
    EXPECT_THROW(Put(), Failure);
    m_server.md5.clear();
    EXPECT_FALSE(Put().verified);
}

TEST_F(Transfer, BeginsAndEndsAFileWithItsBlocksWhereThereIsNothingElse)
{
    const UploadResult upload = UploadHere(m_server.TargetWithTickets());
    EXPECT_EQ(m_server.content, m_content);
    EXPECT_EQ(m_server.lastBlocks, "...L");
    EXPECT_EQ(upload.key, "key1");
    EXPECT_EQ(upload.name, "file.bin");
    EXPECT_FALSE(upload.verified);
    EXPECT_FALSE(std::filesystem::exists(Record()));
}

TEST_F(Transfer, SendsAnEmptyBlockOfAnEmptyFileThatBeginsAndEndsWithIt)
{
    std::ofstream(m_file, std::ios::binary | std::ios::trunc).close();
    EXPECT_EQ(UploadHere(m_server.TargetWithTickets()).key, "key1");
    EXPECT_EQ(m_server.lastBlocks, "L");
    EXPECT_EQ(m_server.content, "");
}

TEST_F(Transfer, GoesOnWithTheTicketOfTheLastConfirmedBlock)
{
    m_server.blocksUntilRefusal = 2;
    EXPECT_THROW(UploadHere(m_server.TargetWithTickets()), Failure);
    const UploadResult rest = UploadHere(m_server.TargetWithTickets());
    EXPECT_EQ(rest.resumedFrom, 6u);
    EXPECT_EQ(rest.key, "key1");
    EXPECT_EQ(m_server.content, m_content);
    EXPECT_EQ(m_server.creations, 1);
}

TEST_F(Transfer, DoesNotGoOnWithAnUploadOfAnotherKind)
{
    m_server.blocksUntilRefusal = 2;
    EXPECT_THROW(Put(), Failure);
    EXPECT_EQ(UploadHere(m_server.TargetWithTickets()).resumedFrom, 0u);

    m_server.ticket.clear();
    m_server.blocksUntilRefusal = 2;
    EXPECT_THROW(UploadHere(m_server.TargetWithTickets()), Failure);
    EXPECT_EQ(Put().resumedFrom, 0u);
    EXPECT_EQ(m_server.content, m_content);
}

TEST_F(Transfer, TellsResultsOfTheHostInItsWords)
{
    m_server.blocksUntilRefusal = 2;
    m_server.refusal = -2;
    try
    {
        UploadHere(m_server.TargetWithTickets());
        ADD_FAILURE();
    }
    catch (const Failure& failure)
    {
        EXPECT_EQ(failure.Meaning(), "the server did not answer in time");
    }
}

TEST_F(Transfer, FetchesAFileOfUnknownSizeToItsEnd)
{
    const std::filesystem::path place = m_folder / "fetched";
    const DownloadResult download = Download(RangesOfUnknown(), place, m_options);
    EXPECT_EQ(ContentOf(place), m_content);
    EXPECT_EQ(download.remote.size, m_content.size());
    EXPECT_FALSE(download.verified);
}

TEST_F(Transfer, LeavesNothingOfAFileThatIsRefusedFromTheStart)
{
    m_rangesUntilFailure = 0;
    EXPECT_THROW(Download(RangesOfUnknown(), m_folder / "fetched", m_options), Failure);
    EXPECT_FALSE(std::filesystem::exists(m_folder / "fetched.key.part"));
}

TEST_F(Transfer, FetchesTheRestOfAFileOfUnknownSize)
{
    const std::filesystem::path place = m_folder / "fetched";
    m_rangesUntilFailure = 2;
    EXPECT_THROW(Download(RangesOfUnknown(), place, m_options), Failure);
    EXPECT_EQ(ContentOf(m_folder / "fetched.key.part"), "012345");
    EXPECT_EQ(Download(RangesOfUnknown(), place, m_options).resumedFrom, 6u);
    EXPECT_EQ(ContentOf(place), m_content);
    EXPECT_FALSE(std::filesystem::exists(m_folder / "fetched.key.part"));
}

TEST_F(Transfer, FetchesAnyFileInRangesWhereNothingElseIsGiven)
{
    const std::filesystem::path place = m_folder / "fetched";
    const DownloadResult download = Download(Ranges(), place, m_options);
    EXPECT_EQ(ContentOf(place), m_content);
    EXPECT_EQ(m_ranges, 4);
    EXPECT_TRUE(download.verified);
    EXPECT_FALSE(std::filesystem::exists(m_folder / "fetched.quorvex-part"));
}

TEST_F(Transfer, FetchesTheRestOfAnInterruptedDownload)
{
    const std::filesystem::path place = m_folder / "fetched";
    std::ofstream(place) << "what was there";
    m_rangesUntilFailure = 2;
    EXPECT_THROW(Download(Ranges(), place, m_options), Failure);
    EXPECT_EQ(ContentOf(place), "what was there");
    EXPECT_EQ(Download(Ranges(), place, m_options).resumedFrom, 6u);
    EXPECT_EQ(m_ranges, 4);
    EXPECT_EQ(ContentOf(place), m_content);
}

TEST_F(Transfer, FetchesAFileAnewWhoseDigestIsWrong)
{
    const std::filesystem::path place = m_folder / "fetched";
    std::ofstream(m_folder / "fetched.quorvex-part") << "abc";
    EXPECT_EQ(Download(Ranges(), place, m_options).resumedFrom, 0u);
    EXPECT_EQ(ContentOf(place), m_content);
    m_server.md5 = std::string(32, '0');
    EXPECT_THROW(Download(Ranges(), place, m_options), Failure);
    EXPECT_FALSE(std::filesystem::exists(m_folder / "fetched.quorvex-part"));
}

TEST_F(Transfer, StopsBehindABlockAndGoesOnFromThere)
{
    m_server.stopAfter = 2;
    try
    {
        Put();
        ADD_FAILURE();
    }
    catch (const Failure& failure)
    {
        EXPECT_EQ(failure.Status(), ExitStatus::kInterrupted);
        EXPECT_FALSE(failure.Code().has_value());
        EXPECT_NE(std::string(failure.what()).find("confirmed 6 bytes of 10 bytes, and the same command goes on"),
                  std::string::npos)
            << failure.what();
    }
    isAskedToStop = false;
    EXPECT_EQ(Put().resumedFrom, 6u);
    EXPECT_EQ(m_server.blocks, 4);
    EXPECT_EQ(m_server.content, m_content);
}

TEST_F(Transfer, StopsADownloadBehindARangeAndGoesOnFromThere)
{
    const std::filesystem::path place = m_folder / "fetched";
    m_stopAfter = 2;
    try
    {
        Download(Ranges(), place, m_options);
        ADD_FAILURE();
    }
    catch (const Failure& failure)
    {
        EXPECT_EQ(failure.Status(), ExitStatus::kInterrupted);
        EXPECT_NE(std::string(failure.what()).find("6 bytes of 10 bytes are here, and the same command goes on"),
                  std::string::npos)
            << failure.what();
    }
    EXPECT_FALSE(std::filesystem::exists(place));
    isAskedToStop = false;
    EXPECT_EQ(Download(Ranges(), place, m_options).resumedFrom, 6u);
    EXPECT_EQ(ContentOf(place), m_content);
}

TEST_F(Transfer, LeavesNothingWhenItIsStoppedBeforeTheFirstRange)
{
    isAskedToStop = true;
    EXPECT_THROW(Download(Ranges(), m_folder / "fetched", m_options), Failure);
    EXPECT_TRUE(std::filesystem::exists(m_file));
    EXPECT_FALSE(std::filesystem::exists(m_folder / "fetched.quorvex-part"));
}

TEST_F(Transfer, TakesTheNameThatComesWithAFile)
{
    const std::wstring whole = L"listed" + std::wstring(76, L'n') + L".txt";
    DownloadSource source = Listed(whole);
    const FolderForAWhile folder(m_folder / "fresh");
    EXPECT_TRUE(FetchByWholeName(source, folder.Path()));
    EXPECT_EQ(source.remote.name, whole);
    EXPECT_EQ(source.remote.stated, ToUtf8(whole));
    const DownloadResult download = Download(source, m_folder / source.remote.name, m_options);
    EXPECT_TRUE(download.verified);
    EXPECT_EQ(ContentOf(m_folder / whole), m_content);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(Transfer, KeepsTheListedNameWhereNoneComesWithAFile)
{
    DownloadSource source = Listed(L"");
    for (const int result : {-120, -134})
    {
        m_wholeResult = result;
        const FolderForAWhile folder(m_folder / "fresh");
        EXPECT_FALSE(FetchByWholeName(source, folder.Path()));
        EXPECT_EQ(source.remote.name, L"listed");
    }
    m_wholeResult = -107;
    const FolderForAWhile folder(m_folder / "fresh");
    EXPECT_THROW(FetchByWholeName(source, folder.Path()), Failure);
    m_wholeResult = 0;
    EXPECT_TRUE(Download(source, m_folder / "listed", m_options).verified);
    EXPECT_EQ(ContentOf(m_folder / "listed"), m_content);
}

TEST_F(Transfer, KeepsTheListedNameWhereAnotherOneComes)
{
    DownloadSource source = Listed(L"list");
    const FolderForAWhile folder(m_folder / "fresh");
    EXPECT_FALSE(FetchByWholeName(source, folder.Path()));
    EXPECT_EQ(source.remote.name, L"listed");
    // What has come is not fetched again.
    m_wholeResult = -107;
    EXPECT_TRUE(Download(source, m_folder / "listed", m_options).verified);
    EXPECT_EQ(ContentOf(m_folder / "listed"), m_content);
}

TEST_F(Transfer, MakesAnEmptyFolderForAWhile)
{
    const std::filesystem::path path = m_folder / "fresh";
    std::filesystem::create_directories(path / "below");
    std::ofstream(path / "left behind") << "by an interrupted run";
    {
        const FolderForAWhile folder(path);
        EXPECT_TRUE(std::filesystem::is_empty(path));
        std::ofstream(path / "file") << "text";
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(IsNameCut, SuspectsWhatFillsTheRecord)
{
    const auto isCut = [](const std::string& name) {
        FileEntry entry;
        entry.name = name;
        return IsNameCut(entry);
    };
    EXPECT_FALSE(isCut(std::string(62, 'n')));
    EXPECT_TRUE(isCut(std::string(63, 'n')));
    EXPECT_TRUE(isCut(std::string(64, 'n')));
    EXPECT_FALSE(isCut(ToUtf8(std::wstring(62, L'\x65E5'))));
    EXPECT_TRUE(isCut(ToUtf8(std::wstring(64, L'\x65E5'))));
}

TEST_F(Transfer, NamesTheOperationThatHasFailed)
{
    m_rangesUntilFailure = 0;
    try
    {
        Download(Ranges(), m_folder / "fetched", m_options);
        ADD_FAILURE();
    }
    catch (const Failure& failure)
    {
        EXPECT_EQ(failure.Operation(), "ReadRange");
    }
}

TEST_F(Transfer, PutsAWholeFileInPlaceWhenItHasCome)
{
    const std::filesystem::path place = m_folder / "photo.png";
    std::ofstream(place) << "what was there";
    const auto write = [](int result) {
        return [result](const LocalPath& local) {
            EXPECT_EQ(local.name, L"photo.png");
            std::ofstream(local.Whole()) << "new";
            return Outcome(result);
        };
    };
    EXPECT_THROW(FetchInto(place, write(-107), "cannot"), Failure);
    EXPECT_EQ(ContentOf(place), "what was there");
    FetchInto(place, write(0), "cannot");
    EXPECT_EQ(ContentOf(place), "new");
    EXPECT_FALSE(std::filesystem::exists(m_folder / "photo.png.quorvex-part"));
}

} // namespace
} // namespace quorvex::console
