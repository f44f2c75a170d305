#pragma once

#include "support/ServiceFixture.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvex::services::test
{

// A block as the third generation's form tells it. Absent values are those that clients reckon.
struct ThirdBlock
{
    std::string ticket;
    std::uint64_t offset = 0;
    std::string content;
    bool isLast = false;
    std::string name = "file.bin";
};

std::string ThirdPictureForm(std::string_view name, std::string_view content, std::string_view md5);

using FormFields = std::vector<std::pair<std::string, std::string>>;

FormFields FieldsOf(const ThirdBlock& block);
std::string ThirdBlockForm(const FormFields& fields, std::string_view name, std::string_view content);

// A client of the third generation: its requests byte for byte, each on a connection of its own, with the cookie that
// it was given.
class ThirdClient
{
public:
    ThirdClient(int port, std::string cookie) : port_(port), cookie_(std::move(cookie)) {}

    Reply PutPicture(std::string_view name, std::string_view content) const;
    Reply PutPicture(const std::string& form) const;
    Reply GetPicture(const std::string& folder, const std::string& name) const;

    Reply PutBlock(const ThirdBlock& block) const;
    Reply PutBlock(const std::string& form) const;
    Reply GetFile(const std::string& owner, const std::string& key, const std::string& range = {}) const;

    // The whole file in blocks of this size; returns the key.
    std::string PutFile(const std::string& name, const std::string& content, std::size_t blockSize) const;

private:
    Reply Post(const std::string& path, const std::string& form) const;
    Reply Get(const std::string& path, const std::string& headers = {}) const;

    int port_;
    std::string cookie_;
};

int CodeOf(const Reply& reply);

} // namespace quorvex::services::test
