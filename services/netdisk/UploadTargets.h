#pragma once

#include "netdisk/LargeFiles.h"
#include "netdisk/NetDiskStore.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::services::netdisk
{

struct UploadAnswer
{
    std::string key;
    // The bytes held from the file's start without a gap; of a block, its own size.
    std::uint64_t size = 0;
    std::optional<bool> isComplete;
};

// Where the bytes of a form's "upfile" go.
class UploadTarget
{
public:
    virtual ~UploadTarget() = default;
    virtual void Append(std::string_view bytes) = 0;
    virtual UploadAnswer Finish() = 0;
};

class WholeUpload : public UploadTarget
{
public:
    WholeUpload(NetDiskStore& store, BlobStore& blobs, std::int64_t account, std::string name);
    void Append(std::string_view bytes) override;
    UploadAnswer Finish() override;

private:
    NetDiskStore& store_;
    BlobStore& blobs_;
    std::int64_t account_;
    std::string name_;
    Capacity capacity_;
    BlobStore::Incoming incoming_;
};

// The announcement of a large file, which carries no bytes yet.
class Announcement : public UploadTarget
{
public:
    Announcement(LargeFiles& files, std::int64_t account, std::string name, BlobContent content);
    void Append(std::string_view bytes) override;
    UploadAnswer Finish() override;

private:
    LargeFiles& files_;
    std::int64_t account_;
    std::string name_;
    BlobContent content_;
};

class BlockUpload : public UploadTarget
{
public:
    BlockUpload(LargeFiles& files, std::int64_t account, std::string key, std::uint64_t position, std::uint64_t size);
    void Append(std::string_view bytes) override;
    UploadAnswer Finish() override;

private:
    std::string key_;
    std::uint64_t size_;
    LargeFiles::Block block_;
};

} // namespace quorvex::services::netdisk
