#pragma once

#include "Options.h"
#include "UploadTarget.h"

#include <cstdint>
#include <string>

namespace quorvex::console
{

struct UploadResult
{
    std::string key;
    std::string name; ///< as the server has it; the protocol cuts names that are too long for it
    std::uint64_t size = 0;
    std::string md5;
    std::uint64_t resumedFrom = 0; ///< bytes that an interrupted run had sent
    bool instant = false;          ///< the server held the content already; nothing was sent
    bool verified = false;         ///< the server tells the same MD5
};

/// Uploads a file: whole up to options.largeFrom bytes where the target takes whole files, otherwise in blocks.
/// An interrupted upload in blocks goes on behind the last block that the server has confirmed, which a record beside
/// the file tells.
/// @throws Failure
UploadResult Upload(const UploadTarget& target, const std::string& file, const Options& options);

} // namespace quorvex::console
