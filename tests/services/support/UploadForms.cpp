#include "support/UploadForms.h"

#include "common/Crypto.h"

#include <random>

namespace quorvex::services::test
{

namespace
{

std::string Delimiter()
{
    return "--" + std::string(Boundary);
}

std::string FieldPart(std::string_view name, std::string_view value)
{
    return Delimiter() + "\r\nContent-Disposition: form-data; name=\"" + std::string(name) + "\"\r\n\r\n" +
           std::string(value) + "\r\n";
}

std::string Tail()
{
    return "\r\n" + Delimiter() + "--\r\n";
}

} // namespace

std::string WholeForm(std::string_view name, std::string_view content)
{
    return Delimiter() + "\r\nContent-Disposition: form-data; name=\"upfile\";filename=\"" + std::string(name) +
           "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + std::string(content) + Tail();
}

std::string CreateForm(std::string_view name, std::uint64_t size, std::string_view md5)
{
    return FieldPart("totalsize", std::to_string(size)) + FieldPart("md5", md5) + Delimiter() +
           "\r\nContent-Disposition: form-data; name=\"upfile\"; filename=\"" + std::string(name) + "\"\r\n\r\n" +
           Tail();
}

std::string BlockFormHead(std::string_view key, std::uint64_t position, std::uint64_t size)
{
    return FieldPart("fkey", key) + FieldPart("pos", std::to_string(position)) +
           FieldPart("size", std::to_string(size)) + Delimiter() +
           "\r\nContent-Disposition: form-data; name=\"upfile\"; filename=\"0\"\r\n\r\n";
}

std::string BlockForm(std::string_view key, std::uint64_t position, std::string_view content)
{
    return BlockFormHead(key, position, content.size()) + std::string(content) + Tail();
}

std::string Md5Of(std::string_view content)
{
    Md5 md5;
    md5.Append(content);
    return md5.Finish();
}

std::string SampleBytes(std::size_t size, unsigned seed)
{
    std::mt19937 generator(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
    {
        byte = static_cast<char>(static_cast<unsigned char>(generator() & 0xFFU));
    }
    return bytes;
}

} // namespace quorvex::services::test
