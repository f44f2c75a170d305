#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quorvex::services::test
{

// The three upload forms, byte for byte as the clients write them.
inline constexpr std::string_view Boundary = "0aB1cD2eF3gH4iJ5kL6mN7oP8qR9sT0uV1wX2yZj";
inline constexpr const char* WholeFormType = "multipart/form-data;boundary=0aB1cD2eF3gH4iJ5kL6mN7oP8qR9sT0uV1wX2yZj";
inline constexpr const char* BlockFormType = "multipart/form-data; boundary=0aB1cD2eF3gH4iJ5kL6mN7oP8qR9sT0uV1wX2yZj";

std::string WholeForm(std::string_view name, std::string_view content);
std::string CreateForm(std::string_view name, std::uint64_t size, std::string_view md5);
std::string BlockForm(std::string_view key, std::uint64_t position, std::string_view content);

// The head of a block form, up to the content.
std::string BlockFormHead(std::string_view key, std::uint64_t position, std::uint64_t size);

std::string Md5Of(std::string_view content);

// The same bytes for the same seed, without any pattern that a misplaced block could fit.
std::string SampleBytes(std::size_t size, unsigned seed = 1);

} // namespace quorvex::services::test
