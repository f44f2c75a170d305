#pragma once

#include "common/MultipartReader.h"
#include "netdisk/UploadTargets.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace quorvex::services::netdisk
{

// The form of "file/upload" in its three shapes, told apart by the fields that stand before "upfile": none for a whole
// file; "totalsize" and "md5" for the announcement of a large one; "fkey", "pos" and "size" for a block of it.
class UploadForm : public FormReceiver
{
public:
    UploadForm(NetDiskStore& store, LargeFiles& largeFiles, BlobStore& blobs, std::int64_t account);

    void OnPart(const FormPart& part) override;
    void OnData(std::string_view bytes) override;
    void OnPartEnd() override;

    // After the form's end.
    UploadAnswer Finish();

private:
    std::unique_ptr<UploadTarget> ChooseTarget(const std::string& fileName) const;
    const std::string& Field(const std::string& name) const;
    std::uint64_t NumberField(const std::string& name) const;
    void Flush();

    NetDiskStore& store_;
    LargeFiles& largeFiles_;
    BlobStore& blobs_;
    std::int64_t account_;
    std::map<std::string, std::string, std::less<>> fields_;
    std::string* field_ = nullptr;
    std::unique_ptr<UploadTarget> target_;
    // Pieces arrive small; they are written in larger ones.
    std::string buffer_;
};

} // namespace quorvex::services::netdisk
