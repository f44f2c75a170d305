#pragma once

#include "common/FileHandle.h"

#include <cstdint>
#include <string>
#include <string_view>

#include <httplib.h>

namespace quorvex::services
{

struct Download
{
    FileHandle content;
    std::string name;
    std::uint64_t size = 0;
    std::string md5;
    std::string sha1; // empty where the service keeps none
};

// The Content-Disposition value in the form in which clients cut it apart: the name stands between a quotation mark and
// the next semicolon, and the digests follow as parameters whose names have three letters.
std::string ContentDisposition(std::string_view name, std::string_view md5, std::string_view sha1 = {});

// Answers with the file, or with the part that the request's range names. True when this counts as a download, which a
// client's probe for name and size does not.
bool AnswerDownload(const httplib::Request& request, httplib::Response& response, Download file);

} // namespace quorvex::services
