#include "common/MultipartReader.h"
#include "support/ThirdCalls.h"
#include "support/UploadForms.h"

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace quorvex::services::test
{

namespace
{

struct ReceivedPart
{
    FormPart head;
    std::string data;
    bool isEnded = false;
};

class Recorder : public FormReceiver
{
public:
    void OnPart(const FormPart& part) override { parts.push_back({part, {}, false}); }
    void OnData(std::string_view bytes) override { parts.back().data.append(bytes); }
    void OnPartEnd() override { parts.back().isEnded = true; }

    std::vector<ReceivedPart> parts;
};

struct Outcome
{
    std::vector<ReceivedPart> parts;
    bool isComplete = false;
    bool isAccepted = true;
};

Outcome Read(std::string_view form, std::size_t pieceSize, std::string_view boundary = Boundary)
{
    Recorder recorder;
    MultipartReader reader(boundary, recorder);
    Outcome outcome;
    while (!form.empty())
    {
        const std::string_view piece = form.substr(0, pieceSize);
        outcome.isAccepted = reader.Feed(piece) && outcome.isAccepted;
        form.remove_prefix(piece.size());
    }
    outcome.isComplete = reader.IsComplete();
    outcome.parts = std::move(recorder.parts);
    return outcome;
}

Outcome ReadWhole(std::string_view form)
{
    return Read(form, form.size());
}

std::string Delimiter()
{
    return "--" + std::string(Boundary);
}

std::string PartWith(std::string_view headers)
{
    return Delimiter() + "\r\n" + std::string(headers) + "\r\n\r\nx\r\n" + Delimiter() + "--\r\n";
}

} // namespace

TEST(MultipartReader, ReadsTheWholeFileForm)
{
    const Outcome outcome = ReadWhole(WholeForm("a b.txt", "content"));

    ASSERT_TRUE(outcome.isComplete);
    ASSERT_EQ(outcome.parts.size(), 1U);
    EXPECT_EQ(outcome.parts[0].head.name, "upfile");
    EXPECT_EQ(outcome.parts[0].head.fileName, "a b.txt");
    EXPECT_EQ(outcome.parts[0].data, "content");
    EXPECT_TRUE(outcome.parts[0].isEnded);
}

TEST(MultipartReader, ReadsTheCreationFormWithItsEmptyFile)
{
    const Outcome outcome = ReadWhole(CreateForm("big.iso", 4000000000U, "0123456789abcdef0123456789abcdef"));

    ASSERT_TRUE(outcome.isComplete);
    ASSERT_EQ(outcome.parts.size(), 3U);
    EXPECT_EQ(outcome.parts[0].head.name, "totalsize");
    EXPECT_EQ(outcome.parts[0].data, "4000000000");
    EXPECT_FALSE(outcome.parts[0].head.fileName.has_value());
    EXPECT_EQ(outcome.parts[1].data, "0123456789abcdef0123456789abcdef");
    EXPECT_EQ(outcome.parts[2].head.fileName, "big.iso");
    EXPECT_EQ(outcome.parts[2].data, "");
    EXPECT_TRUE(outcome.parts[2].isEnded);
}

TEST(MultipartReader, ReadsTheBlockFormInPiecesOfAnySize)
{
    // Content that looks like a boundary in many ways, so that every split falls into one.
    const std::string content = "\r\n--" + std::string(Boundary.substr(0, 39)) + "\r\n-\r\n--\r\r\n\r\n--0aB1";
    const std::string form = BlockForm("k1", 65536, content);

    for (std::size_t pieceSize = 1; pieceSize <= form.size(); ++pieceSize)
    {
        const Outcome outcome = Read(form, pieceSize);
        ASSERT_TRUE(outcome.isComplete && outcome.isAccepted) << "pieces of " << pieceSize;
        ASSERT_EQ(outcome.parts.size(), 4U) << "pieces of " << pieceSize;
        EXPECT_EQ(outcome.parts[1].data, "65536");
        ASSERT_EQ(outcome.parts[3].data, content) << "pieces of " << pieceSize;
    }
}

TEST(MultipartReader, ReadsTheSameHoweverTheFormIsSplitInTwo)
{
    const std::string content = SampleBytes(300);
    const std::string form = WholeForm("f", content);

    for (std::size_t split = 0; split <= form.size(); ++split)
    {
        Recorder recorder;
        MultipartReader reader(Boundary, recorder);
        EXPECT_TRUE(reader.Feed(std::string_view(form).substr(0, split)));
        EXPECT_TRUE(reader.Feed(std::string_view(form).substr(split)));
        ASSERT_TRUE(reader.IsComplete()) << "split at " << split;
        ASSERT_EQ(recorder.parts.at(0).data, content) << "split at " << split;
    }
}

TEST(MultipartReader, PassesDataOnBeforeThePartEnds)
{
    Recorder recorder;
    MultipartReader reader(Boundary, recorder);
    reader.Feed(BlockFormHead("k", 0, 1000000));
    reader.Feed(std::string(100000, 'x'));

    ASSERT_EQ(recorder.parts.size(), 4U);
    EXPECT_GE(recorder.parts[3].data.size(), 100000U - Boundary.size() - 4);
    EXPECT_FALSE(recorder.parts[3].isEnded);
    EXPECT_FALSE(reader.IsComplete());
}

TEST(MultipartReader, KeepsQuotationMarksAndFieldLookAlikesOfAFileName)
{
    const Outcome quoted =
        ReadWhole(PartWith("Content-Disposition: form-data; name=\"upfile\";filename=\"a\"b\".txt\""));
    ASSERT_EQ(quoted.parts.size(), 1U);
    EXPECT_EQ(quoted.parts[0].head.fileName, "a\"b\".txt");

    const Outcome posing =
        ReadWhole(PartWith("Content-Disposition: form-data; name=\"upfile\"; filename=\"x; name=\"fkey\""));
    ASSERT_EQ(posing.parts.size(), 1U);
    EXPECT_EQ(posing.parts[0].head.name, "upfile");
}

TEST(MultipartReader, ReadsHeadersInAnyLetterCaseAndOrder)
{
    const Outcome outcome =
        ReadWhole(PartWith("content-type: text/plain\r\nCONTENT-DISPOSITION: form-data; name=\"n\""));
    ASSERT_EQ(outcome.parts.size(), 1U);
    EXPECT_EQ(outcome.parts[0].head.name, "n");
    EXPECT_EQ(outcome.parts[0].data, "x");
}

TEST(MultipartReader, ReadsAPartWithoutAnEmptyLineHoweverTheFormIsSplit)
{
    const std::string form = ThirdPictureForm("p.jpg", "\r\n\r\ncontent", "value");
    for (std::size_t pieceSize = 1; pieceSize <= form.size(); ++pieceSize)
    {
        const Outcome outcome = Read(form, pieceSize);
        ASSERT_TRUE(outcome.isComplete && outcome.isAccepted) << "pieces of " << pieceSize;
        ASSERT_EQ(outcome.parts.size(), 2U) << "pieces of " << pieceSize;
        EXPECT_EQ(outcome.parts[0].head.name, "md5");
        EXPECT_FALSE(outcome.parts[0].head.fileName.has_value());
        ASSERT_EQ(outcome.parts[0].data, "value") << "pieces of " << pieceSize;
        EXPECT_EQ(outcome.parts[1].head.fileName, "p.jpg");
        ASSERT_EQ(outcome.parts[1].data, "\r\n\r\ncontent") << "pieces of " << pieceSize;
    }
    EXPECT_EQ(ReadWhole(ThirdPictureForm("p.jpg", "", "")).parts.at(0).data, "");
}

TEST(MultipartReader, SkipsPreambleAndEpilogue)
{
    const Outcome outcome = ReadWhole("a preamble\r\n" + WholeForm("f", "data") + "an epilogue");
    ASSERT_TRUE(outcome.isComplete && outcome.isAccepted);
    ASSERT_EQ(outcome.parts.size(), 1U);
    EXPECT_EQ(outcome.parts[0].data, "data");
}

TEST(MultipartReader, RefusesBrokenForms)
{
    const std::vector<std::string> forms{
        PartWith("Content-Type: text/plain"),
        PartWith(""),
        PartWith("Content-Disposition: form-data"),
        PartWith("Content-Disposition: form-data; name=\"unfinished"),
        PartWith("Content_disposition: form-data: "),
        Delimiter() + "\r\nContent_disposition: form-data: name=\"n\"" + std::string(10000, 'h'),
        Delimiter() + "junk\r\nContent-Disposition: form-data; name=\"n\"\r\n\r\nx\r\n" + Delimiter() + "--",
        Delimiter() + "\r\n" + std::string(10000, 'h'),
    };
    for (const std::string& form : forms)
    {
        const Outcome outcome = ReadWhole(form);
        EXPECT_FALSE(outcome.isAccepted) << form.substr(0, 200);
        EXPECT_FALSE(outcome.isComplete) << form.substr(0, 200);
    }
}

TEST(MultipartReader, IsNotCompleteAtAnyCut)
{
    const std::string form = CreateForm("f", 1, "m");
    const std::size_t whole = form.size() - 2; // the line end behind the last boundary may be missing
    for (std::size_t size = 0; size < whole; ++size)
    {
        ASSERT_FALSE(Read(std::string_view(form).substr(0, size), 7).isComplete) << "cut at " << size;
    }
    EXPECT_TRUE(ReadWhole(std::string_view(form).substr(0, whole)).isComplete);
}

TEST(MultipartReader, LetsTheReceiversExceptionsThrough)
{
    class Refusing : public Recorder
    {
        void OnData(std::string_view) override { throw std::runtime_error("full"); }
    };
    Refusing receiver;
    MultipartReader reader(Boundary, receiver);
    EXPECT_THROW(reader.Feed(WholeForm("f", "data")), std::runtime_error);
}

TEST(MultipartBoundary, IsFoundInBothSpellings)
{
    EXPECT_EQ(MultipartBoundary(WholeFormType), Boundary);
    EXPECT_EQ(MultipartBoundary(BlockFormType), Boundary);
    EXPECT_EQ(MultipartBoundary("Multipart/Form-Data; boundary=\"q r\"; charset=utf-8"), "q r");
}

TEST(MultipartBoundary, IsNothingWithoutAUsableOne)
{
    EXPECT_FALSE(MultipartBoundary(""));
    EXPECT_FALSE(MultipartBoundary("application/json; boundary=x"));
    EXPECT_FALSE(MultipartBoundary("multipart/form-data"));
    EXPECT_FALSE(MultipartBoundary("multipart/form-data; boundary="));
    EXPECT_FALSE(MultipartBoundary("multipart/form-data; boundary=" + std::string(300, 'b')));
}

} // namespace quorvex::services::test
