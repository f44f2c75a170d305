#pragma once

#include "common/BlobStore.h"
#include "common/BlockFiles.h"
#include "common/FileForm.h"
#include "storage/NamedFiles.h"
#include "storage/Space.h"
#include "storage/TicketUploads.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvex::services::storage
{

// A picture or an emoticon: the file alone, whose announced name is its key.
class NamedFileForm : public FileForm
{
public:
    NamedFileForm(BlobStore& blobs, const Capacity& capacity);

    const std::string& Key() const { return key_; }

    // After the form's end.
    virtual BlobStore::Staged Stage(BlobStore& blobs) { return blobs.Stage(incoming_); }

private:
    void OnFile(const std::string& fileName) override;
    void OnFileBytes(std::string_view bytes) override;

    Capacity capacity_;
    BlobStore::Incoming incoming_;
    std::string key_;
};

// A picture with its MD5, which has to be right.
class DigestedFileForm : public NamedFileForm
{
public:
    using NamedFileForm::NamedFileForm;

    BlobStore::Staged Stage(BlobStore& blobs) override;
};

// A block of a depot file: its key, its first and last position, and the bytes.
class BlockForm : public FileForm
{
public:
    BlockForm(BlockFiles& files, std::int64_t account);

    // After the form's end.
    void Confirm() { block_->Confirm(); }

private:
    void OnFile(const std::string& fileName) override;
    void OnFileBytes(std::string_view bytes) override { block_->Append(bytes); }
    std::uint32_t PositionField(const std::string& name) const;

    BlockFiles& files_;
    std::int64_t account_;
    std::optional<BlockFiles::Block> block_;
};

// A block with its ticket, its offset and MD5, how far the file reaches by now, and whether it is the last one.
class TicketForm : public FileForm
{
public:
    TicketForm(BlobStore& blobs, TicketUploads& uploads, std::int64_t account);

    // After the form's end.
    TicketUploads::State Add() { return uploads_.Add(account_, block_, incoming_); }

private:
    void OnFile(const std::string& fileName) override;
    void OnFileBytes(std::string_view bytes) override;
    bool LastBlockField() const;

    TicketUploads& uploads_;
    std::int64_t account_;
    TicketUploads::Block block_;
    BlobStore::Incoming incoming_;
};

} // namespace quorvex::services::storage
