#include "Multipart.h"

#include <gtest/gtest.h>

namespace Multipart = quorvex::Multipart;

namespace
{
const std::string kBoundary = "0123456789abcdefghijklmnopqrstuvwxyzABCD";
}

TEST(Multipart, TheTwoHeadersAreSpeltDifferently)
{
    EXPECT_EQ(Multipart::UploadContentType(kBoundary),
              L"Content-Type:multipart/form-data;boundary=0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n");
    EXPECT_EQ(Multipart::FormContentType(kBoundary),
              L"Content-Type:multipart/form-data; boundary=0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n");
}

TEST(Multipart, UploadHasNoBlankBeforeFilename)
{
    EXPECT_EQ(Multipart::UploadHead(kBoundary, "n.txt"),
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"upfile\";filename=\"n.txt\"\r\n"
              "Content-Type: application/octet-stream\r\n\r\n");
    EXPECT_EQ(Multipart::Tail(kBoundary), "\r\n--0123456789abcdefghijklmnopqrstuvwxyzABCD--\r\n");
}

TEST(Multipart, LargeFileForm)
{
    EXPECT_EQ(Multipart::LargeFileForm(kBoundary, 4294967295U, "d41d8cd98f00b204e9800998ecf8427e", "big.bin"),
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"totalsize\"\r\n\r\n4294967295\r\n"
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"md5\"\r\n\r\nd41d8cd98f00b204e9800998ecf8427e\r\n"
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"upfile\"; filename=\"big.bin\"\r\n\r\n\r\n"
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD--\r\n");
}

TEST(Multipart, BlockHead)
{
    EXPECT_EQ(Multipart::BlockHead(kBoundary, "k1", 1048576, 65536),
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"fkey\"\r\n\r\nk1\r\n"
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"pos\"\r\n\r\n1048576\r\n"
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"size\"\r\n\r\n65536\r\n"
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"upfile\"; filename=\"0\"\r\n\r\n");
}

TEST(Multipart, ChunkHead)
{
    EXPECT_EQ(Multipart::ChunkHead(kBoundary, "k1", 4096, 5095),
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"k\"\r\n\r\nk1\r\n"
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"rs\"\r\n\r\n4096\r\n"
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"re\"\r\n\r\n5095\r\n"
              "--0123456789abcdefghijklmnopqrstuvwxyzABCD\r\n"
              "Content-Disposition: form-data; name=\"chunk\"; filename=\"0\"\r\n"
              "Content-Type: application/octet-stream\r\n\r\n");
}
